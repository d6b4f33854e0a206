#include "kit/confd/api/path_format.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/keypath/keypath.h"
#include "tests/support/c_values.h"

namespace kit::api {
namespace {

using keypath::SyntaxError;

std::string FormatNamed(const EnumNamer& namer, const char* fmt, ...) {
  struct Arguments {
    va_list list;
    ~Arguments() { va_end(list); }
  } arguments;
  va_start(arguments.list, fmt);
  return FormatKeyPath(fmt, arguments.list, namer);
}

template <typename... Args>
std::string Fmt(const char* fmt, Args... args) {
  return FormatNamed({}, fmt, args...);
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
  EXPECT_EQ(Fmt("%c%c", 'x', 'y'), "xy");
  EXPECT_EQ(Fmt("100%%/%i", 5), "100%/5");
}

TEST(PathFormat, HonoursLengthModifiers) {
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

TEST(PathFormat, HonoursFlagsWidthAndPrecision) {
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

TEST(PathFormat, WritesIpv4AddressesByValue) {
  EXPECT_EQ(Fmt("/l{%ip4 %i %ip4}", Ipv4("10.0.0.1"), 9, Ipv4("1.2.3.4")),
            "/l{10.0.0.1 9 1.2.3.4}");
  EXPECT_EQ(Fmt("%ip", 5), "5p");
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
  EXPECT_EQ(Fmt("%d %d %s %u %ip4 %x %llu %c %*x %hhu", 1, 2, "3", 4u,
                Ipv4("0.0.0.5"), &value, 7ull, '8', 1, &value, 9),
            "1 2 3 4 0.0.0.5 6 7 8 6 9");
}

TEST(PathFormat, LeavesTheArgumentsToTheCaller) {
  const auto twice = [](const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const std::string first = FormatKeyPath(fmt, args, {});
    const std::string second = FormatKeyPath(fmt, args, {});
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

TEST(PathFormat, WritesEnumNumbersWithoutAName) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer(nullptr), "/a{%x}", &two), "/a{2}");
  EXPECT_EQ(recorder.calls.size(), 1u);
  EXPECT_EQ(Fmt("/a{%x}", &two), "/a{2}");
}

TEST(PathFormat, AsksForNoEnumNamesOutsideBraces) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer("on"), "/a{1}/b[%x]", &two),
            "/a{1}/b[2]");
  EXPECT_TRUE(recorder.calls.empty());
}

TEST(PathFormat, QuotesEnumNamesWhereNeeded) {
  const confd_value_t two = Enum(2);
  RecordingNamer recorder;
  EXPECT_EQ(FormatNamed(recorder.Namer("not set"), "/a{%x}", &two),
            "/a{\"not set\"}");
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

PathDraft Draft(const EnumNamer* namer, const char* fmt, ...) {
  PathDraft draft;
  va_list args;
  va_start(args, fmt);
  DraftKeyPath(fmt, args, namer, draft);
  va_end(args);
  return draft;
}

TEST(PathFormat, ADraftSaysWhereItsValuesStand) {
  const confd_value_t keys[] = {Uint32(7), Uint32(12)};
  const EnumNamer namer;
  for (const EnumNamer* one :
       {&namer, static_cast<const EnumNamer*>(nullptr)}) {
    const PathDraft draft = Draft(one, "%s{%*x}/%s", "/l", 2, keys, "leaf");
    EXPECT_EQ(draft.text, one != nullptr ? "/l{7 12}/leaf" : "/l{? ?}/leaf");
    ASSERT_EQ(draft.values.size(), 2u);
    EXPECT_EQ(draft.values[0].begin, 3u);
    EXPECT_EQ(draft.values[0].end, 4u);
    EXPECT_EQ(draft.values[1].begin, 5u);
    EXPECT_EQ(draft.values[1].end, one != nullptr ? 7u : 6u);
    EXPECT_EQ(draft.values[1].value, &keys[1]);
  }
}

TEST(PathFormat, RejectsUnknownDirectivesAtTheirPercentSign) {
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

TEST(PathFormat, RejectsNullPointers) {
  const char* const no_text = nullptr;
  const confd_value_t* const no_value = nullptr;
  EXPECT_THROW(Fmt(nullptr), SyntaxError);
  EXPECT_THROW(Fmt("/a{%s}", no_text), SyntaxError);
  EXPECT_THROW(Fmt("/a{%5s}", no_text), SyntaxError);
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

}  // namespace
}  // namespace kit::api
