#include "kit/confd/tree/entry_index.h"

namespace kit::store {

const EntryIndex::Row* EntryIndex::RowAt(Position position) const {
  if (position.block >= blocks_.size()) return nullptr;
  const auto& rows = blocks_[position.block].rows;
  if (position.slot < rows.size()) return &rows[position.slot];
  // The end of one block is the beginning of the next.
  return position.block + 1 < blocks_.size()
             ? &blocks_[position.block + 1].rows[0]
             : nullptr;
}

Node* EntryIndex::At(Position position) const {
  const Row* row = RowAt(position);
  return row == nullptr ? nullptr : row->node;
}

Node* EntryIndex::At(Position position, KeyPrefix whole) const {
  const Row* row = RowAt(position);
  return row != nullptr && row->prefix == whole ? row->node : nullptr;
}

Node* EntryIndex::AtLast(KeyPrefix prefix) const {
  if (last_.block >= blocks_.size()) return nullptr;
  const auto& rows = blocks_[last_.block].rows;
  if (last_.slot >= rows.size()) return nullptr;
  const Row& row = rows[last_.slot];
  return row.prefix == prefix ? row.node : nullptr;
}

EntryIndex::Position EntryIndex::After(Position position) const {
  const size_t rows = blocks_[position.block].rows.size();
  if (position.slot >= rows) return {position.block + 1, 1};
  if (position.slot + 1 < rows) return {position.block, position.slot + 1};
  return {position.block + 1, 0};
}

void EntryIndex::FindRanks() const {
  if (ranks_valid_) return;
  size_t first = 0;
  for (Block& block : blocks_) {
    block.first_rank = first;
    first += block.rows.size();
  }
  ranks_valid_ = true;
}

size_t EntryIndex::RankOf(Position position) const {
  if (position.block >= blocks_.size()) return size_;
  FindRanks();
  return blocks_[position.block].first_rank + position.slot;
}

Node* EntryIndex::AtRank(size_t rank) const {
  FindRanks();
  auto holds = [&](size_t block) {
    return block < blocks_.size() && blocks_[block].first_rank <= rank &&
           rank - blocks_[block].first_rank < blocks_[block].rows.size();
  };
  size_t low = 0;
  if (holds(last_.block)) {
    low = last_.block;
  } else {
    size_t high = blocks_.size();
    while (low + 1 < high) {
      const size_t middle = (low + high) / 2;
      (blocks_[middle].first_rank <= rank ? low : high) = middle;
    }
  }
  last_ = {low, rank - blocks_[low].first_rank};
  return blocks_[low].rows[last_.slot].node;
}

void EntryIndex::NoteLast(Block& block) {
  if (block.rows.empty()) return;
  block.last = block.rows[block.rows.size() - 1].prefix;
}

void EntryIndex::Split(Arena& arena, Position& position) {
  ArenaArray<Row>& rows = blocks_[position.block].rows;
  if (position.slot == 0) {
    blocks_.Insert(arena, position.block, Block{});
    return;
  }
  Block upper{};
  // Entries that come in their order leave full blocks behind.
  const size_t kept =
      position.slot == rows.size() ? rows.size() : kBlockSize / 2;
  for (size_t i = kept; i < rows.size(); ++i) {
    upper.rows.Insert(arena, upper.rows.size(), rows[i]);
  }
  while (rows.size() > kept) rows.Erase(rows.size() - 1);
  NoteLast(blocks_[position.block]);
  NoteLast(upper);
  blocks_.Insert(arena, position.block + 1, upper);
  if (position.slot >= kept) {
    position = {position.block + 1, position.slot - kept};
  }
}

void EntryIndex::Insert(Arena& arena, Position position, KeyPrefix prefix,
                        Node* node) {
  if (blocks_.empty()) blocks_.Insert(arena, 0, Block{});
  const bool at_front = position.slot == 0 && position.block > 0;
  if (at_front && blocks_[position.block - 1].rows.size() < kBlockSize) {
    --position.block;
    position.slot = blocks_[position.block].rows.size();
  } else if (blocks_[position.block].rows.size() == kBlockSize) {
    Split(arena, position);
  }
  Block& block = blocks_[position.block];
  block.rows.Insert(arena, position.slot, {prefix, node});
  NoteLast(block);
  ++size_;
  ranks_valid_ = false;
  last_ = position;
}

void EntryIndex::Erase(Arena& arena, Position position) {
  Block& block = blocks_[position.block];
  block.rows.Erase(position.slot);
  NoteLast(block);
  if (block.rows.empty()) {
    block.rows.Release(arena);
    blocks_.Erase(position.block);
  }
  --size_;
  ranks_valid_ = false;
  last_ = position;
}

void EntryIndex::Release(Arena& arena) {
  for (Block& block : blocks_) block.rows.Release(arena);
  blocks_.Release(arena);
  size_ = 0;
}

}  // namespace kit::store
