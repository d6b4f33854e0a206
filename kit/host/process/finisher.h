// What follows a successful update: a process that has the worker's memory, but
// none of the plug-in's threads, timers and descriptors.
#ifndef KIT_HOST_PROCESS_FINISHER_H_
#define KIT_HOST_PROCESS_FINISHER_H_

#include <sys/types.h>

#include "kit/confd/control/control.h"
#include "kit/host/process/change_counter.h"
#include "kit/host/process/channel.h"
#include "kit/host/process/process_state.h"
#include "kit/host/process/schema_trial.h"
#include "kit/host/process/worker.h"

namespace kit::host {

// What is known of the plug-in's run besides the database.
struct PluginRun {
  TrialOutcome trial;  // how it does with the schemas the other way
  const ChangeCounter& changes;
};

// Validates, compares and saves what `database` holds, over a channel that the
// supervisor hands out through the worker's, and ends the process. To be called
// in a process forked for it; `state` is from before the plug-in was loaded.
[[noreturn]] void RunFinisher(const WorkerTask& task,
                              const control::Database& database,
                              const PluginRun& run, const ProcessState& state,
                              const Channel& worker_channel, pid_t supervisor);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_FINISHER_H_
