#include "kit/host/journal/entry_steps.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kit::host {
namespace {

using Kind = EntryDifference::Kind;

std::string Text(const EntryWay& way) {
  std::string text;
  for (const EntryStep& step : way.steps) {
    text += std::to_string(step.pass) + step.path + " ";
  }
  return text + "-> " + (way.other_end.empty() ? "nothing" : way.other_end);
}

const std::vector<EntryStep> kSteps = {
    {1, Kind::kDeleted, "{9}", ""},    {3, Kind::kRekeyed, "{1}", "{7}"},
    {3, Kind::kRekeyed, "{7}", "{8}"}, {4, Kind::kCreated, "{2}", ""},
    {5, Kind::kChanged, "{1}", ""},    {6, Kind::kDeleted, "{2}", ""},
    {6, Kind::kRekeyed, "{3}", "{1}"},
};

TEST(EntrySteps, AWayBackLeadsThroughAllKeysToTheStart) {
  EXPECT_EQ(Text(WayBackFrom("{3}", kSteps)), "3{1} 5{1} 6{3} -> {7}");
  EXPECT_EQ(Text(WayBackFrom("{5}", kSteps)), "-> {5}");
}

TEST(EntrySteps, AWayOnLeadsThroughAllKeysToTheEnd) {
  EXPECT_EQ(Text(WayOnFrom("{7}", kSteps)), "3{1} 5{1} 6{3} -> {3}");
  EXPECT_EQ(Text(WayOnFrom("{9}", kSteps)), "1{9} -> nothing");
}

TEST(EntrySteps, KeysThatOneEntryLeavesAndAnotherTakesInAPassAreTwoWays) {
  EXPECT_EQ(Text(WayBackFrom("{7}", kSteps)), "3{7} -> {8}");
  EXPECT_EQ(Text(WayOnFrom("{8}", kSteps)), "3{7} -> {7}");
}

TEST(EntrySteps, ANewEntryBeginsWithItsCreation) {
  const std::vector<EntryStep> steps = {{1, Kind::kDeleted, "{2}", ""},
                                        {4, Kind::kCreated, "{2}", ""},
                                        {5, Kind::kChanged, "{2}", ""}};
  EXPECT_EQ(Text(WayBackFrom("{2}", steps)), "4{2} 5{2} -> nothing");
}

TEST(EntrySteps, SaysWhatIsThereAtTheEnd) {
  EXPECT_FALSE(IsThereAtEnd("{9}", true, kSteps));
  EXPECT_TRUE(IsThereAtEnd("{7}", true, kSteps));
  EXPECT_FALSE(IsThereAtEnd("{2}", false, kSteps));
  EXPECT_TRUE(IsThereAtEnd("{3}", false, kSteps));
  EXPECT_TRUE(IsThereAtEnd("{5}", true, kSteps));
  EXPECT_FALSE(IsThereAtEnd("{5}", false, kSteps));
}

TEST(EntrySteps, OnlyEntriesOfTheListCount) {
  EntrySteps steps;
  steps.SetList("/l");
  ChangeRecord change;
  change.pass = 2;
  change.kind = control::Change::Kind::kCreated;
  change.list = "/l";
  change.path = "/l{1}";
  steps.Add(change);
  change.list = "/m";
  change.path = "/m{1}";
  steps.Add(change);
  const std::vector<EntryStep> taken = steps.Take();
  ASSERT_EQ(taken.size(), 1U);
  EXPECT_EQ(taken[0].path, "/l{1}");
  EXPECT_EQ(taken[0].pass, 2U);
  EXPECT_EQ(taken[0].kind, Kind::kCreated);
}

}  // namespace
}  // namespace kit::host
