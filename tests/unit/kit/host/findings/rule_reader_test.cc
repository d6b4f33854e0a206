#include "kit/host/findings/rule_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kit::host {
namespace {

// The words of the error, "" for a text that is taken.
std::string FaultOf(const std::string& text) {
  try {
    ReadCatalogue(text, "own.json", true);
  } catch (const RuleError& error) {
    return error.what();
  }
  return "";
}

// A catalogue of one rule, which begins in column 12.
std::string OneRule(const std::string& members) {
  return "{\"rules\": [{\"id\": \"X-1\", \"severity\": \"look\", \"advice\": "
         "\"Look.\",\n" +
         members + "}]}";
}

TEST(RuleReader, TakesRulesOfEachKind) {
  const Catalogue catalogue = ReadCatalogue(
      R"json({"secrets": ["/a/b"], "rules": [
        {"id": "A", "severity": "note", "in": "input", "select": "/m:a/b",
         "when": "c = 5", "message": "{c} of {../d} {{x}}",
         "unit": ["thing", "things"], "advice": "Do.", "section": "x.md#1"},
        {"id": "B", "severity": "stop", "in": "log", "pattern": "^a (?<n>.*)",
         "message": "{n}", "advice": "Do."},
        {"id": "C", "severity": "look", "in": "calls",
         "function": "maapi_delete", "path": "^/a", "error": 5,
         "message": "{function} {path} {error} {reason} {pass}",
         "advice": "Do."},
        {"id": "D", "severity": "look", "in": "both", "found": "different",
         "before": {"select": "/m:a", "key": "k", "value": "v"},
         "after": {"select": "/m:b", "when": "x", "key": "k", "value": "v"},
         "message": "{key}: {before}, {after}", "advice": "Do."},
        {"id": "E", "severity": "look", "in": "code",
         "code": "ospfv2-several-entities", "message": "{entities}",
         "advice": "Do."}]
})json",
      "own.json", true);
  ASSERT_EQ(catalogue.rules.size(), 5u);
  const Rule& rule = catalogue.rules[0];
  EXPECT_EQ(rule.id, "A");
  EXPECT_EQ(rule.severity, Severity::kNote);
  EXPECT_EQ(rule.query.select, "/m:a/b");
  EXPECT_EQ(rule.query.when, "c = 5");
  EXPECT_EQ(rule.query.texts, (std::vector<std::string>{"c", "../d"}));
  EXPECT_EQ(rule.message.Fill([](size_t i) { return std::to_string(i); }),
            "0 of 1 {x}");
  EXPECT_EQ(rule.many, "things");
  EXPECT_EQ(rule.section, "x.md#1");
  EXPECT_EQ(catalogue.rules[1].pattern->text(), "^a (?<n>.*)");
  EXPECT_EQ(catalogue.rules[2].calls.error, 5);
  EXPECT_EQ(catalogue.rules[3].comparison.found, Comparison::Found::kDifferent);
  EXPECT_STREQ(catalogue.rules[4].code->name, "ospfv2-several-entities");
}

TEST(RuleReader, NamesLineAndColumnOfWhatIsWrong) {
  const struct {
    std::string text;
    std::string fault;
  } cases[] = {
      {"", "own.json:1:1: no valid JSON: "},
      {"{\"rules\": [}", "own.json:1:12: no valid JSON: "},
      {"[]", "own.json:1:1: an object is needed"},
      {"{}", "own.json:1:1: \"rules\" is missing"},
      {"{\"rules\": {}}", "own.json:1:11: a list is needed"},
      {"{\"rules\": [],\n \"more\": 1}",
       "own.json:2:2: \"more\" is not known here; known are device, rules, "
       "secrets"},
      {"{\"rules\": [],\n \"rules\": []}",
       "own.json:2:2: \"rules\" stands here twice"},
      {"{\"rules\": [], \"secrets\": [\"/a\", 1]}",
       "own.json:1:33: a string is needed"},
      {"{\"rules\": [\n  5]}", "own.json:2:3: an object is needed"},
      {"{\"rules\": [\n  {}]}", "own.json:2:3: \"in\" is missing"},
      {OneRule("\"in\": \"here\""),
       "own.json:2:7: \"here\" is none of input, result, both, log, calls, "
       "code"},
      {OneRule("\"in\": \"log\", \"pattern\": \"x\""),
       "own.json:1:12: \"message\" is missing"},
      {OneRule("\"in\": \"log\", \"pattern\": \"x\", \"message\": 1"),
       "own.json:2:41: a string is needed"},
      {OneRule("\"in\": \"log\", \"pattern\": \"x\", \"message\": \"\""),
       "own.json:2:41: it is empty"},
      {OneRule("\"in\": \"log\", \"select\": \"/x\""),
       "own.json:2:14: \"select\" is not known here; known are id, severity, "
       "in, message, unit, advice, section, explains, pattern"},
      {OneRule("\"in\": \"log\", \"pattern\": \"x\", \"message\": \"m\", "
               "\"explains\": {\"pass\": 4}"),
       "own.json:2:59: \"pass\" is not known here; known are function, path, "
       "error"},
      {OneRule("\"in\": \"log\", \"pattern\": \"\\n(x\", \"message\": \"m\""),
       "own.json:2:30: the pattern: missing closing parenthesis"},
      {OneRule("\"in\": \"log\", \"pattern\": \"x\", \"message\": \"a {n}\""),
       "own.json:2:44: \"n\" is nothing to fill in here; known are none"},
      {OneRule("\"in\": \"calls\", \"message\": \"\\u00e4{paths}\""),
       "own.json:2:34: \"paths\" is nothing to fill in here; known are "
       "function, path, error, reason, pass"},
      {OneRule("\"in\": \"calls\", \"error\": \"5\", \"message\": \"m\""),
       "own.json:2:25: a number is needed"},
      {OneRule("\"in\": \"calls\", \"message\": \"a { b\""),
       "own.json:2:30: the brace is not closed; write {{ for the brace "
       "itself"},
      {OneRule("\"in\": \"calls\", \"message\": \"a } b\""),
       "own.json:2:30: a brace is closed that nobody opened; write }} for the "
       "brace itself"},
      {OneRule("\"in\": \"calls\", \"message\": \"{}\""),
       "own.json:2:28: nothing stands in the braces"},
      {OneRule("\"in\": \"calls\", \"unit\": [\"one\"], \"message\": \"m\""),
       "own.json:2:24: two strings are needed: for one, and for many"},
      {OneRule("\"in\": \"code\", \"code\": \"none\", \"message\": \"m\""),
       "own.json:2:23: there is no code \"none\""},
      {OneRule("\"in\": \"code\", \"code\": \"ospfv2-several-entities\", "
               "\"message\": \"{x}\""),
       "own.json:2:62: \"x\" is nothing to fill in here; known are entities"},
      {OneRule("\"in\": \"both\", \"found\": \"equal\", \"message\": \"m\", "
               "\"before\": {\"select\": \"/a\", \"key\": \"k\"},\n\"after\": "
               "{\"select\": \"/a\", \"key\": \"k\", \"value\": \"v\"}"),
       "own.json:2:59: \"value\" is missing"},
      {OneRule("\"in\": \"both\", \"found\": \"new\", \"before\": {\"select\": "
               "\"/a\", \"kex\": "
               "\"k\"}, \"message\": \"m\""),
       "own.json:2:58: \"kex\" is not known here; known are select, when, key, "
       "value"},
      {"{\"rules\": [{\"id\": \"A\", \"severity\": \"bad\", \"in\": \"log\", "
       "\"pattern\": \"x\", \"message\": \"m\", \"advice\": \"a\"}]}",
       "own.json:1:36: \"bad\" is none of note, look, stop"},
      {"{\"rules\": [{\"id\": \"A\", \"severity\": \"note\", \"in\": \"log\", "
       "\"pattern\": \"x\", \"message\": \"m\", \"advice\": \"a\"},\n"
       "{\"id\": \"A\", \"severity\": \"note\", \"in\": \"log\", "
       "\"pattern\": \"x\", \"message\": \"m\", \"advice\": \"a\"}]}",
       "own.json:2:8: the id \"A\" is taken by the rule in line 1"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(FaultOf(one.text).substr(0, one.fault.size()), one.fault)
        << one.text << "\n"
        << FaultOf(one.text);
  }
}

TEST(RuleReader, IdsOfSeveralCataloguesDiffer) {
  const std::string text =
      OneRule("\"in\": \"log\", \"pattern\": \"x\", \"message\": \"m\"");
  Catalogue catalogue = ReadCatalogue(text, "ours.json", false);
  try {
    catalogue.Add(ReadCatalogue(text, "own.json", true));
    FAIL();
  } catch (const RuleError& error) {
    EXPECT_STREQ(error.what(),
                 "own.json:1:12: the id \"X-1\" is taken by ours.json:1");
  }
  EXPECT_EQ(catalogue.rules.size(), 1u);
}

TEST(RuleReader, AFileThatCanNotBeReadIsNamed) {
  try {
    LoadCatalogue("/nowhere/own.json", true);
    FAIL();
  } catch (const RuleError& error) {
    EXPECT_STREQ(error.what(),
                 "/nowhere/own.json:1:1: cannot be read: No such file or "
                 "directory");
  }
}

}  // namespace
}  // namespace kit::host
