// What the plug-in does, as it happens: told to the supervisor, counted by
// pass.
#ifndef KIT_HOST_PROCESS_RECORDER_H_
#define KIT_HOST_PROCESS_RECORDER_H_

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kit/confd/control/control.h"
#include "kit/host/events.h"
#include "kit/host/passes.h"
#include "kit/host/process/change_counter.h"
#include "kit/host/process/channel.h"
#include "kit/host/process/progress.h"

namespace kit::host {

struct Recording {
  bool calls = false;           // each is told
  bool changes = false;         // they are counted
  bool change_records = false;  // each is told, if they are counted
};

// The process's observer while it lives. Totals of a pass are told when the
// next one makes its first call, so that little is lost where the process dies.
class Recorder : public control::Observer {
 public:
  // All of them have to outlive it.
  Recorder(const Channel& channel, Progress& progress, const PassTable& passes,
           Recording recording);
  ~Recorder() override;
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // From any thread.
  void OnLog(std::string_view text);

  void OnCall(const control::Call& call) override;
  bool WantsValues() const override { return recording_.calls; }
  void OnChange(const control::Change& change) override;
  bool WantsChanges() const override { return recording_.changes; }

  // Tells what there is of the pass. To be called once no more calls come.
  void TellTotals();
  uint64_t calls() const { return calls_; }
  // Whether memory ran out for it, so that something is missing.
  bool has_gaps() const { return has_gaps_; }
  const ChangeCounter& changes() const { return changes_; }

 private:
  void FollowPass();
  void Flush(uint32_t next_pass);
  void Count(const control::Call& call);
  void CountFailure(const control::Call& call);
  void KeepFailure(const control::Call& call);
  void Tell(const control::Call& call, uint64_t number) const;
  void Tell(const control::Change& change) const;
  // Whatever befalls it, the call that is under way comes to its end.
  template <typename Step>
  void Guard(const Step& step);

  const Channel& channel_;
  Progress& progress_;
  const Recording recording_;
  std::mutex log_mutex_;
  PassTracker tracker_;
  std::atomic<uint32_t> current_pass_{0};  // by the log
  std::atomic<uint64_t> calls_{0};
  PassTotals totals_;
  std::unordered_map<std::string, size_t> failures_;  // in totals_, by kind
  ChangeCounter changes_;
  std::atomic<bool> has_gaps_{false};
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_RECORDER_H_
