// A fleet's results as one page for a browser: routers and findings, and a link
// to the page of each router that has one.
#ifndef KIT_HOST_REPORT_FLEET_PAGE_H_
#define KIT_HOST_REPORT_FLEET_PAGE_H_

#include <functional>
#include <string>
#include <string_view>

#include "kit/host/report/fleet_summary.h"
#include "kit/host/report/router_result.h"

namespace kit::host {

// What results themselves do not say.
struct FleetPageFacts {
  std::string version;  // of this program
  std::string folder;   // of the page, which links are relative to
  std::string times;    // the one text that differs from run to run
};

using ResultSink = std::function<void(const RouterResult&)>;

// Hands the page to `sink` in pieces. `for_each` hands out the results that the
// summary is of, in their order.
void WriteFleetPage(const FleetSummary& summary, const FleetPageFacts& facts,
                    const std::function<void(const ResultSink&)>& for_each,
                    const std::function<void(std::string_view)>& sink);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_FLEET_PAGE_H_
