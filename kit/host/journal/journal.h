// What the plug-in did, in order: its log records and its ConfD calls.
#ifndef KIT_HOST_JOURNAL_JOURNAL_H_
#define KIT_HOST_JOURNAL_JOURNAL_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kit::host {

struct Event {
  enum class Kind { kLog, kCall };
  Kind kind;
  std::string text;
};

// The calls of a long run take much memory as text, so that they are only
// added when somebody wants to see them; their totals are always there.
class Journal {
 public:
  void AddLog(std::string text) {
    events_.push_back({Event::Kind::kLog, std::move(text)});
  }
  void AddCall(std::string text) {
    events_.push_back({Event::Kind::kCall, std::move(text)});
  }
  void SetTotals(uint64_t calls, std::map<std::string, uint64_t> by_function,
                 std::optional<std::string> last_call) {
    calls_ = calls;
    by_function_ = std::move(by_function);
    last_call_ = std::move(last_call);
  }

  const std::vector<Event>& events() const { return events_; }
  std::vector<std::string> LogRecords() const;
  uint64_t calls() const { return calls_; }
  const std::map<std::string, uint64_t>& calls_by_function() const {
    return by_function_;
  }
  const std::optional<std::string>& last_call() const { return last_call_; }

 private:
  std::vector<Event> events_;
  uint64_t calls_ = 0;
  std::map<std::string, uint64_t> by_function_;
  std::optional<std::string> last_call_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_JOURNAL_H_
