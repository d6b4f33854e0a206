// What a fleet came to.
#ifndef KIT_HOST_REPORT_FLEET_SUMMARY_H_
#define KIT_HOST_REPORT_FLEET_SUMMARY_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "kit/host/report/router_result.h"
#include "kit/host/report/screen.h"

namespace kit::host {

class FleetSummary {
 public:
  void Add(const RouterResult& result);

  size_t routers() const { return fine_ + looks_ + fails_; }
  // The highest of all.
  ExitCode exit_code() const { return worst_; }

  // "5 routers: 1 fine, 3 to look at, 1 failing"
  std::string Headline() const;

  // The kinds of failure, and the rules that found something, the worst first.
  struct Kind {
    std::string name;
    Severity severity = Severity::kNote;  // of a rule
    uint64_t routers = 0;
    std::string first;  // configuration
  };
  std::vector<Kind> Failures() const;
  std::vector<Kind> Rules() const;

  // How many there are of each verdict, then a line for each kind of failure
  // and each rule that found something, with the first router of it.
  std::string Render(const Screen& screen) const;

 private:
  struct Group {
    uint64_t routers = 0;
    std::string first;  // configuration
  };
  // By exit code and pass; by severity, the worst first, and rule.
  using Groups = std::map<std::tuple<int, std::string>, Group>;

  size_t fine_ = 0;
  size_t looks_ = 0;
  size_t fails_ = 0;
  ExitCode worst_ = ExitCode::kSuccess;
  Groups failures_;
  Groups rules_;
};

// "pass 3, compound index: line 7: what failed"; "" where nothing did.
std::string WhatFailed(const RouterResult& result);

// "look  router r1 (r1.xml): LOST, OSPF-S1 (2)", of any width.
std::string RenderRouter(const RouterResult& result, const Screen& screen);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_FLEET_SUMMARY_H_
