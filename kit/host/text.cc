#include "kit/host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kit::host {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// What can't be seen or changes how its neighbours are: Unicode's controls,
// format characters, separators but the space, default ignorables and private
// use. In ascending order.
constexpr Range kHidden[] = {
    {0x0000, 0x001f},   {0x007f, 0x00a0},    {0x00ad, 0x00ad},
    {0x034f, 0x034f},   {0x0600, 0x0605},    {0x061c, 0x061c},
    {0x06dd, 0x06dd},   {0x070f, 0x070f},    {0x0890, 0x0891},
    {0x08e2, 0x08e2},   {0x115f, 0x1160},    {0x1680, 0x1680},
    {0x17b4, 0x17b5},   {0x180b, 0x180f},    {0x2000, 0x200f},
    {0x2028, 0x202f},   {0x205f, 0x206f},    {0x3000, 0x3000},
    {0x3164, 0x3164},   {0xe000, 0xf8ff},    {0xfdd0, 0xfdef},
    {0xfe00, 0xfe0f},   {0xfeff, 0xfeff},    {0xffa0, 0xffa0},
    {0xfff0, 0xfffb},   {0x110bd, 0x110bd},  {0x110cd, 0x110cd},
    {0x13430, 0x1343f}, {0x1bca0, 0x1bca3},  {0x1d173, 0x1d17a},
    {0xe0000, 0xe0fff}, {0xf0000, 0x10ffff},
};

bool IsHidden(char32_t character) {
  if ((character & 0xfffe) == 0xfffe) return true;  // never a character
  const Range* range =
      std::lower_bound(std::begin(kHidden), std::end(kHidden), character,
                       [](const Range& r, char32_t c) { return r.last < c; });
  return range != std::end(kHidden) && character >= range->first;
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

struct Character {
  char32_t code;
  size_t bytes;  // 0: no UTF-8
};

// The first character of a text that is not empty. Only the shortest form of a
// Unicode character is UTF-8.
Character Decode(std::string_view text) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) return {lead, 1};
  const size_t bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc0 || lead > 0xf7 || text.size() < bytes) return {lead, 0};
  char32_t code = lead & (0x7fU >> bytes);
  for (size_t i = 1; i < bytes; ++i) {
    if (!IsContinuation(text[i])) return {lead, 0};
    code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3fU);
  }
  const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
  if (code < kSmallest[bytes] || code > 0x10ffff || is_surrogate) {
    return {lead, 0};
  }
  return {code, bytes};
}

std::string Escape(char32_t code) {
  switch (code) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\\':
      return "\\\\";
    default:
      break;
  }
  const auto number = static_cast<uint32_t>(code);
  if (number < 0x80) return fmt::format("\\x{:02x}", number);
  return number < 0x10000 ? fmt::format("\\u{:04x}", number)
                          : fmt::format("\\U{:08x}", number);
}

}  // namespace

std::string Escaped(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    const Character character = Decode(text);
    if (character.bytes == 0) {
      escaped +=
          fmt::format("\\x{:02x}", static_cast<uint32_t>(character.code));
      text.remove_prefix(1);
      continue;
    }
    if (character.code == '\\' || IsHidden(character.code)) {
      escaped += Escape(character.code);
    } else {
      escaped += text.substr(0, character.bytes);
    }
    text.remove_prefix(character.bytes);
  }
  return escaped;
}

std::string OneLine(std::string_view text) {
  return Escaped(Shortened(text, kMaxShown));
}

std::string_view WithoutLastNewline(std::string_view text) {
  if (!text.empty() && text.back() == '\n') text.remove_suffix(1);
  return text;
}

std::vector<std::string_view> Lines(std::string_view text) {
  text = WithoutLastNewline(text);
  std::vector<std::string_view> lines;
  while (true) {
    const size_t end = text.find('\n');
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return lines;
    text.remove_prefix(end + 1);
  }
}

std::string RecordLine(std::string_view record) {
  return OneLine(WithoutLastNewline(record));
}

std::string Indent(std::string_view text, std::string_view margin) {
  std::string indented;
  for (const std::string_view line : Lines(text)) {
    indented += fmt::format("{}{}\n", margin, OneLine(line));
  }
  return indented;
}

std::string Shortened(std::string_view text, size_t max_bytes) {
  constexpr size_t kMaxGap = 36;  // for the largest number there is
  if (text.size() <= max_bytes) return std::string(text);
  const size_t kept = max_bytes > kMaxGap ? (max_bytes - kMaxGap) / 2 : 0;
  size_t end = kept;
  while (end > 0 && IsContinuation(text[end])) --end;
  size_t start = text.size() - kept;
  while (start < text.size() && IsContinuation(text[start])) ++start;
  return fmt::format("{}[... {} bytes ...]{}", text.substr(0, end), start - end,
                     text.substr(start));
}

std::string Counted(size_t number, std::string_view one,
                    std::string_view many) {
  return fmt::format("{} {}", number, number == 1 ? one : many);
}

}  // namespace kit::host
