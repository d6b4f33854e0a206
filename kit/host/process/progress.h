// How far a run has come: its phases, and what the plug-in did, in memory that
// the worker process shares with its parent and that outlives it.
#ifndef KIT_HOST_PROCESS_PROGRESS_H_
#define KIT_HOST_PROCESS_PROGRESS_H_

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kit/confd/control/control.h"

namespace kit::host {

enum class Phase : uint32_t {
  kStarting,
  kReading,
  kParsing,
  kLoading,
  kUpdating,
  kValidating,
  kComparing,
  kSaving,
};

// "reading the configuration", …
const char* Describe(Phase phase);

// Whether code of the plug-in runs in this phase.
bool IsPluginPhase(Phase phase);

// The worker writes it, the parent reads it. Counts can be read at any time,
// the last call once the worker is gone. The plug-in may overwrite it: the
// parent takes nothing for granted, and draws no conclusion that a report would
// have to be right about.
class Progress {
 public:
  void Record(const control::Call& call);
  uint64_t calls() const { return calls_; }
  std::map<std::string, uint64_t> CallsByFunction() const;
  // The last call that returned; what is long in it is cut.
  std::optional<std::string> LastCall() const;

  // That an allocation failed.
  void SetOutOfMemory() { out_of_memory_ = 1; }
  bool out_of_memory() const { return out_of_memory_ == 1; }

 private:
  template <size_t kSize>
  struct Text {
    std::array<char, kSize> bytes;
    uint32_t length;

    void Assign(std::string_view text);
    std::string_view view() const {
      return {bytes.data(), std::min<size_t>(length, kSize)};
    }
  };
  struct LastCallSlot {
    Text<64> function;
    Text<1024> path;
    int result;
    int error;
    Text<256> reason;
  };
  struct Count {
    Text<64> function;
    std::atomic<uint64_t> calls;
  };
  static constexpr size_t kMaxFunctions = 64;

  Count* CountOf(std::string_view function);

  std::atomic<uint32_t> out_of_memory_{0};
  std::atomic<uint64_t> calls_{0};
  // Written in turns, so that one is whole when the worker dies in a write.
  std::array<LastCallSlot, 2> last_;
  std::atomic<uint32_t> last_index_{0};
  std::array<Count, kMaxFunctions> counts_;
  std::atomic<uint32_t> functions_{0};
};

struct UnmapProgress {
  void operator()(Progress* progress) const;
};
using SharedProgress = std::unique_ptr<Progress, UnmapProgress>;

// Throws std::system_error.
SharedProgress MakeSharedProgress();

// In a forked process that is not to write into it any more: it has an empty
// one of its own in the same place then.
void MakePrivate(Progress& progress);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_PROGRESS_H_
