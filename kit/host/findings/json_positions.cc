#include "kit/host/findings/json_positions.h"

#include <algorithm>

namespace kit::host {
namespace {

// How many bytes of content an escape of a string stands for, and how many it
// has. A pair of surrogates counts as two escapes of two bytes.
struct EscapeSize {
  size_t written;
  size_t meant;
};

unsigned HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  return static_cast<unsigned>((c | 0x20) - 'a') + 10;
}

EscapeSize SizeOfEscape(std::string_view escape) {
  if (escape.substr(1, 1) != "u") return {2, 1};
  unsigned unit = 0;
  for (const char c : escape.substr(2, 4)) unit = unit * 16 + HexDigit(c);
  const bool is_surrogate = unit >= 0xd800 && unit < 0xe000;
  return {6, unit < 0x80 ? 1u : unit < 0x800 || is_surrogate ? 2u : 3u};
}

}  // namespace

TextPosition PositionOf(std::string_view text, size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const size_t newline = before.rfind('\n');
  const auto lines = std::count(before.begin(), before.end(), '\n');
  return {static_cast<size_t>(lines) + 1, newline == std::string_view::npos
                                              ? before.size() + 1
                                              : before.size() - newline};
}

JsonPositions::JsonPositions(std::string_view text) : text_(text) {
  ReadValue("");
}

TextPosition JsonPositions::Value(const std::string& pointer) const {
  return PositionOf(text_, values_.at(pointer));
}

TextPosition JsonPositions::Name(const std::string& pointer) const {
  const auto known = names_.find(pointer);
  if (known != names_.end()) return PositionOf(text_, known->second);
  // It is written with escapes.
  return Value(pointer.substr(0, pointer.rfind('/')));
}

TextPosition JsonPositions::Inside(const std::string& pointer,
                                   size_t byte) const {
  size_t at = values_.at(pointer) + 1;
  for (size_t content = 0; content < byte && text_[at] != '"';) {
    const EscapeSize size =
        text_[at] == '\\' ? SizeOfEscape(text_.substr(at)) : EscapeSize{1, 1};
    content += size.meant;
    if (content <= byte) at += size.written;
  }
  return PositionOf(text_, at);
}

void JsonPositions::ReadValue(const std::string& pointer) {
  SkipBlanks();
  values_[pointer] = at_;
  switch (text_[at_]) {
    case '{':
      return ReadObject(pointer);
    case '[':
      return ReadArray(pointer);
    case '"':
      ReadString();
      return;
    default:
      at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
  }
}

void JsonPositions::ReadObject(const std::string& pointer) {
  ++at_;
  while (!Take('}')) {
    Take(',');
    SkipBlanks();
    const size_t begin = at_;
    const std::string name = pointer + "/" + ReadString();
    if (!names_.emplace(name, begin).second && !repeated_) {
      repeated_ = name.substr(pointer.size() + 1);
      repeated_offset_ = begin;
    }
    Take(':');
    ReadValue(name);
  }
}

void JsonPositions::ReadArray(const std::string& pointer) {
  ++at_;
  for (size_t i = 0; !Take(']'); ++i) {
    Take(',');
    ReadValue(pointer + "/" + std::to_string(i));
  }
}

// As it is written.
std::string JsonPositions::ReadString() {
  const size_t begin = ++at_;
  while (text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
  return std::string(text_.substr(begin, at_++ - begin));
}

void JsonPositions::SkipBlanks() {
  at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
}

bool JsonPositions::Take(char c) {
  SkipBlanks();
  if (at_ == text_.size() || text_[at_] != c) return false;
  ++at_;
  return true;
}

}  // namespace kit::host
