// Rules that look at what a plug-in does while it runs.
#ifndef KIT_HOST_FINDINGS_RUN_RULES_H_
#define KIT_HOST_FINDINGS_RUN_RULES_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kit/host/finding.h"
#include "kit/host/findings/collector.h"
#include "kit/host/findings/rule.h"

namespace kit::host {

// Keeps no more of the log than its findings show.
class LogRules {
 public:
  // The catalogue must outlive it.
  explicit LogRules(const Catalogue& catalogue);

  // A record as it was logged; a newline may end it.
  void Add(std::string_view record);

  std::vector<Finding> Findings() const;

 private:
  struct Watch {
    const Rule* rule;
    Collector collector;
  };
  std::vector<Watch> watches_;
};

// Calls that failed alike.
struct FailedCall {
  std::string function;
  std::string path;  // of the first of them
  int error = 0;     // CONFD_ERR_*
  std::string reason;
  uint64_t count = 0;
  std::string pass;  // in which they were made, "" when unknown
};

std::vector<Finding> FindInCalls(const Catalogue& catalogue,
                                 const std::vector<FailedCall>& calls);

// Those that no rule explains which has found as many places as calls failed,
// or more.
std::vector<FailedCall> Unexplained(const Catalogue& catalogue,
                                    const std::vector<Finding>& findings,
                                    std::vector<FailedCall> calls);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_RUN_RULES_H_
