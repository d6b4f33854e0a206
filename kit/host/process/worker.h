// The process that touches what is not trusted: the configuration and the
// plug-in. It has no descriptor of the output, and nothing that it says is
// taken for a success.
#ifndef KIT_HOST_PROCESS_WORKER_H_
#define KIT_HOST_PROCESS_WORKER_H_

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/passes.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/inspection.h"
#include "kit/host/process/misfit.h"
#include "kit/host/process/progress.h"
#include "kit/host/process/recorder.h"

namespace kit::host {

struct WorkerTask {
  std::string config;         // "-" is standard input
  uint64_t max_size_mib = 0;  // of the configuration
  std::string plugin;
  control::ModelSet before;
  control::ModelSet after;
  std::optional<control::Models> models;  // the two, where they are loaded
  std::string release;                    // how messages call `before`
  std::vector<KnownRelease> releases;     // that the configuration may be of
  control::UnknownModules unknown_modules = control::UnknownModules::kCarry;
  std::vector<std::string> named_modules;  // that one of the sets has to have
  std::optional<control::Format> format;   // none: the input's
  bool schemas_loaded = true;              // into the plug-in's process
  double timeout_s = 60;                   // that the plug-in has; 0: no limit
  bool has_output = false;                 // otherwise the result is not saved
  Inspection inspection;
  PassTable passes;
  Recording recording;
  std::vector<std::string> places;  // key paths of what is to be told of
  bool count_changes = false;       // of the result against its start
  bool send_entries = false;
  bool tell_digest = false;  // of the configuration's file
  // For a ledger: what the automatic upgrade changes, and the leaves on either
  // side.
  bool count_leaves = false;
};

// How messages name the configuration.
std::string ConfigName(const std::string& config);

// Reads the configuration and runs the plug-in on it, tells `connection` what
// happens, failures included, and ends the process. After a successful update a
// process forked from it goes on (finisher.h). To be called in a process of its
// own, which the plug-in may end at any time.
[[noreturn]] void RunWorker(const WorkerTask& task, FileDescriptor connection,
                            Progress& progress, pid_t supervisor);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_WORKER_H_
