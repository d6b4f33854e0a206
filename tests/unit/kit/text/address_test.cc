#include "kit/confd/text/address.h"

#include <gtest/gtest.h>

namespace kit::text {
namespace {

TEST(Ipv4, RoundTripsDottedQuads) {
  EXPECT_EQ(ParseIpv4("10.0.0.1"), 0x0a000001u);
  EXPECT_EQ(ParseIpv4("255.255.255.255"), 0xffffffffu);
  EXPECT_EQ(PrintIpv4(0x0a000001), "10.0.0.1");
  EXPECT_EQ(PrintIpv4(0), "0.0.0.0");
  EXPECT_EQ(PrintIpv4(0x090a6364), "9.10.99.100");
  EXPECT_EQ(PrintIpv4(0x656d6ec8), "101.109.110.200");
  EXPECT_EQ(PrintIpv4(0xffffffff), "255.255.255.255");
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

}  // namespace
}  // namespace kit::text
