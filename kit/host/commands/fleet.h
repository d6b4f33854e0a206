// The command `fleet`: many configurations through one upgrade.
#ifndef KIT_HOST_COMMANDS_FLEET_H_
#define KIT_HOST_COMMANDS_FLEET_H_

#include "kit/host/commands/options.h"
#include "kit/host/exit_code.h"

namespace kit::host {

// Prints a line for each router and a summary, and writes what the options ask
// for. The highest of the routers' exit codes, or that of what kept the fleet
// from coming to its end.
ExitCode RunFleet(const FleetOptions& options);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_FLEET_H_
