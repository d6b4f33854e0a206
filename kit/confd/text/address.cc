#include "kit/confd/text/address.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstddef>
#include <cstring>

#include "kit/confd/text/number.h"

namespace kit::text {

std::optional<uint32_t> ParseIpv4(std::string_view text) {
  uint32_t address = 0;
  size_t at = 0;
  for (int part = 0; part < 4; ++part) {
    if (part > 0 && (at == text.size() || text[at++] != '.')) {
      return std::nullopt;
    }
    const size_t begin = at;
    uint32_t number = 0;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
      number = number * 10 + static_cast<uint32_t>(text[at++] - '0');
      if (number > 255) return std::nullopt;
    }
    const size_t digits = at - begin;
    if (digits == 0 || (digits > 1 && text[begin] == '0')) return std::nullopt;
    address = address << 8 | number;
  }
  if (at < text.size()) return std::nullopt;
  return address;
}

std::string PrintIpv4(uint32_t address) {
  std::string text;
  AppendIpv4(&text, address);
  return text;
}

void AppendIpv4(std::string* out, uint32_t address) {
  // Keys are addresses more often than not, and one piece is appended faster
  // than seven.
  char text[] = "255.255.255.255";
  char* end = text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const uint32_t part = address >> shift & 0xff;
    if (part >= 100) *end++ = static_cast<char>('0' + part / 100);
    if (part >= 10) *end++ = static_cast<char>('0' + part / 10 % 10);
    *end++ = static_cast<char>('0' + part % 10);
    *end++ = '.';
  }
  out->append(text, static_cast<size_t>(end - 1 - text));
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

std::string PrintIpv6(std::string_view bytes) {
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

}  // namespace kit::text
