// What the script of a page shows of a run, as JSON.
#ifndef KIT_HOST_REPORT_PAGE_CONTENT_H_
#define KIT_HOST_REPORT_PAGE_CONTENT_H_

#include <string>

#include "kit/host/report/report.h"

namespace kit::host {

std::string PageContent(const Report& report);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_PAGE_CONTENT_H_
