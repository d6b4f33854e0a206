#include "kit/host/report/json_parts.h"

namespace kit::host {
namespace {

constexpr int kIndent = 2;
constexpr int kOneLine = -1;

std::string DumpWith(int indent, const Json& json) {
  constexpr bool kAsciiOnly = true;
  return json.dump(indent, ' ', kAsciiOnly, Json::error_handler_t::replace);
}

}  // namespace

Json NullIfEmpty(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json ToJson(const std::vector<control::Loss>& losses) {
  Json array = Json::array();
  for (const control::Loss& loss : losses) {
    array.push_back(
        {{"path", loss.path}, {"value", loss.value}, {"reason", loss.reason}});
  }
  return array;
}

Json ToJson(const LogRecord& record) {
  return {{"kind", "log"},
          {"call", record.call},
          {"pass", record.pass},
          {"text", record.text}};
}

std::string Dump(const Json& json) { return DumpWith(kIndent, json); }

std::string DumpLine(const Json& json) { return DumpWith(kOneLine, json); }

}  // namespace kit::host
