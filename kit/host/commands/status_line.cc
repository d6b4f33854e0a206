#include "kit/host/commands/status_line.h"

#include <unistd.h>

#include <cstdio>

#include "kit/host/text.h"

namespace kit::host {
namespace {

constexpr std::chrono::seconds kQuietStart(1);
constexpr std::chrono::milliseconds kInterval(200);
constexpr char kEraseLine[] = "\r\x1b[K";
constexpr size_t kMaxWidth = 79;  // a wrapped line could not be erased

}  // namespace

StatusLine::StatusLine(bool wanted)
    : enabled_(wanted && isatty(STDERR_FILENO) == 1),
      due_(Clock::now() + kQuietStart) {}

StatusLine::~StatusLine() { Hide(); }

void StatusLine::Hide() {
  if (shown_) std::fputs(kEraseLine, stderr);
  shown_ = false;
}

bool StatusLine::Due() const { return enabled_ && Clock::now() >= due_; }

void StatusLine::Show(const std::string& text) {
  std::fputs((kEraseLine + OneLine(text).substr(0, kMaxWidth)).c_str(), stderr);
  shown_ = true;
  due_ = Clock::now() + kInterval;
}

}  // namespace kit::host
