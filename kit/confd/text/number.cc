#include "kit/confd/text/number.h"

namespace kit::text {

void AppendDouble(std::string* out, double number) {
  char buf[64];
  const auto end =
      std::to_chars(buf, buf + sizeof(buf), number, std::chars_format::general)
          .ptr;
  out->append(buf, end);
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
