#include "kit/confd/tree/cell.h"

#include "tests/support/models.h"

namespace kit::store {
namespace {

// Texts of leaves of the zoo, one or more of every way to store a value.
struct Sample {
  const char* path;
  std::vector<const char*> texts;  // in the type's order
};

const std::vector<Sample> kSamples = {
    {"/zoo:values/i8", {"-128", "-1", "0", "127"}},
    {"/zoo:values/i64", {"-9223372036854775808", "0", "9223372036854775807"}},
    {"/zoo:values/u32", {"0", "7", "4294967295"}},
    {"/zoo:values/u64", {"0", "18446744073709551615"}},
    {"/zoo:values/ip4", {"0.0.0.0", "10.0.0.1", "255.255.255.255"}},
    {"/zoo:values/ip4-plen", {"10.0.0.1/8", "10.0.0.1/24", "10.0.0.2/0"}},
    {"/zoo:values/ip6", {"::", "::1", "2001:db8::1"}},
    {"/zoo:values/dec", {"-1.5", "0.0", "1.5"}},
    {"/zoo:values/str", {"", "a", "eight888", "longer than that", "seven77"}},
};

TEST(Cell, GivesBackTheValueThatWasPutIn) {
  Arena arena;
  for (const Sample& sample : kSamples) {
    const LeafType& type = *NodeAt(Zoo(), sample.path).type;
    for (const char* text : sample.texts) {
      const Value value = type.Parse(text);
      EXPECT_EQ(ValueOf(type, MakeCell(arena, type, value)), value)
          << sample.path << " " << text;
    }
  }
}

TEST(Cell, ComparesAsItsValueDoes) {
  Arena arena;
  for (const Sample& sample : kSamples) {
    const LeafType& type = *NodeAt(Zoo(), sample.path).type;
    for (const char* a : sample.texts) {
      for (const char* b : sample.texts) {
        const Value value = type.Parse(b);
        const Cell cell = MakeCell(arena, type, type.Parse(a));
        const int expected = Compare(type.Parse(a), value);
        const int order = Compare(type, cell, value);
        EXPECT_EQ(order < 0, expected < 0) << sample.path << a << b;
        EXPECT_EQ(order > 0, expected > 0) << sample.path << a << b;
      }
    }
  }
}

TEST(Cell, LeafListsKeepTheirValuesInOrder) {
  Arena arena;
  const LeafType& type = *NodeAt(Zoo(), "/zoo:values/str").type;
  const std::vector<Value> values = {type.Parse("z"), type.Parse(""),
                                     type.Parse("a text of some length")};
  const Cell cell = MakeListCell(arena, type, values);
  EXPECT_EQ(ValuesOf(type, cell), values);
  FreeListCell(arena, type, cell);
  EXPECT_TRUE(ValuesOf(type, MakeListCell(arena, type, {})).empty());
}

TEST(Cell, LeavesAloneWhatAnotherTreeMayUse) {
  Arena arena;
  const LeafType& type = *NodeAt(Zoo(), "/zoo:values/str").type;
  const Value value = type.Parse("shared by two trees");
  const Cell cell = MakeCell(arena, type, value);
  arena.Freeze();
  FreeCell(arena, type, cell);
  EXPECT_EQ(ValueOf(type, cell), value);
}

KeyPrefix PrefixOf(const LeafType& type, const std::vector<Value>& keys) {
  KeyPrefixBuilder builder;
  for (const Value& key : keys) builder.Add(type, key);
  return builder.prefix();
}

TEST(KeyPrefix, OrdersAsTheKeysDo) {
  for (const Sample& sample : kSamples) {
    const LeafType& type = *NodeAt(Zoo(), sample.path).type;
    for (size_t i = 1; i < sample.texts.size(); ++i) {
      EXPECT_FALSE(PrefixOf(type, {type.Parse(sample.texts[i])}) <
                   PrefixOf(type, {type.Parse(sample.texts[i - 1])}))
          << sample.path << " " << sample.texts[i];
    }
  }
}

TEST(KeyPrefix, SaysWhetherItHoldsTheKeysWhole) {
  const LeafType& number = *NodeAt(Zoo(), "/zoo:values/u32").type;
  const LeafType& text = *NodeAt(Zoo(), "/zoo:values/str").type;
  KeyPrefixBuilder builder;
  for (int i = 0; i < 4; ++i) builder.Add(number, number.Parse("7"));
  EXPECT_TRUE(builder.is_whole());
  EXPECT_EQ(builder.whole_keys(), 4u);
  builder.Add(number, number.Parse("7"));
  EXPECT_FALSE(builder.is_whole());
  EXPECT_EQ(builder.whole_keys(), 4u);
  KeyPrefixBuilder of_text;
  of_text.Add(number, number.Parse("7"));
  of_text.Add(text, text.Parse("a"));
  of_text.Add(number, number.Parse("7"));
  EXPECT_FALSE(of_text.is_whole());
  EXPECT_EQ(of_text.whole_keys(), 1u);
}

// Its bytes would look like those of a key.
TEST(KeyPrefix, IsNotWholeForAValueOfAnotherType) {
  const LeafType& number = *NodeAt(Zoo(), "/zoo:values/u32").type;
  KeyPrefixBuilder builder;
  builder.Add(number, Value::Number(ValueType::kIpv4, 7));
  EXPECT_FALSE(builder.is_whole());
}

// Different types under one key are ordered by type before all else.
TEST(KeyPrefix, SaysNothingOfAUnion) {
  const LeafType& type =
      *NodeAt(Zoo(), "/zoo:lists/by-mixed").children[0]->type;
  ASSERT_FALSE(type.value_type());
  EXPECT_TRUE(PrefixOf(type, {type.Parse("none")}) == KeyPrefix());
}

}  // namespace
}  // namespace kit::store
