// The catalogue of rules that say what to look at.
#ifndef KIT_HOST_FINDINGS_RULE_H_
#define KIT_HOST_FINDINGS_RULE_H_

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/finding.h"
#include "kit/host/findings/code_rules.h"
#include "kit/host/findings/json_positions.h"
#include "kit/host/findings/message.h"
#include "kit/host/findings/pattern.h"
#include "kit/host/findings/rule_error.h"

namespace kit::host {

enum class Where { kInput, kResult, kBoth, kLog, kCalls, kCode };

// Entries of input and result that belong to each other.
struct Comparison {
  enum class Found { kMissing, kNew, kDifferent, kEqual };
  // Their texts are the key and, after it, the value, which may be left out.
  control::Query input;
  control::Query result;
  Found found = Found::kMissing;
};

// Failed calls; what is not given fits all.
struct CallCondition {
  std::string function;
  std::shared_ptr<Pattern> path;
  std::optional<int> error;
};

struct Rule {
  std::string id;
  Severity severity = Severity::kNote;
  Where where = Where::kInput;
  // Of these the one that belongs to `where`:
  control::Query query;              // the texts are the message's places
  Comparison comparison;             // kBoth
  std::shared_ptr<Pattern> pattern;  // kLog
  CallCondition calls;               // kCalls
  const CodeRule* code = nullptr;    // kCode

  // Calls that fail where the rule finds something, and need no explanation of
  // their own.
  std::optional<CallCondition> explains;

  Sentence message;
  std::string one;  // of what is counted, "" to leave the count out
  std::string many;
  std::string advice;
  std::string section;

  // For faults that show only with the models at hand.
  std::string file;
  TextPosition position;
  std::map<std::string, TextPosition> expressions;  // by their text
  bool is_own = false;  // a site's: nodes that the models lack are a fault
};

// What a device is called.
struct DeviceRule {
  std::string kind;  // "router"
  std::string name;  // XPath of the leaf that has its name, "" for none
};

struct Catalogue {
  DeviceRule device;
  std::vector<std::string> secrets;  // paths of leaves without keys
  std::vector<Rule> rules;

  // Appends a site's catalogue. Throws RuleError for an id that is taken.
  void Add(Catalogue own);
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_RULE_H_
