// What happens in a run, in plain structs: the processes tell it, the journal
// keeps it.
#ifndef KIT_HOST_EVENTS_H_
#define KIT_HOST_EVENTS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::host {

// Stands for a pass where the automatic upgrade did something, before all of
// them.
inline constexpr uint32_t kAutomaticUpgrade = UINT32_MAX;

// A line of the plug-in's log.
struct LogRecord {
  uint64_t call = 0;  // the number of the last call before it, 0 for none
  uint32_t pass = 0;  // 0: outside of all
  std::string text;
};

// A finished call of the C API; see control::Call for the texts.
struct CallRecord {
  uint64_t number = 0;  // from 1; 0 for one that is shown and not counted
  uint32_t pass = 0;
  std::string function;
  std::string path;
  std::string input;
  std::string output;
  int result = 0;
  int error = 0;
  std::string reason;
  uint64_t nanoseconds = 0;
};

// What a call changed; see control::Change. It comes before its call, which may
// make several.
struct ChangeRecord {
  uint64_t call = 0;  // its number
  uint32_t pass = 0;
  control::Change::Kind kind = control::Change::Kind::kValue;
  std::string list;
  std::string path;  // of the entry
  std::string old_path;
  std::string leaf;
  std::optional<std::string> before;
  std::optional<std::string> after;
  std::vector<control::LeafChange> leaves;  // of a created or deleted entry
  std::optional<std::string> default_value = {};
};

// What stands in a place that somebody asked for.
struct PlaceRecord {
  enum class When {
    kInput,   // in the configuration
    kStart,   // in the transaction, as the automatic upgrade left it
    kResult,  // in the transaction after a success
  };
  When when = When::kInput;
  uint32_t number = 0;  // of the place, from 0, in the order asked for
  control::Place place;
};

// How many entries of one list (outside of any, "/") differ after a pass or a
// run.
struct ListTotals {
  std::string list;
  uint64_t created = 0;
  uint64_t rekeyed = 0;  // the same entry under other keys
  uint64_t changed = 0;
  uint64_t deleted = 0;
  uint64_t moved = 0;  // to another place in a list that the user orders
};

struct FunctionTotals {
  std::string function;
  uint64_t calls = 0;
  uint64_t failed = 0;
};

// Calls that failed in the same way in the same place.
struct FailedCalls {
  std::string function;
  std::string node;  // the path without keys
  int error = 0;
  uint64_t count = 0;
  uint64_t number = 0;  // of the first, and its path and reason
  std::string path;
  std::string reason;
};

// A stretch of a run in one pass (0: outside of all). A pass may come in
// several.
struct PassTotals {
  uint32_t pass = 0;
  uint64_t calls = 0;
  std::vector<FunctionTotals> functions;
  std::vector<ListTotals> lists;
  std::vector<FailedCalls> failures;
  CallRecord last_failure;  // the last call that failed; number 0 for none
};

// Of the entries that a pass created, those that are deleted ones under other
// keys.
struct RekeyedEntries {
  uint32_t pass = 0;
  std::string list;
  uint64_t count = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_EVENTS_H_
