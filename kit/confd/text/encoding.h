// Bytes as text. Parsers give nullopt for a text that is not of their form.
#ifndef KIT_CONFD_TEXT_ENCODING_H_
#define KIT_CONFD_TEXT_ENCODING_H_

#include <cstddef>
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
// "0A:1B:2C".
std::string PrintUpperHex(std::string_view bytes);

// "0A1B2C".
std::optional<std::string> ParseBareHex(std::string_view text);
std::string PrintBareHex(std::string_view bytes);

// "192.168.255.1.0", a number for each byte.
std::optional<std::string> ParseOctets(std::string_view text);
std::string PrintOctets(std::string_view bytes);

// "1.3.6.1": up to 128 numbers, of which each is four bytes, the highest first.
std::optional<std::string> ParseOid(std::string_view text);
std::string PrintOid(std::string_view bytes);
constexpr size_t kMostOidNumbers = 128;

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_ENCODING_H_
