// Takes more and more memory, until somebody ends it or it is too much.
#include <cstdlib>
#include <cstring>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  constexpr size_t kMebibyte = size_t{1} << 20;
  for (int taken = 0; taken < 1500; ++taken) {
    void* const memory = std::malloc(kMebibyte);
    if (memory != nullptr) std::memset(memory, 1, kMebibyte);
  }
  return 0;
}
