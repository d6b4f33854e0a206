// The first line of a report: does the upgrade succeed?
#ifndef KIT_HOST_REPORT_VERDICT_H_
#define KIT_HOST_REPORT_VERDICT_H_

#include <string>

#include "kit/host/report/report.h"

namespace kit::host {

// "upgrade succeeds, 2 things to look at". Without a result of the upgrade it
// says so, and why is the failure's to tell.
std::string Verdict(const Report& report);

// "Pass 3, compound index", or where no pass is.
std::string PassTitle(const Report& report, uint32_t pass);

// The same for who did something, "the automatic upgrade" among them; "" for
// nobody.
std::string AgentName(const Report& report, Agent agent);

// "pass 3, compound index" for where the plug-in was last; "" if outside of
// all.
std::string LastPass(const Report& report);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_VERDICT_H_
