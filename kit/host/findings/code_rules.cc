#include "kit/host/findings/code_rules.h"

#include "kit/host/findings/ospf_rules.h"

namespace kit::host {

const CodeRule* FindCodeRule(std::string_view name) {
  for (const CodeRule& rule : OspfCodeRules()) {
    if (rule.name == name) return &rule;
  }
  return nullptr;
}

}  // namespace kit::host
