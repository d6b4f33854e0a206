// Who is told of the calls of the C API, and which of them are to fail.
#ifndef KIT_CONFD_SESSION_CALL_HOOKS_H_
#define KIT_CONFD_SESSION_CALL_HOOKS_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kit::store {

// One finished call. The views live as long as the callback.
struct CallRecord {
  uint64_t number;
  std::string_view function;
  std::string_view path;
  std::string_view input;
  std::string_view output;
  int result;
  int error;
  std::string_view reason;
  uint64_t nanoseconds;  // that it took; 0 where values are not wanted
};

struct CallObserver {
  std::function<void(const CallRecord&)> on_call;
  bool wants_values = true;
};

struct ValueSubstitute {
  size_t slot;
  int tag;
  uint64_t bits;
};

struct FaultRule {
  std::string function;  // "" fits all
  std::string path;      // "" fits all
  uint64_t occurrence;   // from 1; 0 fits every call
  int error;             // not 0: the call fails with it, undone
  std::string text;
  std::optional<int> result;
  std::vector<ValueSubstitute> substitutes;

  uint64_t seen = 0;
};

// The process's one set of hooks. Thread-safe.
class CallHooks {
 public:
  static CallHooks& Instance();

  void SetObserver(std::optional<CallObserver> observer);
  void SetFaults(std::vector<FaultRule> faults);

  // Whether someone observes, and wants values rendered.
  bool observed() const { return observed_; }
  bool wants_values() const { return wants_values_; }
  // Whether paths are looked at, which are otherwise not written out.
  bool wants_paths() const { return observed_ || has_faults_; }
  bool has_faults() const { return has_faults_; }

  // The fault that this call meets, if any; counts the call.
  std::optional<FaultRule> Fault(std::string_view function,
                                 std::string_view path);
  // Numbers the record and hands it on.
  void Report(CallRecord record);

 private:
  std::recursive_mutex mutex_;
  std::optional<CallObserver> observer_;
  std::vector<FaultRule> faults_;
  uint64_t calls_ = 0;
  std::atomic<bool> observed_{false};
  std::atomic<bool> wants_values_{false};
  std::atomic<bool> has_faults_{false};
};

}  // namespace kit::store

#endif  // KIT_CONFD_SESSION_CALL_HOOKS_H_
