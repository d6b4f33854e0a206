// The process that touches what is not trusted: the configuration and the
// plug-in.
#ifndef KIT_HOST_WORKER_H_
#define KIT_HOST_WORKER_H_

#include <optional>
#include <string>

#include "kit/confd/control/control.h"
#include "kit/host/progress.h"

namespace kit::host {

struct WorkerTask {
  std::string config;  // "-" is standard input
  std::string plugin;
  control::ModelSet before;
  control::ModelSet after;
  std::optional<control::Format> format;  // none: the input's
  int output_fd = -1;                     // -1: the result is not saved
  bool send_calls = false;
  bool count_changes = false;
  bool send_entries = false;
};

// How messages name the configuration.
std::string ConfigName(const std::string& config);

// Does the task and tells `message_fd` about it, failures included. To be
// called in a process of its own, which the plug-in may end at any time.
void RunWorker(const WorkerTask& task, int message_fd, Progress& progress);

}  // namespace kit::host

#endif  // KIT_HOST_WORKER_H_
