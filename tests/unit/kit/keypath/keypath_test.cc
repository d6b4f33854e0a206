#include "kit/confd/keypath/keypath.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
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
        std::vector<std::string> keys(1 + Below(9));
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

}  // namespace
}  // namespace kit::keypath
