// Text forms of addresses and encoded bytes. Parsers give nullopt for a text
// that is not of their form. Encoded bytes are printed as in key paths.
#ifndef KIT_CONFD_TEXT_TEXT_FORMS_H_
#define KIT_CONFD_TEXT_TEXT_FORMS_H_

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kit::store {

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

// Whether a string may hold the text: UTF-8 without the characters that
// neither YANG nor XML knows (control characters but tab and line ends,
// surrogates, non-characters).
bool IsYangText(std::string_view text);

// Host byte order.
std::optional<uint32_t> ParseIpv4(std::string_view text);
std::string PrintIpv4(uint32_t address);

// The address's 16 bytes.
std::optional<std::string> ParseIpv6(std::string_view text);
std::string PrintIpv6(const std::string& bytes);

// "ADDRESS/LENGTH" into its halves, the length at most `bits`.
std::optional<std::pair<std::string_view, uint8_t>> SplitPrefix(
    std::string_view text, uint8_t bits);

std::optional<std::string> ParseBase64(std::string_view text);

// "0a:1b:2c".
std::optional<std::string> ParseHex(std::string_view text);

// A number with `fraction_digits` digits after the point, scaled by
// 10^fraction_digits. The text must be canonical.
std::optional<int64_t> ParseDecimal64(std::string_view text,
                                      uint8_t fraction_digits);
std::string PrintDecimal64(int64_t scaled, uint8_t fraction_digits);

}  // namespace kit::store

#endif  // KIT_CONFD_TEXT_TEXT_FORMS_H_
