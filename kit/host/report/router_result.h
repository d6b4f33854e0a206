// What the rehearsal of one configuration of a fleet came to.
#ifndef KIT_HOST_REPORT_ROUTER_RESULT_H_
#define KIT_HOST_REPORT_ROUTER_RESULT_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/host/exit_code.h"
#include "kit/host/failure.h"
#include "kit/host/finding.h"
#include "kit/host/report/report.h"

namespace kit::host {

enum class RouterVerdict {
  kFine,
  kLook,  // the upgrade succeeds, something is to be looked at
  kFail,
};

// "fine", "look", "fail".
const char* Name(RouterVerdict verdict);

struct RouterResult {
  struct Failed {
    std::string reason;
    std::string advice;
    std::vector<std::string> details;
    uint64_t line = 0;
    std::string path;
  };

  size_t index = 0;    // in the fleet, from 0
  std::string config;  // its name, as given or found
  std::string device;
  RouterVerdict verdict = RouterVerdict::kFine;
  ExitCode exit_code = ExitCode::kSuccess;
  std::string pass;  // where a failed upgrade was, "pass 3, compound index"
  std::vector<Finding> findings;
  std::optional<Failed> failure;
  std::optional<std::string> output;
  std::optional<std::string> page;
};

RouterResult ToRouterResult(const Report& report);

// Of a configuration whose rehearsal did not come to its end.
RouterResult LostRouter(const std::string& config, const Failure& failure);

// A line of a file of results: one JSON object, without a newline. The same
// result gives the same line.
std::string ToLine(const RouterResult& result);

class LineError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws LineError for what ToLine does not make.
RouterResult ParseLine(const std::string& line);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_ROUTER_RESULT_H_
