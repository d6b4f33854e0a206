#include "kit/confd/text/number.h"

#include <cmath>
#include <cstddef>

namespace kit::text {

namespace {

struct SizeUnit {
  char letter;
  int shift;
};
constexpr SizeUnit kSizeUnits[] = {{'G', 30}, {'M', 20}, {'K', 10}, {'B', 0}};

std::string PrintDouble(double number, std::chars_format format) {
  // Without an exponent the largest takes 309 digits.
  char buf[400];
  const auto end = std::to_chars(buf, buf + sizeof(buf), number, format).ptr;
  return std::string(buf, end);
}

std::optional<double> ParseDouble(std::string_view text,
                                  std::chars_format format) {
  const std::string_view unsigned_text =
      text.substr(!text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0);
  // from_chars knows words, and takes a sign behind the one that it must not
  // see.
  if (unsigned_text.empty() ||
      unsigned_text.find_first_of("0123456789.") != 0) {
    return std::nullopt;
  }
  double number = 0;
  const char* end = text.data() + text.size();
  auto [stop, error] =
      std::from_chars(unsigned_text.data(), end, number, format);
  if (error != std::errc() || stop != end) return std::nullopt;
  return text[0] == '-' ? -number : number;
}

}  // namespace

std::optional<double> ParseDouble(std::string_view text) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (text == "INF") return kInfinity;
  if (text == "-INF") return -kInfinity;
  if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
  return ParseDouble(text, std::chars_format::general);
}

void AppendDouble(std::string* out, double number) {
  if (std::isnan(number)) {
    out->append("NaN");
  } else if (std::isinf(number)) {
    out->append(number < 0 ? "-INF" : "INF");
  } else {
    out->append(PrintDouble(number, std::chars_format::general));
  }
}

std::optional<double> ParsePlainDouble(std::string_view text) {
  return ParseDouble(text, std::chars_format::fixed);
}

std::string PrintPlainDouble(double number) {
  return PrintDouble(number, std::chars_format::fixed);
}

std::optional<uint64_t> ParseSize(std::string_view text) {
  if (text.size() < 2 || text.front() != 'S') return std::nullopt;
  text.remove_prefix(1);
  uint64_t bytes = 0;
  for (const SizeUnit& unit : kSizeUnits) {
    const size_t end = text.find_first_not_of("0123456789");
    if (end == std::string_view::npos || text[end] != unit.letter) continue;
    const auto number = ParseNumber<uint64_t>(text.substr(0, end));
    uint64_t part = 0;
    if (!number ||
        __builtin_mul_overflow(*number, uint64_t{1} << unit.shift, &part) ||
        __builtin_add_overflow(bytes, part, &bytes)) {
      return std::nullopt;
    }
    text.remove_prefix(end + 1);
  }
  if (!text.empty()) return std::nullopt;
  return bytes;
}

std::string PrintSize(uint64_t bytes) {
  std::string text = "S";
  for (const SizeUnit& unit : kSizeUnits) {
    const uint64_t number = bytes >> unit.shift;
    bytes -= number << unit.shift;
    if (number == 0) continue;
    AppendNumber(&text, number);
    text.push_back(unit.letter);
  }
  return text.size() == 1 ? "S0B" : text;
}

std::optional<int64_t> ParseDecimal64(std::string_view text,
                                      uint8_t fraction_digits) {
  std::string digits;
  size_t point = text.find('.');
  std::string_view fraction;
  if (point != std::string_view::npos) fraction = text.substr(point + 1);
  std::string_view whole = text.substr(0, point);
  bool has_digit = !whole.empty() && whole.back() >= '0' && whole.back() <= '9';
  if (!has_digit || fraction.size() > fraction_digits) return std::nullopt;
  digits.append(whole);
  digits.append(fraction);
  digits.append(fraction_digits - fraction.size(), '0');
  return ParseNumber<int64_t>(digits);
}

std::string PrintFixedPoint(int64_t scaled, uint8_t fraction_digits) {
  std::string text = std::to_string(scaled);
  size_t first = scaled < 0 ? 1 : 0;
  if (text.size() - first <= fraction_digits) {
    text.insert(first, fraction_digits + 1 - (text.size() - first), '0');
  }
  if (fraction_digits > 0) text.insert(text.size() - fraction_digits, 1, '.');
  return text;
}

std::string PrintDecimal64(int64_t scaled, uint8_t fraction_digits) {
  std::string text = PrintFixedPoint(scaled, fraction_digits);
  if (fraction_digits == 0) return text;
  // Canonical: no needless zeros at the end, but one digit after the point.
  while (text.back() == '0' && text[text.size() - 2] != '.') text.pop_back();
  return text;
}

}  // namespace kit::text
