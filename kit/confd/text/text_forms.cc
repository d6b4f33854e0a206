#include "kit/confd/text/text_forms.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>

namespace kit::store {
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

bool IsYangText(std::string_view text) {
  size_t at = 0;
  while (at < text.size()) {
    auto byte = static_cast<uint8_t>(text[at++]);
    if (byte < 0x80) {
      if (byte < ' ' && byte != '\t' && byte != '\n' && byte != '\r') {
        return false;
      }
      continue;
    }
    size_t more = byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : 1;
    if (byte < 0xc2 || byte > 0xf4 || text.size() - at < more) return false;
    uint32_t point = byte & (0x3fu >> more);
    for (size_t i = 0; i < more; ++i) {
      auto next = static_cast<uint8_t>(text[at++]);
      if ((next & 0xc0) != 0x80) return false;
      point = point << 6 | (next & 0x3fu);
    }
    constexpr uint32_t kLowest[] = {0, 0x80, 0x800, 0x10000};
    bool surrogate = point >= 0xd800 && point <= 0xdfff;
    bool no_character =
        (point >= 0xfdd0 && point <= 0xfdef) || (point & 0xfffe) == 0xfffe;
    if (point < kLowest[more] || point > 0x10ffff || surrogate ||
        no_character) {
      return false;
    }
  }
  return true;
}

std::optional<uint32_t> ParseIpv4(std::string_view text) {
  char buffer[INET_ADDRSTRLEN];
  if (text.size() >= sizeof buffer) return std::nullopt;
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  in_addr address;
  if (inet_pton(AF_INET, buffer, &address) != 1) return std::nullopt;
  return ntohl(address.s_addr);
}

std::string PrintIpv4(uint32_t address) {
  char buffer[INET_ADDRSTRLEN];
  in_addr raw;
  raw.s_addr = htonl(address);
  return inet_ntop(AF_INET, &raw, buffer, sizeof buffer);
}

std::optional<std::string> ParseIpv6(std::string_view text) {
  char buffer[INET6_ADDRSTRLEN];
  if (text.size() >= sizeof buffer) return std::nullopt;
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  in6_addr address;
  if (inet_pton(AF_INET6, buffer, &address) != 1) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(&address), sizeof address);
}

std::string PrintIpv6(const std::string& bytes) {
  char buffer[INET6_ADDRSTRLEN];
  return inet_ntop(AF_INET6, bytes.data(), buffer, sizeof buffer);
}

std::optional<std::pair<std::string_view, uint8_t>> SplitPrefix(
    std::string_view text, uint8_t bits) {
  size_t slash = text.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  auto length = ParseNumber<uint8_t>(text.substr(slash + 1));
  if (!length || *length > bits) return std::nullopt;
  return std::make_pair(text.substr(0, slash), *length);
}

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

std::string PrintDecimal64(int64_t scaled, uint8_t fraction_digits) {
  std::string text = std::to_string(scaled);
  size_t first = scaled < 0 ? 1 : 0;
  if (text.size() - first <= fraction_digits) {
    text.insert(first, fraction_digits + 1 - (text.size() - first), '0');
  }
  text.insert(text.size() - fraction_digits, 1, '.');
  // Canonical: no needless zeros at the end, but one digit after the point.
  while (text.back() == '0' && text[text.size() - 2] != '.') text.pop_back();
  return text;
}

}  // namespace kit::store
