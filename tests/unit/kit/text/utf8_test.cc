#include "kit/confd/text/utf8.h"

#include <gtest/gtest.h>

#include <string_view>

namespace kit::text {
namespace {

TEST(IsYangText, TakesUtf8WithoutControlCharacters) {
  for (const char* text :
       {"", "plain", "tab\tline\nend\r", "\x7f", "\xc2\x80", "\xc3\xa4",
        "\xe2\x82\xac", "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbd",
        "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbd"}) {
    EXPECT_TRUE(IsYangText(text)) << text;
  }
  for (const char* text : {"\x01",
                           "\x1f",
                           "a\x08",
                           "\x80",
                           "\xbf",
                           "\xc0\x80",
                           "\xc1\xbf",
                           "\xc3",
                           "\xc3(",
                           "\xe0\x80\x80",
                           "\xe2\x82",
                           "\xed\xa0\x80",
                           "\xed\xbf\xbf",
                           "\xef\xb7\x90",
                           "\xef\xbf\xbe",
                           "\xef\xbf\xbf",
                           "\xf0\x80\x80\x80",
                           "\xf0\x9f\xbf\xbe",
                           "\xf4\x90\x80\x80",
                           "\xf5\x80\x80\x80",
                           "\xff"}) {
    EXPECT_FALSE(IsYangText(text)) << testing::PrintToString(text);
  }
  EXPECT_FALSE(IsYangText(std::string_view("a\0b", 3)));
}

}  // namespace
}  // namespace kit::text
