#include "kit/confd/session/call_hooks.h"

#include <gtest/gtest.h>

namespace kit::store {
namespace {

FaultRule Rule(const std::string& function, const std::string& path,
               uint64_t occurrence, int error) {
  FaultRule rule;
  rule.function = function;
  rule.path = path;
  rule.occurrence = occurrence;
  rule.error = error;
  return rule;
}

class CallHooksTest : public testing::Test {
 protected:
  void TearDown() override {
    hooks_.SetFaults({});
    hooks_.SetObserver(std::nullopt);
  }
  // The error of the fault that the call meets, 0 for none.
  int Meet(const char* function, const char* path) {
    auto fault = hooks_.Fault(function, path);
    return fault ? fault->error : 0;
  }
  CallHooks& hooks_ = CallHooks::Instance();
};

TEST_F(CallHooksTest, FaultsFitByFunctionAndPath) {
  hooks_.SetFaults(
      {Rule("f", "/a", 0, 1), Rule("", "/b", 0, 2), Rule("g", "", 0, 3)});
  EXPECT_EQ(Meet("f", "/a"), 1);
  EXPECT_EQ(Meet("f", "/c"), 0);
  EXPECT_EQ(Meet("h", "/b"), 2);
  EXPECT_EQ(Meet("g", "/z"), 3);
  // The first that fits.
  EXPECT_EQ(Meet("g", "/b"), 2);
}

TEST_F(CallHooksTest, FaultsCountTheCallsThatFit) {
  hooks_.SetFaults({Rule("f", "", 2, 1), Rule("f", "", 3, 2)});
  EXPECT_EQ(Meet("f", "/a"), 0);
  EXPECT_EQ(Meet("g", "/a"), 0);
  EXPECT_EQ(Meet("f", "/b"), 1);
  EXPECT_EQ(Meet("f", "/c"), 2);
  EXPECT_EQ(Meet("f", "/d"), 0);
  hooks_.SetFaults({Rule("f", "", 1, 1)});
  EXPECT_EQ(Meet("f", "/a"), 1);
}

TEST_F(CallHooksTest, RecordsAreNumberedFromTheObserversStart) {
  std::vector<uint64_t> numbers;
  CallObserver observer;
  observer.on_call = [&](const CallRecord& record) {
    numbers.push_back(record.number);
  };
  hooks_.SetObserver(observer);
  EXPECT_TRUE(hooks_.observed());
  EXPECT_TRUE(hooks_.wants_values());
  hooks_.Report({0, "f", "", "", "", 0, 0, "", 0});
  hooks_.Report({0, "f", "", "", "", 0, 0, "", 0});
  observer.wants_values = false;
  hooks_.SetObserver(observer);
  EXPECT_FALSE(hooks_.wants_values());
  hooks_.Report({0, "f", "", "", "", 0, 0, "", 0});
  EXPECT_EQ(numbers, (std::vector<uint64_t>{1, 2, 1}));
  hooks_.SetObserver(std::nullopt);
  EXPECT_FALSE(hooks_.observed());
}

}  // namespace
}  // namespace kit::store
