// A fleet's results for systems that show tests.
#ifndef KIT_HOST_REPORT_JUNIT_H_
#define KIT_HOST_REPORT_JUNIT_H_

#include <cstddef>
#include <string>

#include "kit/host/report/router_result.h"

namespace kit::host {

// Around the cases. `errors`: what could not be rehearsed to its end.
std::string JUnitBegin(size_t routers, size_t failures, size_t errors);
std::string JUnitCase(const RouterResult& result);
std::string JUnitEnd();

// Whether the case is an error rather than a failure: the upgrade itself has
// not failed.
bool IsJUnitError(const RouterResult& result);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_JUNIT_H_
