#include "kit/confd/model/memory.h"

#include <libyang/libyang.h>
#include <libyang/version.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <new>

namespace kit::store {
namespace {

std::atomic<bool> out_of_memory{false};

// libyang tells nobody else of a failed allocation of its own. Everything else
// is kept by the context.
void HearMessage(const char* message) {
  constexpr char kFailed[] = "Memory allocation failed";
  if (message != nullptr &&
      std::strncmp(message, kFailed, sizeof kFailed - 1) == 0) {
    NoteOutOfMemory();
  }
}

void WatchLibyang() {
  ly_log_options(LY_LOLOG | LY_LOSTORE);
#if LY_VERSION_MAJOR < 3
  ly_set_log_clb([](LY_LOG_LEVEL, const char* message,
                    const char*) { HearMessage(message); },
                 1);  // or the context's messages have no path either
#else
  ly_set_log_clb([](LY_LOG_LEVEL, const char* message, const char*, const char*,
                    uint64_t) { HearMessage(message); });
#endif
}

}  // namespace

void NoteOutOfMemory() noexcept { out_of_memory = true; }

void RequireMemory() {
  if (out_of_memory) throw std::bad_alloc();
}

LibyangMemory::LibyangMemory() {
  [[maybe_unused]] static const bool watched = (WatchLibyang(), true);
  errno = 0;
}

void LibyangMemory::Require(int result) const {
  // Its pattern matcher's failure is one of the system.
  if (result == LY_EMEM || result == LY_ESYS ||
      (result != LY_SUCCESS && errno == ENOMEM)) {
    NoteOutOfMemory();
  }
  RequireMemory();
}

}  // namespace kit::store
