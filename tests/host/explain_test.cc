// Where an entry or leaf of a result comes from, and where one of the input
// went.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Json = nlohmann::json;

const std::string kExample = TEST_SOURCE_ROOT "/examples/provider-edge.xml";
const std::string kInterfaces = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
const std::string kEntities = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";

class ExplainTest : public HostTest {
 protected:
  Outcome Explain(const std::string& path,
                  const std::vector<std::string>& options = {}) const {
    std::vector<std::string> args = {"explain", kExample, path};
    args.insert(args.end(), options.begin(), options.end());
    return Run(args);
  }
  Outcome ExplainDemo(const std::string& plugin, const std::string& path,
                      const std::vector<std::string>& options = {}) const {
    std::vector<std::string> args =
        DemoArgs(plugin, {Write("demo.xml", kDemoXml), path});
    args.front() = "explain";
    args.insert(args.end(), options.begin(), options.end());
    return Run(args);
  }
};

TEST_F(ExplainTest, AReKeyedEntryHasItsOldKeysThePassAndItsCalls) {
  const std::string before = kInterfaces + "{100 10.100.0.1 0}";
  const std::string after = kInterfaces + "{1 10.100.0.1 0}";
  const Outcome outcome = Explain(after);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.err, IsEmpty());
  EXPECT_THAT(outcome.out,
              StartsWith(after + ": was " + before +
                         ", got other keys in pass 3, compound index"));
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("\nInput: " + before + "\n"),
            HasSubstr("\nPass 3, compound index:\n    log: update to compound "
                      "idx: " +
                      kInterfaces + "\n"),
            ContainsRegex("\n    #[0-9]+ maapi_delete .*\\{100 10.100.0.1 0\\} "
                          "-> 0\n        deleted "),
            ContainsRegex("\n    #[0-9]+ maapi_create .*\\{1 10.100.0.1 0\\}"),
            HasSubstr("\n        ospfPmIfNmEntity: 100 -> 1\n"),
            HasSubstr("\nResult: " + after + "\n")));
  EXPECT_THAT(Explain(before).out,
              StartsWith(before +
                         ": got other keys in pass 3, compound index: "
                         "is " +
                         after + " now"));
}

TEST_F(ExplainTest, ACreatedEntryHasItsPassAndWhatItsValuesWereReadFrom) {
  const std::string path = kInterfaces + "{1 10.210.0.1 0}";
  const Outcome outcome = Explain(path + "/");
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path +
                         ": created by pass 4, secondary addresses, with "
                         "ospfPmIfAdminStat and ospfPmIfType as read from " +
                         kInterfaces + "{100 10.110.0.1 0}\n"));
  EXPECT_THAT(Explain(path + "/ospfPmIfPassive").out,
              StartsWith(path + "/ospfPmIfPassive: came with its entry, "
                                "created by pass 4, secondary addresses"));
}

TEST_F(ExplainTest, AnEntryThatIsGoneHasThePassThatDeletedIt) {
  const Json report =
      Json::parse(Run({"run", kExample, "--json", "--diff=pass"}).out);
  std::string path;
  for (const Json& entry : report["entries"]) {
    if (entry["change"] == "deleted" && entry["pass"] == 1) {
      path = entry["path"];
    }
  }
  ASSERT_NE(path, "");
  const Outcome outcome = Explain(path);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path + ": is gone: deleted by pass 1, dangling "
                                "areas\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\nResult: /internal/ospf-area-global has "
                                     "no such entry"));
}

TEST_F(ExplainTest, AnUntouchedEntryIsKept) {
  const std::string path = "/config/interface/ipapp:l3{iot-1}";
  const Outcome outcome = Explain(path);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path + ": kept as it was in the input\n"));
}

TEST_F(ExplainTest, AChangedLeafHasItsWriterAndBothValues) {
  const std::string path = kEntities + "{1}/ospfPmEntSpfThrottle";
  const Outcome outcome = Explain(path);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path +
                         ": set by pass 6, throttle timers: held fixed "
                         "(default), is exponential; its entry was " +
                         kEntities +
                         "{100}, got other keys in pass 3, "
                         "compound index\n"
                         "Input: fixed\n"
                         "Automatic upgrade: fixed (default)\n"));
  EXPECT_THAT(outcome.out,
              AllOf(ContainsRegex("maapi_set_elem [^\n]*C_ENUM_VALUE 1 -> 0\n"
                                  "        ospfPmEntSpfThrottle: fixed -> "
                                  "exponential\n"),
                    HasSubstr("\nResult: exponential\n")));
}

TEST_F(ExplainTest, ADefaultIsSaidToBeOne) {
  const std::string path =
      kInterfaces + "{1 10.210.0.1 0}/ospfPmIfRetransInterval";
  EXPECT_THAT(Explain(path).out, HasSubstr("\nResult: 5 (default)\n"));
}

TEST_F(ExplainTest, WhatTheAutomaticUpgradeLosesHasTheReason) {
  const std::string path = "/demo/item{1}/obsolete";
  const Outcome outcome = ExplainDemo("well_behaved", path);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path + ": not carried over by the automatic upgrade: "
                                "the new model has no such node\n"
                                "Input: old\n"));
}

TEST_F(ExplainTest, ANewDefaultIsNobodysWriting) {
  const Outcome outcome = ExplainDemo("idle", "/demo/item{2}/size");
  EXPECT_THAT(outcome.out, HasSubstr("nobody sets it"));
  EXPECT_THAT(outcome.out, HasSubstr("\nResult: 1 (default)\n"));
}

TEST_F(ExplainTest, SecretsAreMasked) {
  const std::string path = kInterfaces + "{1 10.100.0.1 0}";
  for (const char* leaf : {"", "/ospfPmIfAuthKey"}) {
    for (const std::vector<std::string>& options :
         std::vector<std::vector<std::string>>{{}, {"--json"}}) {
      const Outcome outcome = Explain(path + leaf, options);
      EXPECT_THAT(outcome.out,
                  AllOf(HasSubstr("****"), Not(HasSubstr("bb-ams"))));
    }
  }
  EXPECT_THAT(Explain(path + "/ospfPmIfAuthKey", {"--show-secrets"}).out,
              HasSubstr("\nResult: bb-ams"));
}

TEST_F(ExplainTest, JsonHasTheAnswerTheStepsAndTheHistory) {
  const std::string after = kInterfaces + "{1 10.100.0.1 0}";
  const Json explanation = Json::parse(Explain(after, {"--json"}).out);
  EXPECT_EQ(explanation["kind"], "rekeyed");
  EXPECT_EQ(explanation["old_path"], kInterfaces + "{100 10.100.0.1 0}");
  EXPECT_EQ(explanation["new_path"], after);
  EXPECT_EQ(explanation["steps"][0]["pass"], 3);
  EXPECT_EQ(explanation["steps"][0]["name"], "compound index");
  EXPECT_EQ(explanation["steps"][0]["change"], "rekeyed");
  EXPECT_EQ(explanation["history"][0]["kind"], "log");
  EXPECT_EQ(explanation["exit_code"], 0);
}

TEST_F(ExplainTest, AnUnknownPathIsExitCode3WithNamesThatAreNear) {
  const Outcome outcome = Explain("/VX-OSPF-MIB/ospfPmIfTabel");
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("the model has no \"ospfPmIfTabel\" in "
                              "/VX-OSPF-MIB\n"),
                    HasSubstr("near it: ospfPmIfTable")));
}

TEST_F(ExplainTest, AMalformedPathIsExitCode3WithTheOffset) {
  const Outcome outcome = Explain(kInterfaces + "{1");
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, HasSubstr("expected '}' at offset 42"));
}

TEST_F(ExplainTest, APathOfNeitherSideIsExitCode8) {
  const Outcome outcome = Explain(kInterfaces + "{1 10.100.0.2 0}");
  EXPECT_EQ(outcome.exit_code, 8);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("has no such entry; it has "),
                                 HasSubstr("\nNear it: {100 10.100.0.")));
  EXPECT_THAT(outcome.err,
              HasSubstr("is neither in the input nor in the result\n"));
}

TEST_F(ExplainTest, AFailedUpgradeShowsHowFarItCameWithItsExitCode) {
  const Outcome failed = Explain(kEntities + "{100}", {"--schemas", "none"});
  EXPECT_EQ(failed.exit_code, 1);
  EXPECT_THAT(failed.out, HasSubstr("{1} now, as far as the upgrade came\n"));
  EXPECT_THAT(failed.out,
              HasSubstr("\nResult: none, as the upgrade came no further\n"));
  EXPECT_THAT(failed.err, HasSubstr("update returned -1"));
  const Outcome aborted = ExplainDemo("aborts", "/demo/item{1}/label");
  EXPECT_EQ(aborted.exit_code, 5);
  EXPECT_THAT(aborted.out,
              StartsWith("/demo/item{1}/label: kept as it was in the input, "
                         "as far as the upgrade came\n"));
}

TEST_F(ExplainTest, StandardInputIsReadForBothRuns) {
  Launch launch;
  launch.input = ReadFile(kExample);
  const std::string path = kEntities + "{1}";
  const Outcome outcome = Run({"explain", "-", path}, launch);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out, StartsWith(path + ": was " + kEntities + "{100}"));
}

}  // namespace
}  // namespace host_test
