// Dates, times and durations as text, in the forms of ISO 8601.
#ifndef KIT_CONFD_TEXT_DATE_H_
#define KIT_CONFD_TEXT_DATE_H_

#include <cstdint>
#include <string>

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

// Difference from Greenwich, positive to its east; both parts of one sign.
struct Zone {
  int hours;
  int minutes;
};

struct DateTime {
  Day day;
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

// "2026-11-20T21:47:00.5+01:00". Of a text that is no date and time, whatever
// can be read; digits behind the microseconds are cut off.
DateTime ParseDateTime(const std::string& text);
std::string PrintDateTime(const DateTime& date_time);

// "2026-11-20", "21:47:00.500000".
void AppendDay(std::string* out, const Day& day);
void AppendClock(std::string* out, const Clock& clock);

// "Z" for Greenwich, "" for hours that no place on earth has, which stand for
// an unknown zone, else "+01:00".
void AppendShortZone(std::string* out, const Zone& zone);

// "P1DT2H".
void AppendDuration(std::string* out, const Duration& duration);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_DATE_H_
