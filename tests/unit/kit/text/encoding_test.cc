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

TEST(Hex, HasOtherFormsToo) {
  const std::string bytes("\x0a\xff\x00", 3);
  EXPECT_EQ(PrintUpperHex(bytes), "0A:FF:00");
  EXPECT_EQ(PrintBareHex(bytes), "0AFF00");
  EXPECT_EQ(ParseBareHex("0aFF00"), bytes);
  EXPECT_EQ(ParseBareHex(""), "");
  for (const char* text : {"0", "0a:", "0a:ff", "0g", "0a "}) {
    EXPECT_EQ(ParseBareHex(text), std::nullopt) << text;
  }
}

TEST(Octets, RoundTrip) {
  const std::string bytes("\xc0\xa8\xff\x01\x00", 5);
  EXPECT_EQ(PrintOctets(bytes), "192.168.255.1.0");
  EXPECT_EQ(ParseOctets("192.168.255.1.0"), bytes);
  EXPECT_EQ(PrintOctets(""), "");
  EXPECT_EQ(ParseOctets(""), "");
  for (const char* text : {"256", "1.", ".1", "1..2", "-1", "+1", "1,2", "."}) {
    EXPECT_EQ(ParseOctets(text), std::nullopt) << text;
  }
}

TEST(Oid, RoundTrips) {
  const std::string bytes("\0\0\0\1\0\0\0\3\xff\xff\xff\xff", 12);
  EXPECT_EQ(PrintOid(bytes), "1.3.4294967295");
  EXPECT_EQ(ParseOid("1.3.4294967295"), bytes);
  std::string most = "1";
  for (size_t i = 1; i < kMostOidNumbers; ++i) most += ".1";
  EXPECT_EQ(PrintOid(ParseOid(most).value_or("")), most);
  const std::string too_many = most + ".1";
  for (const char* text :
       {"", "1.", ".1", "1.4294967296", "1.-3", "1.x", too_many.c_str()}) {
    EXPECT_EQ(ParseOid(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kit::text
