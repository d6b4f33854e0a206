#include "kit/host/process/job_pool.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>
#include <vector>

namespace kit::host {
namespace {

void SleepMs(long ms) {
  const timespec time = {ms / 1000, ms % 1000 * 1'000'000};
  nanosleep(&time, nullptr);
}

// The results of jobs, or how their processes ended, in the order in which they
// were taken.
std::vector<std::string> Results(
    size_t jobs, size_t processes,
    const std::function<std::string(size_t)>& work) {
  std::vector<std::string> results;
  RunJobs({jobs, processes, work,
           [&results](size_t job, JobEnd end) {
             EXPECT_EQ(job, results.size());
             results.push_back(end.end ? DescribeEnd(*end.end) : end.result);
           },
           nullptr});
  return results;
}

using Texts = std::vector<std::string>;

TEST(JobPool, HandsResultsOverInOrderWhicheverComesFirst) {
  const auto work = [](size_t job) {
    if (job == 0) SleepMs(100);
    return std::to_string(job);
  };
  EXPECT_EQ(Results(5, 3, work), Texts({"0", "1", "2", "3", "4"}));
  EXPECT_EQ(Results(5, 1, work), Texts({"0", "1", "2", "3", "4"}));
}

TEST(JobPool, WithoutJobsIsDoneAtOnce) {
  EXPECT_EQ(Results(0, 2, [](size_t) { return ""; }), Texts());
}

TEST(JobPool, ResultsMayBeLongAndHoldAnyBytes) {
  const std::string result = std::string(300'000, 'x') + '\0' + "\xff\n";
  EXPECT_EQ(Results(2, 2, [&](size_t) { return result; }),
            Texts({result, result}));
}

TEST(JobPool, AJobThatDiesCostsItsOwnResult) {
  EXPECT_EQ(Results(4, 2,
                    [](size_t job) -> std::string {
                      if (job == 1) raise(SIGKILL);
                      if (job == 2) _exit(9);
                      return "done";
                    }),
            Texts({"done", "was killed with SIGKILL (Killed)",
                   "ended the process by itself with exit status 9", "done"}));
}

TEST(JobPool, NoMoreRunAtATimeThanIsAllowed) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  // Each job takes the place of the one that runs, and leaves it.
  ASSERT_EQ(write(fds[1], "12", 2), 2);
  const auto work = [&fds](size_t) -> std::string {
    char place = 0;
    pollfd ready = {fds[0], POLLIN, 0};
    if (poll(&ready, 1, 0) != 1) return "no room";
    if (read(fds[0], &place, 1) != 1) return "no room";
    SleepMs(5);
    return write(fds[1], &place, 1) == 1 ? "ran" : "no pipe";
  };
  EXPECT_EQ(Results(20, 2, work), Texts(20, "ran"));
  close(fds[0]);
  close(fds[1]);
}

TEST(JobPool, WhatEndsItEndsItsJobs) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  const auto run = [&fds] {
    RunJobs({2, 2,
             [&fds](size_t job) -> std::string {
               if (job == 0) return "";
               for (;;) pause();
             },
             [](size_t, JobEnd) { throw std::runtime_error("enough"); },
             nullptr});
  };
  EXPECT_THROW(run(), std::runtime_error);
  close(fds[1]);
  pollfd closed = {fds[0], POLLIN, 0};
  EXPECT_EQ(poll(&closed, 1, 5000), 1) << "a job still has the pipe";
  close(fds[0]);
}

TEST(JobPool, WhatEndsItEndsJobsThatTakeNoSignal) {
  const auto run = [] {
    RunJobs({2, 2,
             [](size_t job) -> std::string {
               if (job == 0) return "";
               std::signal(SIGTERM, SIG_IGN);
               return std::string(1'000'000, 'x');  // more than a pipe takes
             },
             [](size_t, JobEnd) {
               SleepMs(100);  // until it waits
               throw std::runtime_error("enough");
             },
             nullptr});
  };
  EXPECT_THROW(run(), std::runtime_error);
}

TEST(JobPool, ItsOwnDeathEndsItsJobs) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  const pid_t pid = fork();
  if (pid == 0) {
    close(fds[0]);
    Results(1, 1, [&fds](size_t) -> std::string {
      (void)!write(fds[1], "x", 1);
      for (;;) pause();
    });
    _exit(0);
  }
  close(fds[1]);
  char started = 0;
  ASSERT_EQ(read(fds[0], &started, 1), 1);
  kill(pid, SIGKILL);
  waitpid(pid, nullptr, 0);
  pollfd closed = {fds[0], POLLIN, 0};
  EXPECT_EQ(poll(&closed, 1, 5000), 1) << "the job has outlived it";
  EXPECT_EQ(read(fds[0], &started, 1), 0);
  close(fds[0]);
}

}  // namespace
}  // namespace kit::host
