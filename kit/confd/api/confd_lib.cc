#include <confd_lib.h>

#include <algorithm>
#include <cstring>

#include "kit/confd/api/call.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::FormatPath;
using kit::api::Release;
using kit::api::RunCall;

extern "C" {

void confd_free_value(confd_value_t* v) {
  if (v == nullptr) return;
  Release(*v);
  // Programs release millions of values; only a close observer is told.
  if (!store::CallHooks::Instance().wants_values()) return;
  RunCall(
      "confd_free_value", [](Call&) {}, [](Call&) { return CONFD_OK; });
}

int confd_vformat_keypath(char* buf, int size, const char* fmt, va_list ap) {
  return RunCall(
      "confd_vformat_keypath",
      [&](Call& call) { call.SetPath(FormatPath(nullptr, fmt, ap)); },
      [&](Call& call) {
        const std::string& path = call.path();
        if (buf != nullptr && size > 0) {
          size_t count = std::min(path.size(), static_cast<size_t>(size) - 1);
          std::memcpy(buf, path.data(), count);
          buf[count] = '\0';
        }
        return static_cast<int>(path.size());
      });
}

}  // extern "C"
