#include "kit/confd/tree/tagged.h"

#include <string>

#include "kit/confd/model/error.h"

namespace kit::store {
namespace {

KeyView View(const TagStep& step) {
  return {step.keys.data(), step.keys.size()};
}

[[noreturn]] void FailWithoutEntry(const TagStep& step) {
  throw Error(ErrorCode::kNoExists,
              "value " + std::to_string(step.number) +
                  " of the array leads to an entry of \"" + step.schema->name +
                  "\" that does not exist");
}

// Where a step into something leads; null where nothing is.
const Node* Enter(const Node* holder, const TagStep& step) {
  if (holder == nullptr) return nullptr;
  if (step.kind == TagStep::Kind::kContainer) {
    return holder->Container(*step.schema);
  }
  const List* list = holder->ListAt(*step.schema);
  if (list == nullptr) return nullptr;
  return step.kind == TagStep::Kind::kPosition ? list->At(step.position)
                                               : list->Find(View(step));
}

}  // namespace

std::vector<std::pair<size_t, Element>> ReadTagged(
    const Node& start, const std::vector<TagStep>& steps, ReadRules rules) {
  std::vector<std::pair<size_t, Element>> found;
  std::vector<const Node*> nodes = {&start};
  for (const TagStep& step : steps) {
    switch (step.kind) {
      case TagStep::Kind::kLeave:
        nodes.pop_back();
        break;
      case TagStep::Kind::kNode:
        found.emplace_back(step.number,
                           nodes.back() == nullptr
                               ? Element{}
                               : ElementOf(*nodes.back(), *step.schema, rules));
        break;
      default:
        nodes.push_back(Enter(nodes.back(), step));
        if (nodes.back() == nullptr && !step.schema->IsContainer()) {
          FailWithoutEntry(step);
        }
    }
  }
  return found;
}

void CheckTagged(const Node* start, std::vector<TagStep>& steps) {
  std::vector<const Node*> nodes = {start};
  for (TagStep& step : steps) {
    if (step.kind != TagStep::Kind::kLeave && step.schema->is_state) {
      throw Error(ErrorCode::kNotWritable,
                  "value " + std::to_string(step.number) +
                      " of the array is for \"" + step.schema->name +
                      "\", which is state data");
    }
    switch (step.kind) {
      case TagStep::Kind::kLeave:
        nodes.pop_back();
        break;
      case TagStep::Kind::kNode:
        CheckElement(*step.schema, step.element, nodes.back(), step.number);
        break;
      case TagStep::Kind::kDelete:
        if (Enter(nodes.back(), step) == nullptr) FailWithoutEntry(step);
        break;
      default:
        nodes.push_back(Enter(nodes.back(), step));
    }
  }
}

void WriteTagged(Node& start, const std::vector<TagStep>& steps) {
  std::vector<Node*> nodes = {&start};
  for (const TagStep& step : steps) {
    Node& node = *nodes.back();
    switch (step.kind) {
      case TagStep::Kind::kLeave:
        nodes.pop_back();
        break;
      case TagStep::Kind::kNode:
        WriteElement(*step.schema, step.element, node);
        break;
      case TagStep::Kind::kDelete:
        if (List* list = node.ListAt(*step.schema)) list->Erase(View(step));
        break;
      case TagStep::Kind::kContainer:
        nodes.push_back(&node.MakeContainer(*step.schema));
        break;
      default:
        nodes.push_back(node.MakeList(*step.schema).Insert(View(step)).first);
    }
  }
}

}  // namespace kit::store
