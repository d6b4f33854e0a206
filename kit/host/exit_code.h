// The exit codes of ospf-upgrade.
#ifndef KIT_HOST_EXIT_CODE_H_
#define KIT_HOST_EXIT_CODE_H_

namespace kit::host {

enum class ExitCode {
  kSuccess = 0,
  kPluginFailed = 1,   // the plug-in returned -1, or anything else but 0
  kInvalidResult = 2,  // the result breaks the new model
  kBadInput = 3,       // usage, configuration or data models
  kNotLoaded = 4,      // the plug-in could not be loaded
  kPluginDied = 5,     // it aborted, crashed, hung or broke the run
  kOutputFailed = 6,   // output, log or report could not be written
  kNeedsALook = 7,     // --strict or --fail-on-loss, and there is a reason
  kNotFound = 8,       // what was asked for is nowhere
  kInternal = 70,      // the kit itself failed, or ran out of something
};

}  // namespace kit::host

#endif  // KIT_HOST_EXIT_CODE_H_
