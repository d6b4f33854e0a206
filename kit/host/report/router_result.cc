#include "kit/host/report/router_result.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "kit/host/report/json_parts.h"
#include "kit/host/report/names.h"
#include "kit/host/report/verdict.h"

namespace kit::host {
namespace {

RouterVerdict VerdictOf(const Report& report) {
  if (report.failure) return RouterVerdict::kFail;
  const bool needs_look = std::any_of(
      report.findings.begin(), report.findings.end(),
      [](const Finding& one) { return one.severity != Severity::kNote; });
  return needs_look ? RouterVerdict::kLook : RouterVerdict::kFine;
}

Json FindingJson(const Finding& finding) {
  return {{"rule", finding.rule},       {"severity", Name(finding.severity)},
          {"message", finding.message}, {"count", finding.count},
          {"unit", finding.unit},       {"places", finding.places},
          {"advice", finding.advice},   {"section", finding.section}};
}

template <typename Enum, size_t kSize>
Enum ByName(const std::array<Enum, kSize>& values, const std::string& name) {
  for (const Enum value : values) {
    if (Name(value) == name) return value;
  }
  throw LineError("'" + name + "' is not known");
}

Finding ToFinding(const Json& json) {
  constexpr std::array kSeverities = {Severity::kNote, Severity::kLook,
                                      Severity::kStop};
  Finding finding;
  finding.rule = json.at("rule");
  finding.severity = ByName(kSeverities, json.at("severity"));
  finding.message = json.at("message");
  finding.count = json.at("count");
  finding.unit = json.at("unit");
  finding.places = json.at("places").get<std::vector<std::string>>();
  finding.advice = json.at("advice");
  finding.section = json.at("section");
  return finding;
}

RouterResult::Failed ToFailed(const Json& json) {
  return {json.at("reason"), json.at("advice"),
          json.at("details").get<std::vector<std::string>>(), json.at("line"),
          json.at("path")};
}

RouterResult::Failed ToFailed(const Failure& failure) {
  return {failure.reason, failure.advice, failure.details, failure.line,
          failure.path};
}

}  // namespace

const char* Name(RouterVerdict verdict) {
  switch (verdict) {
    case RouterVerdict::kFine:
      return "fine";
    case RouterVerdict::kLook:
      return "look";
    case RouterVerdict::kFail:
      return "fail";
  }
  return "unknown";
}

RouterResult ToRouterResult(const Report& report) {
  RouterResult result;
  result.config = report.config;
  result.device = report.device;
  result.verdict = VerdictOf(report);
  result.exit_code = report.exit_code();
  result.findings = report.findings;
  result.output = report.output;
  result.page = report.page;
  if (report.failure) {
    result.failure = ToFailed(*report.failure);
    const ExitCode code = report.failure->code;
    if (code == ExitCode::kPluginFailed || code == ExitCode::kPluginDied) {
      result.pass = LastPass(report);
    }
  }
  return result;
}

RouterResult LostRouter(const std::string& config, const Failure& failure) {
  RouterResult result;
  result.config = config;
  result.verdict = RouterVerdict::kFail;
  result.exit_code = failure.code;
  result.failure = ToFailed(failure);
  return result;
}

std::string ToLine(const RouterResult& result) {
  Json findings = Json::array();
  for (const Finding& one : result.findings) {
    findings.push_back(FindingJson(one));
  }
  Json failure;
  if (result.failure) {
    failure = {{"reason", result.failure->reason},
               {"advice", result.failure->advice},
               {"details", result.failure->details},
               {"line", result.failure->line},
               {"path", result.failure->path}};
  }
  const Json json = {{"router", result.index},
                     {"config", result.config},
                     {"device", result.device},
                     {"verdict", Name(result.verdict)},
                     {"exit_code", static_cast<int>(result.exit_code)},
                     {"outcome", Name(result.exit_code)},
                     {"pass", result.pass},
                     {"findings", std::move(findings)},
                     {"error", std::move(failure)},
                     {"output", OrNull(result.output)},
                     {"page", OrNull(result.page)}};
  return DumpLine(json);
}

RouterResult ParseLine(const std::string& line) {
  constexpr std::array kVerdicts = {RouterVerdict::kFine, RouterVerdict::kLook,
                                    RouterVerdict::kFail};
  try {
    const Json json = Json::parse(line);
    RouterResult result;
    result.index = json.at("router");
    result.config = json.at("config");
    result.device = json.at("device");
    result.verdict = ByName(kVerdicts, json.at("verdict"));
    result.exit_code = ByName(kExitCodes, json.at("outcome"));
    result.pass = json.at("pass");
    for (const Json& one : json.at("findings")) {
      result.findings.push_back(ToFinding(one));
    }
    const Json& failure = json.at("error");
    if (!failure.is_null()) result.failure = ToFailed(failure);
    const Json& output = json.at("output");
    if (!output.is_null()) result.output = output.get<std::string>();
    const Json& page = json.at("page");
    if (!page.is_null()) result.page = page.get<std::string>();
    return result;
  } catch (const Json::exception& error) {
    throw LineError(error.what());
  }
}

}  // namespace kit::host
