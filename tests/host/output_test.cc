#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "host_test.h"

namespace host_test {
namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kResultJson[] =
    R"({"demo:demo":{"item":[{"id":1,"label":"uno","size":10},)"
    R"({"id":9,"label":"nine"}]}})";

class OutputTest : public HostTest {
 protected:
  std::string Config() { return Write("demo.xml", kDemoXml); }
  // More than a pipe holds.
  std::string BigConfig() {
    std::string config = "<demo xmlns=\"urn:demo\">";
    for (int i = 1; i <= 5000; ++i) {
      config +=
          "<item><id>" + std::to_string(i) + "</id><label>a</label></item>";
    }
    return Write("big.xml", config + "</demo>");
  }
  // A command of the shell that runs the host.
  std::string ShellCommand(const std::string& plugin,
                           const std::vector<std::string>& args) {
    std::string command = TEST_HOST;
    for (const std::string& arg : DemoArgs(plugin, args)) {
      command += " '" + arg + "'";
    }
    return command;
  }
  std::string ReadJson(const std::string& name) {
    return nlohmann::json::parse(Read(name), nullptr, false).dump();
  }
  mode_t Mode(const std::string& name) {
    struct stat status = {};
    EXPECT_EQ(stat(Path(name).c_str(), &status), 0);
    return status.st_mode & 0777;
  }
};

TEST_F(OutputTest, TheResultIsWrittenInTheFormatOfTheInput) {
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(Read("out"),
              AllOf(StartsWith("<"), HasSubstr("<label>uno</label>"),
                    HasSubstr("<label>nine</label>"), Not(HasSubstr("two")),
                    Not(HasSubstr("obsolete"))));
  EXPECT_THAT(outcome.out, HasSubstr("Written: " + Path("out") + " (XML, "));
  EXPECT_THAT(NewFiles(), ElementsAre("out"));

  EXPECT_EQ(RunDemo("well_behaved",
                    {Write("demo.json", kDemoJson), "-o", Path("out.json")})
                .exit_code,
            0);
  EXPECT_EQ(ReadJson("out.json"), kResultJson);
}

TEST_F(OutputTest, TheFormatCanBeChosen) {
  EXPECT_EQ(
      RunDemo("well_behaved", {Config(), "-o", Path("out"), "--format", "json"})
          .exit_code,
      0);
  EXPECT_EQ(ReadJson("out"), kResultJson);
  EXPECT_EQ(RunDemo("well_behaved", {Write("demo.json", kDemoJson), "-o",
                                     Path("out.xml"), "--format", "xml"})
                .exit_code,
            0);
  EXPECT_THAT(Read("out.xml"), StartsWith("<"));
}

TEST_F(OutputTest, WrittenConfigurationsCanBeReadAgain) {
  ASSERT_EQ(RunDemo("well_behaved", {Config(), "-o", Path("out")}).exit_code,
            0);
  const std::string models = std::string(TEST_DEMO_MODELS) + "/after";
  const Outcome outcome =
      Run({"run", Path("out"), "--plugin", PluginPath("idle"), "--yang-before",
           models, "--yang-after", models});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
}

TEST_F(OutputTest, TheInputIsNeverTouched) {
  const std::string config = Config();
  RunDemo("well_behaved", {config, "-o", Path("out")});
  EXPECT_EQ(Read("demo.xml"), kDemoXml);
}

TEST_F(OutputTest, ANewFileHasThePermissionsOfTheUmask) {
  const mode_t mask = umask(027);
  RunDemo("idle", {Config(), "-o", Path("out")});
  umask(mask);
  EXPECT_EQ(Mode("out"), 0640U);
}

TEST_F(OutputTest, ANewFileIsNoMoreOpenThanTheInput) {
  const std::string config = Config();
  const mode_t mask = umask(022);
  for (const std::vector<Refusal>& refusals :
       {std::vector<Refusal>(), NoUnnamedFiles()}) {
    Launch launch;
    launch.refusals = refusals;
    for (const mode_t mode : {0600U, 0640U, 0664U}) {
      ASSERT_EQ(chmod(config.c_str(), mode), 0);
      std::filesystem::remove(Path("out"));
      EXPECT_EQ(RunDemo("idle", {config, "-o", Path("out")}, launch).exit_code,
                0);
      EXPECT_EQ(Mode("out"), mode & ~022U);
    }
  }
  umask(mask);
}

TEST_F(OutputTest, AReplacedFileKeepsItsPermissions) {
  Write("out", "old");
  chmod(Path("out").c_str(), 0600);
  RunDemo("idle", {Config(), "-o", Path("out"), "--force"});
  EXPECT_EQ(Mode("out"), 0600U);
}

TEST_F(OutputTest, AReplacedFileKeepsItsOwnerAndGroup) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  for (const std::vector<Refusal>& refusals :
       {std::vector<Refusal>(), NoUnnamedFiles()}) {
    Write("out", "old");
    ASSERT_EQ(chown(Path("out").c_str(), 1234, 4321), 0);
    ASSERT_EQ(chmod(Path("out").c_str(), 0640), 0);
    Launch launch;
    launch.refusals = refusals;
    const Outcome outcome =
        RunDemo("idle", {Config(), "-o", Path("out"), "--force"}, launch);
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    EXPECT_THAT(Read("out"), HasSubstr("</demo>"));
    struct stat status = {};
    ASSERT_EQ(stat(Path("out").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);
    EXPECT_EQ(status.st_gid, 4321U);
    EXPECT_EQ(Mode("out"), 0640U);
  }
}

// The binary form of an access control list with one user besides the owner.
std::string AccessList(uint32_t user) {
  struct Entry {
    uint16_t tag;
    uint16_t permissions;
    uint32_t id;
  };
  constexpr uint32_t kNobody = 0xffffffff;
  const Entry entries[] = {{0x01, 6, kNobody},   // owner
                           {0x02, 6, user},      // that user
                           {0x04, 0, kNobody},   // group
                           {0x10, 6, kNobody},   // mask
                           {0x20, 0, kNobody}};  // others
  const uint32_t version = 2;
  std::string list(reinterpret_cast<const char*>(&version), sizeof(version));
  return list.append(reinterpret_cast<const char*>(entries), sizeof(entries));
}

TEST_F(OutputTest, AReplacedFileKeepsItsAccessControlListOrTheLackOfOne) {
  const std::string list = AccessList(1234);
  const char* const name = "system.posix_acl_access";
  Write("out", "old");
  chmod(Path("out").c_str(), 0600);
  if (setxattr(Path("out").c_str(), name, list.data(), list.size(), 0) != 0) {
    GTEST_SKIP() << "the file system has no access control lists";
  }
  ASSERT_EQ(RunDemo("idle", {Config(), "-o", Path("out"), "--force"}).exit_code,
            0);
  std::string kept(200, '\0');
  const ssize_t size =
      getxattr(Path("out").c_str(), name, kept.data(), kept.size());
  ASSERT_EQ(size, static_cast<ssize_t>(list.size()));
  EXPECT_EQ(kept.substr(0, list.size()), list);

  // A list that the folder gives to new files is none of the old file's.
  fs::remove(Path("out"));
  Write("out", "old");
  chmod(Path("out").c_str(), 0640);
  ASSERT_EQ(setxattr(Path("").c_str(), "system.posix_acl_default", list.data(),
                     list.size(), 0),
            0);
  ASSERT_EQ(RunDemo("idle", {Config(), "-o", Path("out"), "--force"}).exit_code,
            0);
  EXPECT_EQ(getxattr(Path("out").c_str(), name, kept.data(), kept.size()), -1);
  EXPECT_EQ(Mode("out"), 0640U);
}

TEST_F(OutputTest, AnOwnerWhoCannotBeKeptIsFoundBeforeThePluginRuns) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can be somebody else";
  fs::permissions(fs::path(Path("")).parent_path().parent_path(),
                  fs::perms::all);
  fs::permissions(Path(""), fs::perms::all);
  const std::string config = Config();
  Write("out", "old");
  Launch launch;
  launch.user = 1234;
  for (const std::vector<Refusal>& refusals :
       {std::vector<Refusal>(), NoUnnamedFiles()}) {
    launch.refusals = refusals;
    for (const uid_t owner : {0U, 1234U}) {  // 1234 is not in the group
      ASSERT_EQ(chown(Path("out").c_str(), owner, 0), 0);
      const Outcome outcome = RunDemo(
          "hangs", {config, "-o", Path("out"), "--force", "--timeout", "1"},
          launch);
      EXPECT_EQ(outcome.exit_code, 6) << outcome;
      EXPECT_THAT(outcome.err,
                  HasSubstr("its owner and group (" + std::to_string(owner) +
                            ":0) cannot be kept"));
      EXPECT_EQ(Read("out"), "old");
      EXPECT_THAT(NewFiles(), IsEmpty());
    }
  }
  ASSERT_EQ(chown(Path("out").c_str(), 1234, 1234), 0);
  EXPECT_EQ(
      RunDemo("idle", {config, "-o", Path("out"), "--force"}, launch).exit_code,
      0);
}

TEST_F(OutputTest, AFolderThatMayNotBeWrittenIsFoundBeforeThePluginRuns) {
  const std::string config = Config();
  fs::permissions(fs::path(Path("")).parent_path().parent_path(),
                  fs::perms::all);
  Launch launch;
  if (geteuid() == 0) launch.user = 1234;
  fs::permissions(Path(""), fs::perms::owner_read | fs::perms::owner_exec |
                                fs::perms::others_read |
                                fs::perms::others_exec);
  for (const std::vector<Refusal>& refusals :
       {std::vector<Refusal>(), NoUnnamedFiles()}) {
    launch.refusals = refusals;
    const Outcome outcome =
        RunDemo("hangs", {config, "-o", "out", "--timeout", "1"}, launch);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("out: cannot be created in its folder: "
                                       "Permission denied"));
  }
  fs::permissions(Path(""), fs::perms::all);
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(OutputTest, AnExistingFileIsOnlyReplacedWithForce) {
  Write("out", "old");
  const Outcome refused = RunDemo("idle", {Config(), "-o", Path("out")});
  EXPECT_EQ(refused.exit_code, 6) << refused;
  EXPECT_THAT(refused.err, AllOf(HasSubstr(Path("out") + ": exists already"),
                                 HasSubstr("--force")));
  EXPECT_EQ(Read("out"), "old");

  const Outcome forced =
      RunDemo("idle", {Config(), "-o", Path("out"), "--force"});
  EXPECT_EQ(forced.exit_code, 0) << forced;
  EXPECT_THAT(Read("out"), HasSubstr("<label>one</label>"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(OutputTest, AFailedRunKeepsTheExistingFileEvenWithForce) {
  Write("out", "old");
  for (const char* plugin :
       {"fails", "aborts", "breaks_mandatory", "no_update", "exits"}) {
    EXPECT_NE(
        RunDemo(plugin, {Config(), "-o", Path("out"), "--force"}).exit_code, 0);
    EXPECT_EQ(Read("out"), "old") << plugin;
    EXPECT_THAT(NewFiles(), IsEmpty()) << plugin;
  }
}

TEST_F(OutputTest, AFileThatAppearsDuringTheRunIsNotReplaced) {
  Launch launch;
  launch.environment = {"RACING_FILE=" + Path("out")};
  const Outcome outcome =
      RunDemo("creates_output", {Config(), "-o", Path("out")}, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("come into existence"));
  EXPECT_EQ(Read("out"), "somebody else's");
  EXPECT_THAT(NewFiles(), ElementsAre("out"));
}

TEST_F(OutputTest, TheInputIsRefusedAsOutputUnderAnyName) {
  const std::string config = Config();
  fs::create_hard_link(config, Path("hard"));
  fs::create_symlink("demo.xml", Path("soft"));
  for (const char* name : {"demo.xml", "./demo.xml", "hard", "soft"}) {
    const Outcome outcome = RunDemo("idle", {config, "-o", name, "--force"});
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("never changed")) << name;
  }
  Launch launch;
  launch.stdin_path = config;
  EXPECT_EQ(RunDemo("idle", {"-", "-o", config, "--force"}, launch).exit_code,
            6);
  EXPECT_EQ(Read("demo.xml"), kDemoXml);
}

TEST_F(OutputTest, ALinkIsFollowedAndStays) {
  Write("target", "old");
  fs::create_symlink("target", Path("link"));
  const Outcome outcome =
      RunDemo("idle", {Config(), "-o", Path("link"), "--force"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_THAT(Read("target"), HasSubstr("<label>one</label>"));
}

TEST_F(OutputTest, PlacesThatCannotBeWrittenAreFoundBeforeThePluginRuns) {
  const std::string config = Config();
  fs::create_directory(Path("folder"));
  fs::create_symlink("nowhere", Path("dangling"));
  Write("file", "");
  struct Row {
    std::string output;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {Path("missing/out"), "No such file or directory"},
      {Path("file/out"), "Not a directory"},
      {"/proc/self/out", "cannot be created in its folder"},
      {Path("folder"), "is a folder"},
      {Path("folder/"), "is a folder"},
      {Path("dangling"), "leads nowhere"},
      {"/dev/null", "is not a regular file"},
      {Path(std::string(300, 'n')), "File name too long"},
  };
  for (const Row& row : rows) {
    const Outcome outcome =
        RunDemo("hangs", {config, "-o", row.output, "--force"});
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err,
                AllOf(HasSubstr(row.output), HasSubstr(row.reason)));
  }
}

TEST_F(OutputTest, ALongNameLeavesRoomForTheTemporaryOne) {
  const std::string name(255, 'n');
  const Outcome outcome = RunDemo("idle", {Config(), "-o", Path(name)});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(NewFiles(), ElementsAre(name));
}

TEST_F(OutputTest, AFullDiskIsExitCode6AndLeavesNothing) {
  const std::string config = BigConfig();
  Launch launch;
  launch.max_file_size = 100'000;
  const Outcome outcome = RunDemo("idle", {config, "-o", Path("out")}, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("File too large"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(OutputTest, AMinusIsStandardOutputAndTheReportGoesElsewhere) {
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "-o", "-", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(nlohmann::json::parse(outcome.out, nullptr, false).dump(),
            kResultJson);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("upgrade succeeds"),
                                 HasSubstr("Written: standard output")));
}

TEST_F(OutputTest, NothingReachesStandardOutputAfterAFailure) {
  for (const char* plugin : {"fails", "breaks_mandatory", "aborts"}) {
    EXPECT_THAT(RunDemo(plugin, {Config(), "-o", "-"}).out, IsEmpty());
  }
}

TEST_F(OutputTest, APartOnStandardOutputIsReportedAsThat) {
  const std::string command = ShellCommand("idle", {BigConfig(), "-o", "-"});
  Launch launch;
  launch.executable = "/bin/sh";
  const Outcome outcome =
      Run({"-c", "trap '' PIPE; { " + command +
                     "; echo \"exit code $?\" >&2; } | head -c 10"},
          launch);
  EXPECT_EQ(outcome.out.size(), 10U) << outcome;
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("Not written as a whole: standard output"),
                    HasSubstr("standard output: cannot be written: Broken"),
                    HasSubstr("exit code 6\n")));
}

TEST_F(OutputTest, AFullStandardOutputIsExitCode6) {
  Launch launch;
  launch.stdout_path = "/dev/full";
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{Config(), "-o", "-"},
        {Config()},
        {Config(), "--json"}}) {
    const Outcome outcome = RunDemo("idle", args, launch);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("cannot be written"));
  }
}

TEST_F(OutputTest, AReportThatCannotBeDeliveredLeavesNoOutput) {
  Launch launch;
  launch.stdout_path = "/dev/full";
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{}, {"--json"}, {"--verbose"}}) {
    std::vector<std::string> args = {Config(), "-o", Path("out")};
    args.insert(args.end(), more.begin(), more.end());
    const Outcome outcome = RunDemo("well_behaved", args, launch);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("the report cannot be written"));
    EXPECT_THAT(NewFiles(), IsEmpty());
  }
  Write("out", "old");
  EXPECT_EQ(RunDemo("idle", {Config(), "-o", Path("out"), "--force"}, launch)
                .exit_code,
            6);
  EXPECT_EQ(Read("out"), "old");
  // Nobody asked for a report.
  EXPECT_EQ(RunDemo("idle", {Config(), "-o", Path("quiet"), "--quiet"}, launch)
                .exit_code,
            0);
  EXPECT_THAT(NewFiles(), ElementsAre("quiet"));

  Launch to_stdout;
  to_stdout.stderr_path = "/dev/full";
  const Outcome outcome = RunDemo("idle", {Config(), "-o", "-"}, to_stdout);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.out, IsEmpty());
}

TEST_F(OutputTest, AReportNamesNoOutputThatCouldNotBePutInItsPlace) {
  Launch launch;
  launch.environment = {"RACING_FILE=" + Path("out")};
  const Outcome text =
      RunDemo("creates_output", {Config(), "-o", Path("out")}, launch);
  EXPECT_EQ(text.exit_code, 6) << text;
  EXPECT_THAT(text.out, AllOf(HasSubstr("\nNothing was written.\n"),
                              Not(HasSubstr("Written: "))));
  fs::remove(Path("out"));
  const Outcome json = RunDemo("creates_output",
                               {Config(), "-o", Path("out"), "--json"}, launch);
  EXPECT_EQ(json.exit_code, 6) << json;
  const auto report = nlohmann::json::parse(json.out);
  EXPECT_EQ(report["exit_code"], 6);
  EXPECT_EQ(report["outcome"], "output-failed");
  EXPECT_EQ(report["output"], nlohmann::json());
  EXPECT_EQ(report["error"]["file"], Path("out"));
}

TEST_F(OutputTest, ASignalDuringTheRunLeavesNothingBehind) {
  for (const int signal :
       {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM,
        SIGPROF, SIGIO, SIGPWR, SIGSTKFLT, SIGXCPU, SIGPIPE, SIGABRT, SIGTRAP,
        SIGSYS, SIGRTMIN, SIGRTMAX}) {
    const pid_t host = Start(DemoArgs("hangs", {Config(), "-o", Path("out"),
                                                "--log=" + Path("log")}),
                             {});
    ASSERT_TRUE(WaitFor("log", "started "));
    EXPECT_THAT(NewFiles(), ElementsAre("log"));
    kill(host, signal);
    // Killed by it: a shell's loop would outlive a mere exit code.
    EXPECT_EQ(Finish(host).signal, signal);
    EXPECT_THAT(NewFiles(), ElementsAre("log"));
    fs::remove(Path("log"));
  }
}

TEST_F(OutputTest, BeingKilledDuringTheRunLeavesNothingBehind) {
  for (const std::vector<Refusal>& refusals :
       {std::vector<Refusal>(), NoUnnamedFiles()}) {
    Launch launch;
    launch.refusals = refusals;
    const pid_t host = Start(DemoArgs("pauses", {Config(), "-o", Path("out"),
                                                 "--log=" + Path("log")}),
                             launch);
    ASSERT_TRUE(WaitFor("log", "started"));
    kill(host, SIGKILL);
    EXPECT_EQ(Finish(host).exit_code, 128 + SIGKILL);
    EXPECT_THAT(NewFiles(), ElementsAre("log"));
    fs::remove(Path("log"));
  }
}

// The rules for an output on a file system that lacks features.
TEST_F(OutputTest, FeaturesThatAFileSystemLacksAreDoneWithout) {
  std::vector<Refusal> no_features = NoUnnamedFiles();
  for (const auto& more :
       {NoExchange(), NoRenameThatNeverReplaces(), NoHardLinks()}) {
    Launch launch;
    launch.refusals = no_features;
    const Outcome created =
        RunDemo("well_behaved", {Config(), "-o", Path("out")}, launch);
    EXPECT_EQ(created.exit_code, 0) << created;
    EXPECT_THAT(Read("out"), HasSubstr("<label>nine</label>"));
    EXPECT_EQ(Mode("out"), 0644U);
    EXPECT_EQ(RunDemo("idle", {Config(), "-o", Path("out")}, launch).exit_code,
              6);

    chmod(Path("out").c_str(), 0606);
    const Outcome replaced =
        RunDemo("idle", {Config(), "-o", Path("out"), "--force"}, launch);
    EXPECT_EQ(replaced.exit_code, 0) << replaced;
    EXPECT_THAT(Read("out"), HasSubstr("<label>two</label>"));
    EXPECT_EQ(Mode("out"), 0606U);
    EXPECT_THAT(NewFiles(), ElementsAre("out"));
    fs::remove(Path("out"));

    Launch racing = launch;
    racing.environment = {"RACING_FILE=" + Path("out")};
    const Outcome raced =
        RunDemo("creates_output", {Config(), "-o", Path("out")}, racing);
    EXPECT_EQ(raced.exit_code, 6) << raced;
    EXPECT_EQ(Read("out"), "somebody else's");
    EXPECT_THAT(NewFiles(), ElementsAre("out"));
    fs::remove(Path("out"));
    no_features.insert(no_features.end(), more.begin(), more.end());
  }
}

TEST_F(OutputTest, ASignalThatWasIgnoredAtTheStartStaysIgnored) {
  Launch launch;
  launch.ignored_signals = {SIGHUP, SIGINT};
  const pid_t host =
      Start(DemoArgs("hangs", {Config(), "--log=" + Path("log")}), launch);
  ASSERT_TRUE(WaitFor("log", "started "));
  for (const int signal : launch.ignored_signals) kill(host, signal);
  kill(host, SIGTERM);
  EXPECT_EQ(Finish(host).exit_code, 128 + SIGTERM);
}

TEST_F(OutputTest, ASignalEndsThePluginAndWhatItStarted) {
  const pid_t host = Start(
      DemoArgs("hangs", {Config(), "--log=" + Path("log"), "--timeout", "0"}),
      {});
  ASSERT_TRUE(WaitFor("log", "started "));
  kill(host, SIGTERM);
  Finish(host);
  EXPECT_TRUE(WaitForEnd(std::stoi(Read("log").substr(8))));
}

TEST_F(OutputTest, AReaderThatGoesAwayLeavesNothingBehind) {
  const std::string command =
      ShellCommand("many_calls", {Config(), "--verbose", "-o", Path("out")});
  Launch launch;
  launch.executable = "/bin/sh";
  const Outcome outcome = Run({"-c", command + " | head -n 1"}, launch);
  EXPECT_EQ(outcome.out, "maapi_exists /demo/item{1} -> 1\n") << outcome;
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(OutputTest, RecordsBeforeACrashAreInTheLog) {
  const Outcome outcome = RunDemo("aborts", {Config(), "--log=" + Path("log")});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_EQ(Read("log"), "before the assertion\n");
}

TEST_F(OutputTest, EachRecordIsOneLineOfTheLog) {
  RunDemo("many_records", {Config(), "--log=" + Path("log")});
  const std::string log = Read("log");
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2001);
  EXPECT_THAT(log, StartsWith("record 0\nrecord 1\n"));
  EXPECT_THAT(log, HasSubstr("two\\nlines and an \\x1b[31mescape\\xff\n"));
}

TEST_F(OutputTest, ALogThatExistsIsReplacedWithForceAlone) {
  Write("log", "precious\n");
  const Outcome kept =
      RunDemo("well_behaved", {Config(), "--log=" + Path("log")});
  EXPECT_EQ(kept.exit_code, 6) << kept;
  EXPECT_THAT(kept.err, AllOf(HasSubstr(Path("log") + ": exists already\n"),
                              HasSubstr("give --force to replace it")));
  EXPECT_EQ(Read("log"), "precious\n");

  const Outcome replaced =
      RunDemo("well_behaved", {Config(), "--log=" + Path("log"), "--force"});
  EXPECT_EQ(replaced.exit_code, 0) << replaced;
  EXPECT_EQ(Read("log"), "2 items\ndone\n");
}

TEST_F(OutputTest, ALogGoesToWhatIsNoRegularFileWithoutForce) {
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  const int reader =
      open(Path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "--log=" + Path("pipe")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  char text[64] = "";
  EXPECT_GT(read(reader, text, sizeof text - 1), 0);
  close(reader);
  EXPECT_STREQ(text, "2 items\ndone\n");
}

TEST_F(OutputTest, TheFileThatTheReportGoesToIsNotReplaced) {
  for (const std::string option : {"-o", "--log="}) {
    for (const std::string name : {"/dev/stdout", "/dev/stderr"}) {
      const Outcome outcome = RunDemo(
          "well_behaved",
          option == "-o"
              ? std::vector<std::string>{Config(), option, name, "--force"}
              : std::vector<std::string>{Config(), option + name, "--force"});
      EXPECT_EQ(outcome.exit_code, 6) << outcome;
      EXPECT_THAT(outcome.err,
                  HasSubstr(name + ": is the file that the report goes to"));
      EXPECT_EQ(outcome.out, "");
    }
  }
}

TEST_F(OutputTest, ALogThatCannotBeWrittenIsExitCode6) {
  struct Row {
    std::string log;
    std::string reason;
  };
  const std::vector<Row> rows = {
      {Path("missing/log"), "No such file"},
      {Path(""), "Is a directory"},
      {Config(), "never changed"},
      {Path("out"), "both the log and the output"},
      {Path("./out"), "both the log and the output"},
      {"/dev/full", "No space left"},
  };
  for (const Row& row : rows) {
    const Outcome outcome =
        RunDemo("well_behaved",
                {Path("demo.xml"), "--log=" + row.log, "-o", Path("out")});
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, AllOf(HasSubstr(row.log), HasSubstr(row.reason)));
    EXPECT_THAT(NewFiles(), IsEmpty());
  }
  EXPECT_EQ(Read("demo.xml"), kDemoXml);
}

}  // namespace
}  // namespace host_test
