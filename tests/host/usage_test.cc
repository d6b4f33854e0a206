#include <gmock/gmock.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using UsageTest = HostTest;

TEST_F(UsageTest, HelpListsEveryExitCode) {
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{
           {"--help"}, {"run", "--help"}, {"explain", "--help"}}) {
    const Outcome outcome = Run(args);
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    for (const char* code :
         {"\n  0 ", "\n  1 ", "\n  2 ", "\n  3 ", "\n  4 ", "\n  5 ", "\n  6 ",
          "\n  8 ", "\n  70 ", "\n  128+N"}) {
      EXPECT_THAT(outcome.out, HasSubstr(code));
    }
  }
}

TEST_F(UsageTest, HelpOfRunListsEveryOption) {
  const Outcome outcome = Run({"run", "--help"});
  for (const char* option :
       {"CONFIG",        "-o,",           "--force", "--format",  "--plugin",
        "--yang-before", "--yang-after",  "--from",  "--unknown", "--max-size",
        "--namespace",   "--timeout",     "--log",   "--quiet",   "--verbose",
        "--trace",       "--diff",        "--json",  "--strict",  "--passes",
        "--ledger",      "--fail-on-loss"}) {
    EXPECT_THAT(outcome.out, HasSubstr(option));
  }
}

TEST_F(UsageTest, HelpThatCannotBePrintedIsExitCode6) {
  Launch launch;
  launch.stdout_path = "/dev/full";
  for (const char* option : {"--help", "--version"}) {
    EXPECT_EQ(Run({option}, launch).exit_code, 6) << option;
  }
}

TEST_F(UsageTest, RunningOutOfOpenFilesIsNotReportedAsABug) {
  Launch launch;
  launch.executable = "/bin/sh";
  const Outcome outcome =
      Run({"-c", "ulimit -n 6; exec \"$0\" run demo.xml", TEST_HOST}, launch);
  EXPECT_EQ(outcome.exit_code, 70) << outcome;
  EXPECT_THAT(outcome.err,
              HasSubstr("Too many open files\n  What to do: free"));
}

TEST_F(UsageTest, ACurrentFolderThatIsGoneIsNoInternalError) {
  const std::string config = Write("demo.xml", kDemoXml);
  Launch launch;
  launch.executable = "/bin/sh";
  const Outcome outcome =
      Run({"-c",
           "mkdir gone && cd gone && rmdir ../gone && exec \"$0\" run \"$1\" "
           "--yang-before \"$2/before\" --yang-after \"$2/after\" "
           "--plugin here.so",
           TEST_HOST, config, TEST_DEMO_MODELS},
          launch);
  EXPECT_EQ(outcome.exit_code, 4) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("here.so"));
}

TEST_F(UsageTest, VersionNamesTheProgram) {
  const Outcome outcome = Run({"--version"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, StartsWith("ospf-upgrade "));
}

TEST_F(UsageTest, BadUsageIsExitCode3AndSaysWhatIsWrong) {
  const std::string config = Write("demo.xml", kDemoXml);
  struct Row {
    std::vector<std::string> args;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{}, "subcommand is required"},
      {{"walk"}, "walk"},
      {{"run"}, "CONFIG is required"},
      {{"run", ""}, "empty name"},
      {{"run", config, "second.xml"}, "second.xml"},
      {{"run", config, "--no-such-option"}, "--no-such-option"},
      {{"run", config, "-o"}, "--output"},
      {{"run", config, "-o", ""}, "empty name"},
      {{"run", config, "--format", "yaml"}, "yaml"},
      {{"run", config, "--timeout", "soon"}, "soon"},
      {{"run", config, "--timeout", "-1"}, "-1"},
      {{"run", config, "--timeout", "nan"}, "nan"},
      {{"run", config, "--timeout", "inf"}, "inf"},
      {{"run", config, "--max-size", "0"}, "--max-size"},
      {{"run", config, "--max-size", "1G"}, "--max-size"},
      {{"run", config, "--log", "out.log"}, "is given as --log=FILE"},
      {{"run", "--log", "out.log", config}, "is given as --log=FILE"},
      {{"run", config, "--quiet", "--trace"}, "--quiet"},
      {{"run", config, "--namespace", "demo"}, "MODULE=HASH"},
      {{"run", config, "--namespace", "=1"}, "MODULE=HASH"},
      {{"run", config, "--namespace", "demo="}, "MODULE=HASH"},
      {{"run", config, "--namespace", "demo=0x"}, "MODULE=HASH"},
      {{"run", config, "--namespace", "demo=1x"}, "MODULE=HASH"},
      {{"run", config, "--namespace", "demo=-1"}, "MODULE=HASH"},
      {{"run", config, "--namespace", "demo=4294967296"}, "MODULE=HASH"},
      {{"run", config, "--quiet", "--verbose"}, "--quiet"},
      {{"run", config, "--quiet", "--json"}, "--quiet"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = Run(row.args);
    EXPECT_EQ(outcome.exit_code, 3) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr(row.message));
    EXPECT_THAT(outcome.out, IsEmpty());
  }
}

TEST_F(UsageTest, NamespaceHashesAreDecimalOrHexadecimal) {
  const std::string config = Write("demo.xml", kDemoXml);
  for (const char* hash : {"demo=1", "demo=4294967295", "demo=0xDEADbeef"}) {
    const Outcome outcome = RunDemo("idle", {config, "--namespace", hash});
    EXPECT_EQ(outcome.exit_code, 0) << hash << "\n" << outcome;
  }
}

TEST_F(UsageTest, ANamespaceHashIsKnownToThePlugin) {
  const std::string config = Write("demo.xml", kDemoXml);
  EXPECT_EQ(RunDemo("selects_namespace", {config}).exit_code, 1);
  EXPECT_EQ(RunDemo("selects_namespace", {"--namespace", "demo=5",
                                          "--namespace", "demo=0x1234", config})
                .exit_code,
            0);
}

TEST_F(UsageTest, ModelsThatAreMissingOrBrokenAreExitCode3) {
  const std::string config = Write("demo.xml", kDemoXml);
  const Outcome missing = Run({"run", config, "--plugin", PluginPath("idle"),
                               "--yang-before", Path("nowhere")});
  EXPECT_EQ(missing.exit_code, 3) << missing;
  EXPECT_THAT(missing.err,
              AllOf(HasSubstr("data models"), HasSubstr("nowhere")));

  std::filesystem::create_directory(Path("models"));
  Write("models/broken.yang", "module broken {\n  leaf\n}\n");
  const Outcome broken =
      Run({"run", config, "--plugin", PluginPath("idle"), "--yang-before",
           Path("models"), "--yang-after", Path("models")});
  EXPECT_EQ(broken.exit_code, 3) << broken;
  EXPECT_THAT(broken.err, HasSubstr("broken"));
}

// A copy of the executable has neither plug-in nor models beside it.
TEST_F(UsageTest, WithoutAnInstalledPluginTheMessageNamesThePathsLookedAt) {
  std::filesystem::create_directory(Path("bin"));
  std::filesystem::copy_file(TEST_HOST, Path("bin/ospf-upgrade"));
  Launch launch;
  launch.executable = Path("bin/ospf-upgrade");
  launch.environment = {
      "LD_LIBRARY_PATH=" +
      std::filesystem::path(TEST_PLUGIN).parent_path().string()};
  const std::string config = Write("demo.xml", kDemoXml);

  const Outcome no_plugin = Run({"run", config}, launch);
  EXPECT_EQ(no_plugin.exit_code, 4) << no_plugin;
  EXPECT_THAT(no_plugin.err,
              AllOf(HasSubstr(Path("lib/libquellix_ext_ospf_prot_update.so")),
                    HasSubstr(Path("bin/libquellix_ext_ospf_prot_update.so")),
                    HasSubstr("--plugin")));

  const Outcome no_models =
      Run({"run", config, "--plugin", PluginPath("idle")}, launch);
  EXPECT_EQ(no_models.exit_code, 3) << no_models;
  EXPECT_THAT(no_models.err,
              AllOf(HasSubstr(Path("share/ospf-upgrade/yang/before")),
                    HasSubstr("--yang-before")));
}

TEST_F(UsageTest, TheModuleOfANamespaceIsInTheModels) {
  const std::string config = Write("demo.xml", kDemoXml);
  const Outcome unknown = RunDemo(
      "idle", {config, "--namespace", "demo=1", "--namespace", "dmeo=2"});
  EXPECT_EQ(unknown.exit_code, 3) << unknown;
  EXPECT_THAT(unknown.err,
              HasSubstr("--namespace dmeo: no data model has this name"));
  EXPECT_EQ(RunDemo("idle", {config, "--namespace", "demo=1"}).exit_code, 0);
}

}  // namespace
}  // namespace host_test
