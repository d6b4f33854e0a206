// Pieces of key text that the parser and the formatter share.
#ifndef KIT_CONFD_KEYPATH_KEY_TEXT_H_
#define KIT_CONFD_KEYPATH_KEY_TEXT_H_

#include <confd_lib.h>

#include <charconv>
#include <limits>
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

// Appends four bytes in network order as "a.b.c.d".
void AppendDottedQuad(std::string* out, const void* bytes);

// RFC 4648, padded.
std::string Base64(std::string_view bytes);

// "0a:1b:2c".
std::string HexString(std::string_view bytes);

template <typename Integer>
void AppendDecimal(std::string* out, Integer number) {
  // Sign, and one digit more than digits10 promises.
  char digits[std::numeric_limits<Integer>::digits10 + 2];
  const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
  out->append(digits, end);
}

}  // namespace kit::keypath

#endif  // KIT_CONFD_KEYPATH_KEY_TEXT_H_
