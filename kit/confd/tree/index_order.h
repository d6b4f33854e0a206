// The entries of a list as a secondary index has them.
#ifndef KIT_CONFD_TREE_INDEX_ORDER_H_
#define KIT_CONFD_TREE_INDEX_ORDER_H_

#include <cstddef>
#include <optional>
#include <vector>

#include "kit/confd/tree/tree.h"

namespace kit::store {

// A walk in that order: by the values of the index's leaves, then by key. It is
// that of the beginning. Entries that are new since come behind all others, in
// the order of the list.
class IndexOrder {
 public:
  // `list` may be null: without entries.
  IndexOrder(const SecondaryIndex& index, const List* list);

  const SecondaryIndex& index() const { return index_; }

  // Moves to the next entry; null at the end.
  const Node* Next(const List& list);
  // Moves to the first of the sorted entries behind these values of the leaves,
  // or with `or_same` at them. Fewer values than leaves stand before all that
  // begins with them.
  const Node* Find(const List& list, KeyView values, bool or_same);

 private:
  // The values of the leaves, kNoExists without one, and the keys.
  using Row = std::vector<Value>;

  bool IsSorted(const Node& entry) const;

  const SecondaryIndex& index_;
  std::vector<Row> rows_;
  std::vector<std::vector<Value>> keys_;  // of all rows, in their own order
  size_t next_ = 0;
  // The last of the new entries that the walk has met.
  std::optional<List::Place> added_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_INDEX_ORDER_H_
