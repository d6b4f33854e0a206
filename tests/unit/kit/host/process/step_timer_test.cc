#include "kit/host/process/step_timer.h"

#include <gtest/gtest.h>

#include <thread>

namespace kit::host {
namespace {

using std::chrono::milliseconds;

void Sleep(milliseconds time) { std::this_thread::sleep_for(time); }

TEST(StepTimerTest, AStepIsOverAfterItsTime) {
  constexpr milliseconds kTick(900);  // longer ones count less
  StepTimer timer(0.8);
  timer.Start();
  timer.Tick();
  EXPECT_FALSE(timer.IsOver());
  EXPECT_GT(timer.Left(kTick), milliseconds(0));
  EXPECT_LE(timer.Left(kTick), milliseconds(800));
  EXPECT_EQ(timer.Left(milliseconds(1)), milliseconds(1));
  Sleep(kTick);
  timer.Tick();
  EXPECT_TRUE(timer.IsOver());
  EXPECT_EQ(timer.Left(kTick), milliseconds(0));
  timer.Start();
  EXPECT_FALSE(timer.IsOver());
}

TEST(StepTimerTest, TimeInWhichTheProgramIsHeldUpDoesNotCount) {
  StepTimer timer(1.05);
  timer.Start();
  timer.RunUncounted([] { Sleep(milliseconds(1100)); });
  timer.Tick();
  EXPECT_FALSE(timer.IsOver());
  // As long as that it would tick, had nobody stopped it.
  Sleep(milliseconds(1100));
  timer.Tick();
  EXPECT_FALSE(timer.IsOver());
}

TEST(StepTimerTest, WithoutALimitNoStepIsOver) {
  StepTimer timer(0);
  timer.Start();
  Sleep(milliseconds(10));
  timer.Tick();
  EXPECT_FALSE(timer.IsOver());
  EXPECT_EQ(timer.Left(milliseconds(200)), milliseconds(200));
}

}  // namespace
}  // namespace kit::host
