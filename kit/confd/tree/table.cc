#include "kit/confd/tree/table.h"

#include <string_view>
#include <utility>

namespace kit::store {
namespace {

std::vector<std::string_view> Steps(std::string_view path) {
  std::vector<std::string_view> steps;
  while (!path.empty()) {
    const size_t end = path.find('/');
    steps.push_back(path.substr(0, end));
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
  }
  return steps;
}

// Null where there is none, or several.
const SchemaNode* ChildNamed(const Schema& schema, const SchemaNode& parent,
                             std::string_view step) {
  const size_t colon = step.find(':');
  const bool has_prefix = colon != std::string_view::npos;
  std::string reason;
  return schema.FindChild(parent, has_prefix ? step.substr(0, colon) : "",
                          has_prefix ? step.substr(colon + 1) : step, nullptr,
                          reason);
}

}  // namespace

std::optional<Table> Table::Find(const Schema& schema, const std::string& list,
                                 const std::vector<std::string>& leaves) {
  if (list.empty() || list.front() != '/') return std::nullopt;
  Table table;
  const SchemaNode* node = &schema.root();
  for (const std::string_view step : Steps(std::string_view(list).substr(1))) {
    node = ChildNamed(schema, *node, step);
    if (node == nullptr) return std::nullopt;
    table.steps_.push_back(node);
  }
  if (node->kind != NodeKind::kList) return std::nullopt;
  for (const std::string& leaf : leaves) {
    std::optional<LeafPlace> place = FindLeaf(schema, *node, leaf);
    if (!place) return std::nullopt;
    table.leaves_.push_back(std::move(*place));
  }
  return table;
}

std::optional<Table::LeafPlace> Table::FindLeaf(const Schema& schema,
                                                const SchemaNode& list,
                                                const std::string& path) {
  LeafPlace place;
  const SchemaNode* node = &list;
  for (const std::string_view step : Steps(path)) {
    if (step == "..") {
      // Only at the beginning.
      if (!place.containers.empty() || node->parent == nullptr) {
        return std::nullopt;
      }
      node = node->parent;
      ++place.levels_up;
      continue;
    }
    node = ChildNamed(schema, *node, step);
    if (node == nullptr) return std::nullopt;
    if (node->IsContainer()) place.containers.push_back(node);
    const bool leads_on = node->IsContainer() || node->kind == NodeKind::kLeaf;
    if (!leads_on) return std::nullopt;
  }
  if (node->kind != NodeKind::kLeaf) return std::nullopt;
  place.node = node;
  return place;
}

void Table::ForEachEntry(const Node& root,
                         const std::function<void(const Node&)>& visit) const {
  Walk(root, 0, visit);
}

void Table::Walk(const Node& node, size_t step,
                 const std::function<void(const Node&)>& visit) const {
  const SchemaNode& schema = *steps_[step];
  if (schema.IsContainer()) {
    const Node* container = node.FindContainer(schema);
    if (container != nullptr) Walk(*container, step + 1, visit);
    return;
  }
  const List* list = node.ListAt(schema);
  if (list == nullptr) return;
  for (const Node& entry : *list) {
    if (step + 1 == steps_.size()) {
      visit(entry);
    } else {
      Walk(entry, step + 1, visit);
    }
  }
}

Table::Cell Table::Read(const Node& entry, size_t leaf) const {
  const LeafPlace& place = leaves_[leaf];
  const Node* holder = &entry;
  for (size_t i = 0; i < place.levels_up; ++i) holder = holder->parent;
  for (const SchemaNode* container : place.containers) {
    // One without presence is made by this, which changes nothing.
    holder = holder->Container(*container);
    if (holder == nullptr) return {};
  }
  std::optional<Value> set = holder->SetValue(*place.node);
  if (set) return {std::move(set), false};
  std::optional<Value> standing = holder->LeafValue(*place.node);
  const bool by_default = standing.has_value();
  return {std::move(standing), by_default};
}

}  // namespace kit::store
