// A run as one page for a browser, which needs nothing else.
#ifndef KIT_HOST_REPORT_HTML_REPORT_H_
#define KIT_HOST_REPORT_HTML_REPORT_H_

#include <string>
#include <vector>

#include "kit/host/digest.h"
#include "kit/host/report/report.h"

namespace kit::host {

// A file that a run read or wrote.
struct PageFile {
  std::string role;  // "Plug-in"
  std::string name;
  Digest digest;
};

// What a report itself does not say.
struct PageFacts {
  std::string version;  // of this program
  std::vector<PageFile> files;
  std::string times;  // the one text that differs from run to run
};

std::string RenderHtml(const Report& report, const PageFacts& facts);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_HTML_REPORT_H_
