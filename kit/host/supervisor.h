// Runs the worker in a child process and lives to tell what became of it.
#ifndef KIT_HOST_SUPERVISOR_H_
#define KIT_HOST_SUPERVISOR_H_

#include <optional>
#include <string>

#include "kit/host/progress.h"
#include "kit/host/report.h"
#include "kit/host/worker.h"

namespace kit::host {

// Told of what happens while it happens.
class Listener {
 public:
  virtual ~Listener() = default;
  virtual void OnLog(const std::string& record) = 0;
  virtual void OnCall(const std::string& call) = 0;
  // Several times a second.
  virtual void OnTick(const Progress& progress) = 0;
};

struct Supervision {
  double timeout_s = 60;    // that the plug-in has; 0 is no limit
  bool keep_calls = false;  // whether the journal gets every call
};

// Throws std::system_error when the system can't run a process.
Report Supervise(const WorkerTask& task, const Supervision& supervision,
                 Listener& listener);

}  // namespace kit::host

#endif  // KIT_HOST_SUPERVISOR_H_
