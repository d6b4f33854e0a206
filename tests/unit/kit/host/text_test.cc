#include "kit/host/text.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

TEST(TextTest, OneLineEscapesWhatATerminalWouldObey) {
  EXPECT_EQ(OneLine("plain\ttext"), "plain\ttext");
  EXPECT_EQ(OneLine("two\nlines\r"), "two\\nlines\\x0d");
  EXPECT_EQ(OneLine("\x1b[2J\x7f"), "\\x1b[2J\\x7f");
  EXPECT_EQ(OneLine("gr\xc3\xbc\xc3\x9f"), "gr\xc3\xbc\xc3\x9f");
}

TEST(TextTest, IndentKeepsLinesAndDropsTheLastNewline) {
  EXPECT_EQ(Indent("a\nb\n", "  "), "  a\n  b\n");
  EXPECT_EQ(Indent("a", "> "), "> a\n");
  EXPECT_EQ(Indent("", "> "), "> \n");
  EXPECT_EQ(Indent("a\n\n", "> "), "> a\n> \n");
}

TEST(TextTest, ShortenedLeavesOutTheMiddleOfALongText) {
  EXPECT_EQ(Shortened("0123456789", 10), "0123456789");
  EXPECT_EQ(Shortened("0123456789a", 10), "01234[... 1 bytes ...]6789a");
  EXPECT_EQ(Shortened("", 0), "");
}

TEST(TextTest, ShortenedKeepsCharactersWhole) {
  // Each of these takes two bytes; both cuts would go through one.
  const std::string text = "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f\xc3\xa4\xc3\xb6";
  EXPECT_EQ(Shortened(text, 6), "\xc3\xa4[... 8 bytes ...]\xc3\xb6");
  // Bytes that are no UTF-8 at all are no reason to go astray.
  EXPECT_EQ(Shortened(std::string(20, '\x80'), 6), "[... 20 bytes ...]");
}

TEST(TextTest, CountedChoosesTheWord) {
  EXPECT_EQ(Counted(0, "call", "calls"), "0 calls");
  EXPECT_EQ(Counted(1, "call", "calls"), "1 call");
  EXPECT_EQ(Counted(2, "call", "calls"), "2 calls");
}

}  // namespace
}  // namespace kit::host
