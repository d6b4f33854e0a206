#include "kit/host/process/descendants.h"

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

// Leads a session and has a process that has left it, in the group of one
// between the two.
pid_t StartWorker(int started, bool keeps_between) {
  const pid_t worker = fork();
  if (worker != 0) return worker;
  setsid();
  if (fork() == 0) {
    setsid();
    const pid_t hidden = fork();
    if (hidden == 0) WaitForTheEnd();
    if (write(started, &hidden, sizeof(hidden)) < 0) _exit(1);
    if (keeps_between) WaitForTheEnd();
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

// Whether all of a run are killed but one that is to be spared, then that one,
// and nobody else.
bool KillsTheRun(bool keeps_between) {
  const pid_t stranger = StartSleeper(false);
  const pid_t stranger_elsewhere = StartSleeper(true);
  usleep(10'000);  // until it has its session
  AdoptDescendants();
  int ends[2];
  if (pipe(ends) != 0) return false;
  const pid_t worker = StartWorker(ends[1], keeps_between);
  pid_t hidden = 0;
  if (read(ends[0], &hidden, sizeof(hidden)) < 0) return false;
  bool right = IsThere(hidden);
  KillAll(worker, hidden);
  right &= !IsThere(worker) && IsThere(hidden);
  KillAll(worker, 0);
  right &= !IsThere(hidden) && IsThere(stranger) && IsThere(stranger_elsewhere);
  kill(stranger, SIGKILL);
  kill(stranger_elsewhere, SIGKILL);
  return right;
}

// Adopting processes can't be undone, so that these run in processes of their
// own.
TEST(DescendantsDeathTest, AllOfTheRunAreKilledAndNobodyElse) {
  EXPECT_EXIT(_exit(KillsTheRun(false) ? 0 : 1), testing::ExitedWithCode(0),
              "");
}

TEST(DescendantsDeathTest, WhoIsSparedIsSoInAnybodysGroup) {
  EXPECT_EXIT(_exit(KillsTheRun(true) ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kit::host
