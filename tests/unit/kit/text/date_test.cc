#include "kit/confd/text/date.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

namespace kit::text {
namespace {

// What is printed of what was read, "no" where that is nothing.
template <typename Parse, typename Print>
std::string Reprinted(const char* text, const Parse& parse,
                      const Print& print) {
  const auto parsed = parse(text);
  return parsed ? print(*parsed) : "no";
}

std::string DateTimeOf(const char* text) {
  return Reprinted(text, ParseDateTime, PrintDateTime);
}

TEST(DateTime, RoundTripsItsText) {
  for (const char* text :
       {"2026-11-20T21:47:00+00:00", "2026-11-20T21:47:09.5+01:00",
        "0001-01-01T00:00:00-14:00", "9999-12-31T23:59:60.00007-03:30",
        "2026-11-20T21:47:00+05:45", "2026-11-20T21:47:00-00:30",
        "2026-11-20T21:47:00-00:00", "2024-02-29T00:00:00+14:00",
        "2000-02-29T00:00:00+00:00", "-0044-03-15T12:00:00+00:00"}) {
    EXPECT_EQ(DateTimeOf(text), text);
  }
}

TEST(DateTime, IsReadPartByPart) {
  const auto read = ParseDateTime("2026-11-20T21:47:08.12345678-03:30");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->day.year, 2026);
  EXPECT_EQ(read->day.month, 11u);
  EXPECT_EQ(read->day.day, 20u);
  EXPECT_EQ(read->clock.hour, 21u);
  EXPECT_EQ(read->clock.minute, 47u);
  EXPECT_EQ(read->clock.second, 8u);
  EXPECT_EQ(read->clock.micros, 123456u);
}

TEST(DateTime, TakesFractionsAndGreenwichAsTheyMayBeWritten) {
  EXPECT_EQ(DateTimeOf("2026-11-20T21:47:00Z"), "2026-11-20T21:47:00+00:00");
  EXPECT_EQ(DateTimeOf("2026-11-20T21:47:00.50Z"),
            "2026-11-20T21:47:00.5+00:00");
  EXPECT_EQ(DateTimeOf("2026-11-20T21:47:00.000Z"),
            "2026-11-20T21:47:00+00:00");
}

TEST(DateTime, IsNothingElse) {
  for (const char* text : {"",
                           "2026-11-20",
                           "2026-11-20T21:47:00",
                           "2026-11-20T21:47Z",
                           "2026-11-20 21:47:00Z",
                           "2026-13-20T21:47:00Z",
                           "2026-00-20T21:47:00Z",
                           "2026-11-00T21:47:00Z",
                           "2026-11-31T21:47:00Z",
                           "2026-02-29T21:47:00Z",
                           "1900-02-29T21:47:00Z",
                           "2026-11-20T24:47:00Z",
                           "2026-11-20T21:60:00Z",
                           "2026-11-20T21:47:61Z",
                           "2026-11-20T21:47:00.Z",
                           "2026-11-20T21:47:00z",
                           "2026-11-20T21:47:00+15:00",
                           "2026-11-20T21:47:00+01:60",
                           "2026-11-20T21:47:00+1:00",
                           "2026-11-20T21:47:00Z ",
                           "2026-1-1T0:0:0Z",
                           "32768-01-01T00:00:00Z",
                           "+2026-11-20T21:47:00Z"}) {
    EXPECT_EQ(DateTimeOf(text), "no") << text;
  }
}

TEST(Zone, HasTheSignInTheHoursUnlessTheyAre0) {
  const auto zone = [](const std::string& text) {
    const auto read = ParseDateTime("2026-11-20T21:47:00" + text);
    return read ? std::pair(read->zone.hours, read->zone.minutes)
                : std::pair(99, 99);
  };
  EXPECT_EQ(zone("Z"), std::pair(0, 0));
  EXPECT_EQ(zone("+00:00"), std::pair(0, 0));
  EXPECT_EQ(zone("+05:45"), std::pair(5, 45));
  EXPECT_EQ(zone("-05:30"), std::pair(-5, 30));
  EXPECT_EQ(zone("+00:30"), std::pair(0, 30));
  EXPECT_EQ(zone("-00:30"), std::pair(0, -30));
  EXPECT_EQ(zone("-00:00"), std::pair(-111, 0));
}

TEST(Zone, WithASignInBothIsNone) {
  const DateTime both = {{2026, 11, 20}, {21, 47, 0, 0}, {-5, -30}};
  EXPECT_EQ(ParseDateTime(PrintDateTime(both)), std::nullopt);
}

TEST(ShortDateTime, NamesGreenwich) {
  const auto print = [](const char* text) {
    return Reprinted(text, ParseDateTime, PrintShortDateTime);
  };
  EXPECT_EQ(print("2026-11-20T21:47:00+00:00"), "2026-11-20T21:47:00Z");
  EXPECT_EQ(print("2026-11-20T21:47:00-00:00"), "2026-11-20T21:47:00-00:00");
  EXPECT_EQ(print("2026-11-20T21:47:00+05:45"), "2026-11-20T21:47:00+05:45");
}

TEST(DateAndTimeAlone, MayDoWithoutAZone) {
  const auto date = [](const char* text) {
    return Reprinted(text, ParseDate, PrintDate);
  };
  EXPECT_EQ(date("2026-11-20"), "2026-11-20");
  EXPECT_EQ(date("2026-11-20Z"), "2026-11-20Z");
  EXPECT_EQ(date("2026-11-20-05:30"), "2026-11-20-05:30");
  EXPECT_EQ(ParseDate("2026-11-20")->zone.hours, -111);
  for (const char* text : {"", "2026-11-31", "2026-11-20T00:00:00", "20-11-20",
                           "2026-11-20 ", "2026-11-20+15:00"}) {
    EXPECT_EQ(date(text), "no") << text;
  }
  const auto time = [](const char* text) {
    return Reprinted(text, ParseTime, PrintTime);
  };
  EXPECT_EQ(time("21:47:00"), "21:47:00");
  EXPECT_EQ(time("21:47:00.25+00:00"), "21:47:00.25Z");
  EXPECT_EQ(ParseTime("21:47:00")->zone.hours, -111);
  for (const char* text : {"", "24:00:00", "21:47", "21:47:00.", "T21:47:00"}) {
    EXPECT_EQ(time(text), "no") << text;
  }
}

TEST(Duration, LeavesOutWhatIsZero) {
  EXPECT_EQ(PrintDuration({}), "PT0S");
  EXPECT_EQ(PrintDuration({1, 2, 3, 4, 5, 6, 7}), "P1Y2M3DT4H5M6.000007S");
  EXPECT_EQ(PrintDuration({0, 0, 0, 0, 0, 0, 500000}), "PT0.5S");
  EXPECT_EQ(PrintDuration({0, 1, 0, 0, 0, 0, 0}), "P1M");
  EXPECT_EQ(PrintDuration({0, 0, 0, 0, 1, 0, 0}), "PT1M");
}

TEST(Duration, IsReadPartByPart) {
  const auto print = [](const char* text) {
    return Reprinted(text, ParseDuration, PrintDuration);
  };
  for (const char* text : {"P1Y2M3DT4H5M6.000007S", "P1M", "PT1M", "PT0S",
                           "P4294967295Y", "P3DT6S"}) {
    EXPECT_EQ(print(text), text);
  }
  for (const char* text :
       {"", "P", "PT", "P1DT", "1D", "P1", "P1S", "PT1D", "P1M1Y", "-P1D",
        "P4294967296Y", "PT1.S", "P1D ", "P1.5D", "PY"}) {
    EXPECT_EQ(print(text), "no") << text;
  }
}

}  // namespace
}  // namespace kit::text
