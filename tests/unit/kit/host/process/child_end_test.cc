#include "kit/host/process/child_end.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

namespace kit::host {
namespace {

constexpr rlim_t kSoft = 1'000'000;  // seconds, never reached in fact
constexpr rlim_t kHard = 2'000'000;

ChildEnd Killed(int signal, rlim_t cpu_seconds) {
  ChildEnd end = {};
  end.status = W_EXITCODE(0, signal);
  end.usage.ru_utime.tv_sec = static_cast<time_t>(cpu_seconds) / 2;
  end.usage.ru_stime.tv_sec = static_cast<time_t>(cpu_seconds) / 2;
  return end;
}

void SetLimit(__rlimit_resource resource, rlim_t soft, rlim_t hard) {
  const rlimit limit = {soft, hard};
  setrlimit(resource, &limit);
}

// Limits stay, so that these are set in a process of their own.
class LimitsDeathTest : public testing::Test {
 protected:
  static bool IsNamed(const ChildEnd& end, const std::string& reason) {
    const auto exhaustion = Limits().ThatEnded(end);
    return exhaustion && exhaustion->reason == reason;
  }
};

TEST(ChildEndTest, EndsAreDescribed) {
  EXPECT_EQ(DescribeEnd(Killed(SIGSEGV, 0)),
            "crashed with SIGSEGV (Segmentation fault)");
  EXPECT_EQ(DescribeEnd(Killed(SIGABRT, 0)), "aborted with SIGABRT (Aborted)");
  EXPECT_EQ(DescribeEnd(Killed(SIGKILL, 0)),
            "was killed with SIGKILL (Killed)");
  EXPECT_EQ(DescribeEnd({W_EXITCODE(3, 0), {}}),
            "ended the process by itself with exit status 3");
}

TEST_F(LimitsDeathTest, CpuTimeIsUsedUpOnlyAtItsLimit) {
  EXPECT_EXIT(
      {
        SetLimit(RLIMIT_CPU, kSoft, kHard);
        const bool right = IsNamed(Killed(SIGXCPU, kSoft),
                                   "used up its CPU time of 1000000 s") &&
                           IsNamed(Killed(SIGKILL, kHard),
                                   "used up its CPU time of 2000000 s") &&
                           !Limits().ThatEnded(Killed(SIGXCPU, kSoft / 2)) &&
                           !Limits().ThatEnded(Killed(SIGKILL, kSoft)) &&
                           !Limits().ThatEnded(Killed(SIGSEGV, kHard)) &&
                           !Limits().ThatEnded({W_EXITCODE(1, 0), {}});
        _exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(LimitsDeathTest, TheSmallerLimitOfMemoryIsNamed) {
  EXPECT_EXIT(
      {
        bool right = !Limits().OfMemory();
        SetLimit(RLIMIT_AS, rlim_t{1} << 50, RLIM_INFINITY);
        right &= Limits().OfMemory()->advice.find("-v") != std::string::npos;
        SetLimit(RLIMIT_DATA, rlim_t{1} << 49, RLIM_INFINITY);
        right &= Limits().OfMemory()->advice.find("-d") != std::string::npos;
        right &= Limits().OfMemory()->reason ==
                 "ran out of memory, which is limited to 536870912 MiB";
        _exit(right ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kit::host
