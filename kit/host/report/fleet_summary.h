// What a fleet came to.
#ifndef KIT_HOST_REPORT_FLEET_SUMMARY_H_
#define KIT_HOST_REPORT_FLEET_SUMMARY_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include "kit/host/report/router_result.h"
#include "kit/host/report/screen.h"

namespace kit::host {

class FleetSummary {
 public:
  void Add(const RouterResult& result);

  size_t routers() const { return fine_ + looks_ + fails_; }
  // The highest of all.
  ExitCode exit_code() const { return worst_; }

  // How many there are of each verdict, then a line for each kind of failure
  // and each rule that found something, with the first router of it.
  std::string Render(const Screen& screen) const;

 private:
  struct Group {
    uint64_t routers = 0;
    std::string first;  // configuration
  };
  // By exit code and pass; by severity, the worst first, and rule.
  using Failures = std::map<std::tuple<int, std::string>, Group>;
  using Rules = std::map<std::tuple<int, std::string>, Group>;

  size_t fine_ = 0;
  size_t looks_ = 0;
  size_t fails_ = 0;
  ExitCode worst_ = ExitCode::kSuccess;
  Failures failures_;
  Rules rules_;
};

// "look  router r1 (r1.xml): LOST, OSPF-S1 (2)", of any width.
std::string RenderRouter(const RouterResult& result, const Screen& screen);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_FLEET_SUMMARY_H_
