#include "kit/host/findings/pattern.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

bool Matches(const std::string& pattern, std::string_view subject) {
  return Pattern(pattern).Matches(subject);
}

TEST(Pattern, FitsAnywhereUnlessItIsAnchored) {
  EXPECT_TRUE(Matches("b+", "abbc"));
  EXPECT_FALSE(Matches("^b+", "abbc"));
  EXPECT_TRUE(Matches("^a", "abbc"));
  EXPECT_TRUE(Matches("", ""));
}

// The comparison of beginnings must not refuse what fits.
TEST(Pattern, FitsAlsoWhereItsBeginningMayDiffer) {
  EXPECT_TRUE(Matches("^ab?c", "ac"));
  EXPECT_TRUE(Matches("^ab*c", "ac"));
  EXPECT_TRUE(Matches("^ab{0,1}c", "ac"));
  EXPECT_TRUE(Matches("^ab+c", "abbc"));
  EXPECT_TRUE(Matches("^ab|xy", "xy"));
  EXPECT_TRUE(Matches("^(?i)ab", "AB"));
  EXPECT_TRUE(Matches("^a\\.b", "a.b"));
  EXPECT_FALSE(Matches("^abc", "ab"));
}

TEST(Pattern, GivesWhatNamedGroupsHold) {
  Pattern pattern("(?<list>/[a-z]+)\\{(?<key>[0-9]+)\\}(?<more>/x)?");
  EXPECT_EQ(pattern.groups(),
            (std::vector<std::string>{"key", "list", "more"}));
  ASSERT_TRUE(pattern.Matches("at /areas{12} and on"));
  EXPECT_EQ(pattern.Group("list"), "/areas");
  EXPECT_EQ(pattern.Group("key"), "12");
  EXPECT_EQ(pattern.Group("more"), std::nullopt);
  EXPECT_EQ(pattern.Group("none"), std::nullopt);
}

TEST(Pattern, FaultsSayWhere) {
  try {
    Pattern pattern("ab(c");
    FAIL();
  } catch (const PatternError& error) {
    EXPECT_EQ(error.offset, 4u);
    EXPECT_STREQ(error.what(), "missing closing parenthesis");
  }
}

}  // namespace
}  // namespace kit::host
