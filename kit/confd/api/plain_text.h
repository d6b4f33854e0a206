// Values as text by their tags alone: what a program without schemas can tell.
#ifndef KIT_CONFD_API_PLAIN_TEXT_H_
#define KIT_CONFD_API_PLAIN_TEXT_H_

#include <confd_lib.h>

#include <string>

namespace kit::api {

// Any value, unquoted: "enum<3>", "bits<5>", "idref<17>", "tag<9>",
// "invalid64<150>" for a decimal64 without its fraction digits, bytes in
// hexadecimal, strings as they are. What has no text reads as its type,
// "C_NOEXISTS".
std::string PlainText(const confd_value_t& value);

// Whether a type knows another text for such a value.
bool DependsOnModel(const confd_value_t& value);

}  // namespace kit::api

#endif  // KIT_CONFD_API_PLAIN_TEXT_H_
