#include "kit/host/report/screen.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

TEST(ScreenTest, TextIsBrokenAtBlanksAndIndented) {
  EXPECT_EQ(Wrapped("one two three four", 9, 2), "one two\n  three\n  four");
  EXPECT_EQ(Wrapped("one two", 7, 2), "one two");
  EXPECT_EQ(Wrapped("one two", 6, 2), "one\n  two");
}

TEST(ScreenTest, BlanksWithinALineAreKept) {
  EXPECT_EQ(Wrapped("one  two   three", 9, 1), "one  two\n three");
}

TEST(ScreenTest, LongWordsStayWhole) {
  EXPECT_EQ(Wrapped("a unbreakable b", 5, 1), "a\n unbreakable\n b");
}

TEST(ScreenTest, WithoutALimitNothingIsBroken) {
  EXPECT_EQ(Wrapped("one two three", 0, 2), "one two three");
}

TEST(ScreenTest, CharactersBeyondAsciiAreOneColumn) {
  EXPECT_EQ(ColumnsOf("a\u00b7b"), 3u);
  EXPECT_EQ(Wrapped("\u00b7\u00b7 \u00b7\u00b7", 5, 1),
            "\u00b7\u00b7 \u00b7\u00b7");
}

TEST(ScreenTest, OnlyAScreenWithColorsIsPainted) {
  Screen screen;
  EXPECT_EQ(screen.Painted(Screen::Color::kRed, "x"), "x");
  screen.color = true;
  EXPECT_EQ(screen.Painted(Screen::Color::kRed, "x"), "\x1b[31mx\x1b[0m");
}

}  // namespace
}  // namespace kit::host
