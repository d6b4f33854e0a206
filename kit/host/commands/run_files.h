// The files of a run, opened before anything else so that a name that can't be
// is said at once.
#ifndef KIT_HOST_COMMANDS_RUN_FILES_H_
#define KIT_HOST_COMMANDS_RUN_FILES_H_

#include <sys/stat.h>

#include <optional>

#include "kit/host/commands/options.h"
#include "kit/host/process/log_file.h"
#include "kit/host/process/output_file.h"

namespace kit::host {

std::optional<struct stat> StatInput(const RunOptions& options);

// Of -o. Throws FailureError (kOutputFailed).
std::optional<OutputFile> PrepareOutput(
    const RunOptions& options, const std::optional<struct stat>& input);

// Of --report, which has to be given. Throws FailureError (kOutputFailed).
OutputFile PreparePage(const RunOptions& options,
                       const std::optional<struct stat>& input);

// Of --log=FILE. Throws FailureError (kOutputFailed).
std::optional<LogFile> OpenLog(const RunOptions& options,
                               const std::optional<struct stat>& input);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RUN_FILES_H_
