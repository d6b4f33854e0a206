#include "kit/confd/tree/choices.h"

#include <algorithm>
#include <string>

#include "kit/confd/model/error.h"

namespace kit::store {
namespace {

// The name up to the next slash, which is taken off the path with it.
std::string_view TakeName(std::string_view& path) {
  const size_t end = std::min(path.find('/'), path.size());
  const std::string_view name = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return name;
}

template <typename Named>
const Named& FindNamed(const std::vector<Named>& all, std::string_view name,
                       const char* what) {
  auto found = std::find_if(all.begin(), all.end(),
                            [&](const Named& one) { return one.name == name; });
  if (found == all.end()) {
    throw Error(ErrorCode::kBadPath, "it has no " + std::string(what) + " \"" +
                                         std::string(name) + "\"");
  }
  return *found;
}

bool IsSet(const Node& node, const SchemaNode::Case& one) {
  const auto& children = node.schema->children;
  return std::any_of(children.begin(), children.end(), [&](const auto& child) {
    const auto& cases = child->cases;
    return node.IsSet(*child) &&
           std::any_of(cases.begin(), cases.end(), [&](const auto& own) {
             return own.chosen == one.compiled;
           });
  });
}

HoldingCase CaseOf(const Node& node, const SchemaNode::Choice& choice) {
  for (const SchemaNode::Case& one : choice.cases) {
    if (IsSet(node, one)) return {&one, false};
  }
  for (const SchemaNode::Case& one : choice.cases) {
    if (one.is_default) return {&one, true};
  }
  throw Error(ErrorCode::kNoExists,
              "no case of the choice \"" + choice.name + "\" holds");
}

}  // namespace

HoldingCase FindCase(const Node& node, std::string_view choice) {
  const std::vector<SchemaNode::Choice>* choices = &node.schema->choices;
  const SchemaNode::Choice* found =
      &FindNamed(*choices, TakeName(choice), "choice");
  // Both names first: a wrong one is wrong whatever holds.
  std::vector<std::pair<const SchemaNode::Choice*, const SchemaNode::Case*>>
      around;
  while (!choice.empty()) {
    const SchemaNode::Case& one =
        FindNamed(found->cases, TakeName(choice), "case");
    around.emplace_back(found, &one);
    found = &FindNamed(one.choices, TakeName(choice), "choice");
  }
  for (const auto& [outer, one] : around) {
    if (CaseOf(node, *outer).holds != one) {
      throw Error(ErrorCode::kNoExists,
                  "the case \"" + one->name + "\" does not hold");
    }
  }
  return CaseOf(node, *found);
}

}  // namespace kit::store
