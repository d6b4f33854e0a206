#include "kit/confd/model/value.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace kit::store {
namespace {

Value Signed(ValueType type, int64_t number) {
  return Value::Number(type, static_cast<uint64_t>(number));
}

// Values in their natural order.
void ExpectAscending(const std::vector<Value>& values) {
  for (size_t i = 0; i < values.size(); ++i) {
    for (size_t j = 0; j < values.size(); ++j) {
      int order = Compare(values[i], values[j]);
      EXPECT_EQ(order < 0, i < j) << i << " " << j;
      EXPECT_EQ(order == 0, i == j) << i << " " << j;
      EXPECT_EQ(values[i] == values[j], i == j);
      EXPECT_EQ(values[i] != values[j], i != j);
    }
  }
}

TEST(Value, KeepsAllMembersWhenCopiedAndMoved) {
  const std::vector<Value> values = {
      Value(), Value::Number(ValueType::kIpv4Prefix, 0x0a000000, 8),
      Value::Text(ValueType::kBuf, "a"),
      Value::Text(ValueType::kIdentityref, "module:name", 3, 7)};
  for (const Value& value : values) {
    Value copy(value);
    EXPECT_EQ(copy, value);
    EXPECT_EQ(Value(std::move(copy)), value);
    for (const Value& other : values) {
      Value replaced = other;
      replaced = value;
      EXPECT_EQ(replaced, value);
      replaced = other;
      replaced = Value(value);
      EXPECT_EQ(replaced, value);
    }
  }
}

TEST(ValueOrder, SignedNumbersByValue) {
  for (ValueType type : {ValueType::kInt8, ValueType::kInt16, ValueType::kInt32,
                         ValueType::kInt64, ValueType::kEnum}) {
    ExpectAscending({Signed(type, -100), Signed(type, -1), Signed(type, 0),
                     Signed(type, 9), Signed(type, 10)});
  }
}

TEST(ValueOrder, UnsignedNumbersByValue) {
  ExpectAscending({Value::Number(ValueType::kUint64, 0),
                   Value::Number(ValueType::kUint64, 10),
                   Value::Number(ValueType::kUint64,
                                 std::numeric_limits<uint64_t>::max())});
}

TEST(ValueOrder, AddressesByTheirBytesThenByLength) {
  ExpectAscending({Value::Number(ValueType::kIpv4, 0x09ffffff),
                   Value::Number(ValueType::kIpv4, 0x0a000001),
                   Value::Number(ValueType::kIpv4, 0xc0000201)});
  ExpectAscending({Value::Number(ValueType::kIpv4AndPlen, 0x0a000001, 8),
                   Value::Number(ValueType::kIpv4AndPlen, 0x0a000001, 24),
                   Value::Number(ValueType::kIpv4AndPlen, 0x0a000002, 8)});
  ExpectAscending({Value::Text(ValueType::kIpv6, std::string(16, '\x01')),
                   Value::Text(ValueType::kIpv6, std::string(16, '\xfe'))});
}

TEST(ValueOrder, StringsByTheirBytes) {
  ExpectAscending(
      {Value::Text(ValueType::kBuf, ""), Value::Text(ValueType::kBuf, "A"),
       Value::Text(ValueType::kBuf, "a"), Value::Text(ValueType::kBuf, "aa"),
       Value::Text(ValueType::kBuf, "b"),
       Value::Text(ValueType::kBuf, "\xc3\xa4")});
}

TEST(ValueOrder, DoublesByValue) {
  const auto number = [](double value) {
    return Value::Double(ValueType::kDouble, value);
  };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  ExpectAscending({number(-kInfinity), number(-1e300), number(-2), number(-0.5),
                   number(0), number(5e-324), number(0.5), number(2),
                   number(kInfinity)});
  EXPECT_EQ(number(-0.0), number(0.0));
  EXPECT_EQ(number(-2.5).as_double(), -2.5);
  EXPECT_EQ(number(2.5).as_double(), 2.5);
}

// Those that a union may mix.
TEST(ValueOrder, OfDifferentTypesByTypeWithStringsAndCommonIntegersLast) {
  ExpectAscending(
      {Value(), Signed(ValueType::kInt8, 9), Signed(ValueType::kInt64, -1),
       Value::Number(ValueType::kUint32, 0), Value::Number(ValueType::kBool, 1),
       Value::Number(ValueType::kIpv4AndPlen, 1, 8),
       Value::Number(ValueType::kEmpty, 0), Value::Text(ValueType::kBuf, "z"),
       Value::Text(ValueType::kDuration, "P1D"), Signed(ValueType::kInt32, -3),
       Value::Number(ValueType::kUint8, 2),
       Value::Number(ValueType::kUint16, 3), Signed(ValueType::kInt32, 4),
       Value::Number(ValueType::kUint16, 65535)});
  // Equal numbers are different keys.
  ExpectAscending({Signed(ValueType::kInt32, 5),
                   Value::Number(ValueType::kUint8, 5),
                   Value::Number(ValueType::kUint16, 5)});
}

TEST(KeyOrder, IsLexicographicWithPrefixesFirst) {
  std::vector<Value> a = {Value::Number(ValueType::kUint8, 1),
                          Value::Number(ValueType::kUint8, 9)};
  std::vector<Value> b = {Value::Number(ValueType::kUint8, 2),
                          Value::Number(ValueType::kUint8, 0)};
  EXPECT_LT(Compare(KeyView{a.data(), 2}, KeyView{b.data(), 2}), 0);
  EXPECT_GT(Compare(KeyView{b.data(), 2}, KeyView{a.data(), 2}), 0);
  EXPECT_EQ(Compare(KeyView{a.data(), 2}, KeyView{a.data(), 2}), 0);
  EXPECT_LT(Compare(KeyView{a.data(), 1}, KeyView{a.data(), 2}), 0);
  EXPECT_GT(Compare(KeyView{b.data(), 1}, KeyView{a.data(), 2}), 0);
  EXPECT_LT(Compare(KeyView{nullptr, 0}, KeyView{a.data(), 1}), 0);
}

TEST(Value, KeepsWhatItWasMadeOf) {
  EXPECT_FALSE(Value().exists());
  EXPECT_EQ(Value().text(), "");
  Value number = Signed(ValueType::kInt8, -1);
  EXPECT_TRUE(number.exists());
  EXPECT_EQ(number.signed_bits(), -1);
  Value text = Value::Text(ValueType::kIdentityref, "m:i", 0, 7);
  EXPECT_EQ(text.text(), "m:i");
  EXPECT_EQ(text.bits(), 7u);
  EXPECT_STREQ(TypeName(ValueType::kUint32), "C_UINT32");
  EXPECT_STREQ(TypeName(ValueType::kIpv4AndPlen), "C_IPV4_AND_PLEN");
  EXPECT_STREQ(TypeName(static_cast<ValueType>(200)), "C_?");
}

}  // namespace
}  // namespace kit::store
