// One line on the terminal that says how far a long run is.
#ifndef KIT_HOST_COMMANDS_STATUS_LINE_H_
#define KIT_HOST_COMMANDS_STATUS_LINE_H_

#include <chrono>
#include <string>

namespace kit::host {

class StatusLine {
 public:
  // Does nothing unless `wanted` and standard error is a terminal.
  explicit StatusLine(bool wanted);
  // Erases the line.
  ~StatusLine();
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;

  // Whether it is time for a new text: not in the first second, then five
  // times a second.
  bool Due() const;
  void Show(const std::string& text);
  // Erases the line until the next text.
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  bool enabled_;
  bool shown_ = false;
  Clock::time_point due_;
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_STATUS_LINE_H_
