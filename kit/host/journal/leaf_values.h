// The values of one leaf, pass by pass.
#ifndef KIT_HOST_JOURNAL_LEAF_VALUES_H_
#define KIT_HOST_JOURNAL_LEAF_VALUES_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/journal/entry_steps.h"
#include "kit/host/journal/place_history.h"

namespace kit::host {

// A leaf that has another value after a stretch of a pass than before it.
struct ValueStep {
  uint32_t pass = 0;
  std::optional<std::string> before;  // that was set
  std::optional<std::string> after;
  uint64_t call = 0;  // the last one that wrote it there
};

// Follows the leaf of the entry that is at `from` at the start ("": that is
// created), where the leaf is as `start` says, through the keys that the steps
// give it.
std::vector<ValueStep> ValuesOf(const std::string& leaf,
                                const std::string& from,
                                const control::Place& start,
                                const std::vector<EntryStep>& steps,
                                const std::vector<HistoryEvent>& events);

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_LEAF_VALUES_H_
