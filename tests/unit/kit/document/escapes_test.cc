#include "kit/confd/document/escapes.h"

#include <gtest/gtest.h>

namespace kit::store {
namespace {

TEST(Escapes, XmlTextKeepsEverythingThroughAParser) {
  EXPECT_EQ(Escapes::Xml().Apply("a<b>&'\"\r\n\t]]>\x7f\xc3\xa4"),
            "a&lt;b&gt;&amp;'\"&#13;\n\t]]&gt;\x7f\xc3\xa4");
}

TEST(Escapes, XmlAttributesKeepTheirBlanks) {
  EXPECT_EQ(Escapes::XmlAttribute().Apply("a<b>&'\"\r\n\t "),
            "a&lt;b&gt;&amp;'&quot;&#13;&#10;&#9; ");
}

TEST(Escapes, JsonStringsHoldNoControlCharacters) {
  EXPECT_EQ(Escapes::Json().Apply("a\"\\/\r\n\t\x1f\x7f\xc3\xa4"),
            "a\\\"\\\\/\\u000D\\u000A\\u0009\\u001F\x7f\xc3\xa4");
}

TEST(Escapes, TextWithoutSpecialCharactersIsOnePiece) {
  int pieces = 0;
  Escapes::Xml().Apply("plain", [&](std::string_view piece) {
    ++pieces;
    EXPECT_EQ(piece, "plain");
  });
  EXPECT_EQ(pieces, 1);
}

}  // namespace
}  // namespace kit::store
