// The stand-in for the platform's upgrade log, and the plug-in's logger on it.

#include <gtest/gtest.h>
#include <zqconfd_log.h>
#include <zqconfd_sink.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "config_update/update_logger.h"

namespace {

using config_update::UpdateLogger;

using Records = std::vector<std::string>;

void Record(void* context, const char* text, size_t length) {
  static_cast<Records*>(context)->emplace_back(text, length);
}

int Write(void* handle, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int result = zqmw_vlog_debug(handle, format, args);
  va_end(args);
  return result;
}

// What a test finds wrong in a child process, a line each.
class Findings {
 public:
  template <typename A, typename B>
  void ExpectEqual(const A& actual, const B& expected, const char* what) {
    if (actual != expected) {
      text_ += what;
      text_ += ": " + testing::PrintToString(actual) + ", expected " +
               testing::PrintToString(expected) + "\n";
    }
  }

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// Ends the process: with success if `body` finds nothing wrong.
[[noreturn]] void RunAndExit(const std::function<void(Findings&)>& body) {
  Findings findings;
  try {
    body(findings);
  } catch (const std::exception& error) {
    findings.ExpectEqual(std::string(error.what()), "", "exception");
  }
  std::fputs(findings.text().c_str(), stderr);
  std::exit(findings.text().empty() ? EXIT_SUCCESS : EXIT_FAILURE);
}

// Puts the log back as it was for the other tests of this process.
class LogTest : public testing::Test {
 protected:
  LogTest() { zqconfd_set_sink(Record, &records_); }
  ~LogTest() override {
    zqconfd_set_handle_factory(nullptr, nullptr);
    zqconfd_set_sink(nullptr, nullptr);
  }

  Records records_;
};

TEST_F(LogTest, FormatsARecordAndAddsNothing) {
  Write(zqconfd_log_handle(), "Failed to %s %d of %u (error: %s)", "read", -3,
        4294967295U, "no such node");
  EXPECT_EQ(records_, Records{"Failed to read -3 of 4294967295 (error: no such "
                              "node)"});
}

TEST_F(LogTest, KeepsTheNewlineOfAFormatThatHasOne) {
  Write(zqconfd_log_handle(), "err=%s\n", "x");
  EXPECT_EQ(records_, Records{"err=x\n"});
}

TEST_F(LogTest, WritesAnEmptyRecord) {
  Write(zqconfd_log_handle(), "%s", "");
  EXPECT_EQ(records_, Records{""});
}

TEST_F(LogTest, KeepsRecordsOfEveryLengthWhole) {
  for (const size_t length : {1022U, 1023U, 1024U, 1025U, 1U << 20U}) {
    records_.clear();
    const std::string text(length, 'x');
    Write(zqconfd_log_handle(), "%s|%d", text.c_str(), 7);
    ASSERT_EQ(records_.size(), 1U);
    EXPECT_EQ(records_.front().size(), length + 2);
    EXPECT_TRUE(records_.front() == text + "|7") << "length " << length;
  }
}

TEST_F(LogTest, WritesTheFormatItselfWhenItCannotBeFilled) {
  // No character has this code, so the conversion fails.
  const std::array<wchar_t, 2> no_text = {static_cast<wchar_t>(0x7fffffff), 0};
  Write(zqconfd_log_handle(), "name %ls", no_text.data());
  EXPECT_EQ(records_, Records{"name %ls"});
}

TEST_F(LogTest, DropsRecordsWithoutAHandle) {
  EXPECT_EQ(Write(nullptr, "lost"), 0);
  EXPECT_EQ(records_, Records{});
}

TEST_F(LogTest, HandsOutTheHandleOfTheLogAndCountsTheFetches) {
  const size_t before = zqconfd_handle_fetches();
  EXPECT_EQ(get_conf_updt_log_handle(), zqconfd_log_handle());
  EXPECT_NE(get_conf_updt_log_handle(), nullptr);
  EXPECT_EQ(zqconfd_handle_fetches(), before + 2);
}

TEST_F(LogTest, HandsOutNoHandleWhenThereIsNoLog) {
  zqconfd_set_no_log();
  EXPECT_EQ(get_conf_updt_log_handle(), nullptr);
  zqconfd_set_handle_factory(nullptr, nullptr);
  EXPECT_EQ(get_conf_updt_log_handle(), zqconfd_log_handle());
}

TEST_F(LogTest, LetsAnExceptionOfTheFactoryThrough) {
  const size_t before = zqconfd_handle_fetches();
  zqconfd_set_handle_factory(
      [](void*) -> void* { throw std::runtime_error("no log yet"); }, nullptr);
  EXPECT_THROW(get_conf_updt_log_handle(), std::runtime_error);
  EXPECT_EQ(zqconfd_handle_fetches(), before + 1);
}

TEST_F(LogTest, GivesTheFactoryItsContext) {
  int context = 0;
  zqconfd_set_handle_factory([](void* own) { return own; }, &context);
  EXPECT_EQ(get_conf_updt_log_handle(), &context);
}

TEST_F(LogTest, SinkMaySetAnotherSink) {
  zqconfd_set_sink(
      [](void*, const char*, size_t) { zqconfd_set_sink(nullptr, nullptr); },
      nullptr);
  Write(zqconfd_log_handle(), "swap");
  testing::internal::CaptureStderr();
  Write(zqconfd_log_handle(), "after");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "after\n");
}

TEST_F(LogTest, WritesToStderrALineEachWithoutASink) {
  zqconfd_set_sink(nullptr, nullptr);
  testing::internal::CaptureStderr();
  Write(zqconfd_log_handle(), "one");
  Write(zqconfd_log_handle(), "two\n");
  Write(zqconfd_log_handle(), "%s", "three");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\ntwo\nthree\n");
}

TEST_F(LogTest, TakesRecordsOfSeveralThreads) {
  constexpr int kThreads = 4;
  constexpr int kRecords = 200;
  struct Count {
    std::mutex mutex;
    int records = 0;
  } count;
  zqconfd_set_sink(
      [](void* context, const char*, size_t) {
        auto* own = static_cast<Count*>(context);
        const std::lock_guard<std::mutex> lock(own->mutex);
        ++own->records;
      },
      &count);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([i] {
      for (int k = 0; k < kRecords; ++k) {
        Write(get_conf_updt_log_handle(), "%d %d", i, k);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count.records, kThreads * kRecords);
}

// The logger fetches its handle once in the life of a process, so each of its
// tests has a program of its own, which starts anew.
class UpdateLoggerTest : public testing::Test {
 protected:
  UpdateLoggerTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  ~UpdateLoggerTest() override {
    GTEST_FLAG_SET(death_test_style, style_before_);
  }

 private:
  const std::string style_before_ = GTEST_FLAG_GET(death_test_style);
};

TEST_F(UpdateLoggerTest, AddsNoPrefixNewlineOrTimestamp) {
  EXPECT_EXIT(
      RunAndExit([](Findings& findings) {
        Records records;
        zqconfd_set_sink(Record, &records);
        UpdateLogger::Log("Start OSPF TE update");
        UpdateLogger::Log("x (error: %s) %d %u", "why", -1, 4294967295U);
        UpdateLogger::Log("err=%s\n", "no");
        const Records expected = {"Start OSPF TE update",
                                  "x (error: why) -1 4294967295", "err=no\n"};
        findings.ExpectEqual(records, expected, "records");
      }),
      testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(UpdateLoggerTest, FetchesTheHandleOnTheFirstCallAndOnlyOnce) {
  EXPECT_EXIT(
      RunAndExit([](Findings& findings) {
        Records records;
        zqconfd_set_sink(Record, &records);
        findings.ExpectEqual(zqconfd_handle_fetches(), 0U, "before any call");
        UpdateLogger::Log("a");
        findings.ExpectEqual(zqconfd_handle_fetches(), 1U, "first call");
        UpdateLogger::Log("b");
        UpdateLogger::instance();
        findings.ExpectEqual(zqconfd_handle_fetches(), 1U, "later calls");
        findings.ExpectEqual(records, Records{"a", "b"}, "records");
      }),
      testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(UpdateLoggerTest, FetchesANullHandleOnceAndNeverRetries) {
  EXPECT_EXIT(RunAndExit([](Findings& findings) {
                Records records;
                zqconfd_set_sink(Record, &records);
                zqconfd_set_no_log();
                UpdateLogger::Log("dropped");
                // A log that is there later comes too late.
                zqconfd_set_handle_factory(nullptr, nullptr);
                UpdateLogger::Log("dropped too");
                findings.ExpectEqual(zqconfd_handle_fetches(), 1U, "fetches");
                findings.ExpectEqual(records, Records{}, "records");
              }),
              testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(UpdateLoggerTest, PassesAFactorysExceptionOnAndTriesAgainOnTheNextCall) {
  EXPECT_EXIT(
      RunAndExit([](Findings& findings) {
        Records records;
        zqconfd_set_sink(Record, &records);
        zqconfd_set_handle_factory(
            [](void*) -> void* {
              if (zqconfd_handle_fetches() < 3) {
                throw std::runtime_error("no log yet");
              }
              return zqconfd_log_handle();
            },
            nullptr);
        for (const char* call : {"first", "second"}) {
          std::string caught;
          try {
            UpdateLogger::Log("%s", call);
          } catch (const std::runtime_error& error) {
            caught = error.what();
          }
          findings.ExpectEqual(caught, std::string("no log yet"), call);
        }
        UpdateLogger::Log("third");
        UpdateLogger::Log("fourth");
        findings.ExpectEqual(zqconfd_handle_fetches(), 3U, "fetches");
        findings.ExpectEqual(records, Records{"third", "fourth"}, "records");
      }),
      testing::ExitedWithCode(EXIT_SUCCESS), "");
}

TEST_F(UpdateLoggerTest, OneOfSeveralThreadsFetchesTheHandle) {
  EXPECT_EXIT(RunAndExit([](Findings& findings) {
                zqconfd_set_sink([](void*, const char*, size_t) {}, nullptr);
                std::vector<std::thread> threads;
                for (int i = 0; i < 8; ++i) {
                  threads.emplace_back([] { UpdateLogger::Log("x"); });
                }
                for (std::thread& thread : threads) thread.join();
                findings.ExpectEqual(zqconfd_handle_fetches(), 1U, "fetches");
              }),
              testing::ExitedWithCode(EXIT_SUCCESS), "");
}

}  // namespace
