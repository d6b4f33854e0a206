// A leaf's value in 8 bytes, as records hold it.
#ifndef KIT_CONFD_TREE_CELL_H_
#define KIT_CONFD_TREE_CELL_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/confd/model/leaf_type.h"
#include "kit/confd/model/value.h"
#include "kit/confd/tree/arena.h"

namespace kit::store {

struct SchemaNode;

// What stands in a record for one leaf. What it means the leaf's type says:
// the number itself, a short text, or where the value stands in the arena.
using Cell = uint64_t;

// All functions take the leaf's type with the cell. The value must be of it.
Cell MakeCell(Arena& arena, const LeafType& type, const Value& value);
Value ValueOf(const LeafType& type, Cell cell);
// As Compare(ValueOf(type, cell), value).
int Compare(const LeafType& type, Cell cell, const Value& value);
// Whether it is the cell of that value.
bool Holds(const LeafType& type, Cell cell, const Value& value);
bool AreEqual(const LeafType& type, Cell a, Cell b);
// Gives back what the cell points to, unless another tree may use it too.
void FreeCell(Arena& arena, const LeafType& type, Cell cell);

// The same for the values of a leaf-list.
Cell MakeListCell(Arena& arena, const LeafType& type,
                  const std::vector<Value>& values);
std::vector<Value> ValuesOf(const LeafType& type, Cell cell);
void FreeListCell(Arena& arena, const LeafType& type, Cell cell);

// The beginning of an entry's keys as a number that orders as they do.
struct KeyPrefix {
  uint64_t high = 0;
  uint64_t low = 0;
};
inline bool operator<(KeyPrefix a, KeyPrefix b) {
  return a.high != b.high ? a.high < b.high : a.low < b.low;
}
inline bool operator==(KeyPrefix a, KeyPrefix b) {
  return a.high == b.high && a.low == b.low;
}

// Collects the prefix key by key.
class KeyPrefixBuilder {
 public:
  void Add(const LeafType& type, const Value& key);
  KeyPrefix prefix() const { return {words_[0], words_[1]}; }
  // Whether nothing of the keys is missing in it.
  bool is_whole() const { return is_whole_; }
  // How many of the keys, from the first, are in it as a whole: entries with
  // the same prefix have the same ones.
  size_t whole_keys() const { return whole_keys_; }

 private:
  static constexpr size_t kSize = 16;
  void AddNumber(uint64_t number, size_t bytes);

  uint64_t words_[2] = {0, 0};
  size_t used_ = 0;
  bool is_whole_ = true;
  size_t whole_keys_ = 0;
};

KeyPrefixBuilder PrefixOf(const SchemaNode& list, KeyView keys);

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_CELL_H_
