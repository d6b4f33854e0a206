// Dates, times and durations as text, in the forms of ISO 8601. Parsers give
// nullopt for a text that is not of their form; digits behind the microseconds
// are cut off. Nothing is ever converted to another zone.
#ifndef KIT_CONFD_TEXT_DATE_H_
#define KIT_CONFD_TEXT_DATE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kit::text {

struct Day {
  int year;
  unsigned month;
  unsigned day;
};

struct Clock {
  unsigned hour;
  unsigned minute;
  unsigned second;
  uint32_t micros;
};

// Difference from Greenwich, positive to its east. Hours other than 0 have the
// sign of both, and the minutes are not negative; with 0 hours the minutes have
// it.
struct Zone {
  int hours;
  int minutes;
};

// No place on earth has these hours: the zone is not known.
constexpr Zone kUnknownZone = {-111, 0};

struct DateTime {
  Day day;
  Clock clock;
  Zone zone;
};

struct Date {
  Day day;
  Zone zone;
};

struct Time {
  Clock clock;
  Zone zone;
};

struct Duration {
  uint32_t years;
  uint32_t months;
  uint32_t days;
  uint32_t hours;
  uint32_t minutes;
  uint32_t seconds;
  uint32_t micros;
};

// "2026-11-20T21:47:00.5+01:00"; "-00:00" is the unknown zone.
std::optional<DateTime> ParseDateTime(std::string_view text);
std::string PrintDateTime(const DateTime& date_time);

// "2026-11-20", "21:47:00", with a zone behind it where one is known.
std::optional<Date> ParseDate(std::string_view text);
std::string PrintDate(const Date& date);
std::optional<Time> ParseTime(std::string_view text);
std::string PrintTime(const Time& time);

// "P1DT2H".
std::optional<Duration> ParseDuration(std::string_view text);
std::string PrintDuration(const Duration& duration);

// As PrintDateTime, with "Z" for Greenwich.
std::string PrintShortDateTime(const DateTime& date_time);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_DATE_H_
