// What a plug-in did, in order, and what its passes come to.
#ifndef KIT_HOST_JOURNAL_JOURNAL_H_
#define KIT_HOST_JOURNAL_JOURNAL_H_

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "kit/host/events.h"

namespace kit::host {

using Event = std::variant<LogRecord, CallRecord, ChangeRecord>;

class Journal {
 public:
  void Add(LogRecord record) { events_.push_back(std::move(record)); }
  // The calls and changes of a long run take much memory, so that they are
  // added only when somebody wants to see them; totals are always there.
  void Add(CallRecord call) { events_.push_back(std::move(call)); }
  void Add(ChangeRecord change) { events_.push_back(std::move(change)); }
  // Adds to what there is of its pass.
  void Add(const PassTotals& totals);
  void Add(const RekeyedEntries& entries);

  const std::vector<Event>& events() const { return events_; }
  std::vector<std::string> LogTexts() const;
  // The last one of all passes; number 0 for none.
  CallRecord LastFailure() const;
  // By the pass's number; all that came, in the order of their numbers.
  const std::vector<PassTotals>& passes() const { return passes_; }

 private:
  PassTotals& PassOf(uint32_t number);

  std::vector<Event> events_;
  std::vector<PassTotals> passes_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_JOURNAL_H_
