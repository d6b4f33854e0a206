#include "kit/confd/tree/leaf_count.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

namespace kit::store {
namespace {

class Counter {
 public:
  std::vector<LeafCount> Run(const Node& root) {
    Entry(root);
    return std::move(counts_);
  }

 private:
  void Entry(const Node& entry) {
    const auto [known, is_new] = index_.emplace(entry.schema, counts_.size());
    if (is_new) counts_.push_back({entry.schema});
    const size_t at = known->second;
    ++counts_[at].entries;
    if (entry.is_entry()) counts_[at].leaves += entry.schema->key_count;
    Content(entry, at);
  }

  void Content(const Node& node, size_t at) {
    for (const auto& child : node.schema->children) {
      if (child->kind == NodeKind::kList) {
        const List* const list = node.ListAt(*child);
        if (list == nullptr) continue;
        for (const Node& entry : list->ByKey()) Entry(entry);
      } else if (child->IsContainer()) {
        const Node* const container = node.FindContainer(*child);
        if (container == nullptr) continue;
        if (child->kind == NodeKind::kPresenceContainer) ++counts_[at].leaves;
        Content(*container, at);
      } else if (node.IsSet(*child)) {
        ++counts_[at].leaves;
      }
    }
  }

  std::vector<LeafCount> counts_;
  std::unordered_map<const SchemaNode*, size_t> index_;
};

}  // namespace

std::vector<LeafCount> CountLeaves(const Data& data) {
  return Counter().Run(data.root());
}

}  // namespace kit::store
