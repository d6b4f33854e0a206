#include "kit/confd/text/encoding.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace kit::text {
namespace {

TEST(Base64, RoundTrips) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
      {std::string("\0\xff\0", 3), "AP8A"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(PrintBase64(bytes), text);
    EXPECT_EQ(ParseBase64(text), bytes);
  }
  EXPECT_EQ(ParseBase64("Zm\n9v"), "foo");
  for (const char* text :
       {"Z", "Zg", "Zg=", "Zg===", "Z===", "Zg==Zg==", "!", "Zm9v=", "===="}) {
    EXPECT_EQ(ParseBase64(text), std::nullopt) << text;
  }
}

TEST(Hex, RoundTrips) {
  EXPECT_EQ(PrintHex(std::string("\x0a\xff\x00", 3)), "0a:ff:00");
  EXPECT_EQ(ParseHex("0A:ff:00"), std::string("\x0a\xff\x00", 3));
  EXPECT_EQ(PrintHex(""), "");
  EXPECT_EQ(ParseHex(""), "");
  for (const char* text : {"0", "0a:", ":0a", "0a:f", "0aff", "0g", "0a-ff"}) {
    EXPECT_EQ(ParseHex(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kit::text
