#include "kit/confd/text/number.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <tuple>

namespace kit::text {
namespace {

TEST(ParseNumber, TakesWhatFitsTheTypeAndNothingElse) {
  EXPECT_EQ(ParseNumber<uint8_t>("255"), 255);
  EXPECT_EQ(ParseNumber<uint8_t>("+5"), 5);
  EXPECT_EQ(ParseNumber<uint8_t>("007"), 7);
  EXPECT_EQ(ParseNumber<int8_t>("-128"), -128);
  EXPECT_EQ(ParseNumber<int64_t>("-9223372036854775808"),
            std::numeric_limits<int64_t>::min());
  EXPECT_EQ(ParseNumber<uint64_t>("18446744073709551615"),
            std::numeric_limits<uint64_t>::max());
  for (const char* text : {"", "+", "-", "256", "-1", "1 ", " 1", "1x", "0x1",
                           "1.0", "+-1", "++1", "-+1", "--1"}) {
    EXPECT_EQ(ParseNumber<uint8_t>(text), std::nullopt) << text;
  }
  EXPECT_EQ(ParseNumber<int8_t>("+-1"), std::nullopt);
  EXPECT_EQ(ParseNumber<int8_t>("128"), std::nullopt);
}

TEST(Decimal64, RoundTripsCanonicalText) {
  const std::tuple<int64_t, uint8_t, const char*> cases[] = {
      {150, 2, "1.5"},
      {-150, 2, "-1.5"},
      {5, 2, "0.05"},
      {-5, 2, "-0.05"},
      {0, 2, "0.0"},
      {100, 2, "1.0"},
      {123456789, 4, "12345.6789"},
      {std::numeric_limits<int64_t>::min(), 18, "-9.223372036854775808"},
      {std::numeric_limits<int64_t>::max(), 1, "922337203685477580.7"},
  };
  for (const auto& [scaled, digits, text] : cases) {
    EXPECT_EQ(PrintDecimal64(scaled, digits), text);
    EXPECT_EQ(ParseDecimal64(text, digits), scaled);
  }
  EXPECT_EQ(ParseDecimal64("1", 2), 100);
  for (const char* text :
       {"1.234", "x", "", "-", ".5", "1.2.3", "92233720368547758080.0"}) {
    EXPECT_EQ(ParseDecimal64(text, 2), std::nullopt) << text;
  }
}

TEST(FixedPoint, HasAllItsFractionDigits) {
  EXPECT_EQ(PrintFixedPoint(150, 2), "1.50");
  EXPECT_EQ(PrintFixedPoint(-5, 2), "-0.05");
  EXPECT_EQ(PrintFixedPoint(0, 1), "0.0");
  EXPECT_EQ(PrintFixedPoint(7, 0), "7");
  EXPECT_EQ(PrintFixedPoint(std::numeric_limits<int64_t>::min(), 18),
            "-9.223372036854775808");
}

TEST(AppendNumber, WritesTheWholeRange) {
  std::string text = "<";
  AppendNumber(&text, std::numeric_limits<int64_t>::min());
  text += ' ';
  AppendNumber(&text, std::numeric_limits<uint64_t>::max());
  text += ' ';
  AppendNumber(&text, int8_t{-128});
  EXPECT_EQ(text, "<-9223372036854775808 18446744073709551615 -128");
}

TEST(AppendDouble, WritesTheShortestTextThatReadsBackTheSame) {
  const auto print = [](double number) {
    std::string text;
    AppendDouble(&text, number);
    return text;
  };
  EXPECT_EQ(print(0.5), "0.5");
  EXPECT_EQ(print(-2), "-2");
  EXPECT_EQ(print(0.1), "0.1");
  for (double number :
       {1.0 / 3, 1e300, -5e-324, std::numeric_limits<double>::max()}) {
    EXPECT_EQ(std::strtod(print(number).c_str(), nullptr), number);
  }
}

TEST(Double, RoundTrips) {
  for (const char* text :
       {"0", "-0", "0.5", "-1.25", "1e+300", "5e-324", "INF", "-INF", "NaN"}) {
    const auto number = ParseDouble(text);
    ASSERT_TRUE(number) << text;
    std::string printed;
    AppendDouble(&printed, *number);
    EXPECT_EQ(printed, text);
  }
  EXPECT_EQ(ParseDouble("+1.50E2"), 150);
  for (const char* text : {"", "+", "-", "inf", "nan", "infinity", "0x1", "1 ",
                           " 1", "1e", "--1", "+-1", "1e999", "1,5", "."}) {
    EXPECT_EQ(ParseDouble(text), std::nullopt) << text;
  }
}

TEST(PlainDouble, HasNoExponent) {
  EXPECT_EQ(PrintPlainDouble(1e20), "100000000000000000000");
  EXPECT_EQ(PrintPlainDouble(-0.00000025), "-0.00000025");
  EXPECT_EQ(PrintPlainDouble(std::numeric_limits<double>::max()).size(), 309u);
  EXPECT_EQ(ParsePlainDouble("-1.50"), -1.5);
  for (const char* text : {"", "1e2", "1E2", "INF", "-INF", "NaN"}) {
    EXPECT_EQ(ParsePlainDouble(text), std::nullopt) << text;
  }
}

TEST(Size, RoundTripsInPowersOf1024) {
  EXPECT_EQ(ParseSize("S1G8M7K956B"),
            (uint64_t{1} << 30) + (8 << 20) + (7 << 10) + 956);
  for (const char* text :
       {"S1G8M7K956B", "S1G", "S2M5B", "S0B", "S17179869183G1023M1023K1023B"}) {
    EXPECT_EQ(PrintSize(ParseSize(text).value_or(7)), text);
  }
  EXPECT_EQ(ParseSize("S2048K"), 2 << 20);
  for (const char* text : {"", "S", "1K", "S1", "S1K1M", "S1k", "SK", "S1K ",
                           "S-1K", "S17179869184G", "S1B1B"}) {
    EXPECT_EQ(ParseSize(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace kit::text
