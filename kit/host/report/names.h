// The words of reports for scripts.
#ifndef KIT_HOST_REPORT_NAMES_H_
#define KIT_HOST_REPORT_NAMES_H_

#include <array>

#include "kit/confd/control/control.h"
#include "kit/host/exit_code.h"
#include "kit/host/finding.h"
#include "kit/host/journal/differences.h"
#include "kit/host/journal/ledger.h"

namespace kit::host {

inline constexpr std::array kExitCodes = {
    ExitCode::kSuccess,      ExitCode::kPluginFailed, ExitCode::kInvalidResult,
    ExitCode::kBadInput,     ExitCode::kNotLoaded,    ExitCode::kPluginDied,
    ExitCode::kOutputFailed, ExitCode::kNeedsALook,   ExitCode::kNotFound,
    ExitCode::kInternal};

const char* Name(ExitCode code);
const char* Name(Severity severity);
const char* Name(EntryDifference::Kind kind);
const char* Name(Fate fate);
const char* Name(control::Change::Kind kind);
const char* Name(control::Format format);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_NAMES_H_
