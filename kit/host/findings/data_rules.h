// Rules that look at the configuration, before and after the upgrade.
#ifndef KIT_HOST_FINDINGS_DATA_RULES_H_
#define KIT_HOST_FINDINGS_DATA_RULES_H_

#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/finding.h"
#include "kit/host/findings/rule.h"

namespace kit::host {

// Throws RuleError for an expression that can't be evaluated, and for one of a
// site's own that names nodes that the models lack. Other rules of such nodes
// find nothing.
void CheckExpressions(const Catalogue& catalogue,
                      const control::Database& database);

// In the order of the catalogue. Before a program writes to the database; as it
// stands after that. Throws RuleError for what only evaluation tells.
std::vector<Finding> FindInInput(const Catalogue& catalogue,
                                 const control::Database& database);
std::vector<Finding> FindInResult(const Catalogue& catalogue,
                                  const control::Database& database);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_DATA_RULES_H_
