// Bytes as text. Parsers give nullopt for a text that is not of their form.
#ifndef KIT_CONFD_TEXT_ENCODING_H_
#define KIT_CONFD_TEXT_ENCODING_H_

#include <optional>
#include <string>
#include <string_view>

namespace kit::text {

// RFC 4648, padded.
std::optional<std::string> ParseBase64(std::string_view text);
std::string PrintBase64(std::string_view bytes);

// "0a:1b:2c".
std::optional<std::string> ParseHex(std::string_view text);
std::string PrintHex(std::string_view bytes);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_ENCODING_H_
