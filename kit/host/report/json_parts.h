// What the reports for scripts have in common.
#ifndef KIT_HOST_REPORT_JSON_PARTS_H_
#define KIT_HOST_REPORT_JSON_PARTS_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/events.h"

namespace kit::host {

// Keeps its keys in the order in which they are documented.
using Json = nlohmann::ordered_json;

template <typename T>
Json OrNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json();
}
Json NullIfEmpty(const std::string& text);

Json ToJson(const std::vector<control::Loss>& losses);
Json ToJson(const LogRecord& record);

// Bytes that are not UTF-8 become replacement characters; all that a terminal
// would obey or hide is beyond ASCII or a control character, and so escaped.
std::string Dump(const Json& json);
std::string DumpLine(const Json& json);  // in one line, without a newline

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_JSON_PARTS_H_
