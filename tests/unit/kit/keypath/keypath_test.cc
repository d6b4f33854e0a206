#include "kit/confd/keypath/keypath.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kit::keypath {
namespace {

using std::string_literals::operator""s;

Step Plain(std::string name, std::string prefix = "") {
  Step step;
  step.prefix = std::move(prefix);
  step.name = std::move(name);
  return step;
}

Step Keyed(std::string name, std::vector<std::string> keys,
           std::string prefix = "") {
  Step step = Plain(std::move(name), std::move(prefix));
  step.selector = Selector::kKeys;
  step.keys = std::move(keys);
  return step;
}

Step Positioned(std::string name, uint64_t position) {
  Step step = Plain(std::move(name));
  step.selector = Selector::kPosition;
  step.position = position;
  return step;
}

// Every member of the path, so that failures show what differs.
std::string Dump(const Path& path) {
  std::string out = path.absolute ? "absolute" : "relative";
  for (const Step& step : path.steps) {
    out += " | " + step.prefix + ":" + step.name + " selector " +
           std::to_string(static_cast<int>(step.selector));
    for (const std::string& key : step.keys) out += " <" + key + ">";
    out += " position " + std::to_string(step.position);
  }
  return out;
}

testing::AssertionResult SamePath(const Path& actual, const Path& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << Dump(actual) << "\n  instead of\n"
                                     << Dump(expected);
}

// ---- Parse ---------------------------------------------------------------

struct AcceptCase {
  std::string text;
  Path path;
  std::string canonical;  // empty: the text itself
};

TEST(KeypathParse, AcceptsTheGrammar) {
  const AcceptCase cases[] = {
      {"/", {true, {}}, ""},
      {"/a", {true, {Plain("a")}}, ""},
      {"a", {false, {Plain("a")}}, ""},
      {"a/b", {false, {Plain("a"), Plain("b")}}, ""},
      {"/_a.b-c9", {true, {Plain("_a.b-c9")}}, ""},
      {"/p:a/q-1.2:b", {true, {Plain("a", "p"), Plain("b", "q-1.2")}}, ""},
      {"/config/interface/ipapp:l3{vlan10}/ipv4/address/ip",
       {true,
        {Plain("config"), Plain("interface"), Keyed("l3", {"vlan10"}, "ipapp"),
         Plain("ipv4"), Plain("address"), Plain("ip")}},
       ""},
      {"l{1 10.0.0.1 0}/leaf",
       {false, {Keyed("l", {"1", "10.0.0.1", "0"}), Plain("leaf")}},
       ""},
      {"/a{1}/b{2}", {true, {Keyed("a", {"1"}), Keyed("b", {"2"})}}, ""},
      {"/a{ 1   2  }", {true, {Keyed("a", {"1", "2"})}}, "/a{1 2}"},
      {"/a{10.0.0.0/8}", {true, {Keyed("a", {"10.0.0.0/8"})}}, ""},
      {"/a{x[1] fe80::1 p:n -5 *}",
       {true, {Keyed("a", {"x[1]", "fe80::1", "p:n", "-5", "*"})}},
       ""},
      {"/a{\xc3\xa4}", {true, {Keyed("a", {"\xc3\xa4"})}}, ""},
      {"/a{\"\"}", {true, {Keyed("a", {""})}}, ""},
      {"/a{\"a b\" 2}", {true, {Keyed("a", {"a b", "2"})}}, ""},
      {"/a{ \"a b\" }", {true, {Keyed("a", {"a b"})}}, "/a{\"a b\"}"},
      {"/a{\"plain\"}", {true, {Keyed("a", {"plain"})}}, "/a{plain}"},
      {R"(/a{"\"\\\n\t"})", {true, {Keyed("a", {"\"\\\n\t"})}}, ""},
      {"/a{\"{}\"}/b", {true, {Keyed("a", {"{}"}), Plain("b")}}, ""},
      {"/a{\"tab\there\"}",
       {true, {Keyed("a", {"tab\there"})}},
       R"(/a{"tab\there"})"},
      {"/a{\"\0\r\"}"s, {true, {Keyed("a", {"\0\r"s})}}, ""},
      {"/a[0]", {true, {Positioned("a", 0)}}, ""},
      {"a[12]/b", {false, {Positioned("a", 12), Plain("b")}}, ""},
      {"/a[007]", {true, {Positioned("a", 7)}}, "/a[7]"},
      {"/a[18446744073709551615]",
       {true, {Positioned("a", std::numeric_limits<uint64_t>::max())}},
       ""},
  };
  for (const AcceptCase& c : cases) {
    SCOPED_TRACE(c.text);
    Path path;
    ASSERT_NO_THROW(path = Parse(c.text));
    EXPECT_TRUE(SamePath(path, c.path));
    EXPECT_EQ(ToString(path), c.canonical.empty() ? c.text : c.canonical);
  }
}

struct RejectCase {
  std::string text;
  size_t offset;
  std::string expectation;
};

TEST(KeypathParse, RejectsNearMissesWithOffsetAndExpectation) {
  const std::string key_char =
      "a plain key character, as the key is not quoted";
  const std::string escape = "'\"', '\\', 'n' or 't' after the backslash";
  const std::string more = "'/', '{', '[' or the end";
  const RejectCase cases[] = {
      {"", 0, "a node name"},
      {" ", 0, "a node name"},
      {"//", 1, "a node name"},
      {"//a", 1, "a node name"},
      {"/a/", 3, "a node name"},
      {"a/", 2, "a node name"},
      {"/a//b", 3, "a node name"},
      {"/1a", 1, "a node name"},
      {"/-a", 1, "a node name"},
      {"/.a", 1, "a node name"},
      {"/.", 1, "a node name"},
      {"/{1}", 1, "a node name"},
      {"/[1]", 1, "a node name"},
      {"/:a", 1, "a node name"},
      {"/\xc3\xa4", 1, "a node name"},
      {"/a:", 3, "a node name after the prefix"},
      {"/a:1", 3, "a node name after the prefix"},
      {"/a::b", 3, "a node name after the prefix"},
      {"/a:{1}", 3, "a node name after the prefix"},
      {"/a:b:c", 4, more},
      {"/a b", 2, more},
      {"/a ", 2, more},
      {"/a\0"s, 2, more},
      {"/a}", 2, more},
      {"/a]", 2, more},
      {"/a%d", 2, more},
      {"/a{", 3, "a key"},
      {"/a{}", 3, "a key"},
      {"/a{  }", 5, "a key"},
      {"/a{ ", 4, "a key"},
      {"/a/b{1", 6, "'}'"},
      {"/a{1 ", 5, "'}'"},
      {"/a{\"x\"", 6, "'}'"},
      {"/a{1}b", 5, "'/' or the end"},
      {"/a{1} ", 5, "'/' or the end"},
      {"/a{1}}", 5, "'/' or the end"},
      {"/a{1}{2}", 5, "'/' or the end"},
      {"/a{1}[2]", 5, "'/' or the end"},
      {"/a[1]{2}", 5, "'/' or the end"},
      {"/a[1][2]", 5, "'/' or the end"},
      {"/a[1]b", 5, "'/' or the end"},
      {"/a{1}/", 6, "a node name"},
      {"/a{{1}}", 3, key_char},
      {"/a{1{2}}", 4, key_char},
      {"/a{b\"c\"}", 4, key_char},
      {"/a{b\\c}", 4, key_char},
      {"/a{1\t2}", 4, key_char},
      {"/a{\n}", 3, key_char},
      {"/a{1\x7f}", 4, key_char},
      {"/a{\"", 4, "a closing '\"'"},
      {"/a{\"b}", 6, "a closing '\"'"},
      {"/a{\"b\\\"}", 8, "a closing '\"'"},
      {"/a{\"b\\", 6, escape},
      {"/a{\"b\\r\"}", 6, escape},
      {"/a{\"b\\N\"}", 6, escape},
      {"/a{\"b\"c}", 6, "a blank or '}'"},
      {"/a{\"b\"\"c\"}", 6, "a blank or '}'"},
      {"/a[", 3, "a position"},
      {"/a[]", 3, "a position"},
      {"/a[-1]", 3, "a position"},
      {"/a[+1]", 3, "a position"},
      {"/a[ 1]", 3, "a position"},
      {"/a[x]", 3, "a position"},
      {"/a[1 ]", 4, "']'"},
      {"/a[1x]", 4, "']'"},
      {"/a[0x1]", 4, "']'"},
      {"/a[1.0]", 4, "']'"},
      {"/a[1}", 4, "']'"},
      {"/a[1", 4, "']'"},
      {"/a[18446744073709551616]", 3, "a position below 2^64"},
  };
  for (const RejectCase& c : cases) {
    SCOPED_TRACE(c.text);
    try {
      const Path path = Parse(c.text);
      ADD_FAILURE() << "accepted as " << Dump(path);
    } catch (const SyntaxError& error) {
      EXPECT_EQ(error.offset(), c.offset);
      EXPECT_EQ(error.expectation(), c.expectation);
    }
  }
}

TEST(KeypathParse, DoesNotReadBeyondItsView) {
  const std::string_view text = "/a[123]/b{45}";
  EXPECT_TRUE(
      SamePath(Parse(text.substr(0, 7)), {true, {Positioned("a", 123)}}));
  EXPECT_THROW(Parse(text.substr(0, 5)), SyntaxError);
  EXPECT_THROW(Parse(text.substr(0, 12)), SyntaxError);
}

TEST(KeypathSyntaxError, SaysWhatWasExpectedAndWhere) {
  EXPECT_STREQ(SyntaxError("/a/b{1", 6, "'}'").what(),
               "expected '}' at offset 6 in \"/a/b{1\"");
}

TEST(KeypathSyntaxError, ShowsTheSurroundingsOfTheOffsetInALongText) {
  const std::string text =
      std::string(1000, 'a') + "HERE" + std::string(1000, 'b');
  const std::string what = SyntaxError(text, 1000, "an end").what();
  EXPECT_LT(what.size(), 300u);
  EXPECT_NE(what.find("at offset 1000 in \"...a"), std::string::npos) << what;
  EXPECT_NE(what.find("aHEREb"), std::string::npos) << what;
  EXPECT_NE(what.find("b...\""), std::string::npos) << what;

  const std::string at_end = SyntaxError(text, text.size(), "more").what();
  EXPECT_EQ(at_end.substr(at_end.size() - 3), "bb\"");
}

// ---- ToString and round trips --------------------------------------------

TEST(KeypathToString, WritesEverySelector) {
  EXPECT_EQ(ToString({true,
                      {Plain("a", "p"), Keyed("b", {"1", "x y", ""}),
                       Positioned("c", 3)}}),
            "/p:a/b{1 \"x y\" \"\"}/c[3]");
  EXPECT_EQ(ToString({false, {Plain("a"), Plain("b")}}), "a/b");
  EXPECT_EQ(ToString({true, {}}), "/");
}

TEST(KeypathEquality, LooksAtEveryMember) {
  const Path base = {true, {Keyed("a", {"1"}, "p")}};
  EXPECT_EQ(base == base, true);
  std::vector<Path> others(6, base);
  others[0].absolute = false;
  others[1].steps[0].prefix = "q";
  others[2].steps[0].name = "b";
  others[3].steps[0].keys = {"2"};
  others[4].steps.push_back(Plain("b"));
  others[5].steps[0].selector = Selector::kPosition;
  for (const Path& other : others) EXPECT_TRUE(other != base) << Dump(other);
  EXPECT_TRUE(Positioned("a", 1) != Positioned("a", 2));
}

class RandomPaths {
 public:
  Path Next() {
    Path path;
    path.absolute = Below(2) == 0;
    const size_t steps = Below(6) + (path.absolute ? 0 : 1);
    for (size_t i = 0; i < steps; ++i) path.steps.push_back(NextStep());
    return path;
  }

  std::string NextText(std::string_view alphabet, size_t max_size) {
    std::string text(Below(max_size + 1), ' ');
    for (char& c : text) c = Pick(alphabet);
    return text;
  }

  size_t Below(size_t bound) { return random_() % bound; }

 private:
  char Pick(std::string_view alphabet) {
    return alphabet[Below(alphabet.size())];
  }

  std::string NextName() {
    return Pick("abXYZ_") + NextText("abXYZ_019-.", 20);
  }

  // Half of the keys are simple, half of them hold any bytes at all.
  std::string NextKey() {
    if (Below(2) == 0) return NextText("abc019./:[]-", 20);
    std::string key(Below(8), ' ');
    for (char& c : key) {
      c = Below(2) == 0 ? Pick("\"\\{} \n\t") : static_cast<char>(Below(256));
    }
    return key;
  }

  Step NextStep() {
    const std::string prefix = Below(3) == 0 ? NextName() : "";
    switch (Below(3)) {
      case 0: {
        std::vector<std::string> keys(1 + Below(MAXKEYLEN));
        for (std::string& key : keys) key = NextKey();
        return Keyed(NextName(), std::move(keys), prefix);
      }
      case 1:
        return Positioned(NextName(), random_() >> Below(64));
      default:
        return Plain(NextName(), prefix);
    }
  }

  std::mt19937_64 random_{20240607};
};

TEST(KeypathRoundTrip, AnyPathSurvivesItsText) {
  RandomPaths random;
  for (int i = 0; i < 20000; ++i) {
    const Path path = random.Next();
    const std::string text = ToString(path);
    Path parsed;
    ASSERT_NO_THROW(parsed = Parse(text)) << text;
    ASSERT_TRUE(SamePath(parsed, path)) << text;
    ASSERT_EQ(ToString(parsed), text);
  }
}

TEST(KeypathRoundTrip, AnyTextIsRejectedInsideOrSurvives) {
  RandomPaths random;
  int accepted = 0;
  int rejected = 0;
  for (int i = 0; i < 50000; ++i) {
    // Damaged good paths and soups of the grammar's own characters.
    std::string text = random.NextText("a1/{}[]: \"\\n\t", 8);
    if (i % 2 == 0) {
      text = ToString(random.Next());
      if (!text.empty()) text.erase(random.Below(text.size()), 1);
    }
    try {
      const Path path = Parse(text);
      ++accepted;
      ASSERT_TRUE(SamePath(Parse(ToString(path)), path)) << text;
    } catch (const SyntaxError& error) {
      ++rejected;
      ASSERT_LE(error.offset(), text.size()) << text;
      ASSERT_FALSE(error.expectation().empty()) << text;
    }
  }
  // Else the property was hardly put to the test.
  EXPECT_GT(accepted, 5000);
  EXPECT_GT(rejected, 5000);
}

TEST(KeypathRoundTrip, KeysMayBeHuge) {
  constexpr size_t kMegabyte = 1 << 20;
  for (const std::string& key :
       {std::string(kMegabyte, 'k'), std::string(kMegabyte, '"')}) {
    const Path path = {true, {Keyed("a", {key, "2"}), Plain("b")}};
    EXPECT_TRUE(Parse(ToString(path)) == path);
  }
  const std::string unclosed = "/a{" + std::string(kMegabyte, 'k');
  try {
    Parse(unclosed);
    ADD_FAILURE() << "accepted";
  } catch (const SyntaxError& error) {
    EXPECT_EQ(error.offset(), unclosed.size());
    EXPECT_LT(std::strlen(error.what()), 300u);
  }
}

TEST(KeypathQuoteKey, QuotesOnlyWhereNeeded) {
  const struct {
    std::string key;
    std::string quoted;
  } cases[] = {
      {"a", "a"},
      {"10.0.0.0/8", "10.0.0.0/8"},
      {"a[1]:b'*%", "a[1]:b'*%"},
      {"\xc3\xa4", "\xc3\xa4"},
      {"", R"("")"},
      {" ", R"(" ")"},
      {"a b", R"("a b")"},
      {"{", R"("{")"},
      {"a}", R"("a}")"},
      {"\"", R"("\"")"},
      {"a\"b", R"("a\"b")"},
      {"\\", R"("\\")"},
      {"\n", R"("\n")"},
      {"\t", R"("\t")"},
      {"\r", "\"\r\""},
      {"\x7f", "\"\x7f\""},
      {"\0"s, "\"\0\""s},
  };
  for (const auto& c : cases) EXPECT_EQ(QuoteKey(c.key), c.quoted);
}

// ---- ValueToKey ----------------------------------------------------------

confd_value_t Uint32(uint32_t number) {
  confd_value_t value = {};
  CONFD_SET_UINT32(&value, number);
  return value;
}

confd_value_t Enum(int32_t number) {
  confd_value_t value = {};
  CONFD_SET_ENUM_VALUE(&value, number);
  return value;
}

confd_value_t Str(const char* text) {
  confd_value_t value = {};
  CONFD_SET_STR(&value, text);
  return value;
}

confd_value_t Bytes(confd_vtype type, std::string_view bytes) {
  confd_value_t value = {};
  CONFD_SET_BUF(&value, bytes.data(), bytes.size());
  value.type = type;
  return value;
}

in_addr Ipv4(const char* text) {
  in_addr address = {};
  EXPECT_EQ(inet_pton(AF_INET, text, &address), 1) << text;
  return address;
}

in6_addr Ipv6(const char* text) {
  in6_addr address = {};
  EXPECT_EQ(inet_pton(AF_INET6, text, &address), 1) << text;
  return address;
}

// The key form of a value that `set` fills in.
template <typename Set>
std::string KeyOf(Set set) {
  confd_value_t value = {};
  set(&value);
  return ValueToKey(value);
}

TEST(KeypathValueToKey, WritesIntegersInDecimal) {
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

TEST(KeypathValueToKey, WritesBooleansAndEmpty) {
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 1); }), "true");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 2); }), "true");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_BOOL(v, 0); }), "false");
  EXPECT_EQ(KeyOf([](auto* v) { CONFD_SET_EMPTY(v); }), "\"\"");
}

TEST(KeypathValueToKey, WritesAddressesAndPrefixes) {
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

TEST(KeypathValueToKey, QuotesStringsWhereNeeded) {
  EXPECT_EQ(ValueToKey(Str("global")), "global");
  EXPECT_EQ(ValueToKey(Str("")), "\"\"");
  EXPECT_EQ(ValueToKey(Str("a \"b\"")), R"("a \"b\"")");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, "vlan/10")), "vlan/10");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, "a{b}")), "\"a{b}\"");
  // The size counts, not a terminator.
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, std::string_view("abcdef", 3))), "abc");
  EXPECT_EQ(ValueToKey(Bytes(C_BUF, std::string_view())), "\"\"");
}

TEST(KeypathValueToKey, WritesBytesAsBase64OrHex) {
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

TEST(KeypathValueToKey, WritesDecimal64WithItsFractionDigits) {
  EXPECT_EQ(Decimal64Key(150, 2), "1.50");
  EXPECT_EQ(Decimal64Key(-5, 2), "-0.05");
  EXPECT_EQ(Decimal64Key(0, 1), "0.0");
  EXPECT_EQ(Decimal64Key(12, 2), "0.12");
  EXPECT_EQ(Decimal64Key(INT64_MIN, 18), "-9.223372036854775808");
  EXPECT_EQ(Decimal64Key(7, 0), "7");
  EXPECT_THROW(Decimal64Key(7, 19), std::invalid_argument);
}

TEST(KeypathValueToKey, WritesDoublesThatReadBackTheSame) {
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

TEST(KeypathValueToKey, WritesDatesAndTimes) {
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
                  v, (confd_datetime{2024, 12, 31, 23, 5, 9, 70, -3, -30}));
            }),
            "2024-12-31T23:05:09.000070-03:30");
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_TIME(v, (confd_time{1, 2, 3, 0, 5, 45}));
            }),
            "01:02:03+05:45");
}

TEST(KeypathValueToKey, WritesDurations) {
  const auto key = [](confd_duration duration) {
    return KeyOf([&](auto* v) { CONFD_SET_DURATION(v, duration); });
  };
  EXPECT_EQ(key({}), "PT0S");
  EXPECT_EQ(key({1, 2, 3, 4, 5, 6, 7}), "P1Y2M3DT4H5M6.000007S");
  EXPECT_EQ(key({0, 0, 0, 0, 0, 0, 500000}), "PT0.500000S");
  EXPECT_EQ(key({0, 1, 0, 0, 0, 0, 0}), "P1M");
  EXPECT_EQ(key({0, 0, 0, 0, 1, 0, 0}), "PT1M");
}

TEST(KeypathValueToKey, WritesIdentitiesAndQualifiedNames) {
  EXPECT_EQ(KeyOf([](auto* v) {
              CONFD_SET_IDENTITYREF(v, (confd_identityref{448085882, 17}));
            }),
            "448085882:17");
  unsigned char prefix[] = {'p'};
  unsigned char name[] = {'n', 'm'};
  EXPECT_EQ(KeyOf([&](auto* v) {
              CONFD_SET_QNAME(v, (confd_qname{{1, prefix}, {2, name}}));
            }),
            "p:nm");
  EXPECT_EQ(KeyOf([&](auto* v) {
              CONFD_SET_QNAME(v, (confd_qname{{0, nullptr}, {2, name}}));
            }),
            "nm");
}

TEST(KeypathValueToKey, RejectsTypesThatCannotBeKeys) {
  for (const confd_vtype type :
       {C_NOEXISTS, C_XMLTAG, C_SYMBOL, C_LIST, C_XMLBEGIN, C_XMLEND,
        C_OBJECTREF, C_UNION, C_PTR, C_CDBBEGIN, C_OID, C_DEFAULT,
        C_XMLBEGINDEL, C_BITBIG, C_XMLMOVEFIRST, C_XMLMOVEAFTER, C_MAXTYPE}) {
    confd_value_t value = {};
    value.type = type;
    EXPECT_THROW(ValueToKey(value), std::invalid_argument) << type;
  }
}

TEST(KeypathValueToKey, RejectsMalformedValues) {
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

// ---- Format --------------------------------------------------------------

std::string FormatNamed(const EnumNamer& namer, const char* fmt, ...) {
  struct Arguments {
    va_list list;
    ~Arguments() { va_end(list); }
  } arguments;
  va_start(arguments.list, fmt);
  return Format(fmt, arguments.list, namer);
}

template <typename... Args>
std::string Fmt(const char* fmt, Args... args) {
  return FormatNamed({}, fmt, args...);
}

TEST(KeypathFormat, InsertsNumbersAndRawText) {
  EXPECT_EQ(Fmt("/a/b"), "/a/b");
  EXPECT_EQ(Fmt(""), "");
  EXPECT_EQ(Fmt("%s{%u %s 0}/%s", "/m/list", 7u, "10.0.0.1", "leaf"),
            "/m/list{7 10.0.0.1 0}/leaf");
  EXPECT_EQ(Fmt("%s[%d]/%s", "/internal/l", 3, "x"), "/internal/l[3]/x");
  EXPECT_EQ(Fmt("/b{%d ipv4 mplsBgpVpn}", 1), "/b{1 ipv4 mplsBgpVpn}");
  EXPECT_EQ(Fmt("%s/c", "/a/b{1 \"x y\"}"), "/a/b{1 \"x y\"}/c");
  EXPECT_EQ(Fmt("{%s}", "a b"), "{a b}");
  EXPECT_EQ(Fmt("%c%c", 'x', 'y'), "xy");
  EXPECT_EQ(Fmt("100%%/%i", 5), "100%/5");
}

TEST(KeypathFormat, HonoursLengthModifiers) {
  EXPECT_EQ(Fmt("%d %u", INT_MIN, UINT_MAX), "-2147483648 4294967295");
  EXPECT_EQ(Fmt("%ld %lu", LONG_MIN, ULONG_MAX),
            "-9223372036854775808 18446744073709551615");
  EXPECT_EQ(Fmt("%lld %llu %lli", -1ll, ULLONG_MAX, 2ll),
            "-1 18446744073709551615 2");
  EXPECT_EQ(Fmt("%hhd %hhu", 257, 257), "1 1");
  EXPECT_EQ(Fmt("%hhd %hd", 255, 65535), "-1 -1");
  EXPECT_EQ(Fmt("%hu", 65537), "1");
  EXPECT_EQ(Fmt("%zu %zd", SIZE_MAX, ssize_t{-1}), "18446744073709551615 -1");
  EXPECT_EQ(Fmt("%jd %ju %td", INTMAX_MIN, UINTMAX_MAX, ptrdiff_t{-7}),
            "-9223372036854775808 18446744073709551615 -7");
}

TEST(KeypathFormat, HonoursFlagsWidthAndPrecision) {
  EXPECT_EQ(Fmt("%05d|%-4u|%+d|% d", 42, 7u, 1, 2), "00042|7   |+1| 2");
  EXPECT_EQ(Fmt("%.3d|%6.3d", 5, -5), "005|  -005");
  EXPECT_EQ(Fmt("%*d|%-*d|%*d", 4, 1, 3, 2, -3, 3), "   1|2  |3  ");
  EXPECT_EQ(Fmt("%.*s|%.2s|%5s|%-3s|%.s", 3, "abcdef", "xyz", "r", "l", "no"),
            "abc|xy|    r|l  |");
  EXPECT_EQ(Fmt("%.*s", -1, "all"), "all");
  EXPECT_EQ(Fmt("%3c|", 'x'), "  x|");
  EXPECT_EQ(Fmt("%08lu", 123ul), "00000123");
  EXPECT_EQ(Fmt("%2000d", 1).size(), 2000u);
}

TEST(KeypathFormat, WritesIpv4AddressesByValue) {
  EXPECT_EQ(Fmt("/l{%ip4 %i %ip4}", Ipv4("10.0.0.1"), 9, Ipv4("1.2.3.4")),
            "/l{10.0.0.1 9 1.2.3.4}");
  EXPECT_EQ(Fmt("%ip", 5), "5p");
  EXPECT_EQ(Fmt("%dp4", 5), "5p4");
}

TEST(KeypathFormat, WritesValuesInKeyForm) {
  const confd_value_t one = Uint32(1);
  const confd_value_t blank = Str("a b");
  confd_value_t address = {};
  CONFD_SET_IPV4(&address, Ipv4("10.0.0.9"));
  EXPECT_EQ(Fmt("/l{%x %x %x}/%s", &one, &address, &blank, "leaf"),
            "/l{1 10.0.0.9 \"a b\"}/leaf");
}

TEST(KeypathFormat, WritesArraysOfKeys) {
  const confd_value_t keys[] = {Uint32(1), Str("a b"), Uint32(3)};
  EXPECT_EQ(Fmt("/l{%*x}/m{%*x %d}", 3, keys, 1, keys, 4),
            "/l{1 \"a b\" 3}/m{1 4}");
  EXPECT_EQ(Fmt("/l{%*x}", 0, keys), "/l{}");
}

TEST(KeypathFormat, TakesArgumentsInOrderBeyondTheRegisters) {
  const confd_value_t value = Uint32(6);
  EXPECT_EQ(Fmt("%d %d %s %u %ip4 %x %llu %c %*x %hhu", 1, 2, "3", 4u,
                Ipv4("0.0.0.5"), &value, 7ull, '8', 1, &value, 9),
            "1 2 3 4 0.0.0.5 6 7 8 6 9");
}

TEST(KeypathFormat, LeavesTheArgumentsToTheCaller) {
  const auto twice = [](const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const std::string first = Format(fmt, args, {});
    const std::string second = Format(fmt, args, {});
    va_end(args);
    return first + "|" + second;
  };
  EXPECT_EQ(twice("%d %s", 1, "a"), "1 a|1 a");
}

TEST(KeypathFormat, FormatsTextOfAnyLength) {
  const std::string key(1 << 20, 'k');
  const confd_value_t value = Bytes(C_BUF, key);
  EXPECT_EQ(Fmt("/a{%s %x}/b", key.c_str(), &value),
            "/a{" + key + " " + key + "}/b");
}

// Records its calls as "path#index=number".
struct RecordingNamer {
  std::vector<std::string> calls;

  // Null: knows no name.
  EnumNamer Namer(const char* name) {
    return [this, name](std::string_view path, size_t index,
                        int32_t number) -> std::optional<std::string> {
      calls.push_back(std::string(path) + "#" + std::to_string(index) + "=" +
                      std::to_string(number));
      if (name == nullptr) return std::nullopt;
      return name;
    };
  }
};

TEST(KeypathFormat, AsksForEnumNamesByListAndKey) {
  const confd_value_t one = Enum(1);
  const confd_value_t mixed[] = {Uint32(5), Enum(2), Enum(3)};
  const struct {
    std::string text;
    std::string expected;
    std::vector<std::string> calls;
  } cases[] = {
      {"/a/b{", "/a/b{on}", {"/a/b#0=1"}},
      {"/a/b{ ", "/a/b{ on}", {"/a/b#0=1"}},
      {"/a/b{1 ", "/a/b{1 on}", {"/a/b#1=1"}},
      {"/a/b{1  x ", "/a/b{1  x on}", {"/a/b#2=1"}},
      {"/a{1}/p:b{", "/a{1}/p:b{on}", {"/a{1}/p:b#0=1"}},
      {"/a{\"x } {y\" ", "/a{\"x } {y\" on}", {"/a#1=1"}},
      {"/a{\"\\\" {\" z ", "/a{\"\\\" {\" z on}", {"/a#2=1"}},
      {"/a{\"\\\\\" ", "/a{\"\\\\\" on}", {"/a#1=1"}},
      {"b[2]/c{", "b[2]/c{on}", {"b[2]/c#0=1"}},
      // Text right before the directive belongs to the same key.
      {"/a{1 x-", "/a{1 x-on}", {"/a#1=1"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    RecordingNamer recorder;
    EXPECT_EQ(FormatNamed(recorder.Namer("on"), "%s%x}", c.text.c_str(), &one),
              c.expected);
    EXPECT_EQ(recorder.calls, c.calls);
  }
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer("on"), "/l{%*x %x}/m", 3, mixed, &one),
            "/l{5 on on on}/m");
  EXPECT_EQ(recorder.calls,
            (std::vector<std::string>{"/l#1=2", "/l#2=3", "/l#3=1"}));
}

TEST(KeypathFormat, WritesEnumNumbersWithoutAName) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer(nullptr), "/a{%x}", &two), "/a{2}");
  EXPECT_EQ(recorder.calls.size(), 1u);
  EXPECT_EQ(Fmt("/a{%x}", &two), "/a{2}");
}

TEST(KeypathFormat, AsksForNoEnumNamesOutsideBraces) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer("on"), "/a{1}/b[%x]", &two),
            "/a{1}/b[2]");
  EXPECT_TRUE(recorder.calls.empty());
}

TEST(KeypathFormat, QuotesEnumNamesWhereNeeded) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer("not set"), "/a{%x}", &two),
            "/a{\"not set\"}");
}

TEST(KeypathFormat, RejectsUnknownDirectivesAtTheirPercentSign) {
  // None of these may fetch an argument before it is rejected.
  const struct {
    const char* fmt;
    size_t offset;
  } cases[] = {
      {"%", 0},        {"/a{%", 3},  {"/a{%}", 3},
      {"/a%%{%y}", 5}, {"%f", 0},    {"%p", 0},
      {"%n", 0},       {"%X", 0},    {"%o", 0},
      {"%S", 0},       {"%lx", 0},   {"%5x", 0},
      {"%-x", 0},      {"%.2x", 0},  {"%-*x", 0},
      {"%*.2x", 0},    {"%*lx", 0},  {"%ls", 0},
      {"%lc", 0},      {"%Ld", 0},   {"%#d", 0},
      {"%5ip4", 0},    {"%lip4", 0}, {"%5%", 0},
      {"%l", 0},       {"%5", 0},    {"%.", 0},
      {"%hhhd", 0},    {"%1$d", 0},  {"%'d", 0},
      {"% ", 0},       {"%.-1d", 0}, {"%99999999999d", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fmt);
    try {
      ADD_FAILURE() << "formatted as " << Fmt(c.fmt);
    } catch (const SyntaxError& error) {
      EXPECT_EQ(error.offset(), c.offset);
    }
  }
}

TEST(KeypathFormat, RejectsNullPointers) {
  const char* const no_text = nullptr;
  const confd_value_t* const no_value = nullptr;
  EXPECT_THROW(Fmt(nullptr), SyntaxError);
  EXPECT_THROW(Fmt("/a{%s}", no_text), SyntaxError);
  EXPECT_THROW(Fmt("/a{%5s}", no_text), SyntaxError);
  EXPECT_THROW(Fmt("/a{%x}", no_value), SyntaxError);
  EXPECT_THROW(Fmt("/a{%*x}", 1, no_value), SyntaxError);
}

TEST(KeypathFormat, RejectsValuesThatCannotBeKeys) {
  const confd_value_t one = Uint32(1);
  confd_value_t absent = {};
  CONFD_SET_NOEXISTS(&absent);
  try {
    ADD_FAILURE() << Fmt("/a{%x %x}", &one, &absent);
  } catch (const SyntaxError& error) {
    EXPECT_EQ(error.offset(), 6u);
    EXPECT_NE(std::string(error.what()).find("type 1"), std::string::npos)
        << error.what();
  }
  const confd_value_t keys[] = {one, absent};
  EXPECT_THROW(Fmt("/a{%*x}", 2, keys), SyntaxError);
  EXPECT_THROW(Fmt("/a{%*x}", -1, keys), SyntaxError);
}

}  // namespace
}  // namespace kit::keypath
