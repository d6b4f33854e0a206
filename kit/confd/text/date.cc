#include "kit/confd/text/date.h"

#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "kit/confd/text/number.h"

namespace kit::text {
namespace {

constexpr int kMaxZoneHours = 14;

bool IsUnknown(const Zone& zone) { return zone.hours == kUnknownZone.hours; }

unsigned DaysIn(int year, unsigned month) {
  static constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30,
                                       31, 31, 30, 31, 30, 31};
  const bool leaps = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return kDays[month - 1] + (month == 2 && leaps ? 1 : 0);
}

// Takes a text from its front. Nothing more is taken once something is missing.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool ok() const { return ok_; }
  bool ended() const { return ok_ && rest_.empty(); }

  bool Accept(char c) {
    if (!ok_ || rest_.empty() || rest_.front() != c) return false;
    rest_.remove_prefix(1);
    return true;
  }
  void Expect(char c) { ok_ = Accept(c); }

  // A number of so many digits.
  unsigned Number(size_t least_digits, size_t most_digits, unsigned least,
                  unsigned most) {
    const std::string_view digits = Digits(most_digits);
    const auto number = ParseNumber<unsigned>(digits);
    ok_ = ok_ && digits.size() >= least_digits && number && *number >= least &&
          *number <= most;
    return ok_ ? *number : 0;
  }
  unsigned TwoDigits(unsigned least, unsigned most) {
    return Number(2, 2, least, most);
  }

  // Of digits behind a point, if there is one.
  uint32_t Micros() {
    if (!Accept('.')) return 0;
    const std::string_view digits = Digits(rest_.size());
    ok_ = ok_ && !digits.empty();
    if (!ok_) return 0;
    std::string six(digits.substr(0, 6));
    six.append(6 - six.size(), '0');
    return *ParseNumber<uint32_t>(six);
  }

  Day TakeDay() {
    Day day{};
    const bool is_negative = Accept('-');
    day.year =
        static_cast<int>(Number(4, 5, 0, std::numeric_limits<int16_t>::max()));
    if (is_negative) day.year = -day.year;
    Expect('-');
    day.month = TwoDigits(1, 12);
    Expect('-');
    day.day = TwoDigits(1, ok_ ? DaysIn(day.year, day.month) : 0);
    return day;
  }

  Clock TakeClock() {
    Clock clock{};
    clock.hour = TwoDigits(0, 23);
    Expect(':');
    clock.minute = TwoDigits(0, 59);
    Expect(':');
    clock.second = TwoDigits(0, 60);
    clock.micros = Micros();
    return clock;
  }

  Zone TakeZone() {
    if (Accept('Z')) return {0, 0};
    const int sign = Accept('-') ? -1 : 1;
    if (sign == 1) Expect('+');
    const int hours = static_cast<int>(TwoDigits(0, kMaxZoneHours));
    Expect(':');
    const int minutes = static_cast<int>(TwoDigits(0, 59));
    if (hours != 0) return {sign * hours, minutes};
    if (sign == -1 && minutes == 0) return kUnknownZone;
    return {0, sign * minutes};
  }
  Zone TakeZoneIfGiven() {
    return ok_ && rest_.empty() ? kUnknownZone : TakeZone();
  }

  // "5Y", if the next part is of that unit.
  bool TakePart(char unit, uint32_t* amount) {
    const size_t end = rest_.find_first_not_of("0123456789");
    if (!ok_ || end == std::string_view::npos || rest_[end] != unit) {
      return false;
    }
    const auto number = ParseNumber<uint32_t>(Digits(end));
    ok_ = number.has_value();
    *amount = number.value_or(0);
    rest_.remove_prefix(1);
    return ok_;
  }
  bool TakeSeconds(uint32_t* seconds, uint32_t* micros) {
    if (!ok_ || rest_.empty()) return false;
    const auto number = ParseNumber<uint32_t>(Digits(rest_.size()));
    ok_ = number.has_value();
    *seconds = number.value_or(0);
    *micros = Micros();
    Expect('S');
    return ok_;
  }

 private:
  // At most so many digits from the front.
  std::string_view Digits(size_t most) {
    size_t count = 0;
    while (count < most && count < rest_.size() && rest_[count] >= '0' &&
           rest_[count] <= '9') {
      ++count;
    }
    const std::string_view digits = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return digits;
  }

  std::string_view rest_;
  bool ok_ = true;
};

// printf for the short, fixed forms below.
template <typename... Args>
void AppendPrintf(std::string* out, const char* fmt, Args... args) {
  char buf[128];
  const int length = std::snprintf(buf, sizeof(buf), fmt, args...);
  out->append(buf, static_cast<size_t>(length));
}

// What is no fraction shows, and is read by nobody.
void AppendMicros(std::string* out, uint32_t micros) {
  if (micros == 0) return;
  if (micros > 999999) return out->push_back('?');
  AppendPrintf(out, ".%06" PRIu32, micros);
  out->erase(out->find_last_not_of('0') + 1);
}

void AppendDay(std::string* out, const Day& day) {
  AppendPrintf(out, "%s%04d-%02u-%02u", day.year < 0 ? "-" : "",
               std::abs(day.year), day.month, day.day);
}

void AppendClock(std::string* out, const Clock& clock) {
  AppendPrintf(out, "%02u:%02u:%02u", clock.hour, clock.minute, clock.second);
  AppendMicros(out, clock.micros);
}

// Minutes with a sign that they must not have show it, and are no zone.
void AppendZone(std::string* out, const Zone& zone) {
  const bool is_west = zone.hours < 0 || (zone.hours == 0 && zone.minutes < 0);
  AppendPrintf(out, "%c%02d:%02d", is_west ? '-' : '+', std::abs(zone.hours),
               zone.hours == 0 ? std::abs(zone.minutes) : zone.minutes);
}

void AppendShortZone(std::string* out, const Zone& zone) {
  if (zone.hours == 0 && zone.minutes == 0) return out->push_back('Z');
  AppendZone(out, zone);
}

template <typename AppendKnownZone>
std::string Print(const DateTime& date_time,
                  const AppendKnownZone& append_zone) {
  std::string text;
  AppendDay(&text, date_time.day);
  text.push_back('T');
  AppendClock(&text, date_time.clock);
  if (IsUnknown(date_time.zone)) return text.append("-00:00");
  append_zone(&text, date_time.zone);
  return text;
}

}  // namespace

std::optional<DateTime> ParseDateTime(std::string_view text) {
  Scanner scanner(text);
  DateTime result{};
  result.day = scanner.TakeDay();
  scanner.Expect('T');
  result.clock = scanner.TakeClock();
  result.zone = scanner.TakeZone();
  if (!scanner.ended()) return std::nullopt;
  return result;
}

std::optional<Date> ParseDate(std::string_view text) {
  Scanner scanner(text);
  Date result{};
  result.day = scanner.TakeDay();
  result.zone = scanner.TakeZoneIfGiven();
  if (!scanner.ended()) return std::nullopt;
  return result;
}

std::optional<Time> ParseTime(std::string_view text) {
  Scanner scanner(text);
  Time result{};
  result.clock = scanner.TakeClock();
  result.zone = scanner.TakeZoneIfGiven();
  if (!scanner.ended()) return std::nullopt;
  return result;
}

std::optional<Duration> ParseDuration(std::string_view text) {
  Scanner scanner(text);
  Duration result{};
  scanner.Expect('P');
  bool has_part = scanner.TakePart('Y', &result.years);
  has_part |= scanner.TakePart('M', &result.months);
  has_part |= scanner.TakePart('D', &result.days);
  if (scanner.Accept('T')) {
    has_part = scanner.TakePart('H', &result.hours);
    has_part |= scanner.TakePart('M', &result.minutes);
    has_part |= scanner.TakeSeconds(&result.seconds, &result.micros);
  }
  if (!has_part || !scanner.ended()) return std::nullopt;
  return result;
}

std::string PrintDateTime(const DateTime& date_time) {
  return Print(date_time, AppendZone);
}

std::string PrintShortDateTime(const DateTime& date_time) {
  return Print(date_time, AppendShortZone);
}

std::string PrintDate(const Date& date) {
  std::string text;
  AppendDay(&text, date.day);
  if (!IsUnknown(date.zone)) AppendShortZone(&text, date.zone);
  return text;
}

std::string PrintTime(const Time& time) {
  std::string text;
  AppendClock(&text, time.clock);
  if (!IsUnknown(time.zone)) AppendShortZone(&text, time.zone);
  return text;
}

std::string PrintDuration(const Duration& duration) {
  std::string text = "P";
  const auto part = [&text](uint32_t amount, char unit) {
    if (amount == 0) return;
    AppendNumber(&text, amount);
    text.push_back(unit);
  };
  part(duration.years, 'Y');
  part(duration.months, 'M');
  part(duration.days, 'D');
  const bool seconds = duration.seconds != 0 || duration.micros != 0;
  if (duration.hours != 0 || duration.minutes != 0 || seconds) {
    text.push_back('T');
    part(duration.hours, 'H');
    part(duration.minutes, 'M');
    if (seconds) {
      AppendNumber(&text, duration.seconds);
      AppendMicros(&text, duration.micros);
      text.push_back('S');
    }
  }
  return text.size() == 1 ? "PT0S" : text;
}

}  // namespace kit::text
