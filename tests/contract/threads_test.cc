// Calls from several threads, and the end of all calls.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

using kit::control::CloseCalls;

constexpr auto kLongEnough = std::chrono::milliseconds(200);

class ThreadsTest : public CApiTest {
 protected:
  void SetUp() override { OpenZoo("<object><id>1</id></object>"); }
  void TearDown() override { kit::control::SetObserver(nullptr); }

  std::string Saved() const {
    std::string text;
    database_->Save(kit::control::Format::kXml,
                    [&](std::string_view piece) { text += piece; });
    return text;
  }
};

// The gate can't be opened again, so that these run in a process of their own.
using ThreadsDeathTest = ThreadsTest;

TEST_F(ThreadsTest, CallsOfSeveralThreadsAreCarriedOutOneAfterAnother) {
  constexpr int kThreads = 4;
  constexpr int kEntries = 40;
  std::vector<std::thread> threads;
  std::atomic<int> failures{0};
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, i, &failures] {
      const int first = 10 + i * kEntries;
      for (int round = 0; round < 20; ++round) {
        for (int id = first; id < first + kEntries; ++id) {
          const std::string path = "/object{" + std::to_string(id) + "}";
          if (Create(path) != "ok") ++failures;
          if (round < 19 && Delete(path) != "ok") ++failures;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(Walk("/object").size(), 1U + kThreads * kEntries);
}

TEST_F(ThreadsTest, ACallWithinACallOfTheSameThreadIsMisuse) {
  class Calling : public kit::control::Observer {
   public:
    explicit Calling(int sock) : sock_(sock) {}
    void OnCall(const kit::control::Call&) override {
      outcome = Outcome(cdb_num_instances(sock_, "/object"));
    }
    std::string outcome;

   private:
    int sock_;
  };
  Calling calling(cdb_);
  kit::control::SetObserver(&calling);
  EXPECT_EQ(cdb_num_instances(cdb_, "/object"), 1);
  EXPECT_EQ(calling.outcome, "PROTOUSAGE");
}

TEST_F(ThreadsDeathTest, ClosingRefusesFurtherCallsOfTheThread) {
  EXPECT_EXIT(
      {
        CloseCalls();
        const std::string outcome = Create("/object{2}");
        const bool made = Saved().find("<id>2</id>") != std::string::npos;
        _exit(outcome == "NOSESSION" && !made ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(ThreadsDeathTest, ClosingHoldsBackTheCallsOfOtherThreads) {
  EXPECT_EXIT(
      {
        std::atomic<bool> go{false};
        std::atomic<bool> returned{false};
        std::thread other([&] {
          while (!go) std::this_thread::yield();
          Create("/object{2}");
          returned = true;
        });
        CloseCalls();
        go = true;
        std::this_thread::sleep_for(kLongEnough);
        const bool made = Saved().find("<id>2</id>") != std::string::npos;
        _exit(!returned && !made ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(ThreadsDeathTest, ClosingWaitsForTheCallThatIsUnderWay) {
  class Slow : public kit::control::Observer {
   public:
    void OnCall(const kit::control::Call&) override {
      begun = true;
      std::this_thread::sleep_for(kLongEnough);
      ended = true;
    }
    std::atomic<bool> begun{false};
    std::atomic<bool> ended{false};
  };
  EXPECT_EXIT(
      {
        Slow slow;
        kit::control::SetObserver(&slow);
        std::thread other([&] { Create("/object{2}"); });
        while (!slow.begun) std::this_thread::yield();
        CloseCalls();
        _exit(slow.ended ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace contract
