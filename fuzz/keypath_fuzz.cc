// Whatever parses must survive being written and parsed again, and whatever
// bytes a key holds must come back from its quoted form.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kit/confd/keypath/key_text.h"
#include "kit/confd/keypath/keypath.h"

namespace keypath = kit::keypath;

namespace {

void CheckRoundTrip(std::string_view text) {
  keypath::Path path;
  try {
    path = keypath::Parse(text);
  } catch (const keypath::SyntaxError& error) {
    if (error.offset() > text.size()) std::abort();
    return;
  }
  if (keypath::Parse(keypath::ToString(path)) != path) std::abort();
}

void CheckQuoting(std::string_view key) {
  const auto path = keypath::Parse("/l{" + keypath::QuoteKey(key) + "}");
  if (path.steps.size() != 1 || path.steps[0].keys.size() != 1 ||
      path.steps[0].keys[0] != key) {
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  CheckRoundTrip(text);
  CheckQuoting(text);
  return 0;
}
