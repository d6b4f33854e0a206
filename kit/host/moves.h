// Entries that an upgrade gave other keys: deleted under one key and created
// under another, with mostly the same in them.
#ifndef KIT_HOST_MOVES_H_
#define KIT_HOST_MOVES_H_

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::host {

// The keys of a key path's last entry, as they stand there: "{1 a}" has 1 and
// a, quoted ones keep their quotes.
std::vector<std::string_view> KeysOf(std::string_view path);

// Looks for the pairs among the created and deleted entries of one list. Of an
// entry it keeps a few bytes for each leaf. The time that it takes grows in
// proportion to their number.
class MoveFinder {
 public:
  // An entry that was created or deleted, and what was set in it: a range of
  // control::LeafChange. `id` stands for it in Pairs.
  template <typename Leaves>
  void Add(control::ChangeKind kind, std::string_view path,
           const Leaves& leaves, uint64_t id) {
    const std::vector<std::string_view> keys = KeysOf(path);
    Entry& entry = Begin(kind, keys, id);
    for (const control::LeafChange& leaf : leaves) AddLeaf(leaf, entry);
    if (keys.empty()) return;
    for (const control::LeafChange& leaf : leaves) {
      AddRepeat(leaf, keys.front(), entry);
    }
  }
  void Add(const control::EntryChange& entry, uint64_t id) {
    Add(entry.kind, entry.path, entry.leaves, id);
  }

  // Deleted and created; each entry is in at most one. First those that differ
  // in one key, the first of the keys before the others, then those whose
  // content is the same, then those that are left in the same order. At least
  // half of the leaves of a pair have the same values; where both repeat the
  // first key of their entry, these count as the same.
  std::vector<std::pair<uint64_t, uint64_t>> Pairs() const;

 private:
  struct Entry {
    uint64_t id;
    size_t first;  // in hashes_: of the keys, then of the leaves in order,
                   // then of the names of those that repeat the first key
    uint32_t keys;
    uint32_t leaves;
    uint32_t repeats;
  };

  class Matching;

  Entry& Begin(control::ChangeKind kind,
               const std::vector<std::string_view>& keys, uint64_t id);
  void AddLeaf(const control::LeafChange& leaf, Entry& entry);
  void AddRepeat(const control::LeafChange& leaf, std::string_view key,
                 Entry& entry);

  std::vector<uint32_t> hashes_;
  std::vector<Entry> created_;
  std::vector<Entry> deleted_;
};

}  // namespace kit::host

#endif  // KIT_HOST_MOVES_H_
