// The command `compare`: what differs between two ways to upgrade.
#ifndef KIT_HOST_COMMANDS_COMPARE_H_
#define KIT_HOST_COMMANDS_COMPARE_H_

#include "kit/host/commands/options.h"
#include "kit/host/exit_code.h"

namespace kit::host {

// Prints what differs. kSuccess where nothing does, kPluginFailed (1) where
// something does; the highest of them and of what kept a configuration from
// being compared.
ExitCode RunCompare(const CompareOptions& options);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_COMPARE_H_
