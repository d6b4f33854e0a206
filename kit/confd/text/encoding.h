// Bytes as text. Parsers give nullopt for a text that is not of their form.
#ifndef KIT_CONFD_TEXT_ENCODING_H_
#define KIT_CONFD_TEXT_ENCODING_H_

#include <optional>
#include <string>
#include <string_view>

namespace kit::text {

std::optional<std::string> ParseBase64(std::string_view text);

// "0a:1b:2c".
std::optional<std::string> ParseHex(std::string_view text);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_ENCODING_H_
