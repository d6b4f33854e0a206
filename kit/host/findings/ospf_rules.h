// Conditions of OSPF that join long lists.
#ifndef KIT_HOST_FINDINGS_OSPF_RULES_H_
#define KIT_HOST_FINDINGS_OSPF_RULES_H_

#include <vector>

#include "kit/host/findings/code_rules.h"

namespace kit::host {

const std::vector<CodeRule>& OspfCodeRules();

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_OSPF_RULES_H_
