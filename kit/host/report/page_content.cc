#include "kit/host/report/page_content.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "kit/host/report/page_data.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

// Of a flood of records, those that are in the page: the first and the last.
constexpr size_t kMaxRecords = 20'000;

void WriteLog(const Report& report, PageJson& json) {
  std::vector<const LogRecord*> records;
  for (const Event& event : report.journal.events()) {
    if (const auto* record = std::get_if<LogRecord>(&event)) {
      records.push_back(record);
    }
  }
  const size_t left_out =
      records.size() - std::min(records.size(), kMaxRecords);
  if (left_out > 0) {
    const auto middle = records.begin() + kMaxRecords / 2;
    records.erase(middle, middle + static_cast<ptrdiff_t>(left_out));
  }
  json.Key("log");
  json.Begin('[');
  for (const LogRecord* record : records) {
    json.Begin('[');
    json.Add(record->call);
    json.Add(WithoutLastNewline(record->text));
    json.End(']');
  }
  json.End(']');
  json.Add("logLeftOut", left_out);
}

template <typename Items, typename ToText>
void WriteTexts(const char* name, const Items& items, const ToText& to_text,
                PageJson& json) {
  json.Key(name);
  json.Begin('[');
  for (const auto& item : items) json.Add(std::string(to_text(item)));
  json.End(']');
}

}  // namespace

std::string PageContent(const Report& report) {
  PageJson json;
  json.Begin('{');
  WriteTexts(
      "passNames", report.passes, [](const Pass& pass) { return pass.name; },
      json);
  WriteLog(report, json);
  std::vector<std::string_view> printed;
  if (!report.plugin_output.empty()) printed = Lines(report.plugin_output);
  WriteTexts(
      "printed", printed, [](std::string_view line) { return line; }, json);
  WriteTexts(
      "violations", report.violations,
      [](const control::Violation& violation) {
        return fmt::format(
            "{}: {}",
            violation.path.empty() ? "(unknown node)" : violation.path,
            violation.reason);
      },
      json);
  WriteTexts(
      "losses", report.losses,
      [](const control::Loss& loss) {
        return fmt::format(
            "{}{}: {}", loss.path,
            loss.value.empty() ? "" : fmt::format(" ({})", loss.value),
            loss.reason);
      },
      json);
  WriteTexts(
      "carried", report.carried,
      [](const control::CarriedModule& module) {
        return fmt::format("{}: {} carried through unchanged", module.name,
                           Counted(module.leaves, "leaf", "leaves"));
      },
      json);
  json.End('}');
  return json.Take();
}

}  // namespace kit::host
