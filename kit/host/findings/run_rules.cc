#include "kit/host/findings/run_rules.h"

#include <algorithm>
#include <optional>

#include "kit/host/text.h"

namespace kit::host {
namespace {

bool Fits(const CallCondition& condition, const FailedCall& call) {
  if (!condition.function.empty() && condition.function != call.function) {
    return false;
  }
  if (condition.error && *condition.error != call.error) return false;
  return condition.path == nullptr || condition.path->Matches(call.path);
}

bool Explains(const Rule& rule, const std::vector<Finding>& findings,
              const FailedCall& call) {
  if (!rule.explains || !Fits(*rule.explains, call)) return false;
  return std::any_of(
      findings.begin(), findings.end(), [&](const Finding& finding) {
        return finding.rule == rule.id && finding.count >= call.count;
      });
}

std::string PlaceText(const FailedCall& call, const std::string& name) {
  if (name == "function") return call.function;
  if (name == "path") return call.path;
  if (name == "error") return std::to_string(call.error);
  return name == "reason" ? call.reason : call.pass;
}

}  // namespace

LogRules::LogRules(const Catalogue& catalogue) {
  for (const Rule& rule : catalogue.rules) {
    if (rule.where == Where::kLog) watches_.push_back({&rule, Collector(rule)});
  }
}

void LogRules::Add(std::string_view record) {
  const std::string_view text = WithoutLastNewline(record);
  for (Watch& watch : watches_) {
    Pattern& pattern = *watch.rule->pattern;
    if (!pattern.Matches(text)) continue;
    watch.collector.Add(
        [&](size_t i) {
          const std::string& name = watch.rule->message.places()[i].name;
          return std::string(pattern.Group(name).value_or(""));
        },
        [text] { return RecordLine(text); });
  }
}

std::vector<Finding> LogRules::Findings() const {
  std::vector<Finding> findings;
  for (const Watch& watch : watches_) {
    if (auto finding = watch.collector.Result()) {
      findings.push_back(std::move(*finding));
    }
  }
  return findings;
}

std::vector<Finding> FindInCalls(const Catalogue& catalogue,
                                 const std::vector<FailedCall>& calls) {
  std::vector<Finding> findings;
  for (const Rule& rule : catalogue.rules) {
    if (rule.where != Where::kCalls) continue;
    Collector collector(rule);
    for (const FailedCall& call : calls) {
      if (!Fits(rule.calls, call)) continue;
      collector.Add(
          [&](size_t i) {
            return PlaceText(call, rule.message.places()[i].name);
          },
          [&call] { return call.path.empty() ? call.function : call.path; },
          call.count);
    }
    if (auto finding = collector.Result()) {
      findings.push_back(std::move(*finding));
    }
  }
  return findings;
}

std::vector<FailedCall> Unexplained(const Catalogue& catalogue,
                                    const std::vector<Finding>& findings,
                                    std::vector<FailedCall> calls) {
  const auto is_explained = [&](const FailedCall& call) {
    return std::any_of(
        catalogue.rules.begin(), catalogue.rules.end(),
        [&](const Rule& rule) { return Explains(rule, findings, call); });
  };
  calls.erase(std::remove_if(calls.begin(), calls.end(), is_explained),
              calls.end());
  return calls;
}

}  // namespace kit::host
