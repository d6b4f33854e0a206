// Text of unknown origin, made safe to print.
#ifndef KIT_HOST_TEXT_H_
#define KIT_HOST_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kit::host {

// As much of one text as is shown; no file's name is longer.
constexpr size_t kMaxShown = 4096;

// Everything that a terminal would obey or not show, as escapes: bytes that are
// no UTF-8 (\xff), control characters (\n, \t, \x1b, \u0085), and what is
// invisible, no plain space, or changes the direction of writing (\u202e,
// \U000e0041). The backslash becomes \\, so that no text passes for an escape
// and all of it can be undone. The rest stays readable.
std::string Escaped(std::string_view text);

// One line of a report: Shortened to kMaxShown, then Escaped.
std::string OneLine(std::string_view text);

std::string_view WithoutLastNewline(std::string_view text);

// The lines of a text, without their newlines; "" has one.
std::vector<std::string_view> Lines(std::string_view text);

// A log record as one line: OneLine without the newline that may end it.
std::string RecordLine(std::string_view record);

// OneLine of each of the Lines.
std::string Indent(std::string_view text, std::string_view margin);

// At most max_bytes: a longer text loses its middle, where the number of lost
// bytes is said. UTF-8 characters stay whole. With less room than for that, it
// is all that remains.
std::string Shortened(std::string_view text, size_t max_bytes);

// "1 entry", "2 entries".
std::string Counted(size_t number, std::string_view one, std::string_view many);

}  // namespace kit::host

#endif  // KIT_HOST_TEXT_H_
