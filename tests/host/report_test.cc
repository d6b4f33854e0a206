#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Json = nlohmann::json;

class ReportTest : public HostTest {
 protected:
  std::string Config() { return Write("demo.xml", kDemoXml); }
};

TEST_F(ReportTest, TheFirstScreenHasVerdictChangesLossesAndValidation) {
  const Outcome outcome = RunDemo("well_behaved", {Config()});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(outcome.out,
            Path("demo.xml") +
                ": upgrade succeeds, 1 thing to look at\n"
                " look  LOST  /demo/item{1}/obsolete \"old\" is not carried "
                "over: the new model has no such node (1 place)   "
                "docs/findings.md#for-any-plug-in\n"
                "Changes: 1 entry is new, 1 changed, 1 is gone\n"
                "  list         created  re-keyed   changed   deleted\n"
                "  /demo/item         1         0         1         1\n"
                "Automatic upgrade: 1 node is not carried over "
                "into the new model\n"
                "  /demo/item{1}/obsolete (old): the new model "
                "has no such node\n"
                "Validation: the result is valid under the new "
                "model\n"
                "ConfD calls: 5 (--trace shows them)\n"
                "Nothing was written: -o FILE keeps the upgraded "
                "configuration.\n");
  EXPECT_THAT(outcome.err, IsEmpty());
}

TEST_F(ReportTest, TheLogIsShownWhenItIsAskedFor) {
  EXPECT_THAT(RunDemo("well_behaved", {Config(), "--log"}).out,
              HasSubstr("\nLog (2 records):\n  2 items\n  done\nChanges"));
  EXPECT_THAT(RunDemo("idle", {Config(), "--log"}).out,
              HasSubstr("\nLog: no records\n"));
}

TEST_F(ReportTest, APluginThatDoesNothingChangesNothing) {
  const Outcome outcome = RunDemo("idle", {Config()});
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\nConfD calls: 0 ("),
                                 HasSubstr("\nChanges: none\n")));
}

// Items 1 to `count` with a leaf that the new model does not have.
std::string ItemsWithObsoleteLeaves(int count) {
  std::string xml = "<demo xmlns=\"urn:demo\">\n";
  for (int i = 1; i <= count; ++i) {
    xml += "<item><id>" + std::to_string(i) +
           "</id><label>l</label><obsolete>old</obsolete></item>\n";
  }
  return xml + "</demo>\n";
}

TEST_F(ReportTest, WhatTheNewModelHasNoPlaceForIsNamed) {
  const std::string config = Write("old.xml", ItemsWithObsoleteLeaves(1));
  const std::string line =
      "/demo/item{1}/obsolete (old): the new model has no such node";
  EXPECT_THAT(RunDemo("idle", {config}).out,
              HasSubstr("Automatic upgrade: 1 node is not carried over into "
                        "the new model\n  " +
                        line + "\nValidation: "));
  const Json report = Json::parse(RunDemo("idle", {config, "--json"}).out);
  EXPECT_EQ(report["not_carried_over"],
            Json({{{"path", "/demo/item{1}/obsolete"},
                   {"value", "old"},
                   {"reason", "the new model has no such node"}}}));
}

TEST_F(ReportTest, ManyLossesAreCutUnlessDiffIsGiven) {
  const std::string config = Write("old.xml", ItemsWithObsoleteLeaves(12));
  const std::string cut = RunDemo("idle", {config}).out;
  EXPECT_THAT(cut, AllOf(HasSubstr("12 nodes are not carried over"),
                         HasSubstr("item{10}/obsolete"),
                         Not(HasSubstr("item{11}/obsolete")),
                         HasSubstr("  ... and 2 more, which --diff shows\n")));
  EXPECT_THAT(RunDemo("idle", {config, "--diff"}).out,
              AllOf(HasSubstr("item{12}/obsolete"), Not(HasSubstr("more,"))));
}

TEST_F(ReportTest, QuietPrintsNothingOnSuccess) {
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "-o", Path("out"), "--quiet"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, IsEmpty());
  EXPECT_TRUE(Exists("out"));
}

TEST_F(ReportTest, QuietPrintsOnlyTheErrorOfAFailure) {
  const Outcome outcome = RunDemo("fails", {Config(), "--quiet"});
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("update returned -1"),
                                 Not(HasSubstr("upgrade fails"))));
}

TEST_F(ReportTest, VerbosePrintsCallsAndRecordsInTheirOrder) {
  const Outcome outcome = RunDemo("well_behaved", {Config(), "--verbose"});
  EXPECT_THAT(outcome.out, StartsWith("cdb_num_instances /demo/item -> 2\n"
                                      "log: 2 items\n"
                                      "  created /demo/item{9}\n"
                                      "maapi_create /demo/item{9} -> 0\n"
                                      "  changed /demo/item{9}/label: "
                                      "(none) -> nine\n"
                                      "maapi_set_elem /demo/item{9}/label "));
  EXPECT_THAT(outcome.out, ContainsRegex("maapi_set_elem +2\n"));
  EXPECT_THAT(outcome.out, HasSubstr("Cursors left open: 0\n"));
}

TEST_F(ReportTest, VerboseShowsTheCallsBeforeACrash) {
  const Outcome outcome = RunDemo("segfaults", {Config(), "--verbose"});
  EXPECT_EQ(outcome.exit_code, 5);
  EXPECT_THAT(outcome.out, StartsWith("maapi_delete /demo/item{77}"));
}

TEST_F(ReportTest, DiffShowsEveryChangedEntryWithItsLeaves) {
  const Outcome outcome = RunDemo("well_behaved", {Config(), "--diff"});
  EXPECT_THAT(outcome.out, HasSubstr("~ /demo/item{1}\n"
                                     "    label: one -> uno\n"));
  EXPECT_THAT(outcome.out, HasSubstr("- /demo/item{2}\n"
                                     "    label: two\n"));
  EXPECT_THAT(outcome.out, HasSubstr("+ /demo/item{9}\n"
                                     "    label: nine\n"));
}

class Terminal {
 public:
  Terminal() : fd_(posix_openpt(O_RDWR | O_NOCTTY)) {
    grantpt(fd_);
    unlockpt(fd_);
    path_ = ptsname(fd_);
    // Without it the master can't be read once the host has closed its end.
    own_end_ = open(path_.c_str(), O_RDWR | O_NOCTTY);
    fcntl(fd_, F_SETFL, O_NONBLOCK);
  }
  ~Terminal() {
    close(own_end_);
    close(fd_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  const std::string& path() const { return path_; }
  int SetSize(const winsize& size) const {
    return ioctl(fd_, TIOCSWINSZ, &size);
  }
  std::string Read() const {
    std::string text(1 << 16, '\0');
    const ssize_t size = read(fd_, text.data(), text.size());
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
  }

 private:
  int fd_;
  int own_end_;
  std::string path_;
};

TEST_F(ReportTest, ATerminalSeesTheProgressOfALongRunWhichIsErasedAtItsEnd) {
  const Terminal terminal;
  Launch launch;
  launch.stderr_path = terminal.path();
  EXPECT_EQ(RunDemo("slow", {Config()}, launch).exit_code, 0);
  const std::string seen = terminal.Read();
  EXPECT_THAT(seen, StartsWith("\r\x1b[Krunning the plug-in, 1 call\r"));
  EXPECT_THAT(seen, EndsWith("1 call\r\x1b[K"));
}

TEST_F(ReportTest, ATerminalSeesColorsAndLinesOfItsWidth) {
  const Terminal terminal;
  const winsize size = {24, 60, 0, 0};
  ASSERT_EQ(terminal.SetSize(size), 0);
  Launch launch;
  launch.stdout_path = terminal.path();
  launch.environment = {"TERM=xterm"};
  EXPECT_EQ(RunDemo("well_behaved", {Config()}, launch).exit_code, 0);
  const std::string colored = terminal.Read();
  EXPECT_THAT(colored, HasSubstr("\x1b[33mlook\x1b[0m  LOST  "));
  EXPECT_THAT(colored, HasSubstr("(1 place)\r\n            docs/"));
  for (const char* variable : {"NO_COLOR=1", "TERM=dumb"}) {
    launch.environment = {"TERM=xterm", variable};
    EXPECT_EQ(RunDemo("well_behaved", {Config()}, launch).exit_code, 0);
    EXPECT_THAT(terminal.Read(),
                AllOf(HasSubstr(" look  LOST  "), Not(HasSubstr("\x1b[3"))));
  }
}

TEST_F(ReportTest, QuietAndShortRunsShowNoProgress) {
  const Terminal terminal;
  Launch launch;
  launch.stderr_path = terminal.path();
  EXPECT_EQ(RunDemo("idle", {Config()}, launch).exit_code, 0);
  EXPECT_EQ(RunDemo("slow", {Config(), "--quiet"}, launch).exit_code, 0);
  EXPECT_EQ(terminal.Read(), "");
}

TEST_F(ReportTest, JsonReportsASuccess) {
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "--json", "-o", Path("out")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  const Json report = Json::parse(outcome.out);
  EXPECT_EQ(report["config"], Path("demo.xml"));
  EXPECT_EQ(report["plugin"], PluginPath("well_behaved"));
  EXPECT_EQ(report["exit_code"], 0);
  EXPECT_EQ(report["outcome"], "success");
  EXPECT_EQ(report["error"], Json());
  EXPECT_EQ(report["result"], 0);
  EXPECT_EQ(report["log"], Json::array({"2 items", "done\n"}));
  EXPECT_EQ(report["calls"]["total"], 5);
  EXPECT_EQ(report["calls"]["by_function"]["maapi_set_elem"], 2);
  EXPECT_EQ(report["calls"]["last"], "maapi_delete /demo/item{2} -> 0");
  EXPECT_EQ(report["calls"]["open_cursors"], 0);
  EXPECT_EQ(report["changes"], Json::array({{{"list", "/demo/item"},
                                             {"created", 1},
                                             {"rekeyed", 0},
                                             {"changed", 1},
                                             {"deleted", 1},
                                             {"moved", 0}}}));
  EXPECT_EQ(report["device"], Json());
  ASSERT_EQ(report["findings"].size(), 1U);
  EXPECT_EQ(report["findings"][0]["rule"], "LOST");
  ASSERT_EQ(report["passes"].size(), 1U);
  const Json& pass = report["passes"][0];
  EXPECT_EQ(pass["pass"], 0);
  EXPECT_EQ(pass["name"], Json());
  EXPECT_EQ(pass["calls"], 5);
  EXPECT_EQ(pass["changes"], report["changes"]);
  EXPECT_EQ(pass["failed_calls"], Json::array());
  EXPECT_EQ(report["valid"], true);
  EXPECT_EQ(report["violations"], Json::array());
  EXPECT_EQ(report["output"], Path("out"));
  EXPECT_EQ(report["format"], "xml");
  EXPECT_FALSE(report.contains("entries"));
  EXPECT_FALSE(report.contains("events"));
}

TEST_F(ReportTest, JsonHasEntriesWithDiffAndEventsWithVerbose) {
  const Json report = Json::parse(
      RunDemo("well_behaved", {Config(), "--json", "--diff", "--verbose"}).out);
  ASSERT_EQ(report["entries"].size(), 3U);
  EXPECT_EQ(report["entries"][0]["change"], "changed");
  EXPECT_EQ(report["entries"][0]["path"], "/demo/item{1}");
  EXPECT_EQ(report["entries"][0]["leaves"],
            Json::array({{{"leaf", "label"},
                          {"before", "one"},
                          {"after", "uno"},
                          {"default", nullptr}}}));
  ASSERT_EQ(report["events"].size(), 11U);
  const Json& call = report["events"][0];
  EXPECT_EQ(call["kind"], "call");
  EXPECT_EQ(call["number"], 1);
  EXPECT_EQ(call["pass"], 0);
  EXPECT_EQ(call["function"], "cdb_num_instances");
  EXPECT_EQ(call["path"], "/demo/item");
  EXPECT_EQ(call["result"], 2);
  EXPECT_EQ(call["text"], "cdb_num_instances /demo/item -> 2");
  EXPECT_EQ(
      report["events"][1],
      Json({{"kind", "log"}, {"call", 1}, {"pass", 0}, {"text", "2 items"}}));
  EXPECT_EQ(report["events"][4], Json({{"kind", "change"},
                                       {"call", 3},
                                       {"pass", 0},
                                       {"change", "value"},
                                       {"list", "/demo/item"},
                                       {"path", "/demo/item{9}"},
                                       {"old_path", nullptr},
                                       {"leaf", "label"},
                                       {"before", nullptr},
                                       {"after", "nine"}}));
  EXPECT_EQ(report["events"][5]["kind"], "call");
  EXPECT_EQ(report["events"][5]["number"], 3);
  EXPECT_GT(report["events"][5]["nanoseconds"], 0);
}

TEST_F(ReportTest, JsonReportsEveryKindOfFailure) {
  struct Row {
    std::string plugin;
    int exit_code;
    std::string outcome;
  };
  const std::vector<Row> rows = {
      {"fails", 1, "plugin-failed"},
      {"breaks_mandatory", 2, "invalid-result"},
      {"no_update", 4, "plugin-not-loaded"},
      {"aborts", 5, "plugin-died"},
      {"throws", 5, "plugin-died"},
  };
  for (const Row& row : rows) {
    const Outcome outcome = RunDemo(row.plugin, {Config(), "--json"});
    EXPECT_EQ(outcome.exit_code, row.exit_code) << outcome;
    const Json report = Json::parse(outcome.out);
    EXPECT_EQ(report["exit_code"], row.exit_code);
    EXPECT_EQ(report["outcome"], row.outcome);
    EXPECT_NE(report["error"]["reason"], "") << row.plugin;
    EXPECT_NE(report["error"]["advice"], "") << row.plugin;
    EXPECT_EQ(report["output"], Json());
  }
}

TEST_F(ReportTest, JsonLocatesAFaultOfTheInput) {
  const std::string config =
      Write("bad.xml",
            "<demo xmlns=\"urn:demo\">\n<item><id>1</id>"
            "<label>a</label>\n<size>0</size></item></demo>");
  const Outcome outcome = RunDemo("idle", {config, "--json"});
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  const Json error = Json::parse(outcome.out)["error"];
  EXPECT_EQ(error["file"], config);
  EXPECT_EQ(error["line"], 3);
  EXPECT_EQ(error["path"], "/demo/item{1}/size");
}

TEST_F(ReportTest, JsonSaysNullWhereAFaultHasNoLineAndNoPath) {
  const Outcome outcome = RunDemo("idle", {"missing.xml", "--json"});
  const Json error = Json::parse(outcome.out)["error"];
  EXPECT_EQ(error["file"], "missing.xml");
  EXPECT_EQ(error["line"], Json());
  EXPECT_EQ(error["path"], Json());
}

TEST_F(ReportTest, AMessageQuotesOnlyTheEndsOfAHugeValue) {
  const std::string huge = "begin" + std::string(100000, 'x') + "end";
  const std::string config =
      Write("huge.xml",
            "<demo xmlns=\"urn:demo\"><item><id>1</id><label>a</label><size>" +
                huge + "</size></item></demo>");
  const Outcome outcome = RunDemo("idle", {config});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_LT(outcome.err.size(), 2000U);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("beginxxx"), HasSubstr("xxxend"),
                                 HasSubstr(" bytes ...]")));
}

TEST_F(ReportTest, JsonListsTheBrokenConstraints) {
  const Json report =
      Json::parse(RunDemo("breaks_reference", {Config(), "--json"}).out);
  EXPECT_EQ(report["valid"], false);
  ASSERT_EQ(report["violations"].size(), 1U);
  const Json violation = report["violations"][0];
  EXPECT_EQ(violation["error"], 14);
  EXPECT_EQ(violation["path"], "/demo/item{1}/twin");
  EXPECT_THAT(violation["reason"], HasSubstr("1234"));
}

TEST_F(ReportTest, JsonSurvivesRecordsThatAreNotText) {
  const Outcome outcome = RunDemo("many_records", {Config(), "--json"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(Json::parse(outcome.out)["log"].size(), 2001U);
}

TEST_F(ReportTest, ControlCharactersOfRecordsDoNotReachTheTerminal) {
  const Outcome outcome = RunDemo("many_records", {Config(), "--log"});
  EXPECT_THAT(outcome.out, AllOf(Not(HasSubstr("\x1b")),
                                 HasSubstr("lines and an \\x1b[31mescape")));
}

TEST_F(ReportTest, TheOldValueOfALeafThatNobodySetIsItsDefault) {
  const std::string config = Write("demo.xml", kDemoXml);
  const Outcome outcome = RunDemo("sets_size", {config, "--diff"});
  EXPECT_THAT(outcome.out, HasSubstr("\n~ /demo/item{2}\n"
                                     "    size: 1 (default) -> 5\n"));
  const auto report = nlohmann::json::parse(
      RunDemo("sets_size", {config, "--diff", "--json"}).out);
  const auto& leaf = report["entries"][0]["leaves"][0];
  EXPECT_EQ(leaf["before"], nullptr);
  EXPECT_EQ(leaf["after"], "5");
  EXPECT_EQ(leaf["default"], "1");
}

TEST_F(ReportTest, WatchingTheCallsDoesNotChangeTheirNumber) {
  const std::string config = Write("demo.xml", kDemoXml);
  const auto plain =
      nlohmann::json::parse(RunDemo("frees", {config, "--json"}).out)["calls"];
  const auto watched = nlohmann::json::parse(
      RunDemo("frees", {config, "--json", "--verbose"}).out);
  EXPECT_EQ(plain["total"], 1);
  EXPECT_EQ(watched["calls"], plain);
  ASSERT_EQ(watched["events"].size(), 2U);
  EXPECT_EQ(watched["events"][1]["text"], "confd_free_value -> 0");
}

}  // namespace
}  // namespace host_test
