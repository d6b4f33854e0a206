// What a run is looked through for.
#ifndef KIT_HOST_COMMANDS_INSPECT_H_
#define KIT_HOST_COMMANDS_INSPECT_H_

#include <string>
#include <vector>

#include "kit/host/findings/rule.h"
#include "kit/host/process/inspection.h"
#include "kit/host/report/report.h"

namespace kit::host {

// The rules of the upgrade that comes with this program, and those of the
// files. Throws FailureError (kBadInput).
Catalogue LoadRules(const std::vector<std::string>& own_files);

// The catalogue must outlive it.
Inspection MakeInspection(const Catalogue& catalogue);

// Adds to the findings of the configurations what the rest of the report and
// the log show, and sorts all by severity.
void CompleteFindings(const Catalogue& catalogue, Report& report);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_INSPECT_H_
