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

}  // namespace
}  // namespace host_test
