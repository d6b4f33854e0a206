#include "kit/confd/tree/index_order.h"

#include <algorithm>

namespace kit::store {
namespace {

KeyView ViewOf(const std::vector<Value>& values) {
  return {values.data(), values.size()};
}

bool IsLess(const std::vector<Value>& a, const std::vector<Value>& b) {
  return Compare(ViewOf(a), ViewOf(b)) < 0;
}

}  // namespace

IndexOrder::IndexOrder(const SecondaryIndex& index, const List* list)
    : index_(index) {
  if (list == nullptr) return;
  for (const Node& entry : *list) {
    Row row;
    for (const SchemaNode* leaf : index.leaves) {
      row.push_back(entry.LeafValue(*leaf).value_or(Value()));
    }
    keys_.push_back(entry.Keys());
    row.insert(row.end(), keys_.back().begin(), keys_.back().end());
    rows_.push_back(std::move(row));
  }
  std::sort(rows_.begin(), rows_.end(), IsLess);
  std::sort(keys_.begin(), keys_.end(), IsLess);
}

bool IndexOrder::IsSorted(const Node& entry) const {
  return std::binary_search(keys_.begin(), keys_.end(), entry.Keys(), IsLess);
}

const Node* IndexOrder::Next(const List& list) {
  const size_t leaves = index_.leaves.size();
  while (next_ < rows_.size()) {
    const Row& row = rows_[next_++];
    const KeyView keys{row.data() + leaves, row.size() - leaves};
    if (const Node* entry = list.Find(keys)) return entry;
  }
  const Node* entry = added_ ? list.After(*added_) : list.First();
  for (; entry != nullptr; entry = list.After(*added_)) {
    if (!added_) added_.emplace();
    list.SetPlace(*entry, *added_);
    if (!IsSorted(*entry)) return entry;
  }
  return nullptr;
}

const Node* IndexOrder::Find(const List& list, KeyView values, bool or_same) {
  const size_t leaves = index_.leaves.size();
  const bool goes_past = values.size == leaves && !or_same;
  const auto found =
      std::partition_point(rows_.begin(), rows_.end(), [&](const Row& row) {
        const KeyView whole = ViewOf(row);
        const KeyView own{row.data(), leaves};
        return Compare(goes_past ? own : whole, values) <= 0;
      });
  next_ = static_cast<size_t>(found - rows_.begin());
  added_.reset();
  return Next(list);
}

}  // namespace kit::store
