// What is looked for in a configuration, for whoever runs its upgrade.
#ifndef KIT_HOST_PROCESS_INSPECTION_H_
#define KIT_HOST_PROCESS_INSPECTION_H_

#include <functional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/finding.h"

namespace kit::host {

// Called in the processes of a run, where they may throw; a FailureError is the
// run's. Any may be empty.
struct Inspection {
  // What the device is called; "" if it is not known.
  std::function<std::string(const control::Database&)> device;
  // Values that are not to be shown.
  std::function<std::vector<std::string>(const control::Database&)> secrets;
  // Before the plug-in is loaded.
  std::function<std::vector<Finding>(const control::Database&)> input;
  // After it is gone, of a successful update.
  std::function<std::vector<Finding>(const control::Database&)> result;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_INSPECTION_H_
