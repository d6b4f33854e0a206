#include "tests/support/call_text.h"

#include <cstddef>

namespace test_support {

std::string CountMissingValues(std::string_view call) {
  constexpr std::string_view kMissing = "C_NOEXISTS";
  constexpr std::string_view kAnother = ", C_NOEXISTS";
  std::string text;
  bool quoted = false;
  size_t i = 0;
  while (i < call.size()) {
    if (!quoted && call.substr(i, kMissing.size()) == kMissing) {
      i += kMissing.size();
      size_t count = 1;
      for (; call.substr(i, kAnother.size()) == kAnother; ++count) {
        i += kAnother.size();
      }
      text += kMissing;
      if (count > 1) text += " x" + std::to_string(count);
      continue;
    }
    if (call[i] == '"') quoted = !quoted;
    if (quoted && call[i] == '\\' && i + 1 < call.size()) text += call[i++];
    text += call[i++];
  }
  return text;
}

}  // namespace test_support
