// Text of unknown origin, made safe to print.
#ifndef KIT_HOST_TEXT_H_
#define KIT_HOST_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace kit::host {

// One line: control characters as escapes (\n, \x1b), the rest as it is.
std::string OneLine(std::string_view text);

// OneLine of every line; a last newline is dropped.
std::string Indent(std::string_view text, std::string_view margin);

// A long text without its middle: about max_bytes of its beginning and end, and
// between them the number of bytes left out. UTF-8 characters stay whole.
std::string Shortened(std::string_view text, size_t max_bytes);

// "1 entry", "2 entries".
std::string Counted(size_t number, std::string_view one, std::string_view many);

}  // namespace kit::host

#endif  // KIT_HOST_TEXT_H_
