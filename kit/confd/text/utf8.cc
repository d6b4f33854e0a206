#include "kit/confd/text/utf8.h"

#include <cstddef>
#include <cstdint>

namespace kit::text {

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

}  // namespace kit::text
