// Where an entry or leaf of a result comes from, or where it went.
#ifndef KIT_HOST_JOURNAL_EXPLANATION_H_
#define KIT_HOST_JOURNAL_EXPLANATION_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/journal/entry_steps.h"
#include "kit/host/journal/leaf_values.h"
#include "kit/host/journal/place_history.h"

namespace kit::host {

// A leaf of an entry, at its beginning and end.
struct LeafFate {
  std::string name;
  const control::Place::Leaf* start = nullptr;  // null: without a value
  const control::Place::Leaf* end = nullptr;
};

struct Explanation {
  enum class Kind {
    kKept,       // it is as the automatic upgrade left it
    kChanged,    // other values were set
    kRekeyed,    // its entry has other keys
    kCreated,    // it, or its entry, is new
    kDeleted,    // it, or its entry, was deleted
    kLost,       // the automatic upgrade did not carry it over
    kTransient,  // it was created and deleted again
    kUnset,      // a leaf that has no value at either end
    kNowhere,    // there was never such an entry
  };
  Kind kind = Kind::kNowhere;
  std::string path;  // that was asked for
  std::string leaf;  // in its entry, "" for the entry itself
  bool is_leaf = false;
  bool has_ended = false;  // the upgrade succeeded: `result` is known

  // Paths of the entry at the start and at the end; "" where it is not there.
  std::string from;
  std::string to;
  std::vector<EntryStep> steps;  // from one to the other
  // Where the entry that had the path at the start is another one than the
  // entry that has it at the end: what became of that.
  std::optional<EntryWay> namesake;

  PlaceStates states;  // input and start by `from`, result by `to`
  std::vector<control::Loss> losses;  // of it, what is in it or around it
  std::vector<ValueStep> values;      // of a leaf
  std::vector<CopySource> sources;    // of a created one
  std::vector<HistoryEvent> events;
  uint64_t events_left_out = 0;
};

// The paths of the place through the run, `path` first: those that a history
// needs for an explanation.
std::vector<std::string> PathsOf(const PlaceStates& states,
                                 const std::vector<EntryStep>& steps);

// `history` has heard of all PathsOf the place, the one asked for first.
Explanation Explain(const PlaceHistory& history,
                    const std::vector<EntryStep>& steps,
                    const std::vector<control::Loss>& losses, bool has_ended);

// The leaves that differ between start and end, defaults that hold for nothing
// set being no value.
std::vector<LeafFate> ChangedLeaves(const Explanation& explanation);

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_EXPLANATION_H_
