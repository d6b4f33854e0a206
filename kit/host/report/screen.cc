#include "kit/host/report/screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace kit::host {
namespace {

// Less than that is no page to read, and more likely a wrong number.
constexpr size_t kLeastWidth = 40;

const char* CodeOf(Screen::Color color) {
  switch (color) {
    case Screen::Color::kRed:
      return "31";
    case Screen::Color::kYellow:
      return "33";
    case Screen::Color::kGreen:
      return "32";
    case Screen::Color::kDim:
      return "2";
    case Screen::Color::kBold:
      return "1";
  }
  return "0";
}

bool WantsColor() {
  const char* const no_color = std::getenv("NO_COLOR");
  if (no_color != nullptr && *no_color != '\0') return false;
  const char* const term = std::getenv("TERM");
  return term != nullptr && std::string_view(term) != "dumb";
}

}  // namespace

Screen Screen::Of(int fd) {
  Screen screen;
  if (isatty(fd) == 0) return screen;
  screen.color = WantsColor();
  winsize size = {};
  if (ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col >= kLeastWidth) {
    screen.width = size.ws_col;
  }
  return screen;
}

std::string Screen::Painted(Color name, std::string_view text) const {
  if (!color) return std::string(text);
  return std::string("\x1b[") + CodeOf(name) + "m" + std::string(text) +
         "\x1b[0m";
}

size_t ColumnsOf(std::string_view text) {
  size_t columns = 0;
  // Of UTF-8, the first byte of each character.
  for (const char c : text) columns += (c & 0xC0) != 0x80 ? 1 : 0;
  return columns;
}

std::string Wrapped(std::string_view text, size_t width, size_t indent) {
  if (width == 0) return std::string(text);
  std::string wrapped;
  size_t column = 0;
  bool at_start = true;
  while (!text.empty()) {
    // A word with the blanks in front of it.
    const size_t word = text.find_first_not_of(' ');
    const size_t end =
        word == std::string_view::npos ? text.size() : text.find(' ', word);
    const std::string_view piece = text.substr(0, end);
    text.remove_prefix(piece.size());
    if (!at_start && column + ColumnsOf(piece) > width) {
      wrapped += "\n" + std::string(indent, ' ');
      const std::string_view bare =
          piece.substr(word == std::string_view::npos ? piece.size() : word);
      wrapped += bare;
      column = indent + ColumnsOf(bare);
    } else {
      wrapped += piece;
      column += ColumnsOf(piece);
    }
    at_start = false;
  }
  return wrapped;
}

}  // namespace kit::host
