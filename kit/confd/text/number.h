// Numbers as text. Parsers give nullopt for a text that is not of their form.
#ifndef KIT_CONFD_TEXT_NUMBER_H_
#define KIT_CONFD_TEXT_NUMBER_H_

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace kit::text {

// A decimal number that fits T, with nothing before or after it.
template <typename T>
std::optional<T> ParseNumber(std::string_view text) {
  T number{};
  const char* end = text.data() + text.size();
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    // from_chars would take the second sign of "+-1".
    if (!text.empty() && text.front() == '-') return std::nullopt;
  }
  auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || text.empty()) return std::nullopt;
  return number;
}

template <typename Integer>
void AppendNumber(std::string* out, Integer number) {
  // Sign, and one digit more than digits10 promises.
  char digits[std::numeric_limits<Integer>::digits10 + 2];
  const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
  out->append(digits, end);
}

// "0.5", "1e+300", "INF", "-INF", "NaN". The shortest text that reads back the
// same is printed.
std::optional<double> ParseDouble(std::string_view text);
void AppendDouble(std::string* out, double number);
// The same without exponents, infinity and the like.
std::optional<double> ParsePlainDouble(std::string_view text);
std::string PrintPlainDouble(double number);

// "S1G8M7K956B": a number of bytes in powers of 1024, parts may be missing.
std::optional<uint64_t> ParseSize(std::string_view text);
std::string PrintSize(uint64_t bytes);

// A number with `fraction_digits` digits after the point, scaled by
// 10^fraction_digits. The text must be canonical.
std::optional<int64_t> ParseDecimal64(std::string_view text,
                                      uint8_t fraction_digits);
std::string PrintDecimal64(int64_t scaled, uint8_t fraction_digits);
// The same with all digits: 150 with two of them is "1.50", not "1.5".
std::string PrintFixedPoint(int64_t scaled, uint8_t fraction_digits);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_NUMBER_H_
