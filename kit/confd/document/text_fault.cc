#include "kit/confd/document/text_fault.h"

#include <algorithm>

namespace kit::store {

size_t LineOf(std::string_view text, size_t offset) {
  offset = std::min(offset, text.size());
  return 1 + static_cast<size_t>(std::count(
                 text.begin(), text.begin() + static_cast<ptrdiff_t>(offset),
                 '\n'));
}

void FailAt(std::string_view text, size_t offset, const std::string& reason) {
  throw EnvelopeError(LineOf(text, offset), reason);
}

std::string ShowCharacter(std::string_view text, size_t offset) {
  if (offset >= text.size()) return "the end";
  if (text[offset] == '\n' || text[offset] == '\r')
    return "the end of the line";
  size_t end = offset + 1;
  // The rest of a character of several bytes.
  while (end < text.size() && (text[end] & 0xc0) == 0x80) ++end;
  return "'" + std::string(text.substr(offset, end - offset)) + "'";
}

}  // namespace kit::store
