#include "kit/host/report/fleet_summary.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

#include "kit/host/report/names.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Color = Screen::Color;

Color ColorOf(RouterVerdict verdict) {
  switch (verdict) {
    case RouterVerdict::kFine:
      return Color::kGreen;
    case RouterVerdict::kLook:
      return Color::kYellow;
    case RouterVerdict::kFail:
      return Color::kRed;
  }
  return Color::kDim;
}

// Each rule once; one may find several things.
std::string WhatWasFound(const RouterResult& result) {
  std::vector<std::pair<std::string, uint64_t>> rules;
  for (const Finding& finding : result.findings) {
    if (finding.severity == Severity::kNote) continue;
    const uint64_t count = std::max<uint64_t>(finding.count, 1);
    const auto known = std::find_if(
        rules.begin(), rules.end(),
        [&](const auto& rule) { return rule.first == finding.rule; });
    if (known != rules.end()) {
      known->second += count;
    } else {
      rules.emplace_back(finding.rule, count);
    }
  }
  std::string text;
  for (const auto& [rule, count] : rules) {
    text += (text.empty() ? "" : ", ") + rule;
    if (count > 1) text += fmt::format(" ({})", count);
  }
  return text;
}

}  // namespace

void FleetSummary::Add(const RouterResult& result) {
  ++(result.verdict == RouterVerdict::kFine   ? fine_
     : result.verdict == RouterVerdict::kLook ? looks_
                                              : fails_);
  worst_ = std::max(worst_, result.exit_code);
  const auto count = [&result](auto& groups, int kind,
                               const std::string& name) {
    Group& group = groups[{kind, name}];
    if (group.routers++ == 0) group.first = result.config;
  };
  if (result.failure) {
    count(failures_, static_cast<int>(result.exit_code), result.pass);
  }
  std::set<std::string> known;  // a rule may find several things
  for (const Finding& finding : result.findings) {
    if (!known.insert(finding.rule).second) continue;
    count(rules_, -static_cast<int>(finding.severity), finding.rule);
  }
}

std::string FleetSummary::Headline() const {
  return fmt::format("{}: {} fine, {} to look at, {} failing",
                     Counted(routers(), "router", "routers"), fine_, looks_,
                     fails_);
}

std::vector<FleetSummary::Kind> FleetSummary::Failures() const {
  std::vector<Kind> kinds;
  for (const auto& [key, group] : failures_) {
    const auto& [code, pass] = key;
    kinds.push_back({Name(static_cast<ExitCode>(code)) +
                         (pass.empty() ? "" : " in " + pass),
                     Severity::kStop, group.routers, group.first});
  }
  return kinds;
}

std::vector<FleetSummary::Kind> FleetSummary::Rules() const {
  std::vector<Kind> kinds;
  for (const auto& [key, group] : rules_) {
    const auto& [severity, rule] = key;
    kinds.push_back(
        {rule, static_cast<Severity>(-severity), group.routers, group.first});
  }
  return kinds;
}

std::string FleetSummary::Render(const Screen& screen) const {
  std::string text = Headline() + "\n";
  const auto line = [&text, &screen](Color color, const char* word,
                                     const Kind& kind) {
    text += fmt::format(" {}  {:<44} {:>9}   first: {}\n",
                        screen.Painted(color, word), OneLine(kind.name),
                        Counted(kind.routers, "router", "routers"),
                        OneLine(kind.first));
  };
  for (const Kind& kind : Failures()) line(Color::kRed, "fail", kind);
  for (const Kind& kind : Rules()) {
    line(kind.severity == Severity::kNote ? Color::kDim : Color::kYellow,
         Name(kind.severity), kind);
  }
  return text;
}

std::string WhatFailed(const RouterResult& result) {
  if (!result.failure) return "";
  std::string text;
  if (!result.pass.empty()) text = result.pass + ": ";
  if (result.failure->line > 0) {
    text += fmt::format("line {}: ", result.failure->line);
  }
  return text + result.failure->reason;
}

std::string RenderRouter(const RouterResult& result, const Screen& screen) {
  std::string text =
      screen.Painted(ColorOf(result.verdict), Name(result.verdict)) + "  ";
  text += OneLine(result.device.empty()
                      ? result.config
                      : fmt::format("{} ({})", result.device, result.config));
  const std::string more =
      result.failure ? WhatFailed(result) : WhatWasFound(result);
  return text + (more.empty() ? "" : ": " + OneLine(more)) + "\n";
}

}  // namespace kit::host
