// What becomes of the plug-in where the schemas are not as they are in this
// run.
#ifndef KIT_HOST_PROCESS_SCHEMA_TRIAL_H_
#define KIT_HOST_PROCESS_SCHEMA_TRIAL_H_

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>

#include "kit/confd/control/control.h"
#include "kit/host/process/checksum.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/progress.h"
#include "kit/host/process/protocol.h"

namespace kit::host {

// How the other case came out. What is left of the fields is 0.
struct TrialOutcome {
  enum class End : uint32_t {
    kNotNeeded,  // it would have been the same run
    kUnknown,
    kReturned,  // update did, with `result`
    kDied,      // update did not return
  };
  End end = End::kNotNeeded;
  int result = 0;
  // After a success:
  uint64_t violations = 0;
  Checksum saved;  // of what would have been written
};

// As the output has it, or would have.
Checksum ChecksumOf(const control::Database& database, control::Format format);

// Just before the plug-in is first given something that would be other without
// the schemas (or with them), its process is copied. The copy goes on with the
// other case, so what it comes to was found by running it. Nothing that it does
// is recorded, and nothing is spent on a plug-in that such things don't matter
// to. To be made in the process and thread that call update.
class SchemaTrial {
 public:
  // The trial's own handles are `progress`, which the copy leaves alone, and
  // the connection, of which it closes its descriptor.
  SchemaTrial(bool loaded, Progress& progress, int connection);
  ~SchemaTrial();
  SchemaTrial(const SchemaTrial&) = delete;
  SchemaTrial& operator=(const SchemaTrial&) = delete;

  // Whether this is the copy, which ends with one of the two that follow.
  bool IsCopy() const;
  [[noreturn]] void EndAfterReturn(int result,
                                   const control::Database& database,
                                   control::Format format) const;
  [[noreturn]] void EndAfterDeath() const;

  // In the other process, once update has succeeded: waits for the copy, but
  // not for much longer than it had already, nor longer than `most`.
  TrialOutcome Wait(std::chrono::milliseconds most);

 private:
  using Clock = std::chrono::steady_clock;

  void Fork();
  void BecomeCopy(FileDescriptor report);
  [[noreturn]] void End(const TrialOutcome& outcome) const;
  TrialOutcome OutcomeOfEnd() const;

  Progress& progress_;
  const int connection_;
  const pid_t self_;
  bool depends_ = false;
  Clock::time_point forked_;
  pid_t copy_ = 0;         // of the other process, in the first
  FileDescriptor report_;  // to read in one, to write in the other
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_SCHEMA_TRIAL_H_
