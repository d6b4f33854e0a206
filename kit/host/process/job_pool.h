// Jobs in processes of their own, some at a time.
#ifndef KIT_HOST_PROCESS_JOB_POOL_H_
#define KIT_HOST_PROCESS_JOB_POOL_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "kit/host/process/child_end.h"

namespace kit::host {

struct JobEnd {
  std::string result;           // what the job returned
  std::optional<ChildEnd> end;  // of a process that did not return it
};

struct JobPlan {
  size_t jobs = 0;
  size_t processes = 1;  // at most so many at a time
  // Runs in a process that is forked from this one for it.
  std::function<std::string(size_t job)> work;
  // In the order of the jobs. Whatever it throws ends those that still run.
  std::function<void(size_t job, JobEnd end)> take;
  // Several times a second.
  std::function<void(size_t done)> on_tick;
};

// Keeps no more results than some hundred at a time. A signal that ends this
// program ends the jobs first; so does its death. Throws std::system_error when
// the system can't run a single process.
void RunJobs(const JobPlan& plan);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_JOB_POOL_H_
