#include "kit/host/process/child_end.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>

namespace kit::host {
namespace {

// How many processes the kernel has ended for want of memory, be it the
// machine's or a container's.
uint64_t ProcessesEndedForMemory() {
  std::ifstream counters("/proc/vmstat");
  std::string name;
  uint64_t count = 0;
  while (counters >> name >> count) {
    if (name == "oom_kill") return count;
  }
  return 0;
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) +
         static_cast<double>(time.tv_usec) / 1e6;
}

// The system samples the time that it holds against the limit, so that both
// differ.
bool IsReached(rlim_t limit, double seconds) {
  return limit != RLIM_INFINITY && seconds >= 0.75 * static_cast<double>(limit);
}

}  // namespace

std::string DescribeSignal(int signal) {
  const char* name = sigabbrev_np(signal);
  return name == nullptr ? fmt::format("signal {}", signal)
                         : fmt::format("SIG{} ({})", name, strsignal(signal));
}

std::string DescribeEnd(const ChildEnd& end) {
  if (!WIFSIGNALED(end.status)) {
    return fmt::format("ended the process by itself with exit status {}",
                       WEXITSTATUS(end.status));
  }
  const int signal = WTERMSIG(end.status);
  switch (signal) {
    case SIGABRT:
      return fmt::format("aborted with {}", DescribeSignal(signal));
    case SIGKILL:
      return fmt::format("was killed with {}", DescribeSignal(signal));
    default:
      return fmt::format("crashed with {}", DescribeSignal(signal));
  }
}

Limits::Limits() : processes_ended_(ProcessesEndedForMemory()) {
  getrlimit(RLIMIT_CPU, &cpu_);
  getrlimit(RLIMIT_AS, &address_space_);
  getrlimit(RLIMIT_DATA, &data_);
}

std::optional<Limits::Exhaustion> Limits::ThatEnded(const ChildEnd& end) const {
  if (!WIFSIGNALED(end.status)) return std::nullopt;
  const int signal = WTERMSIG(end.status);
  const double used = Seconds(end.usage.ru_utime) + Seconds(end.usage.ru_stime);
  if ((signal == SIGXCPU && IsReached(cpu_.rlim_cur, used)) ||
      (signal == SIGKILL && IsReached(cpu_.rlim_max, used))) {
    return Exhaustion{
        fmt::format("used up its CPU time of {} s",
                    signal == SIGXCPU ? cpu_.rlim_cur : cpu_.rlim_max),
        "raise the limit (ulimit -t) and run again"};
  }
  if (signal == SIGKILL && ProcessesEndedForMemory() > processes_ended_) {
    return Exhaustion{
        "was ended by the system, which ran out of memory",
        "run again with more memory, on the machine or for the container"};
  }
  return std::nullopt;
}

std::optional<Limits::Exhaustion> Limits::OfMemory() const {
  constexpr rlim_t kMebibyte = rlim_t{1} << 20;
  const rlim_t limit = std::min(address_space_.rlim_cur, data_.rlim_cur);
  if (limit == RLIM_INFINITY) return std::nullopt;
  return Exhaustion{fmt::format("ran out of memory, which is limited to {} MiB",
                                limit / kMebibyte),
                    limit == data_.rlim_cur
                        ? "raise the limit (ulimit -d) and run again"
                        : "raise the limit (ulimit -v) and run again"};
}

}  // namespace kit::host
