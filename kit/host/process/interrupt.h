// What has to happen when a signal ends the program: the worker and all that it
// started die, and the unfinished output disappears.
#ifndef KIT_HOST_PROCESS_INTERRUPT_H_
#define KIT_HOST_PROCESS_INTERRUPT_H_

#include <sys/types.h>

#include <csignal>

namespace kit::host {

// Makes every signal that would end the program clean up first; then it kills
// the program as it would have. Signals that the program was started with
// ignored stay so.
void InstallInterruptHandlers();

// What there is to clean up; 0 and null are nothing. The function may only make
// calls that are safe in a signal handler.
void SetInterruptWorker(pid_t pid);
void SetInterruptCleanUp(void (*clean_up)());

// From here on they come too late: the outcome of the program is decided.
void HoldInterrupts();

// Holds these signals back while something to clean up comes into being.
class InterruptBlock {
 public:
  InterruptBlock();
  ~InterruptBlock();
  InterruptBlock(const InterruptBlock&) = delete;
  InterruptBlock& operator=(const InterruptBlock&) = delete;
  // For a forked child: default handling and the mask of before the block.
  void ResetInChild();

 private:
  sigset_t previous_;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_INTERRUPT_H_
