// The command `run`: one configuration through the upgrade.
#ifndef KIT_HOST_COMMANDS_RUN_H_
#define KIT_HOST_COMMANDS_RUN_H_

#include "kit/host/commands/options.h"
#include "kit/host/exit_code.h"

namespace kit::host {

// Prints the report, and writes what the options ask for.
ExitCode Run(const RunOptions& options);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RUN_H_
