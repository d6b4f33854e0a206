#include "kit/confd/text/encoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "kit/confd/text/number.h"

namespace kit::text {
namespace {

constexpr char kBase64Digits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr char kUpperHexDigits[] = "0123456789ABCDEF";

// Numbers with points between them; nothing for "".
template <typename Number>
std::optional<std::vector<Number>> ParseDotted(std::string_view text) {
  std::vector<Number> numbers;
  while (!text.empty()) {
    const size_t point = std::min(text.find('.'), text.size());
    const std::string_view digits = text.substr(0, point);
    const auto number = ParseNumber<Number>(digits);
    const bool has_sign = !digits.empty() && digits.front() == '+';
    if (!number || has_sign || point + 1 == text.size()) return std::nullopt;
    numbers.push_back(*number);
    text.remove_prefix(std::min(point + 1, text.size()));
  }
  return numbers;
}

std::string PrintHexDigits(std::string_view bytes, const char* digits,
                           bool separated) {
  std::string out;
  out.reserve(bytes.size() * 3);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (separated && !out.empty()) out.push_back(':');
    out.push_back(digits[byte >> 4]);
    out.push_back(digits[byte & 15]);
  }
  return out;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::optional<std::string> ParseBase64(std::string_view text) {
  std::string bytes;
  uint32_t group = 0;
  int digits = 0;
  int padding = 0;
  for (char c : text) {
    if (c == '\n' || c == '\r' || c == ' ') continue;
    if (c == '=') {
      ++padding;
      continue;
    }
    const char* digit = std::strchr(kBase64Digits, c);
    if (c == '\0' || digit == nullptr || padding > 0) return std::nullopt;
    group = group << 6 | static_cast<uint32_t>(digit - kBase64Digits);
    if (++digits % 4 == 0) {
      for (int shift = 16; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(group >> shift & 0xff));
      }
      group = 0;
    }
  }
  if ((digits + padding) % 4 != 0 || digits % 4 == 1 || padding > 2) {
    return std::nullopt;
  }
  if (digits % 4 == 2) bytes.push_back(static_cast<char>(group >> 4 & 0xff));
  if (digits % 4 == 3) bytes.push_back(static_cast<char>(group >> 10 & 0xff));
  if (digits % 4 == 3) bytes.push_back(static_cast<char>(group >> 2 & 0xff));
  return bytes;
}

std::string PrintBase64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t present = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t j = 0; j < 3; ++j) {
      group <<= 8;
      if (j < present) group |= static_cast<unsigned char>(bytes[i + j]);
    }
    for (size_t j = 0; j < 4; ++j) {
      out.push_back(j <= present ? kBase64Digits[(group >> (18 - 6 * j)) & 63]
                                 : '=');
    }
  }
  return out;
}

std::optional<std::string> ParseHex(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); i += 3) {
    if (i + 1 >= text.size()) return std::nullopt;
    int high = HexDigit(text[i]);
    int low = HexDigit(text[i + 1]);
    bool separated =
        i + 2 == text.size() || (text[i + 2] == ':' && i + 3 < text.size());
    if (high < 0 || low < 0 || !separated) return std::nullopt;
    bytes.push_back(static_cast<char>(high << 4 | low));
  }
  return bytes;
}

std::string PrintHex(std::string_view bytes) {
  return PrintHexDigits(bytes, kHexDigits, true);
}

std::string PrintUpperHex(std::string_view bytes) {
  return PrintHexDigits(bytes, kUpperHexDigits, true);
}

std::optional<std::string> ParseBareHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < text.size(); i += 2) {
    const int high = HexDigit(text[i]);
    const int low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<char>(high << 4 | low));
  }
  return bytes;
}

std::string PrintBareHex(std::string_view bytes) {
  return PrintHexDigits(bytes, kUpperHexDigits, false);
}

std::optional<std::string> ParseOctets(std::string_view text) {
  const auto numbers = ParseDotted<uint8_t>(text);
  if (!numbers) return std::nullopt;
  return std::string(numbers->begin(), numbers->end());
}

std::string PrintOctets(std::string_view bytes) {
  std::string out;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (i > 0) out.push_back('.');
    AppendNumber(&out, static_cast<unsigned>(static_cast<uint8_t>(bytes[i])));
  }
  return out;
}

std::optional<std::string> ParseOid(std::string_view text) {
  const auto numbers = ParseDotted<uint32_t>(text);
  if (!numbers || numbers->empty() || numbers->size() > kMostOidNumbers) {
    return std::nullopt;
  }
  std::string bytes;
  for (const uint32_t number : *numbers) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      bytes.push_back(static_cast<char>(number >> shift & 0xff));
    }
  }
  return bytes;
}

std::string PrintOid(std::string_view bytes) {
  std::string out;
  for (size_t i = 0; i + 4 <= bytes.size(); i += 4) {
    uint32_t number = 0;
    for (size_t k = 0; k < 4; ++k) {
      number = number << 8 | static_cast<uint8_t>(bytes[i + k]);
    }
    if (i > 0) out.push_back('.');
    AppendNumber(&out, number);
  }
  return out;
}

}  // namespace kit::text
