#include "kit/host/report/verdict.h"

#include <fmt/format.h>

#include <algorithm>
#include <variant>

#include "kit/host/text.h"

namespace kit::host {
namespace {

size_t CountOf(const Report& report, Severity severity) {
  return static_cast<size_t>(std::count_if(
      report.findings.begin(), report.findings.end(),
      [&](const Finding& finding) { return finding.severity == severity; }));
}

std::string Success(const Report& report) {
  const size_t stops = CountOf(report, Severity::kStop);
  const size_t looks = CountOf(report, Severity::kLook);
  std::string text = "upgrade succeeds";
  if (stops > 0) {
    text += fmt::format(", but {} should stop it",
                        Counted(stops, "thing", "things"));
  }
  if (looks > 0) {
    text += fmt::format(", {}{} to look at",
                        stops > 0 ? fmt::format("and {}", looks)
                                  : Counted(looks, "thing", "things"),
                        stops > 0 ? (looks == 1 ? " is" : " are") : "");
  }
  return text;
}

}  // namespace

std::string PassTitle(const Report& report, uint32_t pass) {
  if (pass == 0 || pass > report.passes.size()) return "Outside of the passes";
  return fmt::format("Pass {}, {}", pass,
                     OneLine(report.passes[pass - 1].name));
}

std::string AgentName(const Report& report, Agent agent) {
  if (!agent) return "";
  if (*agent == kAutomaticUpgrade) return "the automatic upgrade";
  if (*agent == 0 || *agent > report.passes.size()) return "the plug-in";
  return "p" + PassTitle(report, *agent).substr(1);
}

std::string LastPass(const Report& report) {
  uint32_t pass = 0;
  for (const Event& event : report.journal.events()) {
    if (const auto* record = std::get_if<LogRecord>(&event)) {
      pass = record->pass;
    }
  }
  if (pass == 0 || pass > report.passes.size()) return "";
  return AgentName(report, pass);
}

std::string Verdict(const Report& report) {
  if (!report.failure) return Success(report);
  switch (report.failure->code) {
    case ExitCode::kPluginFailed:
    case ExitCode::kPluginDied: {
      const std::string pass = LastPass(report);
      std::string text = "upgrade fails" + (pass.empty() ? "" : " in " + pass);
      if (report.result) {
        text += fmt::format(": update returned {}", *report.result);
      }
      return text;
    }
    case ExitCode::kInvalidResult:
      return fmt::format("upgrade fails: the result breaks the new model in {}",
                         Counted(report.violations.size(), "place", "places"));
    case ExitCode::kNeedsALook:
      return Success(report);
    case ExitCode::kOutputFailed:
      return Success(report) + ", but its result cannot be written";
    default:
      return "upgrade not rehearsed to its end";
  }
}

}  // namespace kit::host
