// What a program may change of its process besides its memory.
#ifndef KIT_HOST_PROCESS_PROCESS_STATE_H_
#define KIT_HOST_PROCESS_PROCESS_STATE_H_

#include <sys/resource.h>

#include <array>
#include <csignal>

namespace kit::host {

// Signal handling, the signal mask and the limits as they are now.
class ProcessState {
 public:
  ProcessState();
  // Puts them back, and locale and floating-point arithmetic as they are at a
  // program's start. Limits whose hard ones were lowered stay where they are.
  void Restore() const;

 private:
  std::array<struct sigaction, NSIG> actions_ = {};
  sigset_t mask_ = {};
  std::array<rlimit, RLIM_NLIMITS> limits_ = {};
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_PROCESS_STATE_H_
