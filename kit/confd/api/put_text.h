// How formatters hand text out.
#ifndef KIT_CONFD_API_PUT_TEXT_H_
#define KIT_CONFD_API_PUT_TEXT_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace kit::api {

// Writes what fits into `size` bytes, with a NUL; the length that was needed
// without it.
inline int PutText(std::string_view text, char* buf, int size) {
  if (buf != nullptr && size > 0) {
    const size_t count = std::min(text.size(), static_cast<size_t>(size) - 1);
    std::memcpy(buf, text.data(), count);
    buf[count] = '\0';
  }
  return static_cast<int>(std::min(text.size(), size_t{INT_MAX}));
}

}  // namespace kit::api

#endif  // KIT_CONFD_API_PUT_TEXT_H_
