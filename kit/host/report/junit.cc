#include "kit/host/report/junit.h"

#include <fmt/format.h>

#include <filesystem>

#include "kit/host/report/names.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

// Text and attribute values. What XML has no character for is escaped before.
std::string Xml(std::string_view text) {
  std::string escaped;
  for (const char c : Escaped(text)) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string FailureElement(const RouterResult& result) {
  const char* element = IsJUnitError(result) ? "error" : "failure";
  const RouterResult::Failed& failure = *result.failure;
  std::string text = fmt::format("    <{} type=\"{}\" message=\"{}\">", element,
                                 Name(result.exit_code), Xml(failure.reason));
  if (!result.pass.empty()) text += Xml(result.pass) + "\n";
  if (failure.line > 0) text += fmt::format("line {}\n", failure.line);
  if (!failure.path.empty()) text += Xml(failure.path) + "\n";
  for (const std::string& detail : failure.details) text += Xml(detail) + "\n";
  return text + fmt::format("{}</{}>\n", Xml(failure.advice), element);
}

}  // namespace

bool IsJUnitError(const RouterResult& result) {
  switch (result.exit_code) {
    case ExitCode::kPluginFailed:
    case ExitCode::kInvalidResult:
    case ExitCode::kPluginDied:
    case ExitCode::kNeedsALook:
    case ExitCode::kSuccess:
      return false;
    default:
      return true;
  }
}

std::string JUnitBegin(size_t routers, size_t failures, size_t errors) {
  return fmt::format(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<testsuites>\n"
      "<testsuite name=\"ospf-upgrade fleet\" tests=\"{}\" failures=\"{}\" "
      "errors=\"{}\" skipped=\"0\">\n",
      routers, failures, errors);
}

std::string JUnitCase(const RouterResult& result) {
  const std::filesystem::path path(result.config);
  std::string text = fmt::format("  <testcase classname=\"{}\" name=\"{}\"",
                                 Xml(path.parent_path().string()),
                                 Xml(path.filename().string()));
  std::string inside;
  if (result.failure) inside += FailureElement(result);
  std::string found;
  for (const Finding& finding : result.findings) {
    found += fmt::format("{} {}: {}\n", Name(finding.severity), finding.rule,
                         finding.message);
  }
  if (!found.empty()) {
    inside += "    <system-out>";
    for (const std::string_view line : Lines(WithoutLastNewline(found))) {
      inside += Xml(line) + "\n";
    }
    inside += "</system-out>\n";
  }
  if (inside.empty()) return text + "/>\n";
  return text + ">\n" + inside + "  </testcase>\n";
}

std::string JUnitEnd() { return "</testsuite>\n</testsuites>\n"; }

}  // namespace kit::host
