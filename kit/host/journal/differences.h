// What differs after a stretch of a run, from the changes on the way.
#ifndef KIT_HOST_JOURNAL_DIFFERENCES_H_
#define KIT_HOST_JOURNAL_DIFFERENCES_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/events.h"

namespace kit::host {

struct LeafDifference : control::LeafChange {
  uint32_t pass = 0;  // that last changed it, kAutomaticUpgrade among them
  std::string old_path = {};  // its own, where it was a leaf of another entry
};

// An entry (outside of any list, "/") that is not as it was.
struct EntryDifference {
  enum class Kind { kCreated, kChanged, kDeleted, kRekeyed, kMoved };
  Kind kind;
  std::string list;
  std::string path;
  std::string old_path;  // of a re-keyed one
  // Those that differ; of a created or deleted entry all that were set.
  std::vector<LeafDifference> leaves = {};
  uint32_t pass = 0;         // that last created, deleted, re-keyed or moved it
  uint64_t same_leaves = 0;  // of a re-keyed one, those with the same values
};

// As the comparison of the start with the end has it.
EntryDifference ToDifference(control::EntryChange change);

// The same with one re-keyed entry for each deleted and created one that are
// the same, in the created one's place.
std::vector<EntryDifference> PairMoves(
    std::vector<EntryDifference> differences);

// Adds up changes. What comes and goes in between is no difference.
class DifferenceBuilder {
 public:
  void Add(const ChangeRecord& change);

  // What differs since the last time, in the order of the paths, entries that
  // were given other keys as one. Begins anew.
  std::vector<EntryDifference> Take();

 private:
  struct Leaf {
    std::optional<std::string> before;
    std::optional<std::string> after;
    std::optional<std::string> default_value;
    uint32_t pass = 0;
    std::string old_path;
  };
  struct Entry {
    std::string list;
    uint32_t pass = 0;
    bool was_there = true;
    bool is_there = true;
    bool has_moved = false;
    std::string old_path;            // "" while it has the keys that it had
    std::vector<std::string> order;  // of the leaves, as they came
    std::map<std::string, Leaf> leaves;

    // `before`: its value in the change, before it.
    Leaf& LeafAt(const std::string& name,
                 const std::optional<std::string>& before,
                 const std::optional<std::string>& default_value,
                 uint32_t pass);
  };

  Entry& EntryAt(const std::string& path, const std::string& list);
  void Create(const ChangeRecord& change);
  void Delete(const ChangeRecord& change);
  void Rename(const ChangeRecord& change);
  void RenameBelow(const ChangeRecord& change);
  void ChangeValue(const ChangeRecord& change);
  static std::optional<EntryDifference> DifferenceOf(const std::string& path,
                                                     const Entry& entry);

  std::map<std::string, Entry> entries_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_DIFFERENCES_H_
