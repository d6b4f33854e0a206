// Keys as they stand between the braces of a path.
#ifndef KIT_CONFD_KEYPATH_KEY_TEXT_H_
#define KIT_CONFD_KEYPATH_KEY_TEXT_H_

#include <string>
#include <string_view>

namespace kit::keypath {

// Whether a key may hold the character without being quoted.
constexpr bool IsPlainKeyChar(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte > ' ' && byte != 0x7f && c != '{' && c != '}' && c != '"' &&
         c != '\\';
}

// In double quotes with backslash escapes if the key is empty or holds a
// character that no plain key may hold, else unchanged. Control characters
// without an escape stay as they are, in quotes.
std::string QuoteKey(std::string_view key);

// Appends QuoteKey(key).
void AppendQuotedKey(std::string* out, std::string_view key);

}  // namespace kit::keypath

#endif  // KIT_CONFD_KEYPATH_KEY_TEXT_H_
