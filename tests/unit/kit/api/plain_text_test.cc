#include "kit/confd/api/plain_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/support/c_values.h"

namespace kit::api {
namespace {

using std::string_literals::operator""s;

template <typename Set>
std::string TextOf(Set set) {
  confd_value_t value = {};
  set(&value);
  return PlainText(value);
}

TEST(PlainText, NamesNothing) {
  EXPECT_EQ(PlainText(Enum(3)), "enum<3>");
  EXPECT_EQ(PlainText(Enum(-2)), "enum<-2>");
  EXPECT_EQ(TextOf([](auto* v) {
              CONFD_SET_IDENTITYREF(v, (confd_identityref{1, 17}));
            }),
            "idref<17>");
  EXPECT_EQ(TextOf([](auto* v) { CONFD_SET_XMLTAG(v, 9, 1); }), "tag<9>");
}

TEST(PlainText, WritesBitsInHexadecimal) {
  EXPECT_EQ(TextOf([](auto* v) { CONFD_SET_BIT32(v, 0); }), "bits<0>");
  EXPECT_EQ(TextOf([](auto* v) { CONFD_SET_BIT32(v, 0x80000001u); }),
            "bits<80000001>");
  EXPECT_EQ(TextOf([](auto* v) { CONFD_SET_BIT64(v, 0x1ull << 63 | 0xa); }),
            "bits<800000000000000a>");
  // Byte 0 has bits 0 to 7.
  EXPECT_EQ(PlainText(Bytes(C_BITBIG, "\x01\0\x40"s)), "bits<400001>");
  EXPECT_EQ(PlainText(Bytes(C_BITBIG, "\x05\0\0"s)), "bits<5>");
  EXPECT_EQ(PlainText(Bytes(C_BITBIG, "\0"s)), "bits<0>");
}

TEST(PlainText, WritesBytesWithoutSeparators) {
  EXPECT_EQ(PlainText(Bytes(C_BINARY, "\x01\xaB\xff")), "01abff");
  EXPECT_EQ(PlainText(Bytes(C_BINARY, "")), "");
  EXPECT_EQ(PlainText(Bytes(C_HEXSTR, "\x01\xaB\xff")), "01:ab:ff");
}

std::string Decimal(int64_t number, uint8_t digits) {
  return TextOf([&](auto* v) {
    CONFD_SET_DECIMAL64(v, (confd_decimal64{number, digits}));
  });
}

TEST(PlainText, WritesDecimalsByTheirFractionDigits) {
  EXPECT_EQ(Decimal(150, 1), "15.0");
  EXPECT_EQ(Decimal(-5, 2), "-0.05");
  EXPECT_EQ(Decimal(1, 18), "0.000000000000000001");
  EXPECT_EQ(Decimal(150, 0), "invalid64<150>");
  EXPECT_EQ(Decimal(-150, 19), "invalid64<-150>");
}

TEST(PlainText, WritesStringsAsTheyAre) {
  EXPECT_EQ(PlainText(Str("a \"b\"")), "a \"b\"");
  EXPECT_EQ(PlainText(Bytes(C_BUF, "a{b}")), "a{b}");
  EXPECT_EQ(PlainText(Str("")), "");
}

TEST(PlainText, WritesWhateverItIsGiven) {
  for (int type = 0; type <= C_MAXTYPE; ++type) {
    confd_value_t value = {};
    value.type = static_cast<confd_vtype>(type);
    PlainText(value);
  }
  EXPECT_EQ(PlainText(Str(nullptr)), "(null)");
  EXPECT_EQ(TextOf([](auto* v) { CONFD_SET_NOEXISTS(v); }), "C_NOEXISTS");
  confd_value_t items[] = {Uint32(1), Enum(3)};
  EXPECT_EQ(TextOf([&](auto* v) { CONFD_SET_LIST(v, items, 2); }),
            "[1 enum<3>]");
}

}  // namespace
}  // namespace kit::api
