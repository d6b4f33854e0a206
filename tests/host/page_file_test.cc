// The file of --report: what it holds and where it is written.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

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
using ::testing::UnorderedElementsAre;

class PageFileTest : public HostTest {
 protected:
  std::string Config() { return Write("demo.xml", kDemoXml); }
  // Without the one line that tells when it was.
  std::string ReadTimeless(const std::string& name) {
    std::string page = Read(name);
    const size_t times = page.find("<p id=\"times\">");
    EXPECT_NE(times, std::string::npos);
    return page.erase(times, page.find('\n', times) - times);
  }
};

TEST_F(PageFileTest, HasFindingsBeforeAllElse) {
  const Outcome outcome =
      RunDemo("well_behaved", {Config(), "--report", Path("page.html")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              HasSubstr("Page: " + Path("page.html") + " (HTML, "));
  const std::string page = Read("page.html");
  EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
  const size_t verdict = page.find("upgrade succeeds, 1 thing to look at</p>");
  const size_t findings = page.find("obsolete &quot;old&quot; is not carried");
  ASSERT_NE(verdict, std::string::npos) << page;
  ASSERT_NE(findings, std::string::npos) << page;
  EXPECT_LT(verdict, findings);
  EXPECT_LT(findings, page.find("id=\"parts\""));
  EXPECT_LT(findings, page.find("2 items"));
}

TEST_F(PageFileTest, IsTheSameForTheSameRunButForItsTimes) {
  for (const char* name : {"one.html", "two.html"}) {
    RunDemo("well_behaved", {Config(), "--report", Path(name)});
  }
  EXPECT_EQ(ReadTimeless("one.html"), ReadTimeless("two.html"));
}

TEST_F(PageFileTest, HasTheSumsOfTheFiles) {
  RunDemo("well_behaved",
          {Config(), "-o", Path("out"), "--report", Path("page.html")});
  for (const std::string& file :
       {Config(), Path("out"),
        std::string(TEST_PLUGIN_FOLDER) + "/well_behaved.so"}) {
    FILE* sums = popen(("sha256sum " + file).c_str(), "r");
    ASSERT_NE(sums, nullptr);
    char sum[65] = "";
    EXPECT_EQ(fscanf(sums, "%64s", sum), 1);
    pclose(sums);
    EXPECT_THAT(Read("page.html"), HasSubstr(sum)) << file;
  }
}

TEST_F(PageFileTest, TellsOfAFailedUpgrade) {
  const Outcome outcome =
      RunDemo("fails", {Config(), "--report", Path("page.html")});
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_THAT(Read("page.html"),
              AllOf(HasSubstr("upgrade fails: update returned -1"),
                    HasSubstr("about to fail"), HasSubstr("cannot go on")));
}

TEST_F(PageFileTest, TellsHowFarAnAbortedUpgradeCame) {
  const Outcome outcome =
      RunDemo("aborts", {Config(), "--report", Path("page.html")});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(Read("page.html"), AllOf(HasSubstr("aborted with SIGABRT"),
                                       HasSubstr("Last ConfD call")));
}

TEST_F(PageFileTest, TellsOfAConfigurationThatCannotBeRead) {
  const Outcome outcome = RunDemo(
      "well_behaved", {Write("bad.xml", "<demo xmlns=\"urn:demo\"><x/></demo>"),
                       "--report", Path("page.html")});
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  EXPECT_THAT(Read("page.html"), HasSubstr("not rehearsed to its end"));
}

TEST_F(PageFileTest, NeverHasMarkupOfOthers) {
  std::string config(kDemoXml);
  const std::string label = "&lt;/script>&lt;img src=x onerror='x()'>\u202e";
  config.replace(config.find(">one<") + 1, 3, label);
  const std::string name = Path("<u>&.xml");
  fs::rename(Write("demo.xml", config), name);
  RunDemo("logs_markup", {name, "--report", Path("page.html")});
  const std::string page = Read("page.html");
  EXPECT_THAT(page, AllOf(HasSubstr("&lt;u&gt;&amp;.xml"),
                          HasSubstr(R"(a\\u202eb\\u2066c\\x1b[31m)"),
                          Not(HasSubstr("<u>")), Not(HasSubstr("<img"))));
  size_t ends = 0;
  for (size_t at = 0; (at = page.find("</script>", at)) != std::string::npos;
       ++at) {
    ++ends;
  }
  EXPECT_EQ(ends, 2U);
}

TEST_F(PageFileTest, ReplacesNothingWithoutForce) {
  const std::string page = Write("page.html", "mine");
  const Outcome outcome = RunDemo("well_behaved", {Config(), "--report", page});
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("exists already"), HasSubstr("with --report")));
  EXPECT_EQ(Read("page.html"), "mine");
  EXPECT_EQ(RunDemo("well_behaved", {Config(), "--report", page, "--force"})
                .exit_code,
            0);
  EXPECT_THAT(Read("page.html"), StartsWith("<!DOCTYPE html>"));
}

TEST_F(PageFileTest, IsNoOtherFileOfTheRun) {
  const std::string page = Path("page.html");
  const std::string config = Config();
  for (const std::vector<std::string>& args :
       std::vector<std::vector<std::string>>{
           {"--report", config},
           {"--report", page, "-o", page},
           {"--report", page, "--log=" + page}}) {
    std::vector<std::string> all = {config, "--force"};
    all.insert(all.end(), args.begin(), args.end());
    const Outcome outcome = RunDemo("well_behaved", all);
    EXPECT_EQ(outcome.exit_code, 6) << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("name another file with --report"));
    EXPECT_THAT(NewFiles(), IsEmpty());
  }
  EXPECT_EQ(Read("demo.xml"), kDemoXml);
}

TEST_F(PageFileTest, NeedsAFolderThatCanBeWritten) {
  const std::string config = Config();
  fs::permissions(fs::path(Path("")).parent_path().parent_path(),
                  fs::perms::all);
  Launch launch;
  if (geteuid() == 0) launch.user = 1234;
  fs::permissions(Path(""), fs::perms(0555));
  const Outcome outcome = RunDemo(
      "hangs", {config, "--report", "page.html", "--timeout", "1"}, launch);
  fs::permissions(Path(""), fs::perms::all);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err,
              AllOf(HasSubstr("page.html: cannot be created in its folder"),
                    HasSubstr("with --report")));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(PageFileTest, WithoutRoomForItThereIsNoOutputEither) {
  Launch launch;
  launch.max_file_size = 5'000;  // more than the output takes
  const Outcome outcome = RunDemo(
      "well_behaved",
      {Config(), "-o", Path("out"), "--report", Path("page.html")}, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("page.html: cannot be written"),
                                 HasSubstr("with --report")));
  EXPECT_THAT(outcome.out, Not(HasSubstr("Written:")));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(PageFileTest, IsNotLeftWhereTheReportInWordsIsNotDelivered) {
  Launch launch;
  launch.stdout_path = "/dev/full";
  const Outcome outcome = RunDemo(
      "well_behaved",
      {Config(), "-o", Path("out"), "--report", Path("page.html")}, launch);
  EXPECT_EQ(outcome.exit_code, 6) << outcome;
  EXPECT_THAT(NewFiles(), Not(testing::Contains("out")));
  if (Exists("page.html")) {
    EXPECT_THAT(Read("page.html"), HasSubstr("cannot be written"));
  }
}

}  // namespace
}  // namespace host_test
