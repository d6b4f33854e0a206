#include "tests/support/line_diff.h"

#include <gtest/gtest.h>

#include <string>

namespace test_support {
namespace {

std::string Numbers(int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) text += std::to_string(i) + "\n";
  return text;
}

TEST(LineDiffTest, SameTextsGiveNothing) {
  EXPECT_EQ(LineDiff("", ""), "");
  EXPECT_EQ(LineDiff("a\nb\n", "a\nb\n"), "");
}

TEST(LineDiffTest, ShowsAChangedLineWithThreeLinesAroundIt) {
  EXPECT_EQ(LineDiff(Numbers(1, 9), Numbers(1, 4) + "x\n" + Numbers(6, 9)),
            "@@ -2,7 +2,7 @@\n 2\n 3\n 4\n-5\n+x\n 6\n 7\n 8\n");
}

TEST(LineDiffTest, KeepsWhatIsCommonBetweenTwoChanges) {
  EXPECT_EQ(LineDiff("a\nb\nc\nd\n", "b\nc\ne\nd\n"),
            "@@ -1,4 +1,4 @@\n-a\n b\n c\n+e\n d\n");
}

TEST(LineDiffTest, ChangesFarApartStandInHunksOfTheirOwn) {
  EXPECT_EQ(LineDiff(Numbers(1, 20), "x\n" + Numbers(2, 19)),
            "@@ -1,4 +1,4 @@\n-1\n+x\n 2\n 3\n 4\n@@ -17,4 +17,3 @@\n 17\n 18\n"
            " 19\n-20\n");
}

TEST(LineDiffTest, ShowsAMissingNewlineAtTheEnd) {
  EXPECT_EQ(LineDiff("a\n", "a"),
            "@@ -1,1 +1,1 @@\n-a\n+a\n\\ No newline at end of text\n");
}

TEST(LineDiffTest, TextAgainstNothing) {
  EXPECT_EQ(LineDiff("a\nb\n", ""), "@@ -1,2 +1,0 @@\n-a\n-b\n");
  EXPECT_EQ(LineDiff("", "a\n"), "@@ -1,0 +1,1 @@\n+a\n");
}

TEST(LineDiffTest, ChangesTooLargeToAlignAreShownAsABlock) {
  std::string diff = LineDiff(Numbers(1, 9000), Numbers(10001, 19000));
  EXPECT_EQ(diff.compare(0, 30, "@@ -1,9000 +1,9000 @@\n-1\n-2\n-3"), 0)
      << diff.substr(0, 40);
}

}  // namespace
}  // namespace test_support
