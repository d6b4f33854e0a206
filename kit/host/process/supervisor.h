// Runs the worker and the finisher in child processes and lives to tell what
// became of them. Only what the finisher says, once the plug-in and all that it
// started are gone, can be a success.
#ifndef KIT_HOST_PROCESS_SUPERVISOR_H_
#define KIT_HOST_PROCESS_SUPERVISOR_H_

#include <cstdint>
#include <string>
#include <vector>

#include "kit/host/events.h"
#include "kit/host/process/outcome.h"
#include "kit/host/process/progress.h"
#include "kit/host/process/worker.h"

namespace kit::host {

// Told of what happens while it happens.
class Listener {
 public:
  virtual ~Listener() = default;
  // Values not to be shown, before anything that may have them.
  virtual void OnSecrets(const std::vector<std::string>& values) = 0;
  // Of the automatic upgrade, before anything of the plug-in.
  virtual void OnStartChange(ChangeRecord change) = 0;
  virtual void OnLog(LogRecord record) = 0;
  virtual void OnCall(CallRecord call) = 0;
  virtual void OnChange(ChangeRecord change) = 0;
  virtual void OnPass(PassTotals totals) = 0;
  // Of the places that the task asks for.
  virtual void OnPlace(PlaceRecord) {}
  // Told of after a success, when all passes have been.
  virtual void OnRekeyed(const RekeyedEntries& entries) = 0;
  // Several times a second.
  virtual void OnTick(Phase phase, uint64_t calls) = 0;
};

struct Supervision {
  double timeout_s = 60;  // that the plug-in, or another step, has; 0: none
  // Whether the listener keeps the calls and changes that it is told of.
  bool keep_calls = false;
  int output_fd = -1;  // an empty file for the result, or -1
};

// Throws std::system_error when the system can't run a process.
Outcome Supervise(const WorkerTask& task, const Supervision& supervision,
                  Listener& listener);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_SUPERVISOR_H_
