// What a run did to one entry or leaf, of all that it did.
#ifndef KIT_HOST_JOURNAL_PLACE_HISTORY_H_
#define KIT_HOST_JOURNAL_PLACE_HISTORY_H_

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "kit/host/events.h"
#include "kit/host/journal/entry_steps.h"
#include "kit/host/journal/view.h"

namespace kit::host {

// A call that wrote to the place, or was to.
struct Touch {
  CallRecord call;
  std::vector<ChangeRecord> changes;  // of the place, made by the call
};

// Calls of one pass that read the place in the same way.
struct Reads {
  uint32_t pass = 0;
  std::string function;
  std::string path;
  int error = 0;  // of calls that failed
  std::string reason;
  uint64_t count = 0;
  uint64_t first = 0;  // number of the first call
};

// In the order of their calls. A log record is the last before a Touch, or the
// first after it.
using HistoryEvent = std::variant<LogRecord, Touch, Reads>;

// What stood there; `result` after a success alone.
struct PlaceStates {
  control::Place input;
  control::Place start;
  std::optional<control::Place> result;
};

// What another entry's leaves were read for: the same values were written to
// the place before anything else of the kind was read.
struct CopySource {
  std::string entry;
  std::vector<std::string> leaves;
};

// The paths that the run is asked for are those that one entry had, or of one
// leaf in it. Events that do not touch them are not kept.
class PlaceHistory : public JournalView {
 public:
  // Touches that are kept; the rest is counted.
  static constexpr size_t kMostTouches = 1000;

  void Add(const PlaceRecord& record) override;
  void Add(const LogRecord& record) override;
  void Add(const CallRecord& call) override;
  void Add(const ChangeRecord& change) override;

  const std::vector<PlaceStates>& states() const { return states_; }
  const std::vector<HistoryEvent>& events() const { return events_; }
  uint64_t touches_left_out() const { return left_out_; }
  const std::vector<CopySource>& sources() const { return sources_; }
  // To be called after the last change, once.
  std::vector<EntryStep> TakeSteps() { return steps_.Take(); }

 private:
  bool IsWanted(const ChangeRecord& change) const;
  bool IsWanted(const std::string& path) const;
  void Keep(const CallRecord& call, std::vector<ChangeRecord> changes);
  void CountRead(const CallRecord& call);
  void NoteRead(const CallRecord& call);
  void NoteCopy(const CallRecord& call);

  std::vector<PlaceStates> states_;
  std::set<std::string> lists_;
  std::set<std::string> entries_;
  std::string leaf_;
  EntrySteps steps_;
  std::vector<HistoryEvent> events_;
  uint64_t touches_ = 0;
  uint64_t left_out_ = 0;
  std::map<std::tuple<uint32_t, std::string, std::string, int>, size_t> reads_;
  std::optional<LogRecord> record_before_;
  bool wants_record_ = false;
  std::vector<ChangeRecord> changes_;  // of the call that is under way
  // By leaf, what other entries of the list were read last in this pass.
  struct OtherRead {
    std::string entry;
    std::string value;
  };
  uint32_t read_pass_ = 0;
  std::map<std::string, OtherRead> other_reads_;
  std::vector<CopySource> sources_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_PLACE_HISTORY_H_
