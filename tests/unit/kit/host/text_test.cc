#include "kit/host/text.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

TEST(TextTest, HarmlessTextStaysReadable) {
  for (const char* text :
       {"", "plain text", "gr\u00fc\u00df", "\u65e5\u672c\u8a9e",
        "\u05d0\u05d1", "e\u0301", "\U0001f600", "\ufffd", "~!\"{}[]"}) {
    EXPECT_EQ(Escaped(text), text);
  }
}

TEST(TextTest, ControlCharactersAreEscaped) {
  EXPECT_EQ(Escaped("a\tb\nc\r"), "a\\tb\\nc\\x0d");
  EXPECT_EQ(Escaped("\x1b[2J\x7f"), "\\x1b[2J\\x7f");
  EXPECT_EQ(Escaped({"\0", 1}), "\\x00");
  EXPECT_EQ(Escaped("\u0080\u0085\u009b31m\u009f"),
            "\\u0080\\u0085\\u009b31m\\u009f");
}

TEST(TextTest, CharactersThatHideOrTurnTheirNeighboursAreEscaped) {
  struct Row {
    const char* text;
    const char* escaped;
  };
  const Row rows[] = {
      {"\u00a0", "\\u00a0"},          // no-break space
      {"\u00ad", "\\u00ad"},          // soft hyphen
      {"\u034f", "\\u034f"},          // combining grapheme joiner
      {"\u061c", "\\u061c"},          // Arabic letter mark
      {"\u1160", "\\u1160"},          // Hangul filler
      {"\u180e", "\\u180e"},          // vowel separator
      {"\u2003", "\\u2003"},          // em space
      {"\u200b", "\\u200b"},          // zero width space
      {"\u200d", "\\u200d"},          // zero width joiner
      {"\u200e", "\\u200e"},          // left-to-right mark
      {"\u2028", "\\u2028"},          // line separator
      {"\u2029", "\\u2029"},          // paragraph separator
      {"\u202a", "\\u202a"},          // embedding
      {"\u202e", "\\u202e"},          // override
      {"\u2060", "\\u2060"},          // word joiner
      {"\u2066", "\\u2066"},          // isolate
      {"\u206f", "\\u206f"},          // digit shapes
      {"\u3164", "\\u3164"},          // Hangul filler
      {"\ue000", "\\ue000"},          // private use
      {"\ufe0f", "\\ufe0f"},          // variation selector
      {"\ufeff", "\\ufeff"},          // byte order mark
      {"\ufff9", "\\ufff9"},          // interlinear annotation
      {"\uffff", "\\uffff"},          // never a character
      {"\U0001d173", "\\U0001d173"},  // musical format
      {"\U000e0001", "\\U000e0001"},  // language tag
      {"\U000e0041", "\\U000e0041"},  // tag letter
      {"\U000e0100", "\\U000e0100"},  // variation selector
      {"\U0010ffff", "\\U0010ffff"},  // private use
  };
  for (const Row& row : rows) EXPECT_EQ(Escaped(row.text), row.escaped);
  // The neighbours of the ranges are visible.
  for (const char* text : {"\u00a1", "\u00ac", "\u00ae", "\u2010", "\u2027",
                           "\u2030", "\u205e", "\u2070", "\ufdcf", "\uff9f"}) {
    EXPECT_EQ(Escaped(text), text);
  }
}

TEST(TextTest, BytesThatAreNoUtf8AreEscapedOneByOne) {
  EXPECT_EQ(Escaped("a\xff\xfe"), "a\\xff\\xfe");
  EXPECT_EQ(Escaped("\x9b"
                    "31m"),
            "\\x9b31m");                                  // alone
  EXPECT_EQ(Escaped("\xc3"), "\\xc3");                    // cut
  EXPECT_EQ(Escaped("\xe2\x80"), "\\xe2\\x80");           // cut
  EXPECT_EQ(Escaped("\xe2\x80z"), "\\xe2\\x80z");         // cut
  EXPECT_EQ(Escaped("\xc0\x8a"), "\\xc0\\x8a");           // overlong newline
  EXPECT_EQ(Escaped("\xe0\x80\x8a"), "\\xe0\\x80\\x8a");  // overlong newline
  EXPECT_EQ(Escaped("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // surrogate
  EXPECT_EQ(Escaped("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // too large
  EXPECT_EQ(Escaped("\xf8\x88\x80\x80\x80"), "\\xf8\\x88\\x80\\x80\\x80");
}

TEST(TextTest, NoTextPassesForAnEscape) {
  EXPECT_EQ(Escaped("\\n"), "\\\\n");
  EXPECT_EQ(Escaped("\\\n"), "\\\\\\n");
}

TEST(TextTest, OneLineCutsWhatIsTooLong) {
  EXPECT_EQ(OneLine(std::string(4096, 'a')), std::string(4096, 'a'));
  const std::string line = OneLine("\n" + std::string(10000, 'a') + "\n");
  EXPECT_EQ(line.substr(0, 3), "\\na");
  EXPECT_NE(line.find("a[... 5942 bytes ...]a"), std::string::npos) << line;
  EXPECT_EQ(line.substr(line.size() - 3), "a\\n");
}

TEST(TextTest, LinesAreWhatNewlinesSeparate) {
  using Strings = std::vector<std::string_view>;
  EXPECT_EQ(Lines(""), Strings({""}));
  EXPECT_EQ(Lines("a"), Strings({"a"}));
  EXPECT_EQ(Lines("a\n"), Strings({"a"}));
  EXPECT_EQ(Lines("a\n\nb"), Strings({"a", "", "b"}));
}

TEST(TextTest, IndentKeepsLinesAndDropsTheLastNewline) {
  EXPECT_EQ(Indent("a\nb\n", "  "), "  a\n  b\n");
  EXPECT_EQ(Indent("a", "> "), "> a\n");
  EXPECT_EQ(Indent("", "> "), "> \n");
  EXPECT_EQ(Indent("a\n\n", "> "), "> a\n> \n");
}

TEST(TextTest, ShortenedLeavesOutTheMiddleOfALongText) {
  EXPECT_EQ(Shortened("0123456789", 10), "0123456789");
  EXPECT_EQ(Shortened("0123456789a", 10), "[... 11 bytes ...]");
  EXPECT_EQ(Shortened("", 0), "");
  const std::string text =
      std::string(100, 'a') + std::string(100, 'b') + std::string(100, 'c');
  EXPECT_EQ(
      Shortened(text, 236),
      std::string(100, 'a') + "[... 100 bytes ...]" + std::string(100, 'c'));
}

TEST(TextTest, ShortenedIsNeverLongerThanAsked) {
  for (size_t size = 36; size < 200; ++size) {
    const std::string once = Shortened(std::string(100000, 'a'), size);
    EXPECT_LE(once.size(), size);
    EXPECT_EQ(Shortened(once, size), once);
  }
}

TEST(TextTest, ShortenedKeepsCharactersWhole) {
  // Each of these takes two bytes; both cuts would go through one.
  std::string text;
  for (int i = 0; i < 30; ++i) text += "\u00e4";
  EXPECT_EQ(Shortened(text, 42), "\u00e4[... 56 bytes ...]\u00e4");
  // Bytes that are no UTF-8 at all are no reason to go astray.
  EXPECT_EQ(Shortened(std::string(60, '\x80'), 42), "[... 60 bytes ...]");
}

TEST(TextTest, CountedChoosesTheWord) {
  EXPECT_EQ(Counted(0, "call", "calls"), "0 calls");
  EXPECT_EQ(Counted(1, "call", "calls"), "1 call");
  EXPECT_EQ(Counted(2, "call", "calls"), "2 calls");
}

}  // namespace
}  // namespace kit::host
