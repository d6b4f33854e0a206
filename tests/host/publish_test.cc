// Between getting its name and the end of the report the output can be taken
// back.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <fstream>
#include <memory>
#include <random>
#include <thread>

#include "host_test.h"

namespace host_test {
namespace {

namespace fs = std::filesystem;

using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<Refusal> Together(
    const std::vector<std::vector<Refusal>>& features) {
  std::vector<Refusal> all;
  for (const auto& feature : features) {
    all.insert(all.end(), feature.begin(), feature.end());
  }
  return all;
}

// All but the last on which a replaced file can't be put back.
std::vector<std::vector<Refusal>> FileSystems() {
  return {{}, NoUnnamedFiles(), Together({NoUnnamedFiles(), NoExchange()})};
}

std::vector<Refusal> FileSystemWithoutWayBack() {
  return Together({NoUnnamedFiles(), NoExchange(), NoHardLinks()});
}

// A pipe that has room for so many bytes; a writer of more waits.
class NarrowPipe {
 public:
  NarrowPipe(const std::string& path, size_t room) : path_(path) {
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    fd_ = open(path.c_str(), O_RDWR | O_CLOEXEC);
    constexpr size_t kPage = 4096;
    EXPECT_EQ(fcntl(fd_, F_SETPIPE_SZ, kPage), static_cast<int>(kPage));
    const std::string filler(kPage - room, '.');
    EXPECT_EQ(write(fd_, filler.data(), filler.size()),
              static_cast<ssize_t>(filler.size()));
  }
  ~NarrowPipe() {
    close(fd_);
    unlink(path_.c_str());
  }
  NarrowPipe(const NarrowPipe&) = delete;
  NarrowPipe& operator=(const NarrowPipe&) = delete;

 private:
  std::string path_;
  int fd_;
};

class PublishTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    Write("demo.xml", kDemoXml);
    args_ = {"demo.xml", "-o", "out"};
  }

  // Of the report up to a text near its end.
  size_t ReportSize(const std::string& end) {
    const Outcome outcome = RunDemo("idle", args_);
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    const size_t at = outcome.out.find(end);
    EXPECT_NE(at, std::string::npos) << outcome;
    return at == std::string::npos ? 0 : at;
  }

  // Starts the host so that it can't print the end of its report, and waits
  // until the output has its name.
  pid_t StartAndPublish(const std::vector<Refusal>& refusals) {
    Launch launch;
    launch.stdout_path = Path("pipe");
    launch.refusals = refusals;
    const pid_t host = Start(DemoArgs("idle", args_), launch);
    EXPECT_TRUE(WaitFor("out", "</demo>"));
    return host;
  }

  std::vector<std::string> args_;
};

TEST_F(PublishTest, ASignalBeforeTheEndOfTheReportTakesANewFileBack) {
  const size_t room = ReportSize("Written: ");
  fs::remove(Path("out"));
  for (const int signal :
       {SIGTERM, SIGINT, SIGPIPE, SIGUSR1, SIGALRM, SIGABRT, SIGRTMIN + 3}) {
    for (const std::vector<Refusal>& refusals : FileSystems()) {
      const NarrowPipe pipe(Path("pipe"), room);
      const pid_t host = StartAndPublish(refusals);
      kill(host, signal);
      EXPECT_EQ(Finish(host).exit_code, 128 + signal);
      EXPECT_THAT(NewFiles(), ElementsAre("pipe")) << signal;
    }
  }
}

TEST_F(PublishTest, ASignalBeforeTheEndOfTheReportPutsTheOldFileBack) {
  const size_t room = ReportSize("Written: ");
  args_.push_back("--force");
  for (const std::vector<Refusal>& refusals : FileSystems()) {
    Write("out", "old");
    chmod(Path("out").c_str(), 0604);
    struct stat before = {};
    ASSERT_EQ(stat(Path("out").c_str(), &before), 0);
    const NarrowPipe pipe(Path("pipe"), room);
    const pid_t host = StartAndPublish(refusals);
    kill(host, SIGUSR2);
    EXPECT_EQ(Finish(host).exit_code, 128 + SIGUSR2);
    EXPECT_EQ(Read("out"), "old");
    struct stat after = {};
    ASSERT_EQ(stat(Path("out").c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_THAT(NewFiles(), ElementsAre("pipe"));
  }
}

TEST_F(PublishTest, WhatSomebodyPutsInTheOutputsPlaceMeanwhileStays) {
  const size_t room = ReportSize("Written: ");
  fs::remove(Path("out"));
  const NarrowPipe pipe(Path("pipe"), room);
  const pid_t host = StartAndPublish({});
  Write("other", "somebody else's");
  fs::rename(Path("other"), Path("out"));
  kill(host, SIGTERM);
  EXPECT_EQ(Finish(host).exit_code, 128 + SIGTERM);
  EXPECT_EQ(Read("out"), "somebody else's");
  EXPECT_THAT(NewFiles(), ElementsAre("out", "pipe"));
}

// It has nowhere to go back to and must not be lost.
TEST_F(PublishTest, AReplacedFileWhosePlaceSomebodyTookIsKeptAndNamed) {
  const size_t room = ReportSize("Written: ");
  args_.push_back("--force");
  std::string command = "trap '' PIPE; exec \"$0\"";
  for (const std::string& arg : DemoArgs("idle", args_)) {
    command += " '" + arg + "'";
  }
  Launch launch;
  launch.executable = "/bin/sh";
  launch.stdout_path = Path("pipe");
  for (const bool by_signal : {false, true}) {
    Write("out", "old");
    auto pipe = std::make_unique<NarrowPipe>(Path("pipe"), room);
    const pid_t host = Start({"-c", command, TEST_HOST}, launch);
    EXPECT_TRUE(WaitFor("out", "</demo>"));
    Write("other", "somebody else's");
    fs::rename(Path("other"), Path("out"));
    if (by_signal) kill(host, SIGTERM);
    if (!by_signal) pipe.reset();
    const Outcome outcome = Finish(host);
    EXPECT_EQ(outcome.exit_code, by_signal ? 128 + SIGTERM : 6) << outcome;
    EXPECT_EQ(Read("out"), "somebody else's");
    pipe.reset();
    ASSERT_EQ(NewFiles().size(), 1U);
    EXPECT_EQ(Read(NewFiles()[0]), "old");
    if (!by_signal) {
      EXPECT_THAT(outcome.err, HasSubstr("\n  what out was before is now ./" +
                                         NewFiles()[0] + "\n"));
    }
    fs::remove(Path(NewFiles()[0]));
  }
}

TEST_F(PublishTest, AReportThatLacksItsEndTakesTheOutputBack) {
  for (const char* format : {"text", "json"}) {
    const bool json = format == std::string("json");
    if (json) args_.push_back("--json");
    Launch launch;
    launch.max_file_size = ReportSize(json ? ",\n  \"output\"" : "out (XML");
    fs::remove(Path("out"));
    for (const std::vector<Refusal>& refusals : FileSystems()) {
      launch.refusals = refusals;
      const Outcome outcome = RunDemo("idle", args_, launch);
      EXPECT_EQ(outcome.exit_code, 6) << outcome;
      EXPECT_EQ(outcome.out.size(), *launch.max_file_size) << outcome;
      EXPECT_THAT(outcome.err,
                  HasSubstr("the report cannot be written\n  What"));
      EXPECT_THAT(NewFiles(), IsEmpty()) << format;
    }
  }
}

TEST_F(PublishTest, AReportThatLacksItsEndPutsTheOldFileBack) {
  Launch launch;
  launch.max_file_size = ReportSize("out (XML");
  args_.push_back("--force");
  Write("out", "old");
  for (const std::vector<Refusal>& refusals : FileSystems()) {
    launch.refusals = refusals;
    const Outcome outcome = RunDemo("idle", args_, launch);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_EQ(Read("out"), "old");
    EXPECT_THAT(NewFiles(), IsEmpty());
  }
}

TEST_F(PublishTest, AnOutputThatCannotBeTakenBackIsNamed) {
  Launch launch;
  launch.max_file_size = ReportSize("out (XML");
  fs::remove(Path("out"));
  launch.refusals = NoRemoval();
  const Outcome created = RunDemo("idle", args_, launch);
  EXPECT_EQ(created.exit_code, 6) << created;
  EXPECT_THAT(created.err, HasSubstr("\n  out cannot be put back as it was\n"));
  EXPECT_THAT(Read("out"), HasSubstr("</demo>"));

  launch.refusals = FileSystemWithoutWayBack();
  args_.push_back("--force");
  Write("out", "old");
  const Outcome outcome = RunDemo("idle", args_, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("\n  out cannot be put back as it was\n"));
  EXPECT_THAT(Read("out"), HasSubstr("</demo>"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(PublishTest, AReplacedFileThatCannotBeRemovedIsNamed) {
  args_.push_back("--force");
  Write("out", "old");
  Launch launch;
  launch.refusals = NoRemoval();
  const Outcome outcome = RunDemo("idle", args_, launch);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(Read("out"), HasSubstr("</demo>"));
  ASSERT_EQ(NewFiles().size(), 1U);
  EXPECT_EQ(outcome.err,
            "ospf-upgrade: what out was before is still there as ./" +
                NewFiles()[0] + ": Operation not permitted\n");
  EXPECT_EQ(Read(NewFiles()[0]), "old");
}

TEST_F(PublishTest, StandardOutputKeepsAResultWhoseReportLacksItsEnd) {
  args_ = {"demo.xml", "-o", "-"};
  Launch launch;
  launch.stderr_path = Path("report");
  ASSERT_EQ(RunDemo("idle", args_, launch).exit_code, 0);
  launch.max_file_size = Read("report").find("standard output (XML");
  const Outcome outcome = RunDemo("idle", args_, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.out, HasSubstr("</demo>"));
}

// Whenever it comes, a signal either comes before everything or after it.
TEST_F(PublishTest, SignalsAtAnyMomentLeaveAllOrNothing) {
  using Clock = std::chrono::steady_clock;
  constexpr int kRuns = 40;
  const auto start = Clock::now();
  ASSERT_EQ(RunDemo("idle", args_).exit_code, 0);
  const auto duration = Clock::now() - start;
  const std::string whole = Read("out");
  const unsigned seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  for (int i = 0; i < kRuns; ++i) {
    const int signal = std::array{SIGKILL, SIGTERM, SIGALRM}[random() % 3];
    const bool exists = random() % 2 == 0;
    args_ = {"demo.xml", "-o", "out"};
    fs::remove(Path("out"));
    if (exists) {
      std::ofstream(Path("out")) << "old";
      args_.push_back("--force");
    }
    Launch launch;
    if (random() % 2 == 0) launch.refusals = NoUnnamedFiles();
    const pid_t host = Start(DemoArgs("idle", args_), launch);
    std::this_thread::sleep_for(duration * (random() % 1100) / 1000);
    kill(host, signal);
    const int exit_code = Finish(host).exit_code;
    const std::string out = Read("out");
    const std::string before = exists ? "old" : "";
    ASSERT_THAT(exit_code, AnyOf(0, 128 + signal));
    EXPECT_THAT(out, AnyOf(whole, before));
    if (signal == SIGKILL) {
      // Nobody can take anything back after it.
      for (const std::string& name : NewFiles()) fs::remove(Path(name));
      continue;
    }
    EXPECT_EQ(out, exit_code == 0 ? whole : before);
    EXPECT_EQ(NewFiles().size(), exit_code == 0 || exists ? 1U : 0U);
  }
}

// A file system of the test's own.
class SmallDisk {
 public:
  SmallDisk(const std::string& path, const std::string& size) : path_(path) {
    fs::create_directory(path);
    mounted_ =
        mount("none", path.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
  }
  ~SmallDisk() {
    if (mounted_) umount2(path_.c_str(), MNT_DETACH);
    fs::remove(path_);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool mounted() const { return mounted_; }

 private:
  std::string path_;
  bool mounted_;
};

TEST_F(PublishTest, AFullDiskLeavesAllAsItWas) {
  const SmallDisk disk(Path("disk"), "64k");
  if (!disk.mounted()) GTEST_SKIP() << "may not mount a file system";
  std::string config = "<demo xmlns=\"urn:demo\">";
  for (int i = 1; i <= 1300; ++i) {
    config += "<item><id>" + std::to_string(i) + "</id><label>a</label></item>";
  }
  Write("big.xml", config + "</demo>");
  for (const std::vector<Refusal>& refusals : FileSystems()) {
    for (const bool exists : {false, true}) {
      if (exists) std::ofstream(Path("disk/out")) << "old";
      Launch launch;
      launch.refusals = refusals;
      const Outcome outcome =
          RunDemo("idle", {"big.xml", "-o", "disk/out", "--force"}, launch);
      EXPECT_EQ(outcome.exit_code, 6) << outcome;
      EXPECT_THAT(outcome.err, HasSubstr("No space left on device"));
      EXPECT_THAT(outcome.out, HasSubstr("\nNothing was written.\n"));
      EXPECT_EQ(Read("disk/out"), exists ? "old" : "");
      EXPECT_EQ(std::distance(fs::directory_iterator(Path("disk")), {}),
                exists ? 1 : 0);
      fs::remove(Path("disk/out"));
    }
  }
}

TEST_F(PublishTest, AReportThatFillsTheDiskLeavesAllAsItWas) {
  const SmallDisk disk(Path("disk"), "16k");
  if (!disk.mounted()) GTEST_SKIP() << "may not mount a file system";
  args_ = {"demo.xml", "-o", "disk/out", "--diff"};
  std::string config = "<demo xmlns=\"urn:demo\">";
  for (int i = 10; i <= 200; ++i) {
    config += "<item><id>" + std::to_string(i) +
              "</id><label>l</label><obsolete>o</obsolete></item>";
  }
  Write("demo.xml", config + "</demo>");
  Launch launch;
  launch.stdout_path = Path("disk/report");
  const Outcome outcome = RunDemo("idle", args_, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("the report cannot be written"));
  EXPECT_FALSE(Exists("disk/out"));
}

TEST_F(PublishTest, WithForceOnlyARegularFileThatIsNotTheInputIsReplaced) {
  struct Row {
    std::string command;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {"mkdir out; touch out/inside", "is a folder"},
      {"mkfifo out", "is not a regular file"},
      {"ln -s demo.xml out", "is not a regular file"},
      {"ln demo.xml out", "is the configuration"},
  };
  args_.push_back("--force");
  for (const Row& row : rows) {
    Write("out", "old");
    Launch launch;
    launch.environment = {"COMMAND=rm out; " + row.command};
    const Outcome outcome = RunDemo("runs_command", args_, launch);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("out: " + row.reason)) << row.command;
    EXPECT_EQ(Read("demo.xml"), kDemoXml) << row.command;
    EXPECT_THAT(NewFiles(), IsEmpty());
    fs::remove_all(Path("out"));
  }
}

TEST_F(PublishTest, WithForceAFileThatComesOrGoesDuringTheRunDoesNotMatter) {
  args_.push_back("--force");
  Launch launch;
  launch.environment = {"COMMAND=echo other > out"};
  EXPECT_EQ(RunDemo("runs_command", args_, launch).exit_code, 0);
  EXPECT_THAT(Read("out"), HasSubstr("</demo>"));
  launch.environment = {"COMMAND=rm out"};
  EXPECT_EQ(RunDemo("runs_command", args_, launch).exit_code, 0);
  EXPECT_THAT(Read("out"), HasSubstr("</demo>"));
  EXPECT_THAT(NewFiles(), ElementsAre("out"));
}

}  // namespace
}  // namespace host_test
