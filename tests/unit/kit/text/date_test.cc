#include "kit/confd/text/date.h"

#include <gtest/gtest.h>

#include <string>

namespace kit::text {
namespace {

TEST(DateTime, RoundTripsItsText) {
  for (const char* text :
       {"2026-11-20T21:47:00+00:00", "2026-11-20T21:47:09.500000+01:00",
        "0001-01-01T00:00:00-14:00", "9999-12-31T23:59:60.000070-03:30",
        "2026-11-20T21:47:00+05:45", "2026-11-20T21:47:00-00:30"}) {
    EXPECT_EQ(PrintDateTime(ParseDateTime(text)), text);
  }
}

TEST(DateTime, IsReadPartByPart) {
  const DateTime read = ParseDateTime("2026-11-20T21:47:08.12345678-03:30");
  EXPECT_EQ(read.day.year, 2026);
  EXPECT_EQ(read.day.month, 11u);
  EXPECT_EQ(read.day.day, 20u);
  EXPECT_EQ(read.clock.hour, 21u);
  EXPECT_EQ(read.clock.minute, 47u);
  EXPECT_EQ(read.clock.second, 8u);
  EXPECT_EQ(read.clock.micros, 123456u);
  EXPECT_EQ(read.zone.hours, -3);
  EXPECT_EQ(read.zone.minutes, -30);
}

TEST(DateTime, TakesFractionsAndGreenwichAsTheyMayBeWritten) {
  const auto canonical = [](const char* text) {
    return PrintDateTime(ParseDateTime(text));
  };
  EXPECT_EQ(canonical("2026-11-20T21:47:00Z"), "2026-11-20T21:47:00+00:00");
  EXPECT_EQ(canonical("2026-11-20T21:47:00.5Z"),
            "2026-11-20T21:47:00.500000+00:00");
  EXPECT_EQ(canonical("2026-11-20T21:47:00.25"),
            "2026-11-20T21:47:00.250000+00:00");
}

TEST(ShortZone, NamesGreenwichAndKeepsSilentWhereUnknown) {
  const auto print = [](Zone zone) {
    std::string text;
    AppendShortZone(&text, zone);
    return text;
  };
  EXPECT_EQ(print({0, 0}), "Z");
  EXPECT_EQ(print({5, 45}), "+05:45");
  EXPECT_EQ(print({-3, -30}), "-03:30");
  EXPECT_EQ(print({0, -30}), "-00:30");
  EXPECT_EQ(print({14, 0}), "+14:00");
  EXPECT_EQ(print({15, 0}), "");
  EXPECT_EQ(print({-111, 0}), "");
}

TEST(Duration, LeavesOutWhatIsZero) {
  const auto print = [](Duration duration) {
    std::string text;
    AppendDuration(&text, duration);
    return text;
  };
  EXPECT_EQ(print({}), "PT0S");
  EXPECT_EQ(print({1, 2, 3, 4, 5, 6, 7}), "P1Y2M3DT4H5M6.000007S");
  EXPECT_EQ(print({0, 0, 0, 0, 0, 0, 500000}), "PT0.500000S");
  EXPECT_EQ(print({0, 1, 0, 0, 0, 0, 0}), "P1M");
  EXPECT_EQ(print({0, 0, 0, 0, 1, 0, 0}), "PT1M");
}

}  // namespace
}  // namespace kit::text
