// Whether the plug-in finds schemas loaded, and what the host says of the other
// case.
#include <gmock/gmock.h>

#include <chrono>
#include <cstring>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kSchemasFinding[] = "  SCHEMAS  schemas ";

class SchemasTest : public HostTest {
 protected:
  // The plug-in that does so without the name of a key, with "unnamed ..." the
  // other way.
  Outcome RunFormatting(const std::string& how,
                        std::vector<std::string> args = {}) {
    args.insert(
        args.begin(),
        Write("demo.xml", "<demo xmlns=\"urn:demo\"><item><id>1</id><label>" +
                              how + "</label></item></demo>"));
    return RunDemo("formats_keys", args);
  }
  // What is found about schemas, "" if nothing.
  static std::string LineOf(const Outcome& outcome) {
    const size_t at = outcome.out.find(kSchemasFinding);
    if (at == std::string::npos) return "";
    const size_t begin = at + std::strlen(kSchemasFinding);
    return outcome.out.substr(begin, outcome.out.find("   ", begin) - begin);
  }
  static nlohmann::json JsonOf(const Outcome& outcome) {
    return nlohmann::json::parse(outcome.out).at("schemas");
  }
};

const std::string kExamples = TEST_SOURCE_ROOT "/examples/";

TEST_F(SchemasTest, OurPluginNeedsThemWhereEntitiesAreMoved) {
  for (const char* name : {"provider-edge.xml", "branch-router.xml"}) {
    const std::string example = kExamples + name;
    const Outcome loaded = Run({"run", example});
    EXPECT_EQ(loaded.exit_code, 0) << loaded;
    EXPECT_EQ(LineOf(loaded),
              "loaded; where the upgrade framework does not load "
              "them, update returns -1, and the device gives the upgrade up");
    const Outcome none = Run({"run", example, "--schemas", "none"});
    EXPECT_EQ(none.exit_code, 1) << none;
    EXPECT_THAT(none.out, HasSubstr("update returned -1"));
  }
}

TEST_F(SchemasTest, NothingIsSaidWhereTheyDoNotMatter) {
  for (const char* schemas : {"loaded", "none"}) {
    const Outcome outcome =
        Run({"run", kExamples + "no-ospf.xml", "--schemas", schemas});
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    EXPECT_EQ(LineOf(outcome), "");
  }
  const nlohmann::json json =
      JsonOf(Run({"run", kExamples + "no-ospf.xml", "--json"}));
  EXPECT_EQ(json,
            nlohmann::json(
                {{"loaded", true}, {"matter", false}, {"otherwise", nullptr}}));
}

TEST_F(SchemasTest, TheOtherCaseIsToldByWhatBecameOfIt) {
  const std::string line =
      "loaded; where the upgrade framework does not load them, ";
  EXPECT_EQ(LineOf(RunFormatting("fails")),
            line + "update returns -1, and the device gives the upgrade up");
  for (const char* death : {"aborts", "throws", "exits"}) {
    EXPECT_EQ(LineOf(RunFormatting(death)),
              line + "update does not return, and the device has no upgrade")
        << death;
  }
  EXPECT_EQ(LineOf(RunFormatting("breaks")),
            line +
                "the result breaks the new model in 1 place, and the device "
                "gives the upgrade up");
  EXPECT_EQ(LineOf(RunFormatting("differs")),
            line + "the device gets another configuration");
  EXPECT_EQ(LineOf(RunFormatting("does nothing")), "");
}

TEST_F(SchemasTest, ARunWithoutThemIsComparedWithOneThatHasThem) {
  const Outcome outcome = RunFormatting("unnamed fails", {"--schemas", "none"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(LineOf(outcome),
            "not loaded; where the upgrade framework loads them, "
            "update returns -1, and the device gives the upgrade up");
  EXPECT_EQ(RunFormatting("unnamed fails").exit_code, 1);
}

TEST_F(SchemasTest, WhatAPluginLoadsByItselfIsThereEitherWay) {
  for (const char* schemas : {"loaded", "none"}) {
    const Outcome outcome =
        RunFormatting("loads", {"--schemas", schemas, "--json"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    EXPECT_EQ(JsonOf(outcome)["matter"], false) << schemas;
  }
}

TEST_F(SchemasTest, WhatCouldNotBeFoundOutIsSaid) {
  for (const char* how : {"starts thread", "killed", "hangs"}) {
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = RunFormatting(how);
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    EXPECT_EQ(LineOf(outcome),
              "loaded, which the plug-in depends on; how it does otherwise was "
              "not found out")
        << how;
    EXPECT_LT(std::chrono::steady_clock::now() - start,
              std::chrono::seconds(30));
    EXPECT_EQ(JsonOf(RunFormatting(how, {"--json"}))["matter"], nullptr);
  }
}

TEST_F(SchemasTest, TryingTheOtherCaseKeepsToTheTimeout) {
  const Outcome outcome = RunFormatting("hangs", {"--timeout", "1"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
}

TEST_F(SchemasTest, TryingTheOtherCaseLeavesNoTrace) {
  for (const char* how : {"fails", "aborts", "differs"}) {
    const Outcome outcome =
        RunFormatting(how, {"-o", Path(std::string(how) + ".xml"), "--json"});
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["log"].size(), 1u);
    EXPECT_EQ(json["plugin_output"], "before;after\n");
    EXPECT_EQ(json["calls"]["total"], 4);
    EXPECT_EQ(json["calls"]["by_function"]["confd_format_keypath"], 3);
    EXPECT_THAT(Read(std::string(how) + ".xml"), HasSubstr(how));
  }
}

TEST_F(SchemasTest, AFailedRunSaysNothingOfTheOtherCase) {
  const Outcome outcome =
      RunFormatting("fails", {"--schemas", "none", "--json"});
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_EQ(JsonOf(outcome), nlohmann::json({{"loaded", false},
                                             {"matter", nullptr},
                                             {"otherwise", nullptr}}));
}

TEST_F(SchemasTest, TheyAreLoadedOrNot) {
  const Outcome outcome = RunFormatting("fails", {"--schemas", "some"});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, HasSubstr("--schemas"));
}

}  // namespace
}  // namespace host_test
