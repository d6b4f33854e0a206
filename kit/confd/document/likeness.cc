#include "kit/confd/document/likeness.h"

#include <cstdint>
#include <string_view>

#include "kit/confd/document/tree_access.h"

namespace kit::store {
namespace {

void AddNumber(uint64_t number, std::string& out) {
  out.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void AddText(std::string_view text, std::string& out) {
  AddNumber(text.size(), out);
  out += text;
}

void AddValue(const Value& value, std::string& out) {
  out += static_cast<char>(value.type());
  out += static_cast<char>(value.length());
  AddNumber(value.bits(), out);
  AddText(value.text(), out);
}

// All that constraints may look at: equal texts come from nodes alike.
void Describe(const Node& node, std::string& out) {
  out += node.Shape();
  for (const auto& child : node.schema->children) {
    if (child->kind == NodeKind::kLeaf) {
      if (!child->decides) continue;
      if (const auto value = SetLeafOf(node, *child)) AddValue(*value, out);
    } else if (child->IsContainer()) {
      const Node* container = ContainerOf(node, *child);
      if (container != nullptr) Describe(*container, out);
    } else if (child->kind == NodeKind::kList) {
      const List* list = node.ListAt(*child);
      if (list == nullptr) continue;
      AddNumber(list->size(), out);
      for (const Node& entry : *list) Describe(entry, out);
    } else if (child->kind == NodeKind::kLeafList && node.IsSet(*child)) {
      // No value may be there twice.
      const std::vector<Value> values = node.LeafListValues(*child);
      AddNumber(values.size(), out);
      for (const Value& value : values) AddValue(value, out);
    }
  }
}

}  // namespace

bool Likeness::IsNew(const Node& entry) {
  description_.clear();
  Describe(entry, description_);
  if (seen_.count(description_) > 0) return false;
  seen_.insert(description_);
  return true;
}

}  // namespace kit::store
