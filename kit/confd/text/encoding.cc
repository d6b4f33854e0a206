#include "kit/confd/text/encoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kit::text {
namespace {

constexpr char kBase64Digits[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

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
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  out.reserve(bytes.size() * 3);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!out.empty()) out.push_back(':');
    out.push_back(kDigits[byte >> 4]);
    out.push_back(kDigits[byte & 15]);
  }
  return out;
}

}  // namespace kit::text
