#include "kit/host/findings/built_in.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kit::host {
namespace {

using Lines = std::vector<std::string>;

// "RULE MESSAGE (UNIT) [PLACE]..." for each.
Lines Describe(const std::vector<Finding>& findings) {
  Lines lines;
  for (const Finding& finding : findings) {
    EXPECT_NE(finding.advice, "");
    std::string line =
        finding.rule + " " + finding.message + " (" + finding.unit + ")";
    for (const std::string& place : finding.places) line += " [" + place + "]";
    lines.push_back(line);
  }
  return lines;
}

TEST(BuiltInFindings, NameDefaultsThatMove) {
  control::MovedDefault moved;
  moved.leaf = "/a/b/cost";
  moved.before = "1";
  moved.after = "2";
  EXPECT_EQ(Describe(DefaultFindings({moved})), Lines());
  moved.unset = {1, {"/a/b{1}"}};
  EXPECT_EQ(Describe(DefaultFindings({moved})),
            Lines({"DEFAULT cost 1 -> 2, nobody set it (1 entry) [/a/b{1}]"}));
  moved.before.reset();
  moved.set_to_default = {2, {"/a/b{2}", "/a/b{3}"}};
  EXPECT_EQ(
      Describe(DefaultFindings({moved})),
      Lines({"DEFAULT cost (nothing) -> 2, nobody set it (1 entry) [/a/b{1}]",
             "DEFAULT-SET cost (nothing) -> 2, it was set to what was the "
             "default (2 entries) [/a/b{2}] [/a/b{3}]"}));
}

TEST(BuiltInFindings, PutLossesOfOneNodeAndReasonTogether) {
  EXPECT_EQ(Describe(LossFindings({})), Lines());
  EXPECT_EQ(
      Describe(LossFindings({{"/a/b{1}/old", "5", "no such node"},
                             {"/a/c", "", "no such node"},
                             {"/a/b{\"x}/y\" 2}/old", "6", "no such node"},
                             {"/a/b{3}/old", "-1", "out of range"}})),
      Lines({"LOST /a/b{1}/old \"5\" is not carried over: no such node (2 "
             "places) [/a/b{1}/old] [/a/b{\"x}/y\" 2}/old]",
             "LOST /a/b{3}/old \"-1\" is not carried over: out of range (1 "
             "place) [/a/b{3}/old]",
             "LOST /a/c is not carried over: no such node (1 place) [/a/c]"}));
}

TEST(BuiltInFindings, NameWritesThatFailedAndNoReads) {
  EXPECT_EQ(
      Describe(FailedCallFindings(
          {{"cdb_get_str", "/a", 1, "not there", 9, ""},
           {"maapi_get_elem", "/a", 5, "no", 9, ""},
           {"maapi_set_namespace", "", 5, "no", 9, ""},
           {"maapi_set_elem", "/a/b", 5, "out of range", 2, "4 addresses"},
           {"maapi_create", "/a/c", 2, "it exists", 1, ""}})),
      Lines(
          {"CALLS maapi_set_elem /a/b failed in 4 addresses and the upgrade "
           "went on: out of range (2 calls) [/a/b]",
           "CALLS maapi_create /a/c failed and the upgrade went on: it exists "
           "(1 call) [/a/c]"}));
}

TEST(BuiltInFindings, NameWhatAPlugInLeavesBehind) {
  EXPECT_EQ(Describe(CursorFindings(0)), Lines());
  EXPECT_EQ(Describe(CursorFindings(2)),
            Lines({"CURSORS the plug-in leaves cursors open (2 cursors)"}));
  EXPECT_EQ(Describe(UnreleasedValueFindings(0)), Lines());
  EXPECT_EQ(Describe(UnreleasedValueFindings(1)),
            Lines({"VALUES the plug-in keeps the memory of values that it has "
                   "read (1 value)"}));
}

TEST(BuiltInFindings, StopWhereTheDeviceWouldRefuseTheResult) {
  EXPECT_EQ(Describe(ViolationFindings({})), Lines());
  const std::vector<Finding> findings =
      ViolationFindings({{11, "/a/b", "b must be above a"}, {9, "", "c"}});
  EXPECT_EQ(
      Describe(findings),
      Lines({"INVALID the device would refuse the result: /a/b: b must be "
             "above a (2 constraints) [/a/b] []"}));
  EXPECT_EQ(findings[0].severity, Severity::kStop);
}

TEST(BuiltInFindings, SayWhatBecomesOfTheUpgradeWithTheOtherSchemas) {
  EXPECT_EQ(Describe({OtherSchemasFinding(true, "it fails")}),
            Lines({"SCHEMAS schemas loaded; where the upgrade framework does "
                   "not load them, it fails ()"}));
  EXPECT_EQ(Describe({OtherSchemasFinding(false, "it fails")}),
            Lines({"SCHEMAS schemas not loaded; where the upgrade framework "
                   "loads them, it fails ()"}));
  const Finding unknown = OtherSchemasFinding(true, "");
  EXPECT_EQ(unknown.severity, Severity::kNote);
  EXPECT_EQ(Describe({unknown}),
            Lines({"SCHEMAS schemas loaded, which the plug-in depends on; how "
                   "it does otherwise was not found out ()"}));
}

}  // namespace
}  // namespace kit::host
