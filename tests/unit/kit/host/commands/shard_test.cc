#include "kit/host/commands/shard.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

namespace kit::host {
namespace {

using Environment = std::map<std::string, std::string>;

class ShardTest : public testing::Test {
 protected:
  void SetUp() override { Clear(); }
  void TearDown() override { Clear(); }

  static void Clear() {
    for (const char* name :
         {"SLURM_ARRAY_TASK_ID", "SLURM_ARRAY_TASK_COUNT",
          "SLURM_ARRAY_TASK_MIN", "SLURM_ARRAY_TASK_STEP",
          "JOB_COMPLETION_INDEX", "CI_NODE_INDEX", "CI_NODE_TOTAL"}) {
      unsetenv(name);
    }
  }

  // "NUMBER/OF", "" for none.
  static std::string Found(const std::string& text,
                           const Environment& environment = {}) {
    Clear();
    for (const auto& [name, value] : environment) {
      setenv(name.c_str(), value.c_str(), 1);
    }
    const auto shard = FindShard(text);
    if (!shard) return "";
    return std::to_string(shard->number) + "/" + std::to_string(shard->of);
  }
};

TEST_F(ShardTest, IsOneOfItsNumber) {
  EXPECT_EQ(Found("1/1"), "1/1");
  EXPECT_EQ(Found("3/12"), "3/12");
  for (const char* text : {"", "1", "0/3", "4/3", "1/0", "1/", "/3", "1/3/",
                           "-1/3", " 1/3", "1/3 ", "a/3", "1/x", "1:3"}) {
    EXPECT_EQ(Found(text), "") << text;
  }
}

TEST_F(ShardTest, IsThatOfATaskOfAnArrayWhereverItsIdsBegin) {
  EXPECT_EQ(Found("auto", {{"SLURM_ARRAY_TASK_ID", "3"},
                           {"SLURM_ARRAY_TASK_COUNT", "8"}}),
            "3/8");
  EXPECT_EQ(Found("auto", {{"SLURM_ARRAY_TASK_ID", "0"},
                           {"SLURM_ARRAY_TASK_MIN", "0"},
                           {"SLURM_ARRAY_TASK_COUNT", "8"}}),
            "1/8");
  EXPECT_EQ(Found("auto", {{"SLURM_ARRAY_TASK_ID", "14"},
                           {"SLURM_ARRAY_TASK_MIN", "10"},
                           {"SLURM_ARRAY_TASK_STEP", "2"},
                           {"SLURM_ARRAY_TASK_COUNT", "4"}}),
            "3/4");
  EXPECT_EQ(Found("auto/5", {{"SLURM_ARRAY_TASK_ID", "5"}}), "5/5");
}

TEST_F(ShardTest, IsThatOfAnIndexedJob) {
  EXPECT_EQ(Found("auto/4", {{"JOB_COMPLETION_INDEX", "0"}}), "1/4");
  EXPECT_EQ(Found("auto/4", {{"JOB_COMPLETION_INDEX", "3"}}), "4/4");
  EXPECT_EQ(Found("auto/4", {{"JOB_COMPLETION_INDEX", "4"}}), "");
  EXPECT_EQ(Found("auto", {{"JOB_COMPLETION_INDEX", "0"}}), "");
}

TEST_F(ShardTest, IsThatOfAParallelJob) {
  EXPECT_EQ(Found("auto", {{"CI_NODE_INDEX", "2"}, {"CI_NODE_TOTAL", "3"}}),
            "2/3");
  EXPECT_EQ(Found("auto", {{"CI_NODE_INDEX", "4"}, {"CI_NODE_TOTAL", "3"}}),
            "");
  EXPECT_EQ(Found("auto"), "");
}

TEST_F(ShardTest, IsNotOfTheEnvironmentUnlessThatIsAskedFor) {
  EXPECT_EQ(Found("1/2", {{"CI_NODE_INDEX", "2"}, {"CI_NODE_TOTAL", "3"}}),
            "1/2");
}

}  // namespace
}  // namespace kit::host
