#include "kit/confd/model/expression.h"

#include <gtest/gtest.h>

namespace kit::store {
namespace {

// Evaluated at leaf "x" of container "box" of an entry of list "entry".
const ExpressionContext kLeaf = {{"x", "box", "entry"}, true};
const ExpressionContext kBox = {{"box", "entry"}, false};

bool StaysInside(std::string_view text,
                 const ExpressionContext& context = kLeaf) {
  return LookAtExpression(text, context).stays_inside;
}
bool ReadsValues(std::string_view text) {
  return LookAtExpression(text, kLeaf).reads_values;
}

TEST(Expression, PathsThatDoNotLeaveTheEntryStayInside) {
  for (const char* text :
       {".", "../y", ". > ../y", "../../y", "../../p:inner/p:y = 'a'",
        "not(../y) or ../z != 'it''s'", "current()/../y", "./../y",
        "derived-from-or-self(../y, \"p:kind\")", "count(../y) * 1 = 2",
        "../a-b and (../y mod 2 = 0 or ../y - 1 > 12.5)",
        "starts-with(., 'x') | ../y"}) {
    const bool has_star =
        std::string_view(text).find('*') != std::string_view::npos;
    EXPECT_EQ(StaysInside(text), !has_star) << text;
  }
  EXPECT_TRUE(StaysInside("y or inner/z", kBox));
}

TEST(Expression, PathsThatMayLeaveTheEntryDoNotStayInside) {
  for (const char* text : {"/entry/y",
                           "../../../y",
                           "../../../entry/y",
                           "../inner/../../../y",
                           "current()/../../../y",
                           "current ()/../y",
                           "//y",
                           "..//y",
                           "ancestor::z/y",
                           "../../following-sibling::entry",
                           "not(/entry)",
                           "../y[. = 1]",
                           "../*",
                           "*",
                           "../@a",
                           "$y",
                           "deref(../y)/../z",
                           "../node()",
                           "../text()",
                           "id('a')/y",
                           "position() = 1",
                           "last() > 2",
                           "unknown(../y)",
                           "'open",
                           "../y = /z"}) {
    EXPECT_FALSE(StaysInside(text)) << text;
  }
}

TEST(Expression, TextOfWhatIsAroundTheContextIsMoreThanItsPathNames) {
  EXPECT_FALSE(StaysInside(".."));
  EXPECT_FALSE(StaysInside("string(../..)"));
  EXPECT_FALSE(StaysInside("../../box = 'a'"));
  EXPECT_FALSE(StaysInside("../../p:box"));
  EXPECT_FALSE(StaysInside(". = 'a'", kBox));
  EXPECT_FALSE(StaysInside("../box", kBox));
  EXPECT_TRUE(StaysInside("../x = 1"));
}

TEST(Expression, PathsByThemselvesReadNoValues) {
  for (const char* text :
       {"../y", "not(../y)", "../y and boolean(../z)", "(../y or not(../z))"}) {
    EXPECT_FALSE(ReadsValues(text)) << text;
  }
}

TEST(Expression, ComparisonsCountsAndFunctionsReadValues) {
  for (const char* text :
       {"../y = ../z", "../y != 'a'", "count(../y)", "string(../y)", "../y - 1",
        "../y div ../z", "../y | ../z", ".", "starts-with(../y, ../z)", "1",
        "'a'", "current()/../y"}) {
    EXPECT_TRUE(ReadsValues(text)) << text;
  }
}

}  // namespace
}  // namespace kit::store
