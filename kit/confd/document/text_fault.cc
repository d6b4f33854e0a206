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

}  // namespace kit::store
