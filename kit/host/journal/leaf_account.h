// What became of a number of leaves, and by whom.
#ifndef KIT_HOST_JOURNAL_LEAF_ACCOUNT_H_
#define KIT_HOST_JOURNAL_LEAF_ACCOUNT_H_

#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "kit/host/events.h"

namespace kit::host {

// A leaf is what control::LeafCount counts. One that nobody sets any more, as
// the model's default holds, has not been dropped.
enum class Fate {
  kKept,     // the same value in the same place
  kMoved,    // in an entry that got other keys, these keys among them
  kChanged,  // another value, in whatever place
  kDropped,  // neither a value nor a default
};

// Who did it: a pass (0: the plug-in outside of all), or kAutomaticUpgrade;
// nothing for what nobody touched.
using Agent = std::optional<uint32_t>;

// The one that did it last, where several did.
struct LedgerRow {
  Fate fate = Fate::kKept;
  Agent by;
  uint64_t leaves = 0;
  uint64_t by_default = 0;  // of them, those that are not set any more
};

// Adds up what became of the leaves of one list of the input, or of all.
class LeafAccount {
 public:
  void Add(Fate fate, Agent by, uint64_t leaves = 1, bool by_default = false);
  void Add(const LeafAccount& other);

  uint64_t total() const;
  // By fate, and by agent in the order of the run.
  std::vector<LedgerRow> Rows() const;

  // Of what was touched, how much the list no longer holds where it was, and
  // how much it holds now.
  uint64_t gone = 0;
  uint64_t arrived = 0;
  uint64_t added = 0;  // that the input has not

 private:
  std::map<std::pair<Fate, uint64_t>, LedgerRow> rows_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_LEAF_ACCOUNT_H_
