#include "kit/confd/api/path_format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/keypath/keypath.h"
#include "tests/support/c_values.h"

namespace kit::api {
namespace {

using keypath::SyntaxError;

struct Arguments {
  va_list list;
  ~Arguments() { va_end(list); }
};

std::string FormatNamed(const Names& names, const char* fmt, ...) {
  Arguments arguments;
  va_start(arguments.list, fmt);
  return FormatKeyPath(fmt, arguments.list, names);
}

std::string FormatNamedText(const Names& names, const char* fmt, ...) {
  Arguments arguments;
  va_start(arguments.list, fmt);
  return FormatText(fmt, arguments.list, names);
}

class NoNames : public Names {
  std::optional<std::string> KeyText(std::string_view, size_t,
                                     const confd_value_t&) const override {
    return std::nullopt;
  }
  std::optional<std::string> NodeName(std::string_view,
                                      const xml_tag&) const override {
    return std::nullopt;
  }
};

template <typename... Args>
std::string Fmt(const char* fmt, Args... args) {
  return FormatNamed(NoNames(), fmt, args...);
}

template <typename... Args>
std::string Text(const char* fmt, Args... args) {
  return FormatNamedText(NoNames(), fmt, args...);
}

TEST(PathFormat, InsertsNumbersAndRawText) {
  EXPECT_EQ(Fmt("/a/b"), "/a/b");
  EXPECT_EQ(Fmt(""), "");
  EXPECT_EQ(Fmt("%s{%u %s 0}/%s", "/m/list", 7u, "10.0.0.1", "leaf"),
            "/m/list{7 10.0.0.1 0}/leaf");
  EXPECT_EQ(Fmt("%s[%d]/%s", "/internal/l", 3, "x"), "/internal/l[3]/x");
  EXPECT_EQ(Fmt("/b{%d ipv4 mplsBgpVpn}", 1), "/b{1 ipv4 mplsBgpVpn}");
  EXPECT_EQ(Fmt("%s/c", "/a/b{1 \"x y\"}"), "/a/b{1 \"x y\"}/c");
  EXPECT_EQ(Fmt("{%s}", "a b"), "{a b}");
  EXPECT_EQ(Fmt("%d %u", INT_MIN, UINT_MAX), "-2147483648 4294967295");
}

TEST(PathFormat, WritesAddressesByPointer) {
  const in_addr one = Ipv4("10.0.0.1");
  const in_addr two = Ipv4("1.2.3.4");
  EXPECT_EQ(Fmt("/l{%ip4 %d %ip4}", &one, 9, &two), "/l{10.0.0.1 9 1.2.3.4}");
  const in6_addr six = Ipv6("2001:DB8:0::1");
  EXPECT_EQ(Fmt("/l{%ip6 %u}", &six, 9u), "/l{2001:db8::1 9}");
  EXPECT_EQ(Fmt("%dp4", 5), "5p4");
}

TEST(PathFormat, WritesValuesInKeyForm) {
  const confd_value_t one = Uint32(1);
  const confd_value_t blank = Str("a b");
  confd_value_t address = {};
  CONFD_SET_IPV4(&address, Ipv4("10.0.0.9"));
  EXPECT_EQ(Fmt("/l{%x %x %x}/%s", &one, &address, &blank, "leaf"),
            "/l{1 10.0.0.9 \"a b\"}/leaf");
}

TEST(PathFormat, WritesArraysOfKeys) {
  const confd_value_t keys[] = {Uint32(1), Str("a b"), Uint32(3)};
  EXPECT_EQ(Fmt("/l{%*x}/m{%*x %d}", 3, keys, 1, keys, 4),
            "/l{1 \"a b\" 3}/m{1 4}");
  EXPECT_EQ(Fmt("/l{%*x}", 0, keys), "/l{}");
}

TEST(PathFormat, TakesArgumentsInOrderBeyondTheRegisters) {
  const confd_value_t value = Uint32(6);
  const in_addr address = Ipv4("0.0.0.5");
  EXPECT_EQ(Fmt("%d %d %s %u %ip4 %x %s %u %*x %d", 1, 2, "3", 4u, &address,
                &value, "7", 8u, 1, &value, 9),
            "1 2 3 4 0.0.0.5 6 7 8 6 9");
}

TEST(PathFormat, LeavesTheArgumentsToTheCaller) {
  const auto twice = [](const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const std::string first = FormatKeyPath(fmt, args, NoNames());
    const std::string second = FormatKeyPath(fmt, args, NoNames());
    va_end(args);
    return first + "|" + second;
  };
  EXPECT_EQ(twice("%d %s", 1, "a"), "1 a|1 a");
}

TEST(PathFormat, FormatsTextOfAnyLength) {
  const std::string key(1 << 20, 'k');
  const confd_value_t value = Bytes(C_BUF, key);
  EXPECT_EQ(Fmt("/a{%s %x}/b", key.c_str(), &value),
            "/a{" + key + " " + key + "}/b");
}

// Records what it is asked as "path#index=number".
class Recorder : public Names {
 public:
  // Null: knows no name.
  explicit Recorder(const char* name) : name_(name) {}

  std::optional<std::string> KeyText(
      std::string_view path, size_t index,
      const confd_value_t& value) const override {
    calls.push_back(std::string(path) + "#" + std::to_string(index) + "=" +
                    std::to_string(value.val.enumvalue));
    if (name_ == nullptr) return std::nullopt;
    return name_;
  }

  std::optional<std::string> NodeName(std::string_view path,
                                      const xml_tag& tag) const override {
    calls.push_back(std::string(path) + "/" + std::to_string(tag.tag));
    return "node" + std::to_string(tag.tag);
  }

  mutable std::vector<std::string> calls;

 private:
  const char* name_;
};

TEST(PathFormat, AsksForEnumNamesByListAndKey) {
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
    const Recorder recorder("on");
    EXPECT_EQ(FormatNamed(recorder, "%s%x}", c.text.c_str(), &one), c.expected);
    EXPECT_EQ(recorder.calls, c.calls);
  }
  const Recorder recorder("on");
  EXPECT_EQ(FormatNamed(recorder, "/l{%*x %x}/m", 3, mixed, &one),
            "/l{5 on on on}/m");
  EXPECT_EQ(recorder.calls,
            (std::vector<std::string>{"/l#1=2", "/l#2=3", "/l#3=1"}));
}

TEST(PathFormat, WritesEnumNumbersWithoutAName) {
  const confd_value_t two = Enum(2);
  const Recorder recorder(nullptr);
  EXPECT_EQ(FormatNamed(recorder, "/a{%x}", &two), "/a{2}");
  EXPECT_EQ(recorder.calls.size(), 1u);
  EXPECT_EQ(Fmt("/a{%x}", &two), "/a{2}");
}

TEST(PathFormat, AsksForNoEnumNamesOutsideBraces) {
  const confd_value_t two = Enum(2);
  const Recorder recorder("on");
  EXPECT_EQ(FormatNamed(recorder, "/a{1}/b[%x]", &two), "/a{1}/b[2]");
  EXPECT_TRUE(recorder.calls.empty());
}

TEST(PathFormat, QuotesEnumNamesWhereNeeded) {
  const confd_value_t two = Enum(2);
  const Recorder recorder("not set");
  EXPECT_EQ(FormatNamed(recorder, "/a{%x}", &two), "/a{\"not set\"}");
}

// The place of a format is remembered with what stood there.
TEST(PathFormat, ReadsAFormatAgainThatChangedInItsPlace) {
  char fmt[] = "/a/%u";
  EXPECT_EQ(Fmt(fmt, 7u), "/a/7");
  fmt[1] = 'b';
  EXPECT_EQ(Fmt(fmt, 7u), "/b/7");
  fmt[3] = '\0';
  EXPECT_EQ(Fmt(fmt), "/b/");
}

PathDraft Draft(bool write_values, const char* fmt, ...) {
  PathDraft draft;
  va_list args;
  va_start(args, fmt);
  DraftKeyPath(fmt, args, NoNames(), write_values, draft);
  va_end(args);
  return draft;
}

TEST(PathFormat, ADraftSaysWhereItsValuesStand) {
  const confd_value_t keys[] = {Uint32(7), Uint32(12)};
  for (const bool written : {true, false}) {
    const PathDraft draft = Draft(written, "%s{%*x}/%s", "/l", 2, keys, "leaf");
    EXPECT_EQ(draft.text, written ? "/l{7 12}/leaf" : "/l{? ?}/leaf");
    ASSERT_EQ(draft.values.size(), 2u);
    EXPECT_EQ(draft.values[0].begin, 3u);
    EXPECT_EQ(draft.values[0].end, 4u);
    EXPECT_EQ(draft.values[1].begin, 5u);
    EXPECT_EQ(draft.values[1].end, written ? 7u : 6u);
    EXPECT_EQ(draft.values[1].value, &keys[1]);
  }
}

TEST(PathFormat, RejectsUnknownDirectivesAtTheirPercentSign) {
  // None of these may fetch an argument before it is rejected.
  const struct {
    const char* fmt;
    size_t offset;
  } cases[] = {
      {"%", 0},     {"/a{%", 3}, {"/a{%}", 3}, {"/a{%y}", 3}, {"%f", 0},
      {"%p", 0},    {"%n", 0},   {"%X", 0},    {"%o", 0},     {"%S", 0},
      {"%i", 0},    {"%ip", 0},  {"%ip5", 0},  {"%c", 0},     {"%%", 0},
      {"%lx", 0},   {"%5x", 0},  {"%-x", 0},   {"%.2x", 0},   {"%-*x", 0},
      {"%*.2x", 0}, {"%*lx", 0}, {"%*d", 0},   {"%*s", 0},    {"%ld", 0},
      {"%lu", 0},   {"%llu", 0}, {"%hhd", 0},  {"%zu", 0},    {"%#d", 0},
      {"%05d", 0},  {"%-4u", 0}, {"%.2s", 0},  {"%5ip4", 0},  {"%lip4", 0},
      {"%5%", 0},   {"%l", 0},   {"%5", 0},    {"%.", 0},     {"%1$d", 0},
      {"%'d", 0},   {"% ", 0},   {"% d", 0},   {"%+d", 0},
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

TEST(PathFormat, RejectsNullPointers) {
  const char* const no_text = nullptr;
  const confd_value_t* const no_value = nullptr;
  EXPECT_THROW(Fmt(nullptr), SyntaxError);
  EXPECT_THROW(Fmt("/a{%s}", no_text), SyntaxError);
  const in_addr* const no_address = nullptr;
  const in6_addr* const no_address6 = nullptr;
  EXPECT_THROW(Fmt("/a{%ip4}", no_address), SyntaxError);
  EXPECT_THROW(Fmt("/a{%ip6}", no_address6), SyntaxError);
  EXPECT_THROW(Fmt("/a{%x}", no_value), SyntaxError);
  EXPECT_THROW(Fmt("/a{%*x}", 1, no_value), SyntaxError);
}

TEST(PathFormat, RejectsValuesThatCannotBeKeys) {
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

// /1/2{7 5}/3
confd_hkeypath_t Hkeypath() {
  confd_hkeypath_t path = {};
  path.len = 4;
  CONFD_SET_XMLTAG(&path.v[3][0], 1, 9);
  CONFD_SET_XMLTAG(&path.v[2][0], 2, 9);
  path.v[1][0] = Uint32(7);
  path.v[1][1] = Uint32(5);
  CONFD_SET_NOEXISTS(&path.v[1][2]);
  CONFD_SET_XMLTAG(&path.v[0][0], 3, 9);
  return path;
}

TEST(PathFormat, WritesPathsFromTheTop) {
  const confd_hkeypath_t path = Hkeypath();
  const Recorder names("on");
  EXPECT_EQ(FormatNamed(names, "%h", &path), "/node1/node2{7 5}/node3");
  EXPECT_EQ(names.calls, (std::vector<std::string>{"/1", "/node1/2",
                                                   "/node1/node2{7 5}/3"}));
  EXPECT_EQ(FormatNamed(names, "%h/%s", &path, "x"),
            "/node1/node2{7 5}/node3/x");
  EXPECT_EQ(FormatNamed(names, "%*h", 3, &path), "/node1/node2{7 5}");
  EXPECT_EQ(FormatNamed(names, "%*h{%d}", 2, &path, 4), "/node1/node2{4}");
  EXPECT_EQ(FormatNamed(names, "%*h", 0, &path), "/");
}

TEST(PathFormat, KeysOfPathsAreValuesOfADraft) {
  const confd_hkeypath_t path = Hkeypath();
  PathDraft draft;
  const auto make = [&](const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    DraftKeyPath(fmt, args, Recorder("on"), false, draft);
    va_end(args);
  };
  make("%h", &path);
  EXPECT_EQ(draft.text, "/node1/node2{? ?}/node3");
  ASSERT_EQ(draft.values.size(), 2u);
  EXPECT_EQ(draft.values[1].value, &path.v[1][1]);
}

TEST(PathFormat, PathsOnlyBeginAFormat) {
  confd_hkeypath_t path = Hkeypath();
  const Recorder names("on");
  for (const char* fmt : {"/a%h", " %h", "%hd", "%hx", "%hh", "%*hd", "/%*h"}) {
    EXPECT_THROW(FormatNamed(names, fmt, 1, &path), SyntaxError) << fmt;
    EXPECT_EQ(FormatNamedText(names, fmt, 1, &path)[0], fmt[0]) << fmt;
  }
}

TEST(PathFormat, RejectsPathsOfNoLength) {
  confd_hkeypath_t path = Hkeypath();
  const Recorder names("on");
  const confd_hkeypath_t* const none = nullptr;
  EXPECT_THROW(FormatNamed(names, "%h", none), SyntaxError);
  EXPECT_THROW(FormatNamed(names, "%*h", 5, &path), SyntaxError);
  EXPECT_THROW(FormatNamed(names, "%*h", -1, &path), SyntaxError);
  EXPECT_THROW(FormatNamed(NoNames(), "%h", &path), SyntaxError);
  EXPECT_EQ(Text("%*h", 5, &path), "/tag<1>/tag<2>{7 5}/tag<3>");
  EXPECT_EQ(Text("%*h", -1, &path), "/");
  path.len = MAXDEPTH + 1;
  EXPECT_THROW(FormatNamed(names, "%h", &path), SyntaxError);
}

TEST(PathFormat, TextTakesWhatCallsReject) {
  const char* const no_text = nullptr;
  const confd_value_t* const no_value = nullptr;
  EXPECT_EQ(Text(nullptr), "");
  EXPECT_EQ(Text("/a{%s}", no_text), "/a{(null)}");
  EXPECT_EQ(Text("/a{%x %d}", no_value, 5), "/a{(null) 5}");
  EXPECT_EQ(Text("/a{%*x}", -1, no_value), "/a{(null)}");
  EXPECT_EQ(Text("%q %d %", 5), "%q 5 %");
  EXPECT_EQ(Text("%5d%%d%lu%i"), "%5d%%d%lu%i");
  confd_value_t absent = {};
  CONFD_SET_NOEXISTS(&absent);
  EXPECT_EQ(Text("/a{%x}", &absent), "/a{C_NOEXISTS}");
  EXPECT_EQ(Text("/a{%*x}", -1, &absent), "/a{}");
}

TEST(PathFormat, TextWithoutNamesGoesByTheTag) {
  const confd_value_t two = Enum(2);
  const confd_value_t bytes = Bytes(C_BINARY, "f");
  const confd_value_t blank = Str("a b");
  EXPECT_EQ(Text("/a{%x %x %x}", &two, &bytes, &blank),
            "/a{enum<2> 66 \"a b\"}");
}

}  // namespace
}  // namespace kit::api
