// Faults of a text, with the line where they stand.
#ifndef KIT_CONFD_DOCUMENT_TEXT_FAULT_H_
#define KIT_CONFD_DOCUMENT_TEXT_FAULT_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kit::store {

// The text is no configuration at all; what() is the reason.
class EnvelopeError : public std::runtime_error {
 public:
  EnvelopeError(size_t error_line, const std::string& reason)
      : std::runtime_error(reason), line(error_line) {}
  const size_t line;  // from 1
};

inline constexpr std::string_view kBlanks = " \t\r\n";

// From 1; an offset past the end is in the last line.
size_t LineOf(std::string_view text, size_t offset);

// Throws EnvelopeError for the place at `offset`.
[[noreturn]] void FailAt(std::string_view text, size_t offset,
                         const std::string& reason);

// The character that stands there, for a message: "'x'", "the end of the line",
// "the end".
std::string ShowCharacter(std::string_view text, size_t offset);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TEXT_FAULT_H_
