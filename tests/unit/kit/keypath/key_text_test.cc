#include "kit/confd/keypath/key_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kit::keypath {
namespace {

using std::string_literals::operator""s;

TEST(QuoteKey, QuotesOnlyWhereNeeded) {
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

}  // namespace
}  // namespace kit::keypath
