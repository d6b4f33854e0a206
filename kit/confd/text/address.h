// Internet addresses as text. Parsers give nullopt for a text that is not of
// their form.
#ifndef KIT_CONFD_TEXT_ADDRESS_H_
#define KIT_CONFD_TEXT_ADDRESS_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kit::text {

// Host byte order.
std::optional<uint32_t> ParseIpv4(std::string_view text);
std::string PrintIpv4(uint32_t address);
void AppendIpv4(std::string* out, uint32_t address);

// The address's 16 bytes.
std::optional<std::string> ParseIpv6(std::string_view text);
std::string PrintIpv6(std::string_view bytes);

// "ADDRESS/LENGTH" into its halves, the length at most `bits`.
std::optional<std::pair<std::string_view, uint8_t>> SplitPrefix(
    std::string_view text, uint8_t bits);

}  // namespace kit::text

#endif  // KIT_CONFD_TEXT_ADDRESS_H_
