#include "kit/confd/api/value_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/c_values.h"

namespace kit::api {
namespace {

using std::string_literals::operator""s;

// The key form of a value that `set` fills in.
template <typename Set>
std::string KeyOf(Set set) {
  confd_value_t value = {};
  set(&value);
  return ValueToKey(value);
}

TEST(ValueToKey, WritesIntegersInDecimal) {
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_INT8(v, -128); }), "-128");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_INT16(v, -32768); }), "-32768");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_INT32(v, INT32_MIN); }),
            "-2147483648");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_INT64(v, INT64_MIN); }),
            "-9223372036854775808");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_UINT8(v, 255); }), "255");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_UINT16(v, 65535); }), "65535");
  EXPECT_EQ(ValueToKey(Uint32(UINT32_MAX)), "4294967295");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_UINT64(v, UINT64_MAX); }),
            "18446744073709551615");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BIT32(v, 5); }), "5");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BIT64(v, 1ull << 63); }),
            "9223372036854775808");
  EXPECT_EQ(ValueToKey(Enum(-3)), "-3");
}

TEST(ValueToKey, WritesBooleansAndEmpty) {
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 1); }), "true");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 2); }), "true");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 0); }), "false");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_EMPTY(v); }), "\"\"");
}

TEST(ValueToKey, WritesAddressesAndPrefixes) {
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_IPV4(v, Ipv4("10.0.200.1")); }),
            "10.0.200.1");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_IPV6(v, Ipv6("FE80:0::1")); }),
            "fe80::1");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_IPV4PREFIX(v, (confd_ipv4_prefix{Ipv4("10.0.0.0"), 8}));
            }),
            "10.0.0.0/8");
  EXPECT_EQ(
      KeyOf([](auto* v) {
        CONFD_SET_IPV4_AND_PLEN(v, (confd_ipv4_prefix{Ipv4("10.1.2.3"), 32}));
      }),
      "10.1.2.3/32");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_IPV6PREFIX(v, (confd_ipv6_prefix{Ipv6("::"), 0}));
            }),
            "::/0");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_IPV6_AND_PLEN(
                  v, (confd_ipv6_prefix{Ipv6("2001:db8::5"), 128}));
            }),
            "2001:db8::5/128");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_DQUAD(v, (confd_dotted_quad{{1, 0, 255, 4}}));
            }),
            "1.0.255.4");
}

TEST(ValueToKey, QuotesStringsWhereNeeded) {
  EXPECT_EQ(ValueToKey(Str("global")), "global");
  EXPECT_EQ(ValueToKey(Str("")), "\"\"");
  EXPECT_EQ(ValueToKey(Str("a \"b\"")), R"("a \"b\"")");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, "vlan/10")), "vlan/10");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, "a{b}")), "\"a{b}\"");
  // The size counts, not a terminator.
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, std::string_view("abcdef", 3))), "abc");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, std::string_view())), "\"\"");
}

TEST(ValueToKey, WritesBytesAsBase64OrHex) {
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "f")), "Zg==");
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "fo")), "Zm8=");
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "foo")), "Zm9v");
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "foobar")), "Zm9vYmFy");
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "\xfb\xff\xfe")), "+//+");
  EXPECT_EQ(ValueToKey(Bytes(C_BINARY, "")), "\"\"");
  EXPECT_EQ(ValueToKey(Bytes(C_HEXSTR, "\x01\xaB\xff")), "01:ab:ff");
  EXPECT_EQ(ValueToKey(Bytes(C_HEXSTR, "\0"s)), "00");
  EXPECT_EQ(ValueToKey(Bytes(C_HEXSTR, "")), "\"\"");
}

std::string Decimal64Key(int64_t number, uint8_t digits) {
  return KeyOf([&](auto* v) {
    CONFD_SET_DECIMAL64(v, (confd_decimal64{number, digits}));
  });
}

TEST(ValueToKey, WritesDecimal64WithItsFractionDigits) {
  EXPECT_EQ(Decimal64Key(150, 2), "1.50");
  EXPECT_EQ(Decimal64Key(-5, 2), "-0.05");
  EXPECT_EQ(Decimal64Key(0, 1), "0.0");
  EXPECT_EQ(Decimal64Key(12, 2), "0.12");
  EXPECT_EQ(Decimal64Key(INT64_MIN, 18), "-9.223372036854775808");
  EXPECT_EQ(Decimal64Key(7, 0), "7");
  EXPECT_THROW(Decimal64Key(7, 19), std::invalid_argument);
}

TEST(ValueToKey, WritesDoublesThatReadBackTheSame) {
  const auto key = [](double number) {
    return KeyOf([=](auto* v) { CONFD_SET_DOUBLE(v, number); });
  };
  EXPECT_EQ(key(0.5), "0.5");
  EXPECT_EQ(key(-2), "-2");
  EXPECT_EQ(key(0.1), "0.1");
  for (const double number :
       {1.0 / 3, 1e300, -5e-324, std::numeric_limits<double>::max()}) {
    EXPECT_EQ(std::strtod(key(number).c_str(), nullptr), number);
  }
}

TEST(ValueToKey, WritesDatesAndTimes) {
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_DATE(v, (confd_date{2024, 2, 9, -111, 0}));
            }),
            "2024-02-09");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_DATETIME(
                  v, (confd_datetime{2024, 12, 31, 23, 5, 9, 0, 0, 0}));
            }),
            "2024-12-31T23:05:09Z");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_DATETIME(
                  v, (confd_datetime{2024, 12, 31, 23, 5, 9, 70, -3, 30}));
            }),
            "2024-12-31T23:05:09.00007-03:30");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_TIME(v, (confd_time{1, 2, 3, 0, 5, 45}));
            }),
            "01:02:03+05:45");
}

TEST(ValueToKey, WritesDurations) {
  const auto key = [](confd_duration duration) {
    return KeyOf([&](auto* v) { CONFD_SET_DURATION(v, duration); });
  };
  EXPECT_EQ(key({}), "PT0S");
  EXPECT_EQ(key({1, 2, 3, 4, 5, 6, 7}), "P1Y2M3DT4H5M6.000007S");
  EXPECT_EQ(key({0, 0, 0, 0, 0, 0, 500000}), "PT0.5S");
  EXPECT_EQ(key({0, 1, 0, 0, 0, 0, 0}), "P1M");
  EXPECT_EQ(key({0, 0, 0, 0, 1, 0, 0}), "PT1M");
}

TEST(ValueToKey, WritesIdentitiesAndQualifiedNames) {
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_IDENTITYREF(v, (confd_identityref{448085882, 17}));
            }),
            "448085882:17");
  unsigned char prefix[] = {'p'};
  unsigned char name[] = {'n', 'm'};
  EXPECT_EQ(KeyOf([&](auto* v) { CONFD_SET_QNAME(v, prefix, 1, name, 2); }),
            "p:nm");
  EXPECT_EQ(KeyOf([&](auto* v) { CONFD_SET_QNAME(v, nullptr, 0, name, 2); }),
            "nm");
}

TEST(ValueToKey, RejectsTypesThatCannotBeKeys) {
  for (const confd_vtype type :
       {C_NOEXISTS, C_XMLTAG, C_SYMBOL, C_LIST, C_XMLBEGIN, C_XMLEND,
        C_OBJECTREF, C_UNION, C_PTR, C_CDBBEGIN, C_OID, C_DEFAULT,
        C_XMLBEGINDEL, C_BITBIG, C_XMLMOVEFIRST, C_XMLMOVEAFTER, C_MAXTYPE}) {
    confd_value_t value = {};
    value.type = type;
    EXPECT_THROW(ValueToKey(value), std::invalid_argument) << type;
  }
}

TEST(ValueToKey, RejectsMalformedValues) {
  EXPECT_THROW(ValueToKey(Str(nullptr)), std::invalid_argument);
  confd_value_t null_buffer = {};
  CONFD_SET_BUF(&null_buffer, nullptr, 3);
  EXPECT_THROW(ValueToKey(null_buffer), std::invalid_argument);
  confd_value_t prefix = {};
  CONFD_SET_IPV4PREFIX(&prefix, (confd_ipv4_prefix{Ipv4("10.0.0.0"), 33}));
  EXPECT_THROW(ValueToKey(prefix), std::invalid_argument);
  CONFD_SET_IPV6PREFIX(&prefix, (confd_ipv6_prefix{Ipv6("::"), 129}));
  EXPECT_THROW(ValueToKey(prefix), std::invalid_argument);
}

// ---- Describe ------------------------------------------------------------

template <typename Set>
std::string DescriptionOf(Set set) {
  confd_value_t value = {};
  set(&value);
  return Describe(value);
}

confd_value_t OfType(confd_vtype type) {
  confd_value_t value = {};
  value.type = type;
  return value;
}

TEST(Describe, ShowsTypeAndValue) {
  EXPECT_EQ(Describe(Uint32(7)), "C_UINT32 7");
  EXPECT_EQ(Describe(Enum(-3)), "C_ENUM_VALUE -3");
  EXPECT_EQ(DescriptionOf([](auto* v) { CONFD_SET_DOUBLE(v, 0.5); }),
            "C_DOUBLE 0.5");
  EXPECT_EQ(DescriptionOf([](auto* v) {
              CONFD_SET_IPV4PREFIX(v, (confd_ipv4_prefix{Ipv4("10.0.0.0"), 8}));
            }),
            "C_IPV4PREFIX 10.0.0.0/8");
  EXPECT_EQ(Describe(Bytes(C_BINARY, "foo")), "C_BINARY Zm9v");
}

TEST(Describe, QuotesStringsAlways) {
  EXPECT_EQ(Describe(Str("global")), R"(C_STR "global")");
  EXPECT_EQ(Describe(Bytes(C_BUF, "a\n\"\\")), R"(C_BUF "a\x0a\"\\")");
  EXPECT_EQ(Describe(Bytes(C_BUF, "")), R"(C_BUF "")");
}

TEST(Describe, SaysHowLongPathsAre) {
  confd_hkeypath_t path = {};
  path.len = 3;
  confd_value_t value;
  CONFD_SET_OBJECTREF(&value, &path);
  EXPECT_EQ(Describe(value), "C_OBJECTREF of 3 elements");
  CONFD_SET_OBJECTREF(&value, nullptr);
  EXPECT_EQ(Describe(value), "C_OBJECTREF ?");
}

TEST(Describe, WritesDatesAsDocumentsDo) {
  EXPECT_EQ(DescriptionOf([](auto* v) {
              CONFD_SET_DATETIME(
                  v, (confd_datetime{2024, 12, 31, 23, 5, 9, 0, 0, 0}));
            }),
            "C_DATETIME 2024-12-31T23:05:09+00:00");
}

TEST(Describe, SaysNoMoreThanTheTypeOfWhatHasNoValue) {
  EXPECT_EQ(Describe(OfType(C_NOEXISTS)), "C_NOEXISTS");
  EXPECT_EQ(Describe(OfType(C_XMLTAG)), "C_XMLTAG");
  EXPECT_EQ(Describe(OfType(C_EMPTY)), "C_EMPTY");
}

TEST(Describe, ShowsTheItemsOfLists) {
  confd_value_t items[] = {Uint32(1), Bytes(C_BUF, "a")};
  EXPECT_EQ(DescriptionOf([&](auto* v) { CONFD_SET_LIST(v, items, 2); }),
            R"(C_LIST [C_UINT32 1, C_BUF "a"])");
  EXPECT_EQ(DescriptionOf([&](auto* v) { CONFD_SET_LIST(v, nullptr, 2); }),
            "C_LIST []");
}

TEST(Describe, MarksWhatItCannotShow) {
  EXPECT_EQ(Describe(Str(nullptr)), "C_STR NULL");
  EXPECT_EQ(Describe(Bytes(C_BITBIG, "\x01")), "C_BITBIG ?");
  EXPECT_EQ(DescriptionOf([](auto* v) {
              CONFD_SET_IPV4PREFIX(v, (confd_ipv4_prefix{{}, 33}));
            }),
            "C_IPV4PREFIX ?");
  EXPECT_EQ(Describe(OfType(C_UNION)), "C_? ?");
  EXPECT_EQ(Describe(OfType(C_MAXTYPE)), "C_? ?");
}

}  // namespace
}  // namespace kit::api
