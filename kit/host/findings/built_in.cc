#include "kit/host/findings/built_in.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

#include "kit/host/text.h"

namespace kit::host {
namespace {

constexpr char kSection[] = "docs/findings.md#for-any-plug-in";

Finding Make(std::string rule, Severity severity, std::string message,
             std::string advice) {
  Finding finding;
  finding.rule = std::move(rule);
  finding.severity = severity;
  finding.message = std::move(message);
  finding.advice = std::move(advice);
  finding.section = kSection;
  return finding;
}

void SetCount(Finding& finding, uint64_t count, std::string_view one,
              std::string_view many) {
  finding.count = count;
  finding.unit = Counted(count, one, many);
}

void AddPlace(Finding& finding, std::string place) {
  if (finding.places.size() == Finding::kMostPlaces) return;
  finding.places.push_back(std::move(place));
}

std::string_view LastStep(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

// "/a/b/c" of "/a/b{1 "x}"}/c".
std::string WithoutKeys(std::string_view path) {
  std::string text;
  bool in_keys = false;
  bool quoted = false;
  for (size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    if (!in_keys && c == '{') {
      in_keys = true;
    } else if (!in_keys) {
      text += c;
    } else if (c == '\\') {
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == '}' && !quoted) {
      in_keys = false;
    }
  }
  return text;
}

bool IsWrite(std::string_view function) {
  constexpr std::array<std::string_view, 5> kWrites = {
      "maapi_set", "maapi_create", "maapi_delete", "maapi_move", "maapi_copy"};
  // These set up a session.
  constexpr std::array<std::string_view, 3> kNone = {
      "maapi_set_namespace", "maapi_set_flags", "maapi_set_delayed_when"};
  const auto begins = [function](std::string_view beginning) {
    return function.substr(0, beginning.size()) == beginning;
  };
  return std::any_of(kWrites.begin(), kWrites.end(), begins) &&
         std::find(kNone.begin(), kNone.end(), function) == kNone.end();
}

Finding DefaultFinding(const control::MovedDefault& moved,
                       const control::MovedDefault::Places& places,
                       const std::string& rule, const std::string& why) {
  Finding finding =
      Make(rule, Severity::kLook,
           fmt::format("{} {} -> {}, {}", LastStep(moved.leaf),
                       moved.before.value_or("(nothing)"),
                       moved.after.value_or("(nothing)"), why),
           "Set it on the device where the old value has to stay.");
  SetCount(finding, places.count, "entry", "entries");
  for (const std::string& path : places.examples) AddPlace(finding, path);
  return finding;
}

}  // namespace

std::vector<Finding> DefaultFindings(
    const std::vector<control::MovedDefault>& moved) {
  std::vector<Finding> findings;
  for (const control::MovedDefault& one : moved) {
    if (one.unset.count > 0) {
      findings.push_back(
          DefaultFinding(one, one.unset, "DEFAULT", "nobody set it"));
    }
    if (one.set_to_default.count > 0) {
      findings.push_back(DefaultFinding(one, one.set_to_default, "DEFAULT-SET",
                                        "it was set to what was the default"));
    }
  }
  return findings;
}

std::vector<Finding> LossFindings(const std::vector<control::Loss>& losses) {
  std::map<std::pair<std::string, std::string>, Finding> by_kind;
  for (const control::Loss& loss : losses) {
    std::string node = WithoutKeys(loss.path);
    auto [known, is_new] = by_kind.try_emplace({std::move(node), loss.reason});
    Finding& finding = known->second;
    if (is_new) {
      finding = Make("LOST", Severity::kLook,
                     loss.value.empty()
                         ? fmt::format("{} is not carried over: {}", loss.path,
                                       loss.reason)
                         : fmt::format("{} \"{}\" is not carried over: {}",
                                       loss.path, loss.value, loss.reason),
                     "Check that the new release does without it, or set its "
                     "counterpart after the upgrade.");
    }
    SetCount(finding, finding.count + 1, "place", "places");
    AddPlace(finding, loss.path);
  }
  std::vector<Finding> findings;
  for (auto& [kind, finding] : by_kind) findings.push_back(std::move(finding));
  return findings;
}

std::vector<Finding> FailedCallFindings(const std::vector<FailedCall>& calls) {
  std::vector<Finding> findings;
  for (const FailedCall& call : calls) {
    if (!IsWrite(call.function)) continue;
    Finding finding = Make(
        "CALLS", Severity::kLook,
        fmt::format("{} {} failed{} and the upgrade went on: {}", call.function,
                    call.path,
                    call.pass.empty() ? "" : fmt::format(" in {}", call.pass),
                    call.reason),
        "What should have been written is missing. Look it up in the log, and "
        "set it by hand after the upgrade.");
    SetCount(finding, call.count, "call", "calls");
    AddPlace(finding, call.path);
    findings.push_back(std::move(finding));
  }
  return findings;
}

std::vector<Finding> CursorFindings(uint64_t open_cursors) {
  if (open_cursors == 0) return {};
  Finding finding =
      Make("CURSORS", Severity::kNote, "the plug-in leaves cursors open",
           "Have the plug-in call maapi_destroy_cursor: each of them holds "
           "memory of the database.");
  SetCount(finding, open_cursors, "cursor", "cursors");
  return {finding};
}

std::vector<Finding> UnreleasedValueFindings(uint64_t values) {
  if (values == 0) return {};
  Finding finding =
      Make("VALUES", Severity::kNote,
           "the plug-in keeps the memory of values that it has read",
           "Have the plug-in call confd_free_value for each of them.");
  SetCount(finding, values, "value", "values");
  return {finding};
}

std::vector<Finding> ViolationFindings(
    const std::vector<control::Violation>& violations) {
  if (violations.empty()) return {};
  const control::Violation& first = violations.front();
  Finding finding = Make(
      "INVALID", Severity::kStop,
      fmt::format("the device would refuse the result: {}{}",
                  first.path.empty() ? "" : first.path + ": ", first.reason),
      "Repair what the constraint names in the old configuration, and upgrade "
      "again.");
  SetCount(finding, violations.size(), "constraint", "constraints");
  for (const control::Violation& violation : violations) {
    AddPlace(finding, violation.path);
  }
  return {finding};
}

Finding OtherSchemasFinding(bool loaded, const std::string& effect) {
  const char* const here = loaded ? "loaded" : "not loaded";
  const char* const other = loaded ? "none" : "loaded";
  if (effect.empty()) {
    return Make("SCHEMAS", Severity::kNote,
                fmt::format("schemas {}, which the plug-in depends on; how it "
                            "does otherwise was not found out",
                            here),
                fmt::format("Rehearse with --schemas {} too.", other));
  }
  return Make(
      "SCHEMAS", Severity::kLook,
      fmt::format("schemas {}; where the upgrade framework {} them, {}", here,
                  loaded ? "does not load" : "loads", effect),
      "Find out whether the device's framework loads schemas, and rehearse "
      "with --schemas as it does.");
}

}  // namespace kit::host
