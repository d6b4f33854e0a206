// The entries of a list in one order: prefixes of their keys side by side in
// blocks, so that neither a search nor a walk goes from pointer to pointer.
#ifndef KIT_CONFD_TREE_ENTRY_INDEX_H_
#define KIT_CONFD_TREE_ENTRY_INDEX_H_

#include <cstddef>
#include <cstdint>

#include "kit/confd/tree/arena.h"
#include "kit/confd/tree/cell.h"

namespace kit::store {

class Node;

class EntryIndex {
 public:
  // A place between or at entries; valid until the index changes.
  struct Position {
    size_t block = 0;
    size_t slot = 0;
  };

  size_t size() const { return size_; }
  Position Begin() const { return {0, 0}; }
  // Null at the end.
  Node* At(Position position) const;
  // The same where the prefix says all of an entry's keys: null unless they are
  // those of the entry there.
  Node* At(Position position, KeyPrefix whole) const;
  Position After(Position position) const;
  // Where the last search ended, or what was last put in or asked for.
  Position Last() const { return last_; }
  // The entry there; null where another prefix stands there, or nothing.
  Node* AtLast(KeyPrefix prefix) const;
  // The entry number `rank`, from 0, which must be there.
  Node* AtRank(size_t rank) const;
  // How many entries stand before the position.
  size_t RankOf(Position position) const;

  // The first position whose entry does not stand before the one looked for:
  // `compare(node)` tells, negative, zero or positive, how the entry stands to
  // it where the prefixes are the same.
  template <typename CompareNode>
  Position LowerBound(KeyPrefix prefix, const CompareNode& compare) const;

  void Insert(Arena& arena, Position position, KeyPrefix prefix, Node* node);
  void Erase(Arena& arena, Position position);
  void Release(Arena& arena);

 private:
  struct Row {
    KeyPrefix prefix;
    Node* node;
  };
  struct Block {
    ArenaArray<Row> rows;
    size_t first_rank;  // while ranks_valid_
    // Of its last row. A search goes through these alone, which lie together.
    KeyPrefix last;
  };
  static constexpr size_t kBlockSize = 256;

  // Whether the row stands before what is looked for.
  template <typename CompareNode>
  static bool IsBefore(const Row& row, KeyPrefix prefix,
                       const CompareNode& compare) {
    if (!(row.prefix == prefix)) return row.prefix < prefix;
    return compare(*row.node) < 0;
  }
  // Whether the search ends where the last one did, as when an entry is put in
  // that was just looked for.
  template <typename CompareNode>
  bool StandsAtLast(KeyPrefix prefix, const CompareNode& compare) const;
  const Row* RowAt(Position position) const;
  void FindRanks() const;
  static void NoteLast(Block& block);
  void Split(Arena& arena, Position& position);

  ArenaArray<Block> blocks_;
  size_t size_ = 0;
  mutable bool ranks_valid_ = false;
  // Where the last search ended: the next one is mostly for what stands there
  // or behind it.
  mutable Position last_;
};

template <typename CompareNode>
bool EntryIndex::StandsAtLast(KeyPrefix prefix,
                              const CompareNode& compare) const {
  if (last_.block >= blocks_.size()) return false;
  const auto& rows = blocks_[last_.block].rows;
  return last_.slot > 0 && last_.slot < rows.size() &&
         !IsBefore(rows[last_.slot], prefix, compare) &&
         IsBefore(rows[last_.slot - 1], prefix, compare);
}

template <typename CompareNode>
EntryIndex::Position EntryIndex::LowerBound(KeyPrefix prefix,
                                            const CompareNode& compare) const {
  if (size_ == 0) return {};
  if (StandsAtLast(prefix, compare)) return last_;
  // The block whose last row is the first not to stand before it.
  size_t low = 0;
  size_t high = blocks_.size();
  auto block_is_before = [&](size_t block) {
    const Block& b = blocks_[block];
    if (!(b.last == prefix)) return b.last < prefix;
    return compare(*b.rows[b.rows.size() - 1].node) < 0;
  };
  if (last_.block < high) {
    const bool is_before = block_is_before(last_.block);
    if (is_before) {
      low = last_.block + 1;
      if (low < high && !block_is_before(low)) high = low;
    } else {
      high = last_.block;
      if (high > 0 && block_is_before(high - 1)) low = high;
    }
  }
  while (low < high) {
    const size_t middle = (low + high) / 2;
    if (block_is_before(middle)) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  if (low == blocks_.size()) {
    // Behind everything: at the end of the last block.
    last_ = {low - 1, blocks_[low - 1].rows.size()};
    return last_;
  }
  const auto& rows = blocks_[low].rows;
  size_t first = 0;
  size_t last = rows.size();
  if (last_.block == low) {
    for (size_t guess : {last_.slot, last_.slot + 1}) {
      if (guess >= last || guess < first) continue;
      if (IsBefore(rows[guess], prefix, compare)) {
        first = guess + 1;
      } else {
        last = guess;
      }
    }
  }
  while (first < last) {
    const size_t middle = (first + last) / 2;
    if (IsBefore(rows[middle], prefix, compare)) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  last_ = {low, first};
  return last_;
}

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_ENTRY_INDEX_H_
