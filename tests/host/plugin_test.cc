// What becomes of plug-ins that do not behave.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class PluginTest : public HostTest {
 protected:
  // Runs the plug-in and expects its failure to leave no output.
  Outcome ExpectFailure(const std::string& plugin, int exit_code,
                        std::vector<std::string> args = {}) {
    args.insert(args.begin(),
                {Write("demo.xml", kDemoXml), "-o", Path("out.xml")});
    const Outcome outcome = RunDemo(plugin, args);
    EXPECT_EQ(outcome.exit_code, exit_code) << plugin << "\n" << outcome;
    EXPECT_THAT(NewFiles(), IsEmpty());
    EXPECT_EQ(Read("demo.xml"), kDemoXml);
    if (exit_code == 1 || exit_code == 5) {
      EXPECT_THAT(
          outcome.err,
          AllOf(StartsWith("ospf-upgrade: " + Path("demo.xml") + ": "),
                HasSubstr("\n  plug-in: " + PluginPath(plugin) + "\n")));
    }
    return outcome;
  }
};

TEST_F(PluginTest, ReturningMinusOneIsExitCode1WithItsLog) {
  const Outcome outcome = ExpectFailure("fails", 1, {"--log"});
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("about to fail\n"), HasSubstr("cannot go on\n"),
            HasSubstr("update returned -1"), HasSubstr("Nothing was written")));
  EXPECT_THAT(outcome.err, HasSubstr("update returned -1"));
}

TEST_F(PluginTest, AFailureNamesPassRecordsCallAndWhatTheDeviceKeeps) {
  const std::string passes =
      Write("passes.json",
            R"({"passes": [{"name": "cleaning", "start": "about to fail"}]})");
  const Outcome outcome = RunDemo(
      "fails_at_a_call", {Write("demo.xml", kDemoXml), "--passes", passes});
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_THAT(outcome.out,
              HasSubstr(": upgrade fails in pass 1, cleaning: update returned "
                        "-1\n"));
  EXPECT_EQ(outcome.err,
            "ospf-upgrade: " + Path("demo.xml") +
                ": the plug-in failed: update returned -1\n"
                "  where: pass 1, cleaning\n"
                "  log: about to fail\n"
                "  last failed ConfD call, number 2: maapi_delete "
                "/demo/item{77} -> -1 error 1 '/demo/item{77}: the list entry "
                "does not exist'\n"
                "  plug-in: " +
                PluginPath("fails_at_a_call") +
                "\n"
                "  device: gives the upgrade up and keeps its configuration as "
                "it was\n"
                "  What to do: its log (--log) says why, --trace which ConfD "
                "calls failed.\n");
}

TEST_F(PluginTest, ReturningAnythingElseButZeroIsAFailureToo) {
  const Outcome outcome = ExpectFailure("returns_seven", 1);
  EXPECT_THAT(outcome.err, HasSubstr("update returned 7"));
}

TEST_F(PluginTest, APipeThatNobodyReadsIsAnErrorAsWithConfdsLibrary) {
  const Outcome outcome = RunDemo("breaks_pipe", {Write("demo.xml", kDemoXml)});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
}

TEST_F(PluginTest, AFailureIsExplainedByTheLogOnlyIfThereIsOne) {
  EXPECT_THAT(ExpectFailure("fails", 1).err,
              HasSubstr("its log (--log) says why"));
  EXPECT_THAT(ExpectFailure("returns_seven", 1).err,
              AllOf(HasSubstr("it logged nothing"), HasSubstr("--trace")));
}

TEST_F(PluginTest, BeingKilledBeforeThePluginRunsIsNotItsFault) {
  const std::string config = Path("fifo.xml");
  ASSERT_EQ(mkfifo(config.c_str(), 0600), 0);
  const pid_t host = Start(DemoArgs("idle", {config}), {});
  // The worker waits for somebody to open the other end.
  const pid_t worker = WaitForChild(host);
  ASSERT_GT(worker, 0);
  kill(worker, SIGKILL);
  const Outcome outcome = Finish(host);
  EXPECT_EQ(outcome.exit_code, 70) << outcome;
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr(config), HasSubstr("SIGKILL"),
                    HasSubstr("memory"), Not(HasSubstr("idle.so"))));
}

TEST_F(PluginTest, BreakingTheNewModelIsExitCode2WithTheConstraint) {
  const Outcome mandatory = ExpectFailure("breaks_mandatory", 2);
  EXPECT_THAT(mandatory.err, HasSubstr("breaks the new model in 1 place"));
  EXPECT_THAT(
      mandatory.out,
      AllOf(HasSubstr("/demo/item"), HasSubstr("\"label\""),
            HasSubstr("(ConfD error 12)"), HasSubstr("Nothing was written")));
  const Outcome reference = ExpectFailure("breaks_reference", 2);
  EXPECT_THAT(reference.out,
              AllOf(HasSubstr("/demo/item{1}/twin: "), HasSubstr("1234"),
                    HasSubstr("(ConfD error 14)")));
}

TEST_F(PluginTest, QuietNamesTheBrokenConstraintAmongTheErrors) {
  const Outcome outcome = ExpectFailure("breaks_reference", 2, {"--quiet"});
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("item{1}/twin: "),
                                 HasSubstr("(ConfD error 14)")));
}

TEST_F(PluginTest, AMissingFileIsExitCode4) {
  const Outcome outcome = ExpectFailure("there_is_no_such_plugin", 4);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr(PluginPath("there_is_no_such_plugin")),
                    HasSubstr("No such file")));
}

TEST_F(PluginTest, AFileThatIsNoLibraryIsExitCode4) {
  const std::string config = Write("demo.xml", kDemoXml);
  Write("library.so", "not a library, but a text that is long enough for one");
  // A name without a slash means the file in the current folder.
  const Outcome outcome =
      Run({"run", config, "--plugin", "library.so", "--yang-before",
           std::string(TEST_DEMO_MODELS) + "/before", "--yang-after",
           std::string(TEST_DEMO_MODELS) + "/after"});
  EXPECT_EQ(outcome.exit_code, 4) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr(Path("library.so")));
}

TEST_F(PluginTest, AMissingSymbolIsExitCode4AndNamed) {
  const Outcome outcome = ExpectFailure("missing_symbol", 4);
  EXPECT_THAT(outcome.err, HasSubstr("maapi_from_another_release"));
}

TEST_F(PluginTest, AMissingEntryPointIsExitCode4) {
  const Outcome outcome = ExpectFailure("no_update", 4);
  EXPECT_THAT(outcome.err, HasSubstr("no function \"update\""));
}

TEST_F(PluginTest, AnAbortIsExitCode5WithTheAssertionsText) {
  const Outcome outcome = ExpectFailure("aborts", 5, {"--log"});
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("aborted with SIGABRT"),
                    HasSubstr("int update(int, int, int)"),
                    HasSubstr("`exists == 42' failed"),
                    HasSubstr("last ConfD call, number 1: maapi_exists "
                              "/demo/item{1} -> 1")));
  EXPECT_THAT(outcome.out, HasSubstr("before the assertion\n"));
}

TEST_F(PluginTest, ACrashIsExitCode5WithItsSignal) {
  const Outcome outcome = ExpectFailure("segfaults", 5);
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("crashed with SIGSEGV (Segmentation fault)"),
                    HasSubstr("while running the plug-in"),
                    HasSubstr("no newline at the end\n"),
                    HasSubstr("maapi_delete /demo/item{77} -> -1 error 1 "
                              "'/demo/item{77}: ")));
}

TEST_F(PluginTest, ACrashWhileLoadingIsExitCode5) {
  const Outcome outcome = ExpectFailure("crashes_on_load", 5);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("SIGABRT"),
                                 HasSubstr("while loading the plug-in"),
                                 HasSubstr("it made no ConfD call")));
}

TEST_F(PluginTest, AHangIsExitCode5AfterTheTimeout) {
  const auto start = std::chrono::steady_clock::now();
  const Outcome outcome = ExpectFailure("hangs", 5, {"--timeout", "1"});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("hung: it did not finish within 1 s"),
                    HasSubstr("maapi_exists /demo/item{1} -> 1")));
}

TEST_F(PluginTest, APluginThatIsStillMakingCallsDoesNotHang) {
  const Outcome outcome = ExpectFailure("never_done", 5, {"--timeout", "0.3"});
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr(": the plug-in was still at work after 0.3 s, "),
                    HasSubstr(" calls made (while running the plug-in)\n"),
                    HasSubstr("give it more time with --timeout S"),
                    Not(HasSubstr("hung"))));
}

TEST_F(PluginTest, WhatAHangingPluginStartedEndsWithIt) {
  const Outcome outcome =
      ExpectFailure("hangs", 5, {"--timeout", "0.3", "--log"});
  const size_t at = outcome.out.find("started ");
  ASSERT_NE(at, std::string::npos) << outcome;
  EXPECT_TRUE(WaitForEnd(std::stoi(outcome.out.substr(at + 8))));
}

TEST_F(PluginTest, ExitingByItselfIsExitCode5) {
  const Outcome outcome = ExpectFailure("exits", 5);
  EXPECT_THAT(outcome.err,
              HasSubstr("ended the process by itself with exit status 0"));
}

TEST_F(PluginTest, AnExceptionIsExitCode5WithItsTypeAndText) {
  EXPECT_THAT(ExpectFailure("throws", 5).err,
              HasSubstr("std::out_of_range (no such pass)"));
  EXPECT_THAT(ExpectFailure("throws_int", 5).err, HasSubstr("plug-in: int"));
}

TEST_F(PluginTest, AProcessThatItForksDoesNotReportASecondTime) {
  const std::string config = Write("demo.xml", kDemoXml);
  const Outcome outcome = RunDemo("forks", {config, "--json"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  const auto report = nlohmann::json::parse(outcome.out);
  EXPECT_EQ(report["log"], nlohmann::json::array({"once"}));
}

TEST_F(PluginTest, NoTimeoutIsTheValueZero) {
  const std::string config = Write("demo.xml", kDemoXml);
  EXPECT_EQ(RunDemo("idle", {config, "--timeout", "0"}).exit_code, 0);
}

TEST_F(PluginTest, WhatItPrintsIsKeptUpToALimitAndShown) {
  const std::string config = Write("demo.xml", kDemoXml);
  const Outcome outcome = RunDemo("many_records", {config, "--log"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  // 1,888,890 bytes in all
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Printed by the plug-in:\n"
                                           "  [... 1823354 bytes ...]"),
                                 HasSubstr("printed line 99999\n"),
                                 Not(HasSubstr("printed line 5\n")),
                                 HasSubstr("record 1999\n")));
  EXPECT_LT(outcome.out.size(), 300'000U);
}

}  // namespace
}  // namespace host_test
