// Counts what a program changes, while it does so.
#ifndef KIT_HOST_PROCESS_CHANGE_COUNTER_H_
#define KIT_HOST_PROCESS_CHANGE_COUNTER_H_

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/events.h"

namespace kit::host {

// Entries are counted once for each pass that changes them: as created or
// deleted where they are there at only one of its two ends. An entry that a
// pass deletes and creates again counts as both.
class ChangeCounter {
 public:
  void Add(const control::Change& change);

  // What has been counted since the last time, by list in the order of its
  // first change, and begins anew for another pass.
  std::vector<ListTotals> Take(uint32_t next_pass);

  // The pass that created an entry which is there now; 0 for one that none of
  // them did, or that was created outside of all.
  uint32_t CreatorOf(uint64_t entry) const;

 private:
  ListTotals& TotalsOf(const control::Change& change);
  void Delete(const control::Change& change);
  void ChangeValue(const control::Change& change);

  uint32_t pass_ = 0;
  std::vector<ListTotals> totals_;
  std::unordered_map<uint64_t, size_t> index_;       // of the list in totals_
  std::unordered_map<uint64_t, uint32_t> creators_;  // by entry
  std::unordered_set<uint64_t> changed_;             // entries, in this pass
  uint64_t last_changed_ = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_CHANGE_COUNTER_H_
