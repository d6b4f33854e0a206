// How a child process ended, in words for a report.
#ifndef KIT_HOST_PROCESS_CHILD_END_H_
#define KIT_HOST_PROCESS_CHILD_END_H_

#include <sys/resource.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kit::host {

// What wait4 says of it.
struct ChildEnd {
  int status;
  rusage usage;
};

// "crashed with SIGSEGV (Segmentation fault)", ...
std::string DescribeEnd(const ChildEnd& end);

// "SIGSTOP (Stopped (signal))"
std::string DescribeSignal(int signal);

// The limits that were there before a run, which may end its processes.
class Limits {
 public:
  Limits();

  // What was used up so that the system ended the process, and what to do about
  // it; none if it ended otherwise.
  struct Exhaustion {
    std::string reason;
    std::string advice;
  };
  std::optional<Exhaustion> ThatEnded(const ChildEnd& end) const;
  // The limit that lets allocations fail; none if there is none.
  std::optional<Exhaustion> OfMemory() const;

 private:
  rlimit cpu_ = {};
  rlimit address_space_ = {};
  rlimit data_ = {};
  uint64_t processes_ended_;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_CHILD_END_H_
