#include "kit/confd/text/date.h"

#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "kit/confd/text/number.h"

namespace kit::text {
namespace {

constexpr int kMaxZoneHours = 14;

// printf for the short, fixed forms below.
template <typename... Args>
void AppendPrintf(std::string* out, const char* fmt, Args... args) {
  char buf[128];
  const int length = std::snprintf(buf, sizeof(buf), fmt, args...);
  out->append(buf, static_cast<size_t>(length));
}

void AppendZone(std::string* out, const Zone& zone) {
  AppendPrintf(out, "%c%02d:%02d",
               zone.hours < 0 || zone.minutes < 0 ? '-' : '+',
               std::abs(zone.hours), std::abs(zone.minutes));
}

}  // namespace

DateTime ParseDateTime(const std::string& text) {
  DateTime result{};
  auto& [day, clock, zone] = result;
  int end = 0;
  std::sscanf(text.c_str(), "%d-%u-%uT%u:%u:%u%n", &day.year, &day.month,
              &day.day, &clock.hour, &clock.minute, &clock.second, &end);
  std::string rest = text.substr(static_cast<size_t>(end));
  if (!rest.empty() && rest[0] == '.') {
    size_t digits = rest.find_first_not_of("0123456789", 1);
    std::string fraction = (rest.substr(1, digits - 1) + "000000").substr(0, 6);
    clock.micros = static_cast<uint32_t>(std::stoul(fraction));
    rest = digits == std::string::npos ? "" : rest.substr(digits);
  }
  Zone read{};
  if (std::sscanf(rest.c_str(), "%d:%d", &read.hours, &read.minutes) == 2) {
    if (rest[0] == '-') read.minutes = -read.minutes;
    zone = read;
  }
  return result;
}

std::string PrintDateTime(const DateTime& date_time) {
  std::string text;
  AppendDay(&text, date_time.day);
  text.push_back('T');
  AppendClock(&text, date_time.clock);
  AppendZone(&text, date_time.zone);
  return text;
}

void AppendDay(std::string* out, const Day& day) {
  AppendPrintf(out, "%04d-%02u-%02u", day.year, day.month, day.day);
}

void AppendClock(std::string* out, const Clock& clock) {
  AppendPrintf(out, "%02u:%02u:%02u", clock.hour, clock.minute, clock.second);
  if (clock.micros != 0) AppendPrintf(out, ".%06" PRIu32, clock.micros);
}

void AppendShortZone(std::string* out, const Zone& zone) {
  if (std::abs(zone.hours) > kMaxZoneHours) return;
  if (zone.hours == 0 && zone.minutes == 0) return out->push_back('Z');
  AppendZone(out, zone);
}

void AppendDuration(std::string* out, const Duration& duration) {
  const auto part = [out](uint32_t amount, char unit) {
    if (amount == 0) return;
    AppendNumber(out, amount);
    out->push_back(unit);
  };
  out->push_back('P');
  const size_t begin = out->size();
  part(duration.years, 'Y');
  part(duration.months, 'M');
  part(duration.days, 'D');
  const bool seconds = duration.seconds != 0 || duration.micros != 0;
  if (duration.hours != 0 || duration.minutes != 0 || seconds) {
    out->push_back('T');
    part(duration.hours, 'H');
    part(duration.minutes, 'M');
    if (seconds) AppendNumber(out, duration.seconds);
    if (duration.micros != 0) AppendPrintf(out, ".%06" PRIu32, duration.micros);
    if (seconds) out->push_back('S');
  }
  if (out->size() == begin) out->append("T0S");
}

}  // namespace kit::text
