#include "kit/host/interrupt.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <system_error>

namespace kit::host {
namespace {

constexpr int kInterrupts[] = {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM};

// Read by the handler; changed only while the signals are blocked.
std::atomic<pid_t> worker_pid{0};
char unfinished_file[PATH_MAX] = "";

sigset_t InterruptSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kInterrupts) sigaddset(&set, signal);
  return set;
}

// Only calls that are safe in a signal handler.
void CleanUpAndExit(int signal) {
  const pid_t pid = worker_pid;
  if (pid > 0) KillWorker(pid);
  if (unfinished_file[0] != '\0') unlink(unfinished_file);
  _exit(128 + signal);
}

}  // namespace

void InstallInterruptHandlers() {
  struct sigaction action = {};
  action.sa_handler = CleanUpAndExit;
  action.sa_mask = InterruptSet();
  for (const int signal : kInterrupts) {
    struct sigaction previous = {};
    sigaction(signal, nullptr, &previous);
    if (previous.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

void SetInterruptWorker(pid_t pid) { worker_pid = pid; }

void SetInterruptFile(const std::string& path) {
  if (path.size() >= sizeof(unfinished_file)) {
    throw std::system_error(ENAMETOOLONG, std::generic_category());
  }
  const InterruptBlock block;
  std::memcpy(unfinished_file, path.c_str(), path.size() + 1);
}

void KillWorker(pid_t pid) {
  // Its group exists from the moment that the plug-in can start something.
  kill(-pid, SIGKILL);
  kill(pid, SIGKILL);
}

InterruptBlock::InterruptBlock() {
  const sigset_t set = InterruptSet();
  pthread_sigmask(SIG_BLOCK, &set, &previous_);
}

InterruptBlock::~InterruptBlock() {
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

void InterruptBlock::ResetInChild() {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  for (const int signal : kInterrupts) {
    struct sigaction current = {};
    sigaction(signal, nullptr, &current);
    if (current.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
  pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

}  // namespace kit::host
