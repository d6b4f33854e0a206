#include "kit/host/process/interrupt.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>

#include "kit/host/process/descendants.h"

namespace kit::host {
namespace {

// Whether the signal ends a process that does nothing about it.
bool IsFatal(int signal) {
  switch (signal) {
    case SIGKILL:
    case SIGSTOP:
    case SIGTSTP:
    case SIGTTIN:
    case SIGTTOU:
    case SIGCHLD:
    case SIGCONT:
    case SIGURG:
    case SIGWINCH:
      return false;
    default:
      // Between the two are those that the C library keeps for itself.
      return signal < 32 || signal >= SIGRTMIN;
  }
}

// Read by the handler; changed only while the signals are blocked.
std::atomic<pid_t> worker_pid{0};
void (*volatile clean_up_files)() = nullptr;

sigset_t InterruptSet() {
  sigset_t set;
  sigemptyset(&set);
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (IsFatal(signal)) sigaddset(&set, signal);
  }
  return set;
}

// Only calls that are safe in a signal handler.
void CleanUpAndDie(int signal) {
  const pid_t worker = worker_pid;
  // Gives up after some seconds: a process can be beyond being killed.
  for (int tries = 0; worker > 0 && tries < 5000; ++tries) {
    if (KillDescendants(worker, 0) == 0) break;
    const timespec millisecond = {0, 1'000'000};
    nanosleep(&millisecond, nullptr);
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
  }
  if (clean_up_files != nullptr) clean_up_files();
  // Not an exit with 128 + signal: a shell that runs the program in a loop
  // would go on after Ctrl-C.
  std::signal(signal, SIG_DFL);
  raise(signal);  // held back until this handler returns
}

bool IsHandledHere(int signal) {
  struct sigaction current = {};
  return sigaction(signal, nullptr, &current) == 0 &&
         current.sa_handler == CleanUpAndDie;
}

}  // namespace

void InstallInterruptHandlers() {
  struct sigaction action = {};
  action.sa_handler = CleanUpAndDie;
  action.sa_mask = InterruptSet();
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (!IsFatal(signal)) continue;
    // A sanitizer's handlers stay as well.
    struct sigaction previous = {};
    sigaction(signal, nullptr, &previous);
    if (previous.sa_handler == SIG_DFL) sigaction(signal, &action, nullptr);
  }
}

void SetInterruptWorker(pid_t pid) { worker_pid = pid; }

void SetInterruptCleanUp(void (*clean_up)()) { clean_up_files = clean_up; }

void HoldInterrupts() {
  const sigset_t set = InterruptSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

InterruptBlock::InterruptBlock() {
  const sigset_t set = InterruptSet();
  pthread_sigmask(SIG_BLOCK, &set, &previous_);
}

InterruptBlock::~InterruptBlock() {
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

void InterruptBlock::ResetInChild() {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (IsHandledHere(signal)) std::signal(signal, SIG_DFL);
  }
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace kit::host
