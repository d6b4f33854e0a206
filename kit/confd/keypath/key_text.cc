#include "kit/confd/keypath/key_text.h"

#include <algorithm>

namespace kit::keypath {

void AppendQuotedKey(std::string* out, std::string_view key) {
  if (!key.empty() && std::all_of(key.begin(), key.end(), IsPlainKeyChar)) {
    out->append(key);
    return;
  }
  out->push_back('"');
  for (const char c : key) {
    switch (c) {
      case '\n':
        out->append("\\n");
        break;
      case '\t':
        out->append("\\t");
        break;
      case '"':
      case '\\':
        out->push_back('\\');
        [[fallthrough]];
      default:
        out->push_back(c);
    }
  }
  out->push_back('"');
}

std::string QuoteKey(std::string_view key) {
  std::string out;
  out.reserve(key.size() + 2);
  AppendQuotedKey(&out, key);
  return out;
}

}  // namespace kit::keypath
