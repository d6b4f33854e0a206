#include "kit/host/commands/progress_line.h"

#include <fmt/format.h>

#include <cstdint>

namespace kit::host {
namespace {

constexpr size_t kBarWidth = 20;

std::string Time(double seconds) {
  const auto all = static_cast<uint64_t>(seconds + 0.5);
  if (all >= 3600) {
    return fmt::format("{}:{:02}:{:02}", all / 3600, all / 60 % 60, all % 60);
  }
  return fmt::format("{}:{:02}", all / 60, all % 60);
}

}  // namespace

std::string RenderProgress(size_t done, size_t total,
                           std::chrono::duration<double> spent) {
  const size_t filled = total == 0 ? kBarWidth : done * kBarWidth / total;
  std::string text =
      fmt::format("[{}{}] {} of {}", std::string(filled, '#'),
                  std::string(kBarWidth - filled, '-'), done, total);
  if (done == 0 || spent.count() <= 0) return text;
  const double rate = static_cast<double>(done) / spent.count();
  return text + fmt::format(", {:.{}f}/s, {} left", rate, rate < 10 ? 1 : 0,
                            Time(static_cast<double>(total - done) / rate));
}

void ProgressLine::Show(size_t done) {
  if (!line_.Due()) return;
  line_.Show(RenderProgress(done, total_, Clock::now() - start_));
}

}  // namespace kit::host
