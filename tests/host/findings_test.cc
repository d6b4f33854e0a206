// What a run points out: rules of a site's own, and what becomes of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

using Json = nlohmann::json;

const std::string kExamples = TEST_SOURCE_ROOT "/examples/";

constexpr char kLongLabels[] =
    R"({"id": "LABEL", "severity": "look", "in": "input",
        "select": "/demo:demo/item", "when": "string-length(label) > 2",
        "message": "item {id} is called {label}", "unit": ["item", "items"],
        "advice": "Shorten it.", "section": "handbook#labels"})";

class FindingsTest : public HostTest {
 protected:
  // What a run on the two items "one" and "two" comes to with these rules.
  Outcome RunWithRules(const std::string& plugin, const std::string& rules,
                       std::vector<std::string> args = {}) {
    args.insert(args.begin(),
                {Write("demo.xml", kDemoXml), "--rules",
                 Write("rules.json", "{\n\"rules\": [" + rules + "]\n}")});
    return RunDemo(plugin, args);
  }
};

TEST_F(FindingsTest, ARuleOfASitesOwnIsShownBelowTheVerdict) {
  const Outcome outcome = RunWithRules("well_behaved", kLongLabels);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr(": upgrade succeeds, 2 things to look at\n look  LABEL"),
            HasSubstr(" look  LABEL  item 1 is called one (2 items)   "
                      "handbook#labels\n")));
}

TEST_F(FindingsTest, VerboseSaysWhereAndWhatToDo) {
  EXPECT_THAT(RunWithRules("idle", kLongLabels, {"--verbose"}).out,
              HasSubstr("handbook#labels\n"
                        "             /demo/item{1}\n"
                        "             /demo/item{2}\n"
                        "             What to do: Shorten it.\n"));
}

TEST_F(FindingsTest, JsonHasThemWhole) {
  const Json report =
      Json::parse(RunWithRules("idle", kLongLabels, {"--json"}).out);
  ASSERT_EQ(report["findings"].size(), 2U) << report["findings"];
  EXPECT_EQ(report["findings"][0],
            Json({{"rule", "LABEL"},
                  {"severity", "look"},
                  {"message", "item 1 is called one"},
                  {"count", 2},
                  {"places", {"/demo/item{1}", "/demo/item{2}"}},
                  {"advice", "Shorten it."},
                  {"section", "handbook#labels"}}));
}

TEST_F(FindingsTest, RulesLookAtResultLogAndCallsToo) {
  const Outcome outcome =
      RunWithRules("well_behaved",
                   R"({"id": "R", "severity": "stop", "in": "result",
          "select": "/demo:demo/item[id = 9]", "message": "{label} is new",
          "advice": "a"},
         {"id": "L", "severity": "note", "in": "log",
          "pattern": "^(?<count>[0-9]+) items$", "message": "{count} of them",
          "advice": "a"})");
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("but 1 thing should stop it, and 1 is to look "
                              "at\n stop  R     nine is new\n"),
                    HasSubstr("\n note  L     2 of them\n")));
  EXPECT_THAT(
      RunWithRules("frees", R"({"id": "C", "severity": "look", "in": "calls",
          "function": "maapi_delete", "message": "{function} of {path}",
          "advice": "a"})")
          .out,
      Not(HasSubstr("  C  ")));
}

TEST_F(FindingsTest, WhatTheInputShowsIsShownOfAFailedUpgradeToo) {
  const Outcome outcome = RunWithRules("fails", kLongLabels);
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr(": upgrade fails: update returned -1\n"),
                    HasSubstr(" look  LABEL  item 1 is called one")));
}

TEST_F(FindingsTest, StrictMakesWhatNeedsALookAFailure) {
  const std::vector<std::string> strict = {"--strict", "-o", Path("out")};
  const std::string config =
      "<demo xmlns=\"urn:demo\"><item><id>1</id><label>one</label></item>"
      "</demo>";
  const std::string note =
      Write("note.json",
            std::string("{\"rules\": [") +
                std::string(kLongLabels)
                    .replace(std::string(kLongLabels).find("look"), 4, "note") +
                "]}");
  const std::string look =
      Write("look.json", std::string("{\"rules\": [") + kLongLabels + "]}");
  const std::string clean = Write("clean.xml", config);
  const Outcome noted = RunDemo(
      "idle", {clean, "--rules", note, "--strict", "-o", Path("noted")});
  EXPECT_EQ(noted.exit_code, 0) << noted;
  EXPECT_TRUE(Exists("noted"));
  const Outcome outcome = RunDemo(
      "idle", {clean, "--rules", look, "--strict", "-o", Path("looked")});
  EXPECT_EQ(outcome.exit_code, 7) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr(": 1 thing is to look at, and --strict"));
  EXPECT_THAT(outcome.out, HasSubstr("\nNothing was written.\n"));
  EXPECT_FALSE(Exists("looked"));
}

TEST_F(FindingsTest, AFaultyFileOfRulesIsNamedWithLineAndColumn) {
  struct Row {
    std::string rules;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {"{", "rules.json:"},
      {R"({"id": "A"})", "rules.json:2:11: "},
      {R"({"id": "A", "severity": "bad", "in": "log", "pattern": "x",
           "message": "m", "advice": "a"})",
       "rules.json:2:35: "},
      {R"({"id": "A", "severity": "look", "in": "input",
           "select": "/demo:demo/item[", "message": "m", "advice": "a"})",
       "rules.json:3:"},
      {R"({"id": "A", "severity": "look", "in": "input",
           "select": "/demo:demo/thing", "message": "m", "advice": "a"})",
       "rules.json:3:"},
      {R"({"id": "A", "severity": "look", "in": "log", "pattern": "(",
           "message": "m", "advice": "a"})",
       "rules.json:2:"},
  };
  for (const Row& row : rows) {
    const Outcome outcome =
        RunWithRules("well_behaved", row.rules, {"-o", Path("out")});
    EXPECT_EQ(outcome.exit_code, 3) << row.rules << outcome;
    EXPECT_THAT(outcome.err, AllOf(HasSubstr(Path(row.reason)),
                                   HasSubstr("correct the file of rules")));
    EXPECT_FALSE(Exists("out"));
  }
  const Outcome missing =
      RunDemo("idle", {Path("demo.xml"), "--rules", Path("missing.json")});
  EXPECT_EQ(missing.exit_code, 3) << missing;
  EXPECT_THAT(missing.err, HasSubstr("missing.json"));
}

TEST_F(FindingsTest, RulesAndPassesThatAreNoFilesAreRefused) {
  const std::string config = Write("demo.xml", kDemoXml);
  for (const std::string option : {"--rules", "--passes"}) {
    const Outcome folder = RunDemo("idle", {config, option, Path("")});
    EXPECT_EQ(folder.exit_code, 3) << folder;
    EXPECT_THAT(folder.err, HasSubstr("cannot be read: Is a directory"));
    const Outcome endless = RunDemo("idle", {config, option, "/dev/zero"});
    EXPECT_EQ(endless.exit_code, 3) << endless;
    EXPECT_THAT(endless.err, HasSubstr("/dev/zero"));
    EXPECT_THAT(endless.err, HasSubstr("is larger than 16 MiB"));
  }
}

TEST_F(FindingsTest, ValuesThatThePluginKeepsAreCounted) {
  const std::string config = Write("demo.xml", kDemoXml);
  EXPECT_THAT(RunDemo("keeps_values", {config}).out,
              HasSubstr(" note  VALUES  the plug-in keeps the memory of values "
                        "that it has read (2 values)"));
  EXPECT_THAT(RunDemo("frees", {config}).out, Not(HasSubstr("  VALUES  ")));
  EXPECT_THAT(Run({"run", kExamples + "provider-edge.xml"}).out,
              Not(HasSubstr("  VALUES  ")));
}

TEST_F(FindingsTest, TheDeviceIsCalledByItsName) {
  EXPECT_THAT(Run({"run", kExamples + "provider-edge.xml"}).out,
              testing::StartsWith("router pe2-fra (" + kExamples +
                                  "provider-edge.xml): upgrade succeeds"));
}

TEST_F(FindingsTest, PassesOfAnotherPluginAreThoseOfItsTable) {
  const std::string passes = Write(
      "passes.json",
      R"({"passes": [{"name": "all", "start": "2 items", "finish": "done"}]})");
  const std::string config = Write("demo.xml", kDemoXml);
  EXPECT_THAT(RunDemo("well_behaved", {config, "--passes", passes}).out,
              HasSubstr("\nPasses:  1 all  1 created, 1 changed, 1 deleted\n"));
  const Outcome faulty =
      RunDemo("well_behaved", {config, "--passes", Write("none.json", "{}")});
  EXPECT_EQ(faulty.exit_code, 3) << faulty;
  EXPECT_THAT(faulty.err, HasSubstr("none.json: has no list \"passes\""));
}

}  // namespace
}  // namespace host_test
