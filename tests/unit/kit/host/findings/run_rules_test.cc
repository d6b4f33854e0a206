#include "kit/host/findings/run_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/host/findings/rule_reader.h"

namespace kit::host {
namespace {

using Lines = std::vector<std::string>;

Catalogue Rules(const std::string& members) {
  return ReadCatalogue(
      "{\"rules\": [{\"id\": \"X\", \"severity\": \"look\", "
      "\"advice\": \"Look.\", \"unit\": [\"one\", \"many\"], " +
          members + "}]}",
      "own.json", true);
}

Lines Describe(const std::vector<Finding>& findings) {
  Lines lines;
  for (const Finding& finding : findings) {
    std::string line = finding.message + " (" + finding.unit + ")";
    for (const std::string& place : finding.places) line += " [" + place + "]";
    lines.push_back(line);
  }
  return lines;
}

TEST(LogRules, CountRecordsThatFitAndShowTheFirst) {
  const Catalogue catalogue = Rules(
      "\"in\": \"log\", \"pattern\": \"^gone: (?<name>.*)$\", "
      "\"message\": \"{name} is gone\"");
  LogRules rules(catalogue);
  EXPECT_EQ(Describe(rules.Findings()), Lines());
  rules.Add("start");
  rules.Add("gone: a\n");
  rules.Add("not gone: b");
  rules.Add("gone: c\x1b");
  EXPECT_EQ(Describe(rules.Findings()),
            Lines({"a is gone (2 many) [gone: a] [gone: c\\x1b]"}));
}

TEST(LogRules, KeepTenOfManyRecords) {
  const Catalogue catalogue =
      Rules("\"in\": \"log\", \"pattern\": \"x\", \"message\": \"m\"");
  LogRules rules(catalogue);
  for (int i = 0; i < 1000; ++i) rules.Add("x" + std::to_string(i));
  const std::vector<Finding> findings = rules.Findings();
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].count, 1000u);
  EXPECT_EQ(findings[0].places.size(), 10u);
  EXPECT_EQ(findings[0].places[9], "x9");
}

const std::vector<FailedCall>& Calls() {
  static const std::vector<FailedCall> calls = {
      {"maapi_delete", "/a/b{1}", 1, "no such entry", 3, "pass 2"},
      {"maapi_create", "/a/b{1}", 2, "it exists", 1, ""},
      {"maapi_delete", "/c", 5, "not writable", 2, ""}};
  return calls;
}

TEST(CallRules, FitByFunctionPathAndError) {
  const auto finds = [](const std::string& condition) {
    return Describe(FindInCalls(
        Rules("\"in\": \"calls\", " + condition +
              "\"message\": \"{function} {path} {error} {reason} {pass}\""),
        Calls()));
  };
  EXPECT_EQ(finds(""),
            Lines({"maapi_delete /a/b{1} 1 no such entry pass 2 (6 many) "
                   "[/a/b{1}] [/a/b{1}] [/c]"}));
  EXPECT_EQ(finds("\"function\": \"maapi_create\", "),
            Lines({"maapi_create /a/b{1} 2 it exists  (1 one) [/a/b{1}]"}));
  EXPECT_EQ(finds("\"path\": \"^/c$\", "),
            Lines({"maapi_delete /c 5 not writable  (2 many) [/c]"}));
  EXPECT_EQ(finds("\"error\": 2, "),
            Lines({"maapi_create /a/b{1} 2 it exists  (1 one) [/a/b{1}]"}));
  EXPECT_EQ(finds("\"error\": 7, "), Lines());
}

TEST(CallRules, AreExplainedWhereARuleHasFoundAsManyPlaces) {
  const Catalogue catalogue = Rules(
      R"("in": "log", "pattern": "x", "message": "m",
         "explains": {"function": "maapi_delete", "path": "^/a/"})");
  Finding found;
  found.rule = "X";
  const auto unexplained = [&](uint64_t places) {
    found.count = places;
    Lines lines;
    for (const FailedCall& call : Unexplained(catalogue, {found}, Calls())) {
      lines.push_back(call.function + " " + call.path);
    }
    return lines;
  };
  EXPECT_EQ(unexplained(3), Lines({"maapi_create /a/b{1}", "maapi_delete /c"}));
  EXPECT_EQ(unexplained(4), unexplained(3));
  EXPECT_EQ(unexplained(2), Lines({"maapi_delete /a/b{1}",
                                   "maapi_create /a/b{1}", "maapi_delete /c"}));
  found.rule = "Y";
  EXPECT_EQ(unexplained(3).size(), 3u);
}

}  // namespace
}  // namespace kit::host
