#include "kit/host/descendants.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace kit::host {
namespace {

[[noreturn]] void WaitForTheEnd() {
  for (;;) pause();
}

pid_t StartSleeper(bool with_session) {
  const pid_t sleeper = fork();
  if (sleeper != 0) return sleeper;
  if (with_session) setsid();
  WaitForTheEnd();
}

// Leads a session and has a process that has left it.
pid_t StartWorker(int started) {
  const pid_t worker = fork();
  if (worker != 0) return worker;
  setsid();
  if (fork() == 0) {
    setsid();
    const pid_t hidden = fork();
    if (hidden == 0) WaitForTheEnd();
    if (write(started, &hidden, sizeof(hidden)) < 0) _exit(1);
    _exit(0);
  }
  WaitForTheEnd();
}

void Reap() {
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
}

void KillAll(pid_t worker, pid_t spared) {
  while (KillDescendants(worker, spared) > 0) {
    usleep(1000);
    Reap();
  }
}

bool IsThere(pid_t pid) { return kill(pid, 0) == 0; }

// Adopting processes can't be undone, so that this runs in a process of its
// own.
TEST(DescendantsDeathTest, AllOfTheRunAreKilledAndNobodyElse) {
  EXPECT_EXIT(
      {
        const pid_t stranger = StartSleeper(false);
        const pid_t stranger_elsewhere = StartSleeper(true);
        usleep(10'000);  // until it has its session
        AdoptDescendants();
        int ends[2];
        if (pipe(ends) != 0) _exit(1);
        const pid_t worker = StartWorker(ends[1]);
        pid_t hidden = 0;
        if (read(ends[0], &hidden, sizeof(hidden)) < 0) _exit(1);
        bool right = IsThere(hidden);
        KillAll(worker, hidden);
        right &= !IsThere(worker) && IsThere(hidden);
        KillAll(worker, 0);
        right &= !IsThere(hidden) && IsThere(stranger) &&
                 IsThere(stranger_elsewhere);
        kill(stranger, SIGKILL);
        kill(stranger_elsewhere, SIGKILL);
        _exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kit::host
