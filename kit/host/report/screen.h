// What is known of where a report is read.
#ifndef KIT_HOST_REPORT_SCREEN_H_
#define KIT_HOST_REPORT_SCREEN_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace kit::host {

struct Screen {
  bool color = false;
  size_t width = 0;  // columns; 0: not limited

  // A terminal with colours, unless NO_COLOR is set or TERM says that it has
  // none; anything else without limits.
  static Screen Of(int fd);

  enum class Color { kRed, kYellow, kGreen, kDim, kBold };
  std::string Painted(Color color, std::string_view text) const;
};

// How many columns a text takes that has no escapes for terminals.
size_t ColumnsOf(std::string_view text);

// A paragraph in lines of at most `width` columns (0: not limited), broken at
// blanks; what follows the first line begins with `indent` blanks. Words that
// are longer than a line stay whole.
std::string Wrapped(std::string_view text, size_t width, size_t indent);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_SCREEN_H_
