// How far many jobs are, on the terminal.
#ifndef KIT_HOST_COMMANDS_PROGRESS_LINE_H_
#define KIT_HOST_COMMANDS_PROGRESS_LINE_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "kit/host/commands/status_line.h"

namespace kit::host {

// "[#####-----] 512 of 1024, 230/s, 0:02 left"
std::string RenderProgress(size_t done, size_t total,
                           std::chrono::duration<double> spent);

class ProgressLine {
 public:
  // Does nothing unless `wanted` and standard error is a terminal.
  ProgressLine(bool wanted, size_t total) : total_(total), line_(wanted) {}

  void SetTotal(size_t total) { total_ = total; }
  void Show(size_t done);
  // Makes room for other lines.
  void Hide() { line_.Hide(); }

 private:
  using Clock = std::chrono::steady_clock;

  size_t total_;
  Clock::time_point start_ = Clock::now();
  StatusLine line_;
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_PROGRESS_LINE_H_
