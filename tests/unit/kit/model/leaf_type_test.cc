#include "kit/confd/model/leaf_type.h"

#include "tests/support/models.h"

namespace kit::store {
namespace {

const LeafType& TypeOf(std::string_view leaf) {
  return *NodeAt(Zoo(), "/zoo:values/" + std::string(leaf)).type;
}

struct TextCase {
  const char* leaf;
  const char* text;
  ValueType type;
  const char* canonical;  // null: the text itself
};

TEST(LeafType, AcceptsTheTypesTextsAndPrintsThemCanonically) {
  const TextCase cases[] = {
      {"i8", "-128", ValueType::kInt8, nullptr},
      {"i8", "+5", ValueType::kInt8, "5"},
      {"i64", "9223372036854775807", ValueType::kInt64, nullptr},
      {"u8", "255", ValueType::kUint8, nullptr},
      {"u16", "007", ValueType::kUint16, "7"},
      {"u64", "18446744073709551615", ValueType::kUint64, nullptr},
      {"bool", "false", ValueType::kBool, nullptr},
      {"str", "", ValueType::kBuf, nullptr},
      {"str", " kept as it is ", ValueType::kBuf, nullptr},
      {"enum", "dark-blue", ValueType::kEnum, nullptr},
      {"bits32", "admin read", ValueType::kBit32, "read admin"},
      {"bits32", "", ValueType::kBit32, nullptr},
      {"bits64", "high", ValueType::kBit64, nullptr},
      {"bitbig", "far first", ValueType::kBitbig, "first far"},
      {"dec", "1.50", ValueType::kDecimal64, "1.5"},
      {"dec", "-0.05", ValueType::kDecimal64, nullptr},
      {"dec", "7", ValueType::kDecimal64, "7.0"},
      {"bin", "AAEC", ValueType::kBinary, nullptr},
      {"flag", "", ValueType::kEmpty, nullptr},
      {"kin", "zoo:fish", ValueType::kIdentityref, nullptr},
      {"kin", "zoo-more:parrot", ValueType::kIdentityref, nullptr},
      {"kin", "fish", ValueType::kIdentityref, "zoo:fish"},
      {"ip4", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"ip6", "2001:DB8:0::1", ValueType::kIpv6, "2001:db8::1"},
      {"ip4-prefix", "10.1.2.3/16", ValueType::kIpv4Prefix, "10.1.0.0/16"},
      {"ip4-prefix", "10.1.2.3/0", ValueType::kIpv4Prefix, "0.0.0.0/0"},
      {"ip4-prefix", "10.1.2.3/32", ValueType::kIpv4Prefix, nullptr},
      {"ip6-prefix", "2001:db8::1/32", ValueType::kIpv6Prefix, "2001:db8::/32"},
      {"ip6-prefix", "2001:db8:ffff::/33", ValueType::kIpv6Prefix,
       "2001:db8:8000::/33"},
      {"ip4-plen", "10.1.2.3/16", ValueType::kIpv4AndPlen, nullptr},
      {"ip6-plen", "2001:db8::1/32", ValueType::kIpv6AndPlen, nullptr},
      {"quad", "1.2.3.4", ValueType::kDquad, nullptr},
      {"hex", "0A:ff", ValueType::kHexstr, "0a:ff"},
      {"gate", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"local-gate", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"mixed", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"mixed", "2001:db8::1", ValueType::kIpv6, nullptr},
      {"mixed", "none", ValueType::kEnum, nullptr},
      {"number-or-text", "17", ValueType::kUint16, nullptr},
      {"number-or-text", "65536", ValueType::kBuf, nullptr},
      {"number-or-text", "text", ValueType::kBuf, nullptr},
      {"ref", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"ref-to-ref", "10.0.0.1", ValueType::kIpv4, nullptr},
      {"ref-or-word", "1.2.3.4", ValueType::kDquad, nullptr},
      {"ref-or-word", "red", ValueType::kEnum, nullptr},
      {"small", "20", ValueType::kUint8, nullptr},
      {"short", "abcd", ValueType::kBuf, nullptr},
      {"code", "AB1", ValueType::kBuf, nullptr},
  };
  for (const TextCase& one : cases) {
    const LeafType& type = TypeOf(one.leaf);
    Value value;
    ASSERT_EQ(ErrorOf([&] { value = type.Parse(one.text); }), "") << one.leaf;
    EXPECT_EQ(value.type(), one.type) << one.leaf << " " << one.text;
    EXPECT_EQ(type.Print(value),
              one.canonical != nullptr ? one.canonical : one.text)
        << one.leaf;
    EXPECT_EQ(type.Check(value), value) << one.leaf << " " << one.text;
  }
}

TEST(LeafType, TakesIntegersOfItsWidthAndNoMore) {
  const struct {
    const char* leaf;
    const char* least;
    const char* below;
    const char* most;
    const char* above;
  } cases[] = {
      {"i8", "-128", "-129", "127", "128"},
      {"i16", "-32768", "-32769", "32767", "32768"},
      {"i32", "-2147483648", "-2147483649", "2147483647", "2147483648"},
      {"i64", "-9223372036854775808", "-9223372036854775809",
       "9223372036854775807", "9223372036854775808"},
      {"u8", "0", "-1", "255", "256"},
      {"u16", "0", "-1", "65535", "65536"},
      {"u32", "0", "-1", "4294967295", "4294967296"},
      {"u64", "0", "-1", "18446744073709551615", "18446744073709551616"},
  };
  for (const auto& one : cases) {
    const LeafType& type = TypeOf(one.leaf);
    for (const char* text : {one.least, one.most}) {
      EXPECT_EQ(type.Print(type.Parse(text)), text);
    }
    for (const char* text : {one.below, one.above}) {
      EXPECT_EQ(ErrorOf([&] { type.Parse(text); }).substr(0, 2), "5:") << text;
    }
  }
}

TEST(LeafType, RejectsWhatIsNoTextOfTheType) {
  const std::pair<const char*, const char*> cases[] = {
      {"i8", "128"},
      {"i8", "-129"},
      {"i8", ""},
      {"i8", "one"},
      {"i8", "1.0"},
      {"i8", "+-1"},
      {"u8", "-1"},
      {"u8", "256"},
      {"u64", "18446744073709551616"},
      {"bool", "True"},
      {"bool", "1"},
      {"bool", ""},
      {"enum", "blue"},
      {"enum", "-2"},
      {"enum", "RED"},
      {"bits32", "execute"},
      {"bits32", "read read"},
      {"dec", "1.234"},
      {"dec", "."},
      {"bin", "A"},
      {"flag", "x"},
      {"kin", "zoo:cat"},
      {"kin", "zt:bird"},
      {"ip4", "10.0.0"},
      {"ip4", "10.0.0.256"},
      {"ip4", "::1"},
      {"ip4", "10.0.0.1/8"},
      {"ip4", "10.0.0.1%e"},
      {"ip4-bare", "10.0.0.1%e"},
      {"ip6", "10.0.0.1"},
      {"ip6", ":::"},
      {"ip4-prefix", "10.0.0.0"},
      {"ip4-prefix", "10.0.0.0/33"},
      {"ip6-prefix", "::/129"},
      {"ip4-plen", "10.0.0.1"},
      {"ip4-plen", "300.0.0.1/8"},
      {"ip6-plen", "::1/129"},
      {"quad", "1.2.3"},
      {"hex", "0"},
      {"when", "yesterday"},
      {"local-gate", "192.0.2.1"},
      {"mixed", "some"},
      {"number-or-text", "far too long"},
      {"ref", "text"},
      {"ref-or-word", "yellow"},
      {"small", "11"},
      {"small", "0"},
      {"short", "a"},
      {"short", "abcde"},
      {"code", "A1"},
      {"code", "AB"},
      {"str", "\x01"},
      {"str", "\xff"},
  };
  for (const auto& [leaf, text] : cases) {
    EXPECT_EQ(
        ErrorOf([&, l = leaf, t = text] { TypeOf(l).Parse(t); }).substr(0, 2),
        "5:")
        << leaf << " " << text;
  }
}

void CollectLeaves(const SchemaNode& node,
                   std::vector<const SchemaNode*>& leaves) {
  if (node.type != nullptr) leaves.push_back(&node);
  for (const auto& child : node.children) CollectLeaves(*child, leaves);
}

// libyang would keep a text by its length and look for it by its NUL.
TEST(LeafType, RejectsBytesThatAreNoTextInEveryType) {
  std::vector<const SchemaNode*> leaves;
  CollectLeaves(Zoo().root(), leaves);
  ASSERT_GT(leaves.size(), 60u);
  const std::string tails[] = {
      std::string("\0", 1), std::string("\0b", 2), "\x01", "\xff", "\xc3",
      "\xed\xa0\x80"};
  for (const SchemaNode* leaf : leaves) {
    for (const char* begin : {"", "AB1", "1", "10.0.0.1", "2001:db8::1", "0a",
                              "red", "zt:cat", "read", "/zoo:values", "AAEC"}) {
      for (const std::string& tail : tails) {
        std::string text = begin + tail;
        EXPECT_NE(ErrorOf([&] { leaf->type->Parse(text); }), "") << leaf->name;
        EXPECT_NE(ErrorOf([&] { leaf->type->ParseKey(text); }), "")
            << leaf->name;
      }
    }
  }
}

TEST(LeafType, MessagesNameTextTypeAndReasonOnce) {
  EXPECT_EQ(ErrorOf([] { TypeOf("u8").Parse("256"); }),
            "5: \"256\" is not of type uint8");
  EXPECT_EQ(ErrorOf([] { TypeOf("small").Parse("11"); }),
            "5: \"11\" is not of type uint8: Unsatisfied range - value \"11\" "
            "is out of the allowed range.");
  EXPECT_EQ(ErrorOf([] { TypeOf("ref").Parse("x"); }),
            "5: \"x\" is not of type inet:ipv4-address");
  // Of a long or unprintable text an excerpt.
  std::string message =
      ErrorOf([] { TypeOf("u8").Parse(std::string(5000, 'x') + "\n"); });
  EXPECT_LT(message.size(), 300u);
  EXPECT_NE(message.find("...\""), std::string::npos);
  EXPECT_EQ(ErrorOf([] { TypeOf("u8").Parse("a\nb"); }),
            "5: \"a?b\" is not of type uint8");
}

TEST(LeafType, ChecksValuesByTypeAndLimits) {
  auto number = [](ValueType type, uint64_t bits, uint8_t length = 0) {
    return Value::Number(type, bits, length);
  };
  const std::pair<const char*, Value> bad[] = {
      {"u8", number(ValueType::kUint16, 1)},
      {"u8", Value::Text(ValueType::kBuf, "1")},
      {"u8", Value()},
      {"enum", number(ValueType::kEnum, 2)},
      {"bits32", number(ValueType::kBit32, 4)},
      {"bits64", number(ValueType::kBit64, 2)},
      {"bitbig", Value::Text(ValueType::kBitbig, "\x02")},
      {"bitbig",
       Value::Text(ValueType::kBitbig, std::string(9, '\0') + "\x01")},
      {"dec", number(ValueType::kDecimal64, 15, 1)},
      {"kin", Value::Text(ValueType::kIdentityref, "zoo:fish", 0, 1)},
      {"ip4-plen", number(ValueType::kIpv4AndPlen, 0, 33)},
      {"ip6-prefix",
       Value::Text(ValueType::kIpv6Prefix, std::string(16, 0), 129)},
      {"local-gate", number(ValueType::kIpv4, 0xc0000201)},
      {"mixed", number(ValueType::kUint8, 1)},
      {"number-or-text", Value::Text(ValueType::kBuf, "far too long")},
      {"str", Value::Text(ValueType::kBuf, std::string("a\0b", 3))},
      {"when", Value::Text(ValueType::kDatetime, "2026-1-1T00:00:00Z")},
  };
  for (const auto& [leaf, value] : bad) {
    EXPECT_EQ(
        ErrorOf([&, l = leaf, v = value] { TypeOf(l).Check(v); }).substr(0, 2),
        "5:")
        << leaf;
  }
}

TEST(LeafType, HasPlainlyWhatALookAtTheNumberTells) {
  const auto has = [](const char* leaf, ValueType type, uint64_t bits) {
    return TypeOf(leaf).HasPlainly(Value::Number(type, bits));
  };
  EXPECT_TRUE(has("u8", ValueType::kUint8, 255));
  EXPECT_FALSE(has("u8", ValueType::kUint16, 1));
  EXPECT_TRUE(has("small", ValueType::kUint8, 20));
  EXPECT_FALSE(has("small", ValueType::kUint8, 21));
  EXPECT_TRUE(has("gate", ValueType::kIpv4, 0x0a000001));
  // What needs another look, or is not the whole value.
  EXPECT_FALSE(has("local-gate", ValueType::kIpv4, 0x0a000001));
  EXPECT_FALSE(has("mixed", ValueType::kIpv4, 0x0a000001));
  EXPECT_FALSE(has("enum", ValueType::kEnum, 2));
  EXPECT_FALSE(has("dec", ValueType::kDecimal64, 15));
  EXPECT_FALSE(TypeOf("str").HasPlainly(
      Value::Text(ValueType::kBuf, std::string("a\0b", 3))));
}

// Ranges are looked at here, all other restrictions by libyang.
TEST(LeafType, EndsOfRangesBelongToThem) {
  const LeafType& type = *NodeAt(Zoo(), "/zoo:values/small").type;
  for (const char* text : {"1", "10", "20"}) {
    EXPECT_EQ(ErrorOf([&] { type.Check(type.Parse(text)); }), "") << text;
  }
  for (const char* text :
       {"0", "11", "19", "21", "-1", "256", "99999999999999999999"}) {
    EXPECT_NE(ErrorOf([&] { type.Parse(text); }), "") << text;
  }
  for (const uint64_t bits : {0u, 11u, 19u, 21u}) {
    EXPECT_NE(
        ErrorOf([&] { type.Check(Value::Number(ValueType::kUint8, bits)); }),
        "")
        << bits;
  }
}

TEST(LeafType, LengthsCountCharactersAndNotBytes) {
  const LeafType& type = *NodeAt(Zoo(), "/zoo:values/short").type;
  for (const char* text : {"ab", "abcd", "\u00e4\u00f6",
                           "\u20ac\u20ac\u20ac\u20ac", "\U0001f600x"}) {
    EXPECT_EQ(ErrorOf([&] { type.Check(type.Parse(text)); }), "") << text;
  }
  for (const char* text : {"", "a", "abcde", "\u00e4", "\U0001f600",
                           "\u20ac\u20ac\u20ac\u20ac\u20ac"}) {
    EXPECT_NE(ErrorOf([&] { type.Parse(text); }), "") << text;
    EXPECT_NE(ErrorOf([&] { type.Check(Value::Text(ValueType::kBuf, text)); }),
              "")
        << text;
  }
}

// Strings that were accepted once are remembered.
TEST(LeafType, AnAcceptedStringMakesNoOtherOneAcceptable) {
  const LeafType& type = *NodeAt(Zoo(), "/zoo:values/code").type;
  const std::string good = "AB12";
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(type.Parse(good).text(), good);
    EXPECT_EQ(type.Check(type.Parse(good)).text(), good);
    for (const char* bad : {"", "AB", "A1", "AB12 ", "ab12"}) {
      EXPECT_NE(ErrorOf([&] { type.Parse(bad); }), "") << bad;
    }
  }
}

TEST(LeafType, BitSetsMayHaveUnusedBytes) {
  const LeafType& type = TypeOf("bitbig");
  Value padded = Value::Text(ValueType::kBitbig, std::string("\x01\0\0", 3));
  EXPECT_EQ(type.Print(type.Check(padded)), "first");
}

TEST(LeafType, KeysMayGiveBitSetsAndIdentitiesByNumber) {
  EXPECT_EQ(TypeOf("bits32").ParseKey("3"),
            TypeOf("bits32").Parse("read write"));
  EXPECT_EQ(TypeOf("bits32").ParseKey("read"), TypeOf("bits32").Parse("read"));
  EXPECT_NE(ErrorOf([] { TypeOf("bits32").ParseKey("4"); }), "");
  Value fish = TypeOf("kin").Parse("zoo:fish");
  std::string numbers = std::to_string(fish.bits() >> 32) + ":" +
                        std::to_string(fish.bits() & 0xffffffff);
  EXPECT_EQ(TypeOf("kin").ParseKey(numbers), fish);
  EXPECT_EQ(TypeOf("kin").ParseKey("zoo:fish"), fish);
  EXPECT_NE(ErrorOf([] { TypeOf("kin").ParseKey("1:2"); }), "");
}

TEST(LeafType, IdentitiesCarryTheirNamespacesHash) {
  EXPECT_EQ(TypeOf("kin").Parse("zoo:fish").bits() >> 32, 1001u);
  // A module without a hash given has that of its namespace.
  EXPECT_EQ(TypeOf("kin").Parse("zoo-more:parrot").bits() >> 32,
            NameHash("urn:test:zoo-more"));
  const Module* more = Zoo().ModuleOfHash(NameHash("urn:test:zoo-more"));
  ASSERT_NE(more, nullptr);
  EXPECT_EQ(more->name, "zoo-more");
}

TEST(LeafType, ProgramsReadIdentitiesWithTheirModulesPrefix) {
  const Value parrot = TypeOf("kin").Parse("zoo-more:parrot");
  EXPECT_EQ(TypeOf("kin").PrintForPrograms(parrot), "zm:parrot");
  EXPECT_EQ(TypeOf("kin").ParseKey("zm:parrot"), parrot);
  EXPECT_NE(ErrorOf([] { TypeOf("kin").ParseKey("zm:fish"); }), "");
  EXPECT_EQ(TypeOf("enum").PrintForPrograms(TypeOf("enum").Parse("red")),
            "red");
}

TEST(LeafType, NamesEnums) {
  EXPECT_EQ(*TypeOf("enum").EnumName(-2), "dark-blue");
  EXPECT_EQ(TypeOf("enum").EnumName(2), nullptr);
  EXPECT_EQ(TypeOf("u8").EnumName(1), nullptr);
  EXPECT_EQ(*TypeOf("mixed").EnumName(0), "none");
}

TEST(LeafType, TellsItsValueTypeButForUnions) {
  EXPECT_EQ(TypeOf("gate").value_type(), ValueType::kIpv4);
  EXPECT_EQ(TypeOf("mixed").value_type(), std::nullopt);
}

}  // namespace
}  // namespace kit::store
