#include "kit/host/text.h"

#include <fmt/format.h>

namespace kit::host {

std::string OneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      line += "\\n";
    } else if ((byte < 0x20 && c != '\t') || byte == 0x7f) {
      line += fmt::format("\\x{:02x}", byte);
    } else {
      line += c;
    }
  }
  return line;
}

std::string Indent(std::string_view text, std::string_view margin) {
  if (!text.empty() && text.back() == '\n') text.remove_suffix(1);
  std::string indented;
  while (true) {
    const size_t end = text.find('\n');
    indented += fmt::format("{}{}\n", margin, OneLine(text.substr(0, end)));
    if (end == std::string_view::npos) return indented;
    text.remove_prefix(end + 1);
  }
}

std::string Shortened(std::string_view text, size_t max_bytes) {
  if (text.size() <= max_bytes) return std::string(text);
  const auto in_character = [text](size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) >> 6) == 2;
  };
  size_t end = max_bytes / 2;
  while (end > 0 && in_character(end)) --end;
  size_t start = text.size() - max_bytes / 2;
  while (in_character(start)) ++start;
  return fmt::format("{}[... {} bytes ...]{}", text.substr(0, end), start - end,
                     text.substr(start));
}

std::string Counted(size_t number, std::string_view one,
                    std::string_view many) {
  return fmt::format("{} {}", number, number == 1 ? one : many);
}

}  // namespace kit::host
