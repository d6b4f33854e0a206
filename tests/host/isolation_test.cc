// What a plug-in does to the run that it is part of: it may fail the run, but
// neither falsify nor hang nor outlive it.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "host_test.h"

namespace host_test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Clock = std::chrono::steady_clock;

class IsolationTest : public HostTest {
 protected:
  // Runs the plug-in on items 1 and 2, with the result in out.xml.
  Outcome RunToFile(const std::string& plugin,
                    std::vector<std::string> args = {},
                    const Launch& launch = {}) {
    args.insert(args.begin(),
                {Write("demo.xml", kDemoXml), "-o", Path("out.xml")});
    return RunDemo(plugin, args, launch);
  }
  // The result of plug-ins that do nothing, or delete item 2.
  std::string ResultOf(const std::string& plugin) {
    const Outcome outcome = RunToFile(plugin);
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    const std::string result = Read("out.xml");
    fs::remove(Path("out.xml"));
    return result;
  }
  // A configuration that takes long enough to check, compare and write for
  // something to happen meanwhile.
  std::string BigConfig() {
    std::string config = "<demo xmlns=\"urn:demo\">";
    for (int id = 1; id <= 20'000; ++id) {
      config +=
          "<item><id>" + std::to_string(id) + "</id><label>a</label></item>";
    }
    return Write("big.xml", config + "</demo>");
  }
  static pid_t ProcessInLog(const Outcome& outcome) {
    const size_t at = outcome.out.find("started ");
    return at == std::string::npos ? 0 : std::stoi(outcome.out.substr(at + 8));
  }
};

// ---- The output
// -----------------------------------------------------------------------

TEST_F(IsolationTest, ADescriptorThatIsNotItsOwnDoesNotLeadToTheOutput) {
  const std::string config = Write("demo.xml", kDemoXml);
  const std::string result =
      "<demo xmlns=\"urn:demo\">\n  <item>\n    <id>1</id>\n"
      "    <label>one</label>\n    <size>10</size>\n  </item>\n</demo>\n";
  struct Row {
    std::string how;
    std::string descriptor;
  };
  std::vector<Row> rows = {{"write", ""}, {"seek", ""}, {"close", ""}};
  for (int fd = 3; fd < 10; ++fd) {
    rows.push_back({"close", std::to_string(fd)});
    rows.push_back({"write", std::to_string(fd)});
  }
  for (const Row& row : rows) {
    Launch launch;
    launch.environment = {"MEDDLE=" + row.how, "MEDDLE_FD=" + row.descriptor};
    const Outcome outcome =
        RunDemo("meddles", {config, "-o", Path("out.xml")}, launch);
    if (outcome.exit_code == 0) {
      EXPECT_EQ(Read("out.xml"), result) << row.how << row.descriptor;
    } else {
      EXPECT_EQ(outcome.exit_code, 5) << row.how << row.descriptor << outcome;
      EXPECT_THAT(outcome.err, HasSubstr("broke the host's own connection"));
      EXPECT_FALSE(Exists("out.xml"));
    }
    EXPECT_THAT(Read("trace"), IsEmpty()) << row.descriptor;
    fs::remove(Path("out.xml"));
    fs::remove(Path("trace"));
  }
}

TEST_F(IsolationTest, ANonBlockingConnectionLosesNothing) {
  Launch launch;
  launch.environment = {"MEDDLE=unblock", "MEDDLE_FD="};
  const Outcome outcome = RunToFile("meddles", {"--log"}, launch);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Log (2000 records)"),
                                 HasSubstr("  record 1999\n")));
}

TEST_F(IsolationTest, ForgedMessagesAreNoSuccess) {
  const char* const forgeries[] = {
      "4 0 0 0 0",                  // update returned 0
      "4 0 0 0 child",              // ... and its own process goes on
      "4 0 0 0 self",               // ... and so does this one
      "4 0 0 0 1",                  // ... or somebody else's
      "4 0 0 0 child, 7, 11 0 0 0"  // ... and is done
      "0 5, 7, 11 0 0 0",           // the result is valid, all is done
      "0 0, 1 0",                   // back to the beginning
      "10 0 0 0 0 0 0",             // failed with exit code 0
      "7, 11 0 0 0",                // as above, in short
  };
  for (const std::string forged : forgeries) {
    Launch launch;
    launch.environment = {"FORGED=" + forged};
    const Outcome outcome =
        RunToFile("forges_messages", {"--timeout", "20"}, launch);
    EXPECT_EQ(outcome.exit_code, 5) << forged << "\n" << outcome;
    EXPECT_THAT(NewFiles(), IsEmpty()) << forged;
  }
}

TEST_F(IsolationTest, ItsLimitsAreNotThoseOfTheResult) {
  const Outcome outcome = RunToFile("lowers_limits");
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(Read("out.xml"),
              AllOf(HasSubstr("<id>1</id>"), Not(HasSubstr("<id>2</id>")),
                    HasSubstr("</demo>")));
}

TEST_F(IsolationTest, OverwritingSharedMemoryHarmsNobodyElse) {
  const Outcome outcome = RunToFile("overwrites_shared_memory");
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("broke the host's own connection"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IsolationTest, LongRecordsOfSeveralThreadsAllArriveWhole) {
  const Outcome outcome = RunToFile("logs_in_threads", {"--json"});
  ASSERT_EQ(outcome.exit_code, 0) << outcome.err;
  const auto log = nlohmann::json::parse(outcome.out)["log"];
  std::map<std::string, int> records;
  for (const std::string record : log) ++records[record];
  EXPECT_EQ(records.size(), 8U);
  for (const auto& [record, count] : records) {
    EXPECT_EQ(count, 25);
    EXPECT_EQ(record, std::string(100'000, record[0]));
  }
}

// ---- After update has returned
// -------------------------------------------------------

TEST_F(IsolationTest, WhatRunsOnAfterUpdateNeitherStopsNorHangsTheRun) {
  const std::string config = BigConfig();
  for (const char* plugin : {"thread_stops", "timer_spins"}) {
    const Outcome outcome = RunDemo(plugin, {config, "-o", Path("out.xml")});
    EXPECT_EQ(outcome.exit_code, 0) << plugin << outcome;
    EXPECT_THAT(Read("out.xml"), HasSubstr("<id>20000</id>"));
    fs::remove(Path("out.xml"));
  }
}

TEST_F(IsolationTest, NothingChangesTheTransactionAfterUpdate) {
  const Outcome outcome =
      RunDemo("thread_writes", {BigConfig(), "-o", Path("out.xml")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out, HasSubstr("Changes: none\n"));
  EXPECT_THAT(Read("out.xml"), HasSubstr("<id>1</id>"));
}

TEST_F(IsolationTest, ThreadsThatAForkBringsAlongAreRefused) {
  const Outcome outcome = RunToFile("threads_in_forks");
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("pthread_atfork"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

// ---- Processes
// -----------------------------------------------------------------------

TEST_F(IsolationTest, AProcessThatHidesDoesNotOutliveTheRun) {
  const Outcome outcome = RunToFile("daemonises", {"--log"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  const pid_t daemon = ProcessInLog(outcome);
  ASSERT_GT(daemon, 0) << outcome;
  // It is reaped before the host ends.
  EXPECT_EQ(kill(daemon, 0), -1);
}

TEST_F(IsolationTest, AProcessThatItLeavesBehindDoesNotReachTheOutput) {
  const std::string result = ResultOf("idle");
  const Outcome outcome = RunToFile("keeps_writing");
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  if (outcome.exit_code == 5) {
    // It was quick enough to write into what its parent still had.
    EXPECT_THAT(outcome.err, HasSubstr("broke the host's own connection"));
    EXPECT_FALSE(Exists("out.xml"));
    return;
  }
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(Read("out.xml"), result);
}

TEST_F(IsolationTest, EverySignalThatEndsTheProgramEndsWhatThePluginStarted) {
  for (const int signal :
       {SIGTERM, SIGINT, SIGHUP, SIGUSR1, SIGUSR2, SIGALRM, SIGPROF}) {
    const pid_t host = Start(
        DemoArgs("hangs", {Write("demo.xml", kDemoXml), "--log=" + Path("log"),
                           "-o", Path("out.xml")}),
        {});
    ASSERT_TRUE(WaitFor("log", "started "));
    kill(host, signal);
    EXPECT_EQ(Finish(host).exit_code, 128 + signal);
    EXPECT_EQ(kill(std::stoi(Read("log").substr(8)), 0), -1) << signal;
    EXPECT_THAT(NewFiles(), testing::ElementsAre("log"));
    fs::remove(Path("log"));
  }
}

TEST_F(IsolationTest, ProcessesFromBeforeTheRunLiveOn) {
  Launch launch;
  launch.executable = "/bin/sh";
  std::string command =
      "sleep 60 & echo $! > same; setsid sleep 60 & echo $! > other; exec \"" +
      std::string(TEST_HOST) + "\"";
  for (const std::string& arg :
       DemoArgs("daemonises", {Write("demo.xml", kDemoXml), "--log"})) {
    command += " '" + arg + "'";
  }
  const Outcome outcome = Run({"-c", command}, launch);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(kill(ProcessInLog(outcome), 0), -1);
  for (const char* file : {"same", "other"}) {
    const pid_t stranger = std::stoi(Read(file));
    EXPECT_EQ(kill(stranger, 0), 0) << file;
    kill(stranger, SIGKILL);
  }
}

// ---- Time
// ----------------------------------------------------------------------------

TEST_F(IsolationTest, StoppingItsProcessIsExitCode5AtOnce) {
  const Outcome outcome = RunToFile("stops", {"--timeout", "0"});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("the plug-in stopped with SIGSTOP"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IsolationTest, AProcessThatSomebodyStopsGoesOn) {
  const std::string config = Path("fifo.xml");
  ASSERT_EQ(mkfifo(config.c_str(), 0600), 0);
  const pid_t host = Start(DemoArgs("idle", {config, "--timeout", "0"}), {});
  const pid_t worker = WaitForChild(host);
  ASSERT_GT(worker, 0);
  kill(worker, SIGSTOP);
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  std::ofstream(config) << kDemoXml;
  const Outcome outcome = Finish(host);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
}

TEST_F(IsolationTest, AnInputThatDoesNotEndIsExitCode3AfterTheTimeout) {
  const std::string fifo = Path("fifo.xml");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const Outcome outcome = RunDemo("idle", {fifo, "--timeout", "0.3"});
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  EXPECT_THAT(outcome.err, AllOf(HasSubstr(fifo),
                                 HasSubstr("reading the configuration was "
                                           "not finished within 0.3 s"),
                                 HasSubstr("--timeout")));
}

TEST_F(IsolationTest, AnInputWithoutAnEndIsExitCode3BeforeItTakesAllMemory) {
  Launch launch;
  launch.stdin_path = "/dev/zero";
  const Outcome outcome = RunDemo("idle", {"-", "--timeout", "0"}, launch);
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("standard input: is larger than 1024 MiB\n"),
                    HasSubstr("give --max-size")));
}

TEST_F(IsolationTest, AFloodOfOutputDoesNotKeepTheTimeoutAway) {
  const Clock::time_point start = Clock::now();
  const Outcome outcome = RunToFile("floods", {"--timeout", "0.5", "--json"});
  EXPECT_EQ(outcome.exit_code, 5) << outcome.err;
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
  EXPECT_THAT(outcome.err, HasSubstr("did not finish within 0.5 s"));
}

TEST_F(IsolationTest, TimeInWhichNobodyReadsTheOutputDoesNotCount) {
  std::string command = TEST_HOST;
  for (const std::string& arg :
       DemoArgs("many_calls",
                {Write("demo.xml", kDemoXml), "--verbose", "--timeout", "2"})) {
    command += " '" + arg + "'";
  }
  Launch launch;
  launch.executable = "/bin/sh";
  const Outcome outcome = Run({"-c", command + " | (sleep 4; cat)"}, launch);
  EXPECT_THAT(outcome.out, HasSubstr(": upgrade succeeds")) << outcome.err;
}

TEST_F(IsolationTest, EndingItsThreadIsExitCode5) {
  const Outcome outcome = RunToFile("ends_thread");
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("ended the thread that called it"));
}

// ---- Limits of the machine
// -----------------------------------------------------------

TEST_F(IsolationTest, ALimitOfCpuTimeIsNotACrashOfThePlugin) {
  Launch launch;
  launch.limits = {{RLIMIT_CPU, 1}};
  const Outcome outcome = RunToFile("spins", {}, launch);
  EXPECT_EQ(outcome.exit_code, 70) << outcome;
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("used up its CPU time of 1 s while "
                                           "running the plug-in"),
                                 HasSubstr("ulimit -t")));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(IsolationTest, ALimitOfMemoryIsNotACrashOfThePlugin) {
  Launch launch;
  launch.limits = {{RLIMIT_AS, 1UL << 50}};
  const Outcome limited = RunToFile("throws_bad_alloc", {}, launch);
  EXPECT_EQ(limited.exit_code, 70) << limited;
  EXPECT_THAT(limited.err, AllOf(HasSubstr("ran out of memory, which is "
                                           "limited to 1073741824 MiB"),
                                 HasSubstr("ulimit -v")));
  // Without a limit nothing but its own greed can be the reason.
  const Outcome unlimited = RunToFile("throws_bad_alloc");
  EXPECT_EQ(unlimited.exit_code, 5) << unlimited;
  EXPECT_THAT(unlimited.err, HasSubstr("std::bad_alloc"));
}

// A control group with little memory, if this system lets us have one.
class SmallMemory {
 public:
  static constexpr char kLimit[] = "400000000";

  SmallMemory() {
    const std::string name = "host-test-" + std::to_string(getpid());
    for (const fs::path root : {"/sys/fs/cgroup/memory",
                                "/sys/fs/cgroup/unified", "/sys/fs/cgroup"}) {
      const fs::path group = root / name;
      std::error_code error;
      if (!fs::create_directory(group, error)) continue;
      for (const char* limit : {"memory.limit_in_bytes", "memory.max"}) {
        if (!fs::exists(group / limit)) continue;
        std::ofstream file(group / limit);
        if (file << kLimit << std::flush) group_ = group;
      }
      if (group_) return;
      fs::remove(group, error);
    }
  }
  ~SmallMemory() {
    std::error_code error;
    if (group_) fs::remove(*group_, error);
  }
  SmallMemory(const SmallMemory&) = delete;
  SmallMemory& operator=(const SmallMemory&) = delete;

  // The file that takes the numbers of processes.
  std::optional<std::string> tasks() const {
    if (!group_) return std::nullopt;
    return *group_ / "cgroup.procs";
  }

 private:
  std::optional<fs::path> group_;
};

TEST_F(IsolationTest, TheSystemRunningOutOfMemoryIsNotACrashOfThePlugin) {
  const SmallMemory group;
  if (!group.tasks()) GTEST_SKIP() << "no control group for memory";
  Launch launch;
  launch.task_list = group.tasks();
  const Outcome outcome = RunToFile("eats_memory", {}, launch);
  EXPECT_EQ(outcome.exit_code, 70) << outcome;
  EXPECT_THAT(outcome.err,
              HasSubstr("was ended by the system, which ran out of memory"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

}  // namespace
}  // namespace host_test
