// What becomes of every leaf of the input, and --fail-on-loss. Whether it is
// true of every configuration, ledger_test.py checks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "host_test.h"

namespace host_test {
namespace {

using nlohmann::json;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string kExamples = TEST_SOURCE_ROOT "/examples/";

class LedgerTest : public HostTest {};

TEST_F(LedgerTest, SaysWhatBecameOfTheInputAndByWhom) {
  const Outcome outcome =
      Run({"run", kExamples + "branch-router.xml", "--ledger"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("\nLedger: 161 leaves of the input\n"),
            HasSubstr("\n  moved by pass 3, compound index  "),
            HasSubstr("\n  dropped by the automatic upgrade  "),
            HasSubstr("\n  dropped /internal/ospf-area-global{3 0.0.0.0}/"
                      "area-id: 0.0.0.0 (pass 1, dangling areas)\n"),
            HasSubstr("/ospfPmEntSpfThrottle: fixed -> exponential (pass 6, "
                      "throttle timers)\n")));
}

TEST_F(LedgerTest, ModulesThatNobodyKnowsAreARowOfTheirOwn) {
  const Outcome outcome = RunDemo(
      "idle", {Write("demo.xml", std::string(kDemoXml) +
                                     "<other xmlns=\"urn:other\"><a>1</a>"
                                     "<b>2</b></other>"),
               "--ledger"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              ContainsRegex("\n  carried, not rehearsed: other +2\n"));
}

TEST_F(LedgerTest, AnAbortedRunShowsHowFarItCame) {
  const Outcome outcome =
      RunDemo("aborts", {Write("demo.xml", kDemoXml), "--ledger"});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr(" of the input, as far as the "
                                           "upgrade came\n"),
                                 Not(HasSubstr("leaves of the result"))));
}

TEST_F(LedgerTest, ASecretThatChangesIsChangedAndMasked) {
  const std::string rules =
      Write("own.json", R"({"secrets": ["/demo/item/label"], "rules": []})");
  const Outcome outcome =
      RunDemo("well_behaved",
              {Write("demo.xml", kDemoXml), "--ledger", "--rules", rules});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              HasSubstr("  changed /demo/item{1}/label: **** -> **** (the "
                        "plug-in)\n"));
}

TEST_F(LedgerTest, ADroppedLeafIsAFailureForWhoeverAsks) {
  const std::string config = kExamples + "branch-router.xml";
  const Outcome outcome =
      Run({"run", config, "--fail-on-loss", "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 7) << outcome;
  EXPECT_THAT(
      outcome.err,
      AllOf(HasSubstr(config + ": 6 leaves of the input are dropped, and "
                               "--fail-on-loss is given\n"),
            HasSubstr("/rtmRedistEntry{1 33619975}/rtmRedistFilterNumber (the "
                      "automatic upgrade)\n"),
            HasSubstr("/internal/ospf-area-global{7 0.0.0.99}/process-id "
                      "(pass 1, dangling areas)\n")));
  EXPECT_THAT(outcome.out, Not(HasSubstr("Ledger:")));
  EXPECT_FALSE(Exists("out"));
}

TEST_F(LedgerTest, AFailureForLossNeedsNoReport) {
  const Outcome outcome = Run(
      {"run", kExamples + "branch-router.xml", "--fail-on-loss", "--quiet"});
  EXPECT_EQ(outcome.exit_code, 7) << outcome;
  EXPECT_EQ(outcome.out, "");
}

TEST_F(LedgerTest, WithoutALossNothingFails) {
  const Outcome outcome = Run(
      {"run", kExamples + "no-ospf.xml", "--fail-on-loss", "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_TRUE(Exists("out"));
}

}  // namespace
}  // namespace host_test
