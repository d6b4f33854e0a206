#include "kit/host/commands/progress_line.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

using Seconds = std::chrono::duration<double>;

TEST(ProgressLine, TellsHowManyAreDoneHowFastAndHowLongTheRestTakes) {
  EXPECT_EQ(RenderProgress(512, 1024, Seconds(2)),
            "[##########----------] 512 of 1024, 256/s, 0:02 left");
  EXPECT_EQ(RenderProgress(1, 400, Seconds(2)),
            "[--------------------] 1 of 400, 0.5/s, 13:18 left");
  EXPECT_EQ(RenderProgress(10, 100000, Seconds(1)),
            "[--------------------] 10 of 100000, 10/s, 2:46:39 left");
  EXPECT_EQ(RenderProgress(7, 7, Seconds(1)),
            "[####################] 7 of 7, 7.0/s, 0:00 left");
}

TEST(ProgressLine, GuessesNothingBeforeTheFirstIsDone) {
  EXPECT_EQ(RenderProgress(0, 7, Seconds(3)), "[--------------------] 0 of 7");
  EXPECT_EQ(RenderProgress(0, 0, Seconds(0)), "[####################] 0 of 0");
}

}  // namespace
}  // namespace kit::host
