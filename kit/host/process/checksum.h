// Tells whether a stream of bytes is the one that was written.
#ifndef KIT_HOST_PROCESS_CHECKSUM_H_
#define KIT_HOST_PROCESS_CHECKSUM_H_

#include <cstdint>
#include <string_view>

namespace kit::host {

// Fletcher's sums, 64 bits wide. Not against forgery.
struct Checksum {
  uint64_t bytes = 0;
  uint64_t sum = 0;
  uint64_t sum_of_sums = 0;

  void Add(std::string_view piece) {
    bytes += piece.size();
    for (const char c : piece) {
      sum += static_cast<unsigned char>(c);
      sum_of_sums += sum;
    }
  }
};

inline bool operator==(const Checksum& a, const Checksum& b) {
  return a.bytes == b.bytes && a.sum == b.sum && a.sum_of_sums == b.sum_of_sums;
}
inline bool operator!=(const Checksum& a, const Checksum& b) {
  return !(a == b);
}

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_CHECKSUM_H_
