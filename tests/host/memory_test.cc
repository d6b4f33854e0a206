// What a run does where a single allocation fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>

#include "host_test.h"

namespace host_test {
namespace {

using testing::HasSubstr;

class MemoryTest : public HostTest {
 protected:
  struct Attempt {
    Outcome outcome;
    uint64_t allocations;
    std::string output;  // "" without one
  };

  // Upgrades an example while allocation `number`, from 1, of the host's own
  // code or the plug-in's fails; 0: none of them.
  Attempt RunFailing(uint64_t number) const {
    Launch launch;
    launch.environment = {
        "LD_PRELOAD=" TEST_FAILING_MALLOC, "ALLOCATION_OWNER=kit",
        "ALLOCATION_COUNT=" + Write("count", std::string(8, '\0')),
        "FAIL_ALLOCATION=" + std::to_string(number),
        // For a host with sanitizers, whose library wants to be the first.
        "ASAN_OPTIONS=verify_asan_link_order=0:alloc_dealloc_mismatch=0:"
        "detect_leaks=0"};
    std::filesystem::remove(Path("out"));
    Attempt attempt{Run({"run", TEST_SOURCE_ROOT "/examples/branch-router.xml",
                         "-o", Path("out")},
                        launch),
                    0, Exists("out") ? Read("out") : ""};
    std::memcpy(&attempt.allocations, Read("count").data(),
                sizeof attempt.allocations);
    return attempt;
  }
};

// A report without what it says of schemas: for want of memory the plug-in's
// copy may not come to an end, which is no fault of the run.
std::string WithoutSchemas(const std::string& report) {
  std::istringstream lines(report);
  std::string kept;
  std::string line;
  std::getline(lines, line);
  kept += line.substr(0, line.find(", ")) + "\n";  // how much there is to see
  while (std::getline(lines, line)) {
    if (line.find("  SCHEMAS  ") == std::string::npos) kept += line + "\n";
  }
  return kept;
}

TEST_F(MemoryTest, AFailedAllocationNeverLeadsToAnotherResult) {
  constexpr uint64_t kSamples = 100;
  const Attempt whole = RunFailing(0);
  ASSERT_EQ(whole.outcome.exit_code, 0) << whole.outcome;
  ASSERT_GT(whole.allocations, kSamples);
  uint64_t told = 0;
  for (uint64_t i = 0; i < kSamples; ++i) {
    const uint64_t number = 1 + i * whole.allocations / kSamples;
    const Attempt attempt = RunFailing(number);
    const Outcome& outcome = attempt.outcome;
    if (outcome.exit_code == 0) {
      EXPECT_EQ(WithoutSchemas(outcome.out), WithoutSchemas(whole.outcome.out))
          << number;
      EXPECT_EQ(attempt.output, whole.output) << number;
      continue;
    }
    EXPECT_EQ(attempt.output, "") << number << outcome;
    if (outcome.exit_code == 5) {
      // One of the plug-in's own.
      EXPECT_THAT(outcome.err, HasSubstr("plug-in")) << number;
      continue;
    }
    EXPECT_EQ(outcome.exit_code, 70) << number << outcome;
    EXPECT_THAT(outcome.err, HasSubstr("out of memory")) << number;
    ++told;
  }
  EXPECT_GT(told, kSamples / 2);
}

}  // namespace
}  // namespace host_test
