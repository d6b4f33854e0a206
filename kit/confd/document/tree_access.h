// How the writer and the export go through a tree of data.
#ifndef KIT_CONFD_DOCUMENT_TREE_ACCESS_H_
#define KIT_CONFD_DOCUMENT_TREE_ACCESS_H_

#include <algorithm>
#include <optional>

#include "kit/confd/tree/tree.h"

namespace kit::store {

// What was set in a leaf, keys of entries among them; tests false without it.
inline std::optional<Value> SetLeafOf(const Node& node,
                                      const SchemaNode& leaf) {
  return node.SetValue(leaf);
}

// Calls `visit` with each value that was set in a leaf-list, in order.
template <typename Visit>
void ForEachSetValue(const Node& node, const SchemaNode& leaf_list,
                     const Visit& visit) {
  if (!node.IsSet(leaf_list)) return;
  for (const Value& value : node.LeafListValues(leaf_list)) visit(value);
}

// Calls `visit` with each entry of a list, in the list's order.
template <typename Visit>
void ForEachEntry(const Node& node, const SchemaNode& list,
                  const Visit& visit) {
  const List* entries = node.ListAt(list);
  if (entries == nullptr) return;
  for (const Node& entry : *entries) visit(entry);
}

// Null where there is none; one without presence may be empty.
inline const Node* ContainerOf(const Node& node, const SchemaNode& container) {
  return node.FindContainer(container);
}

// Whether anything below the node would be written. A leaf-list may be set to
// no values.
inline bool HasContent(const Node& node) {
  return std::any_of(node.schema->children.begin(), node.schema->children.end(),
                     [&node](const auto& child) {
                       if (!node.IsSet(*child)) return false;
                       switch (child->kind) {
                         case NodeKind::kLeafList:
                           return !node.LeafListValues(*child).empty();
                         case NodeKind::kContainer:
                           return HasContent(*node.FindContainer(*child));
                         default:
                           return true;
                       }
                     });
}

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TREE_ACCESS_H_
