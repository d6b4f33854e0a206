#include "kit/confd/text/text_forms.h"

#include <gtest/gtest.h>

#include <limits>

#include "kit/confd/keypath/key_text.h"

namespace kit::store {
namespace {

TEST(ParseNumber, TakesWhatFitsTheTypeAndNothingElse) {
  EXPECT_EQ(ParseNumber<uint8_t>("255"), 255);
  EXPECT_EQ(ParseNumber<uint8_t>("+5"), 5);
  EXPECT_EQ(ParseNumber<uint8_t>("007"), 7);
  EXPECT_EQ(ParseNumber<int8_t>("-128"), -128);
  EXPECT_EQ(ParseNumber<int64_t>("-9223372036854775808"),
            std::numeric_limits<int64_t>::min());
  EXPECT_EQ(ParseNumber<uint64_t>("18446744073709551615"),
            std::numeric_limits<uint64_t>::max());
  for (const char* text : {"", "+", "-", "256", "-1", "1 ", " 1", "1x", "0x1",
                           "1.0", "+-1", "++1", "-+1", "--1"}) {
    EXPECT_EQ(ParseNumber<uint8_t>(text), std::nullopt) << text;
  }
  EXPECT_EQ(ParseNumber<int8_t>("+-1"), std::nullopt);
  EXPECT_EQ(ParseNumber<int8_t>("128"), std::nullopt);
}

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

TEST(Ipv4, RoundTripsDottedQuads) {
  EXPECT_EQ(ParseIpv4("10.0.0.1"), 0x0a000001u);
  EXPECT_EQ(ParseIpv4("255.255.255.255"), 0xffffffffu);
  EXPECT_EQ(PrintIpv4(0x0a000001), "10.0.0.1");
  EXPECT_EQ(PrintIpv4(0), "0.0.0.0");
  for (const char* text : {"", "10", "10.0.0", "10.0.0.0.1", "256.0.0.1",
                           "10.0.0.1%eth0", " 10.0.0.1", "10.0.0.1/8",
                           "a.b.c.d", "10.0.0.-1", "1111.1111.1111.1111"}) {
    EXPECT_EQ(ParseIpv4(text), std::nullopt) << text;
  }
}

TEST(Ipv6, RoundTripsCanonicalText) {
  for (const char* text : {"::", "::1", "2001:db8::1", "fe80::1:2:3"}) {
    auto bytes = ParseIpv6(text);
    ASSERT_TRUE(bytes) << text;
    EXPECT_EQ(bytes->size(), 16u);
    EXPECT_EQ(PrintIpv6(*bytes), text);
  }
  for (const char* text : {"", ":", ":::", "1:2", "10.0.0.1", "::1%eth0",
                           "12345::", "2001:db8::1/64"}) {
    EXPECT_EQ(ParseIpv6(text), std::nullopt) << text;
  }
}

TEST(SplitPrefix, SplitsAtTheSlash) {
  auto halves = SplitPrefix("10.0.0.1/32", 32);
  ASSERT_TRUE(halves);
  EXPECT_EQ(halves->first, "10.0.0.1");
  EXPECT_EQ(halves->second, 32);
  for (const char* text :
       {"10.0.0.1", "10.0.0.1/", "10.0.0.1/33", "10.0.0.1/-1", "10.0.0.1/8/8",
        "10.0.0.1/x", "10.0.0.1/300"}) {
    EXPECT_EQ(SplitPrefix(text, 32), std::nullopt) << text;
  }
}

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
    EXPECT_EQ(keypath::Base64(bytes), text);
    EXPECT_EQ(ParseBase64(text), bytes);
  }
  EXPECT_EQ(ParseBase64("Zm\n9v"), "foo");
  for (const char* text :
       {"Z", "Zg", "Zg=", "Zg===", "Z===", "Zg==Zg==", "!", "Zm9v=", "===="}) {
    EXPECT_EQ(ParseBase64(text), std::nullopt) << text;
  }
}

TEST(Hex, RoundTrips) {
  EXPECT_EQ(keypath::HexString(std::string("\x0a\xff\x00", 3)), "0a:ff:00");
  EXPECT_EQ(ParseHex("0A:ff:00"), std::string("\x0a\xff\x00", 3));
  EXPECT_EQ(keypath::HexString(""), "");
  EXPECT_EQ(ParseHex(""), "");
  for (const char* text : {"0", "0a:", ":0a", "0a:f", "0aff", "0g", "0a-ff"}) {
    EXPECT_EQ(ParseHex(text), std::nullopt) << text;
  }
}

TEST(Decimal64, RoundTripsCanonicalText) {
  const std::tuple<int64_t, uint8_t, const char*> cases[] = {
      {150, 2, "1.5"},
      {-150, 2, "-1.5"},
      {5, 2, "0.05"},
      {-5, 2, "-0.05"},
      {0, 2, "0.0"},
      {100, 2, "1.0"},
      {123456789, 4, "12345.6789"},
      {std::numeric_limits<int64_t>::min(), 18, "-9.223372036854775808"},
      {std::numeric_limits<int64_t>::max(), 1, "922337203685477580.7"},
  };
  for (const auto& [scaled, digits, text] : cases) {
    EXPECT_EQ(PrintDecimal64(scaled, digits), text);
    EXPECT_EQ(ParseDecimal64(text, digits), scaled);
  }
  EXPECT_EQ(ParseDecimal64("1", 2), 100);
  for (const char* text :
       {"1.234", "x", "", "-", ".5", "1.2.3", "92233720368547758080.0"}) {
    EXPECT_EQ(ParseDecimal64(text, 2), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kit::store
