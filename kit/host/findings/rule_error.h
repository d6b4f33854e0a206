// What is wrong with a catalogue of rules.
#ifndef KIT_HOST_FINDINGS_RULE_ERROR_H_
#define KIT_HOST_FINDINGS_RULE_ERROR_H_

#include <stdexcept>
#include <string>

#include "kit/host/findings/json_positions.h"

namespace kit::host {

// "FILE:LINE:COLUMN: REASON".
class RuleError : public std::runtime_error {
 public:
  RuleError(const std::string& file, TextPosition position,
            const std::string& reason)
      : std::runtime_error(file + ":" + std::to_string(position.line) + ":" +
                           std::to_string(position.column) + ": " + reason) {}
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_RULE_ERROR_H_
