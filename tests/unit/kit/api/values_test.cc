#include "kit/confd/api/values.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "tests/support/c_values.h"

namespace kit::api {
namespace {

using store::Value;
using store::ValueType;

Value Signed(ValueType type, int64_t number, uint8_t length = 0) {
  return Value::Number(type, static_cast<uint64_t>(number), length);
}

TEST(Values, SurviveTheWayToCAndBack) {
  const std::string bytes("a\0b", 3);
  const std::string address("\x20\x01\x0d\xb8\0\0\0\0\0\0\0\0\0\0\0\x05", 16);
  const std::pair<Value, const char*> cases[] = {
      {Signed(ValueType::kInt8, -128), "C_INT8 -128"},
      {Signed(ValueType::kInt16, -32768), "C_INT16 -32768"},
      {Signed(ValueType::kInt32, INT32_MIN), "C_INT32 -2147483648"},
      {Signed(ValueType::kInt64, INT64_MIN), "C_INT64 -9223372036854775808"},
      {Value::Number(ValueType::kUint8, 255), "C_UINT8 255"},
      {Value::Number(ValueType::kUint16, 65535), "C_UINT16 65535"},
      {Value::Number(ValueType::kUint32, UINT32_MAX), "C_UINT32 4294967295"},
      {Value::Number(ValueType::kUint64, UINT64_MAX),
       "C_UINT64 18446744073709551615"},
      {Value::Number(ValueType::kBool, 1), "C_BOOL true"},
      {Signed(ValueType::kEnum, -7), "C_ENUM_VALUE -7"},
      {Value::Number(ValueType::kBit32, 5), "C_BIT32 5"},
      {Value::Number(ValueType::kBit64, uint64_t{1} << 63),
       "C_BIT64 9223372036854775808"},
      {Signed(ValueType::kDecimal64, -150, 2), "C_DECIMAL64 -1.50"},
      {Value::Number(ValueType::kIpv4, 0x0a000001), "C_IPV4 10.0.0.1"},
      {Value::Number(ValueType::kDquad, 0x01020304), "C_DQUAD 1.2.3.4"},
      {Value::Number(ValueType::kIpv4Prefix, 0x0a000000, 8),
       "C_IPV4PREFIX 10.0.0.0/8"},
      {Value::Number(ValueType::kIpv4AndPlen, 0x0a000001, 8),
       "C_IPV4_AND_PLEN 10.0.0.1/8"},
      {Value::Text(ValueType::kIpv6, address), "C_IPV6 2001:db8::5"},
      {Value::Text(ValueType::kIpv6Prefix, address, 128),
       "C_IPV6PREFIX 2001:db8::5/128"},
      {Value::Text(ValueType::kIpv6AndPlen, address, 64),
       "C_IPV6_AND_PLEN 2001:db8::5/64"},
      {Value::Text(ValueType::kBuf, bytes), R"(C_BUF "a\x00b")"},
      {Value::Text(ValueType::kBuf, ""), R"(C_BUF "")"},
      {Value::Text(ValueType::kBinary, bytes), "C_BINARY YQBi"},
      {Value::Text(ValueType::kHexstr, bytes), "C_HEXSTR 61:00:62"},
      {Value::Text(ValueType::kBitbig, bytes), "C_BITBIG ?"},
      {Value::Text(ValueType::kDatetime, "2026-11-20T21:47:00-03:30"),
       "C_DATETIME 2026-11-20T21:47:00-03:30"},
      {Value::Text(ValueType::kIdentityref, "", 0, uint64_t{1001} << 32 | 7),
       "C_IDENTITYREF 1001:7"},
      {Value::Double(ValueType::kDouble, -2.5), "C_DOUBLE -2.5"},
      {Value::Text(ValueType::kDate, "2026-11-20-05:30"),
       "C_DATE 2026-11-20-05:30"},
      {Value::Text(ValueType::kTime, "21:47:00.25"), "C_TIME 21:47:00.25"},
      {Value::Text(ValueType::kDuration, "P1Y2M3DT4H5M6.000007S"),
       "C_DURATION P1Y2M3DT4H5M6.000007S"},
      {Value::Text(ValueType::kQname, "p:name"), "C_QNAME p:name"},
      {Value::Text(ValueType::kQname, "name"), "C_QNAME name"},
      {Value::Text(ValueType::kOid,
                   std::string("\0\0\0\1\0\0\0\3\xff\0\0\2", 12)),
       "C_OID 1.3.4278190082"},
      {Value::Number(ValueType::kEmpty, 0), "C_EMPTY"},
  };
  for (const auto& [value, description] : cases) {
    confd_value_t c = ToC(value);
    EXPECT_EQ(Describe(c), description);
    EXPECT_EQ(FromC(c), value) << description;
    Release(c);
  }
}

TEST(Values, AreOneOrZeroAsBooleans) {
  confd_value_t value = {};
  CONFD_SET_BOOL(&value, 2);
  EXPECT_EQ(FromC(value), Value::Number(ValueType::kBool, 1));
  value = ToC(Value::Number(ValueType::kBool, 2));
  EXPECT_EQ(value.val.boolean, 1);
}

TEST(Values, OfNothingHaveNoType) { EXPECT_EQ(ToC(Value()).type, C_NOEXISTS); }

// A program owns what it was handed, and may hold a NUL-terminated text.
TEST(Values, AreCopiedWithATerminator) {
  confd_value_t value = ToC(Value::Text(ValueType::kBuf, "text"));
  EXPECT_EQ(value.val.buf.size, 4u);
  EXPECT_STREQ(reinterpret_cast<const char*>(value.val.buf.ptr), "text");
  Release(value);
  EXPECT_EQ(value.val.buf.ptr, nullptr);
  EXPECT_EQ(value.val.buf.size, 0u);
}

TEST(Values, GivenAsStringsAreBuffers) {
  EXPECT_EQ(FromC(Str("text")), Value::Text(ValueType::kBuf, "text"));
}

std::string ErrorOf(const confd_value_t& value) {
  try {
    FromC(value);
  } catch (const store::Error& error) {
    return std::to_string(static_cast<int>(error.code())) + ": " + error.what();
  }
  return "";
}

TEST(Values, OfTypesThatNoLeafHasCannotBeWritten) {
  for (confd_vtype type : {C_NOEXISTS, C_XMLTAG, C_SYMBOL, C_LIST, C_OBJECTREF,
                           C_UNION, C_DEFAULT, C_MAXTYPE}) {
    confd_value_t value = {};
    value.type = type;
    EXPECT_EQ(ErrorOf(value), "5: a value of type number " +
                                  std::to_string(type) + " can't be written");
  }
}

TEST(Values, WithoutTheirBytesCannotBeWritten) {
  EXPECT_EQ(ErrorOf(Str(nullptr)), "5: a C_STR value has a NULL pointer");
  confd_value_t value = {};
  CONFD_SET_HEXSTR(&value, nullptr, 3);
  EXPECT_EQ(ErrorOf(value), "5: a C_HEXSTR value has a NULL pointer");
  value.type = C_OID;
  value.val.oidp = nullptr;
  EXPECT_EQ(ErrorOf(value), "5: a C_OID value has a NULL pointer");
  CONFD_SET_QNAME(&value, nullptr, 1, "n", 1);
  EXPECT_EQ(ErrorOf(value), "5: a C_QNAME value has a NULL pointer");
  CONFD_SET_QNAME(&value, "p", 1, nullptr, 0);
  EXPECT_EQ(ErrorOf(value), "5: a C_QNAME value has a NULL pointer");
  CONFD_SET_HEXSTR(&value, nullptr, 0);
  EXPECT_EQ(FromC(value), Value::Text(ValueType::kHexstr, ""));
}

TEST(Values, HoldNoMoreNumbersThanAnObjectIdentifierMay) {
  confd_snmp_oid oid = {};
  confd_value_t value = {};
  CONFD_SET_OID(&value, &oid);
  for (const int length : {-1, 0, 129}) {
    oid.len = length;
    EXPECT_EQ(ErrorOf(value), "5: an object identifier of " +
                                  std::to_string(length) + " numbers");
  }
  oid.len = 128;
  EXPECT_EQ(FromC(value).text(), std::string(128 * 4, '\0'));
}

TEST(Values, AreReleasedWithAllTheyOwn) {
  const auto allocate = [] {
    return confd_buf_t{1, static_cast<unsigned char*>(std::malloc(1))};
  };
  confd_value_t value = {};
  value.type = C_QNAME;
  value.val.qname = {allocate(), allocate()};
  Release(value);
  EXPECT_EQ(value.val.qname.prefix.ptr, nullptr);
  EXPECT_EQ(value.val.qname.name.ptr, nullptr);
}

}  // namespace
}  // namespace kit::api
