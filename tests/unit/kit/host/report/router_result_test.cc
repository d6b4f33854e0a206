#include "kit/host/report/router_result.h"

#include <gtest/gtest.h>

#include "kit/host/report/fleet_summary.h"
#include "kit/host/report/junit.h"

namespace kit::host {
namespace {

Finding MakeFinding(const std::string& rule, Severity severity,
                    uint64_t count = 1) {
  Finding finding;
  finding.rule = rule;
  finding.severity = severity;
  finding.message = "what " + rule + " says";
  finding.count = count;
  finding.places = {"/a{1}", "/a{2}"};
  return finding;
}

Report MakeReport(const std::string& config) {
  Report report;
  report.config = config;
  report.device = "router r1";
  return report;
}

RouterResult Failed(ExitCode code, const std::string& pass = "") {
  RouterResult result = LostRouter(
      "f.xml", {code, "it <broke>", "mend it", "f.xml", 7, "/a/b", {"more"}});
  result.pass = pass;
  return result;
}

TEST(RouterResult, NeedsALookWhereAFindingSaysSo) {
  Report report = MakeReport("a.xml");
  EXPECT_EQ(ToRouterResult(report).verdict, RouterVerdict::kFine);
  report.findings = {MakeFinding("N", Severity::kNote)};
  EXPECT_EQ(ToRouterResult(report).verdict, RouterVerdict::kFine);
  report.findings.push_back(MakeFinding("S", Severity::kStop));
  EXPECT_EQ(ToRouterResult(report).verdict, RouterVerdict::kLook);
  report.failure = Failure{ExitCode::kNeedsALook, "strict", ""};
  EXPECT_EQ(ToRouterResult(report).verdict, RouterVerdict::kFail);
}

TEST(RouterResult, IsTheSameOnceItsLineIsReadBack) {
  Report report = MakeReport("na\nme \xe2\x80\xae.xml");
  report.findings = {MakeFinding("L", Severity::kLook, 3),
                     MakeFinding("N", Severity::kNote)};
  report.output = "out/a.xml";
  RouterResult result = ToRouterResult(report);
  result.index = 12;
  const std::string line = ToLine(result);
  EXPECT_EQ(line.find('\n'), std::string::npos);
  EXPECT_EQ(line.find('\xe2'), std::string::npos);
  const RouterResult read = ParseLine(line);
  EXPECT_EQ(read.config, report.config);
  EXPECT_EQ(read.index, 12u);
  EXPECT_EQ(read.findings.size(), 2u);
  EXPECT_EQ(read.output, "out/a.xml");
  EXPECT_EQ(ToLine(read), line);
  const std::string failed = ToLine(Failed(ExitCode::kPluginDied, "pass 3"));
  EXPECT_EQ(ToLine(ParseLine(failed)), failed);
  EXPECT_EQ(ParseLine(failed).failure->line, 7u);
}

TEST(RouterResult, OtherLinesAreRefused) {
  const std::string line = ToLine(Failed(ExitCode::kBadInput));
  EXPECT_THROW(ParseLine(""), LineError);
  EXPECT_THROW(ParseLine("{}"), LineError);
  EXPECT_THROW(ParseLine(line.substr(0, line.size() - 1)), LineError);
  std::string other = line;
  other.replace(other.find("\"fail\""), 6, "\"fall\"");
  EXPECT_THROW(ParseLine(other), LineError);
}

TEST(FleetSummary, CountsARouterOnceForEachRuleAndKindOfFailure) {
  FleetSummary summary;
  Report report = MakeReport("a.xml");
  summary.Add(ToRouterResult(report));
  report.findings = {MakeFinding("L", Severity::kLook),
                     MakeFinding("L", Severity::kLook),
                     MakeFinding("N", Severity::kNote)};
  report.config = "b.xml";
  summary.Add(ToRouterResult(report));
  summary.Add(Failed(ExitCode::kPluginFailed, "pass 3, x"));
  summary.Add(Failed(ExitCode::kPluginFailed, "pass 4, y"));
  summary.Add(Failed(ExitCode::kBadInput));
  EXPECT_EQ(summary.Render({}),
            "5 routers: 1 fine, 1 to look at, 3 failing\n"
            " fail  plugin-failed in pass 3, x                    "
            "1 router   first: f.xml\n"
            " fail  plugin-failed in pass 4, y                    "
            "1 router   first: f.xml\n"
            " fail  bad-input                                     "
            "1 router   first: f.xml\n"
            " look  L                                             "
            "1 router   first: b.xml\n"
            " note  N                                             "
            "1 router   first: b.xml\n");
}

TEST(FleetSummary, CountsHoweverManyKindsThereAre) {
  FleetSummary summary;
  for (int round = 0; round < 2; ++round) {
    for (int pass = 0; pass < 1500; ++pass) {
      summary.Add(Failed(ExitCode::kPluginFailed, std::to_string(pass)));
    }
  }
  ASSERT_EQ(summary.Failures().size(), 1500u);
  for (const FleetSummary::Kind& kind : summary.Failures()) {
    EXPECT_EQ(kind.routers, 2u) << kind.name;
  }
}

TEST(FleetSummary, ComesToTheHighestOfTheExitCodes) {
  FleetSummary summary;
  EXPECT_EQ(summary.exit_code(), ExitCode::kSuccess);
  summary.Add(Failed(ExitCode::kBadInput));
  summary.Add(Failed(ExitCode::kPluginFailed));
  EXPECT_EQ(summary.exit_code(), ExitCode::kBadInput);
}

TEST(RouterLine, SaysWhatFailedOrWhatToLookAt) {
  Report report = MakeReport("a.xml");
  EXPECT_EQ(RenderRouter(ToRouterResult(report), {}),
            "fine  router r1 (a.xml)\n");
  report.findings = {
      MakeFinding("L", Severity::kLook, 3), MakeFinding("N", Severity::kNote),
      MakeFinding("M", Severity::kLook), MakeFinding("L", Severity::kLook)};
  EXPECT_EQ(RenderRouter(ToRouterResult(report), {}),
            "look  router r1 (a.xml): L (4), M\n");
  EXPECT_EQ(RenderRouter(Failed(ExitCode::kPluginFailed, "pass 3, x"), {}),
            "fail  f.xml: pass 3, x: line 7: it <broke>\n");
}

TEST(JUnit, TellsFailuresOfUpgradesFromWhatWasNotRehearsed) {
  EXPECT_FALSE(IsJUnitError(Failed(ExitCode::kPluginFailed)));
  EXPECT_FALSE(IsJUnitError(Failed(ExitCode::kNeedsALook)));
  EXPECT_TRUE(IsJUnitError(Failed(ExitCode::kBadInput)));
  EXPECT_TRUE(IsJUnitError(Failed(ExitCode::kInternal)));
  EXPECT_EQ(JUnitCase(Failed(ExitCode::kPluginFailed, "pass 3")),
            "  <testcase classname=\"\" name=\"f.xml\">\n"
            "    <failure type=\"plugin-failed\" message=\"it "
            "&lt;broke&gt;\">pass 3\nline 7\n/a/b\nmore\nmend it</failure>\n"
            "  </testcase>\n");
}

TEST(JUnit, HoldsNothingThatXmlHasNoCharacterFor) {
  RouterResult result = Failed(ExitCode::kBadInput);
  result.config = "dir/\x01\"&\xff.xml";
  const std::string text = JUnitCase(result);
  EXPECT_NE(text.find("classname=\"dir\" name=\"\\x01&quot;&amp;\\xff.xml\""),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace kit::host
