#include "kit/host/findings/rule_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/host/findings/checked_json.h"
#include "kit/host/text_file.h"

namespace kit::host {
namespace {

using Keys = CheckedValue::Keys;
template <typename T>
using Names = CheckedValue::Names<T>;

const Names<Severity>& Severities() {
  static const Names<Severity> names = {{"note", Severity::kNote},
                                        {"look", Severity::kLook},
                                        {"stop", Severity::kStop}};
  return names;
}

const Names<Where>& Places() {
  static const Names<Where> names = {
      {"input", Where::kInput}, {"result", Where::kResult},
      {"both", Where::kBoth},   {"log", Where::kLog},
      {"calls", Where::kCalls}, {"code", Where::kCode}};
  return names;
}

const Names<Comparison::Found>& Outcomes() {
  using Found = Comparison::Found;
  static const Names<Found> names = {{"missing", Found::kMissing},
                                     {"new", Found::kNew},
                                     {"different", Found::kDifferent},
                                     {"equal", Found::kEqual}};
  return names;
}

// What a rule may say besides what every rule says.
const Keys& KeysOf(Where where) {
  static const std::array<Keys, 6> keys = {Keys{"select", "when"},
                                           Keys{"select", "when"},
                                           Keys{"before", "after", "found"},
                                           Keys{"pattern"},
                                           Keys{"function", "path", "error"},
                                           Keys{"code"}};
  return keys[static_cast<size_t>(where)];
}

// Reads one rule.
class RuleReader {
 public:
  RuleReader(const CheckedValue& json, const std::string& file, bool is_own)
      : json_(json) {
    rule_.file = file;
    rule_.is_own = is_own;
    rule_.position = json.position();
  }

  Rule Run() {
    rule_.where = json_["in"].OneOf(Places());
    Keys keys = {"id",   "severity", "in",      "message",
                 "unit", "advice",   "section", "explains"};
    const Keys& more = KeysOf(rule_.where);
    keys.insert(keys.end(), more.begin(), more.end());
    json_.RequireKeys(keys);
    rule_.id = json_["id"].Text();
    rule_.severity = json_["severity"].OneOf(Severities());
    rule_.advice = json_["advice"].Text();
    if (json_.Has("section")) rule_.section = json_["section"].Text();
    if (json_.Has("unit")) ReadUnit(json_["unit"]);
    ReadCondition();
    if (json_.Has("explains")) {
      json_["explains"].RequireKeys(KeysOf(Where::kCalls));
      rule_.explains = ReadCalls(json_["explains"]);
    }
    ReadMessage(json_["message"]);
    return std::move(rule_);
  }

 private:
  void ReadUnit(const CheckedValue& unit) {
    const std::vector<CheckedValue> names = unit.Elements();
    if (names.size() != 2) {
      unit.Fail("two strings are needed: for one, and for many");
    }
    rule_.one = names[0].Text();
    rule_.many = names[1].Text();
  }

  void ReadCondition() {
    switch (rule_.where) {
      case Where::kInput:
      case Where::kResult:
        return ReadSelection(json_, rule_.query);
      case Where::kBoth:
        return ReadComparison();
      case Where::kLog:
        rule_.pattern = ReadPattern(json_["pattern"]);
        return;
      case Where::kCalls:
        rule_.calls = ReadCalls(json_);
        return;
      case Where::kCode:
        return ReadCode(json_["code"]);
    }
  }

  void ReadSelection(const CheckedValue& json, control::Query& query) {
    query.select = ReadExpression(json["select"]);
    if (json.Has("when")) query.when = ReadExpression(json["when"]);
  }

  std::string ReadExpression(const CheckedValue& json) {
    std::string text = json.Text();
    rule_.expressions.emplace(text, json.position());
    return text;
  }

  void ReadComparison() {
    using Found = Comparison::Found;
    Comparison& comparison = rule_.comparison;
    comparison.found = json_["found"].OneOf(Outcomes());
    const bool compares_values = comparison.found == Found::kDifferent ||
                                 comparison.found == Found::kEqual;
    ReadSide(json_["before"], compares_values, comparison.input);
    ReadSide(json_["after"], compares_values, comparison.result);
  }

  void ReadSide(const CheckedValue& json, bool needs_value,
                control::Query& query) {
    json.RequireKeys({"select", "when", "key", "value"});
    ReadSelection(json, query);
    query.texts.push_back(ReadExpression(json["key"]));
    if (needs_value || json.Has("value")) {
      query.texts.push_back(ReadExpression(json["value"]));
    }
  }

  static CallCondition ReadCalls(const CheckedValue& json) {
    CallCondition calls;
    if (json.Has("function")) calls.function = json["function"].Text();
    if (json.Has("path")) calls.path = ReadPattern(json["path"]);
    if (json.Has("error")) calls.error = json["error"].Number();
    return calls;
  }

  static std::shared_ptr<Pattern> ReadPattern(const CheckedValue& json) {
    try {
      return std::make_shared<Pattern>(json.Text());
    } catch (const PatternError& error) {
      json.Fail(json.Inside(error.offset),
                fmt::format("the pattern: {}", error.what()));
    }
  }

  void ReadCode(const CheckedValue& json) {
    const std::string name = json.Text();
    rule_.code = FindCodeRule(name);
    if (rule_.code == nullptr) {
      json.Fail(fmt::format("there is no code \"{}\"", name));
    }
  }

  void ReadMessage(const CheckedValue& json) {
    try {
      rule_.message = Sentence(json.Text());
    } catch (const SentenceError& error) {
      json.Fail(json.Inside(error.offset), error.what());
    }
    const bool names_leaves =
        rule_.where == Where::kInput || rule_.where == Where::kResult;
    for (const Sentence::Place& place : rule_.message.places()) {
      const TextPosition position = json.Inside(place.offset);
      if (names_leaves) {
        rule_.query.texts.push_back(place.name);
        rule_.expressions.emplace(place.name, position);
      } else {
        RequirePlace(json, position, place.name);
      }
    }
  }

  void RequirePlace(const CheckedValue& json, TextPosition position,
                    const std::string& name) const {
    const Keys known = KnownPlaces();
    if (std::find(known.begin(), known.end(), name) != known.end()) return;
    json.Fail(position,
              fmt::format("\"{}\" is nothing to fill in here; known are {}",
                          name, known.empty() ? "none" : Listed(known)));
  }

  Keys KnownPlaces() const {
    switch (rule_.where) {
      case Where::kBoth:
        return {"key", "before", "after"};
      case Where::kCalls:
        return {"function", "path", "error", "reason", "pass"};
      case Where::kLog:
        return {rule_.pattern->groups().begin(), rule_.pattern->groups().end()};
      case Where::kCode:
        return rule_.code->places;
      default:
        return {};
    }
  }

  const CheckedValue& json_;
  Rule rule_;
};

}  // namespace

Catalogue ReadCatalogue(const std::string& text, const std::string& file,
                        bool is_own) {
  const CheckedJson document(text, file);
  const CheckedValue root = document.root();
  root.RequireKeys({"device", "rules", "secrets"});
  Catalogue catalogue;
  if (root.Has("secrets")) {
    for (const CheckedValue& path : root["secrets"].Elements()) {
      catalogue.secrets.push_back(path.Text());
    }
  }
  if (root.Has("device")) {
    const CheckedValue device = root["device"];
    device.RequireKeys({"kind", "name"});
    catalogue.device = {device["kind"].Text(), device["name"].Text()};
  }
  for (const CheckedValue& json : root["rules"].Elements()) {
    Rule rule = RuleReader(json, file, is_own).Run();
    for (const Rule& other : catalogue.rules) {
      if (other.id != rule.id) continue;
      json["id"].Fail(
          fmt::format("the id \"{}\" is taken by the rule in line "
                      "{}",
                      rule.id, other.position.line));
    }
    catalogue.rules.push_back(std::move(rule));
  }
  return catalogue;
}

Catalogue LoadCatalogue(const std::string& file, bool is_own) {
  try {
    return ReadCatalogue(ReadTextFile(file), file, is_own);
  } catch (const TextFileError& error) {
    throw RuleError(file, {}, error.what());
  }
}

void Catalogue::Add(Catalogue own) {
  if (!own.device.name.empty()) device = std::move(own.device);
  secrets.insert(secrets.end(), own.secrets.begin(), own.secrets.end());
  for (Rule& rule : own.rules) {
    for (const Rule& other : rules) {
      if (other.id != rule.id) continue;
      throw RuleError(rule.file, rule.position,
                      fmt::format("the id \"{}\" is taken by {}:{}", rule.id,
                                  other.file, other.position.line));
    }
    rules.push_back(std::move(rule));
  }
}

}  // namespace kit::host
