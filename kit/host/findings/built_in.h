// What is worth a look after any upgrade, whatever is upgraded.
#ifndef KIT_HOST_FINDINGS_BUILT_IN_H_
#define KIT_HOST_FINDINGS_BUILT_IN_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/finding.h"
#include "kit/host/findings/run_rules.h"

namespace kit::host {

// Rule DEFAULT for leaves that nobody set, DEFAULT-SET for those that were set
// to what was the default: each leaf is a finding.
std::vector<Finding> DefaultFindings(
    const std::vector<control::MovedDefault>& moved);

// Rule LOST: what the new models have no place for, a finding for each node of
// the model and reason.
std::vector<Finding> LossFindings(const std::vector<control::Loss>& losses);

// Rule CALLS: writes that failed in an upgrade that went on. Reads may fail:
// that is how a program learns what is there.
std::vector<Finding> FailedCallFindings(const std::vector<FailedCall>& calls);

// Rules CURSORS and VALUES.
std::vector<Finding> CursorFindings(uint64_t open_cursors);
std::vector<Finding> UnreleasedValueFindings(uint64_t values);

// Rule INVALID: constraints of the new models that the result breaks.
std::vector<Finding> ViolationFindings(
    const std::vector<control::Violation>& violations);

// Rule SCHEMAS: what becomes of the upgrade where the plug-in finds the schemas
// unlike in the run, `loaded` or not. `effect` ends the sentence: "update
// returns -1"; "" where it was not found out.
Finding OtherSchemasFinding(bool loaded, const std::string& effect);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_BUILT_IN_H_
