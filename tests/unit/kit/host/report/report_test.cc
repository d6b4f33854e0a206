#include "kit/host/report/report.h"

#include <gtest/gtest.h>

#include <memory>

namespace kit::host {
namespace {

TEST(ReportTest, AFailureSaysWhereWhyAndWhatToDo) {
  EXPECT_EQ(RenderFailure({ExitCode::kBadInput, "is wrong", "mend it",
                           "router.xml", 12, "/a/b"}),
            "ospf-upgrade: router.xml: line 12: /a/b: is wrong\n"
            "  What to do: mend it.\n");
  EXPECT_EQ(RenderFailure({ExitCode::kInternal, "is wrong", ""}),
            "ospf-upgrade: is wrong\n");
}

TEST(ReportTest, TheDetailsOfAFailureAreLinesBelowIt) {
  Failure failure = {ExitCode::kPluginDied, "died", "mend it"};
  failure.details = {"last words:", "  \"ah\n\""};
  EXPECT_EQ(RenderFailure(failure),
            "ospf-upgrade: died\n"
            "  last words:\n"
            "    \"ah\\n\"\n"
            "  What to do: mend it.\n");
}

TEST(ReportTest, NoPartOfAFailurePassesForALineOfItsOwn) {
  EXPECT_EQ(RenderFailure({ExitCode::kBadInput, "a\nb\u202e", "c\nd", "e\nf", 1,
                           "/g\nh"}),
            "ospf-upgrade: e\\nf: line 1: /g\\nh: a\\nb\\u202e\n"
            "  What to do: c\\nd.\n");
}

TEST(ReportTest, EveryViolationIsALine) {
  EXPECT_EQ(RenderViolations({{12, "/a{1}/b", "is missing"}, {41, "", "no"}}),
            "  /a{1}/b: is missing (ConfD error 12)\n"
            "  (unknown node): no (ConfD error 41)\n");
}

TEST(ReportTest, EntriesShowLeavesBeforeAndAfter) {
  using Kind = EntryDifference::Kind;
  EXPECT_EQ(RenderEntry({Kind::kChanged,
                         "/a",
                         "/a{1}",
                         "",
                         {{"b", "1", "2"},
                          {"c", std::nullopt, "x"},
                          {"d", "y", std::nullopt}}}),
            "~ /a{1}\n"
            "    b: 1 -> 2\n"
            "    c: (none) -> x\n"
            "    d: y -> (none)\n");
  EXPECT_EQ(
      RenderEntry(
          {Kind::kCreated, "/a", "/a{2}", "", {{"b", std::nullopt, "1"}}}),
      "+ /a{2}\n"
      "    b: 1\n");
  EXPECT_EQ(
      RenderEntry(
          {Kind::kDeleted, "/a", "/a{3}", "", {{"b", "1", std::nullopt}}}),
      "- /a{3}\n"
      "    b: 1\n");
  EXPECT_EQ(
      RenderEntry({Kind::kRekeyed, "/a", "/a{4}", "/a{3}", {{"b", "1", "2"}}}),
      "> /a{3} -> /a{4}\n"
      "    b: 1 -> 2\n");
}

TEST(ReportTest, AWrittenOutputIsNamedWithFormatAndSize) {
  const auto report = std::make_unique<Report>();
  report->result = 0;
  report->output = "out.json";
  report->format = control::Format::kJson;
  report->output_size = 1;
  EXPECT_EQ(RenderTextEnd(*report), "Written: out.json (JSON, 1 byte)\n");
}

}  // namespace
}  // namespace kit::host
