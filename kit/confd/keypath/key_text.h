// Pieces of key text that the parser and the formatter share.
#ifndef KIT_CONFD_KEYPATH_KEY_TEXT_H_
#define KIT_CONFD_KEYPATH_KEY_TEXT_H_

#include <confd_lib.h>

#include <string>
#include <string_view>

namespace kit::keypath {

// Whether a key may hold the character without being quoted.
constexpr bool IsPlainKeyChar(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte > ' ' && byte != 0x7f && c != '{' && c != '}' && c != '"' &&
         c != '\\';
}

// Appends QuoteKey(key).
void AppendQuotedKey(std::string* out, std::string_view key);

// Appends ValueToKey(value); throws like it, leaving `out` unspecified.
void AppendValueKey(std::string* out, const confd_value_t& value);

}  // namespace kit::keypath

#endif  // KIT_CONFD_KEYPATH_KEY_TEXT_H_
