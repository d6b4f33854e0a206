#include "tests/support/call_text.h"

#include <gtest/gtest.h>

#include <string>

namespace test_support {
namespace {

TEST(CountMissingValuesTest, SeveralInARowBecomeOneWithTheirNumber) {
  EXPECT_EQ(CountMissingValues("get n 5 -> 5 C_UINT32 7, C_NOEXISTS, "
                               "C_NOEXISTS, C_NOEXISTS, C_BOOL true"),
            "get n 5 -> 5 C_UINT32 7, C_NOEXISTS x3, C_BOOL true");
}

TEST(CountMissingValuesTest, EachRunIsCountedByItself) {
  EXPECT_EQ(CountMissingValues("C_NOEXISTS, C_NOEXISTS, C_BOOL true, "
                               "C_NOEXISTS, C_NOEXISTS -> 0"),
            "C_NOEXISTS x2, C_BOOL true, C_NOEXISTS x2 -> 0");
}

TEST(CountMissingValuesTest, OneAloneStaysAsItIs) {
  EXPECT_EQ(CountMissingValues("C_UINT32 7, C_NOEXISTS, C_BOOL true"),
            "C_UINT32 7, C_NOEXISTS, C_BOOL true");
}

TEST(CountMissingValuesTest, OtherRepeatedValuesStayAsTheyAre) {
  EXPECT_EQ(CountMissingValues("C_UINT32 7, C_UINT32 7"),
            "C_UINT32 7, C_UINT32 7");
  EXPECT_EQ(CountMissingValues(""), "");
}

TEST(CountMissingValuesTest, TextOfAStringStaysAsItIs) {
  const std::string strings =
      R"(C_BUF "C_NOEXISTS, C_NOEXISTS", C_BUF "\"C_NOEXISTS, C_NOEXISTS\\")";
  EXPECT_EQ(CountMissingValues(strings), strings);
  EXPECT_EQ(CountMissingValues(strings + ", C_NOEXISTS, C_NOEXISTS"),
            strings + ", C_NOEXISTS x2");
}

}  // namespace
}  // namespace test_support
