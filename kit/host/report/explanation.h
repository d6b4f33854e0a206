// How an explanation is shown.
#ifndef KIT_HOST_REPORT_EXPLANATION_H_
#define KIT_HOST_REPORT_EXPLANATION_H_

#include <string>

#include "kit/host/journal/explanation.h"
#include "kit/host/report/report.h"

namespace kit::host {

// In one sentence without its end: "was PATH, got other keys in pass 3, ...".
std::string AnswerOf(const Explanation& explanation, const Report& report);

// For people: the answer, then the history in its order.
std::string RenderText(const Explanation& explanation, const Report& report);

// For scripts: one JSON object.
std::string RenderJson(const Explanation& explanation, const Report& report);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_EXPLANATION_H_
