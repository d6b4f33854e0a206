// The command `explain`: where an entry or leaf comes from, or where it went.
#ifndef KIT_HOST_COMMANDS_EXPLAIN_H_
#define KIT_HOST_COMMANDS_EXPLAIN_H_

#include "kit/host/commands/options.h"
#include "kit/host/exit_code.h"

namespace kit::host {

ExitCode Explain(const ExplainOptions& options);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_EXPLAIN_H_
