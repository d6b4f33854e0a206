// Conditions in code, for what an expression would take too long for: joins of
// long lists. Rules name them.
#ifndef KIT_HOST_FINDINGS_CODE_RULES_H_
#define KIT_HOST_FINDINGS_CODE_RULES_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::host {

// One place where a condition holds.
struct Hit {
  std::vector<std::string> values;  // as CodeRule::places names them
  std::string path;                 // key path
};

// Takes what was found.
class HitSink {
 public:
  virtual ~HitSink() = default;
  // Whether the texts of one more hit would be shown.
  virtual bool WantsTexts() const = 0;
  virtual void Add(Hit hit) = 0;
};

class OspfTables;

struct CodeRule {
  const char* name;
  // Where it looks: rules of the result may look at both.
  control::Side side;
  std::vector<std::string_view> places;  // what messages may name
  void (*find)(OspfTables& tables, HitSink& hits);
};

// Null for an unknown name.
const CodeRule* FindCodeRule(std::string_view name);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_CODE_RULES_H_
