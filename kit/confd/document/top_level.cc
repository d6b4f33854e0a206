#include "kit/confd/document/top_level.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace kit::store {
namespace {

// By module name, then as the module has them.
std::unordered_map<const lysc_node*, size_t> Ranks(const Schema& schema) {
  std::vector<const SchemaNode*> nodes;
  for (const auto& child : schema.root().children) nodes.push_back(child.get());
  std::stable_sort(nodes.begin(), nodes.end(),
                   [](const SchemaNode* a, const SchemaNode* b) {
                     return a->module->name < b->module->name;
                   });
  std::unordered_map<const lysc_node*, size_t> ranks;
  for (const SchemaNode* node : nodes) {
    ranks.emplace(node->compiled, ranks.size());
  }
  return ranks;
}

}  // namespace

TopLevel::~TopLevel() {
  for (lyd_node* node : nodes_) lyd_free_tree(node);
}

void TopLevel::Add(LibyangTree first) {
  while (first != nullptr) {
    lyd_node* node = first.get();
    nodes_.push_back(node);
    lyd_node* next = node->next;
    if (next != nullptr) next->prev = node->prev;  // the last of them
    node->next = nullptr;
    node->prev = node;
    first.release();
    first.reset(next);
  }
}

LibyangTree TopLevel::Join(const Schema& schema) {
  if (nodes_.empty()) return nullptr;
  const auto ranks = Ranks(schema);
  auto rank = [&](const lyd_node* node) {
    auto known = ranks.find(node->schema);
    return known != ranks.end() ? known->second : ranks.size();
  };
  std::stable_sort(
      nodes_.begin(), nodes_.end(),
      [&](const lyd_node* a, const lyd_node* b) { return rank(a) < rank(b); });
  // The first one's link back goes to the last.
  lyd_node* before = nodes_.back();
  for (size_t i = 0; i < nodes_.size(); ++i) {
    nodes_[i]->prev = before;
    nodes_[i]->next = i + 1 < nodes_.size() ? nodes_[i + 1] : nullptr;
    before = nodes_[i];
  }
  LibyangTree tree(nodes_.front());
  nodes_.clear();
  return tree;
}

}  // namespace kit::store
