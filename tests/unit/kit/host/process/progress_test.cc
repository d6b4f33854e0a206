#include "kit/host/process/progress.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

namespace kit::host {
namespace {

control::Call MakeCall(std::string_view function, std::string_view path) {
  control::Call call = {};
  call.function = function;
  call.path = path;
  return call;
}

TEST(ProgressTest, WhatAnotherProcessRecordsIsThereAfterItsEnd) {
  const SharedProgress progress = MakeSharedProgress();
  const pid_t worker = fork();
  if (worker == 0) {
    progress->Record(MakeCall("maapi_create", "/a{1}"));
    control::Call failed = MakeCall("maapi_delete", "/a{2}");
    failed.result = -1;
    failed.error = 1;
    failed.reason = "absent";
    progress->Record(failed);
    _exit(0);
  }
  ASSERT_EQ(waitpid(worker, nullptr, 0), worker);
  EXPECT_EQ(progress->calls(), 2U);
  EXPECT_EQ(progress->LastCall(), "maapi_delete /a{2} -> -1 error 1 'absent'");
}

TEST(ProgressTest, CallsAreCountedByFunction) {
  const SharedProgress progress = MakeSharedProgress();
  EXPECT_EQ(progress->LastCall(), std::nullopt);
  for (int i = 0; i < 3; ++i) progress->Record(MakeCall("cdb_exists", "/a"));
  progress->Record(MakeCall("maapi_exists", "/a"));
  const std::map<std::string, uint64_t> expected = {{"cdb_exists", 3},
                                                    {"maapi_exists", 1}};
  EXPECT_EQ(progress->CallsByFunction(), expected);
}

TEST(ProgressTest, LongPathsAreCutAndSaySo) {
  const SharedProgress progress = MakeSharedProgress();
  progress->Record(MakeCall("cdb_exists", std::string(100000, 'p')));
  const std::string call = progress->LastCall().value();
  EXPECT_LT(call.size(), 2000U);
  EXPECT_NE(call.find("[... 99012 bytes ...]"), std::string::npos) << call;
}

TEST(ProgressTest, TheLastCallIsKeptAsItWas) {
  const SharedProgress progress = MakeSharedProgress();
  progress->Record(MakeCall("cdb_exists", "/a{\"\\n\"}"));
  EXPECT_EQ(progress->LastCall(), "cdb_exists /a{\"\\n\"} -> 0");
}

TEST(ProgressTest, MoreFunctionsThanExistDoNoHarm) {
  const SharedProgress progress = MakeSharedProgress();
  for (int i = 0; i < 1000; ++i) {
    progress->Record(MakeCall("function" + std::to_string(i), ""));
  }
  EXPECT_EQ(progress->calls(), 1000U);
}

TEST(ProgressTest, WhatAProgramWroteOverItIsReadWithoutHarm) {
  const SharedProgress progress = MakeSharedProgress();
  progress->Record(MakeCall("cdb_exists", "/a"));
  std::memset(static_cast<void*>(progress.get()), 0xff, sizeof(Progress));
  EXPECT_LE(progress->CallsByFunction().size(), 64U);
  EXPECT_LT(progress->LastCall().value().size(), 10'000U);
  EXPECT_FALSE(progress->out_of_memory());
}

}  // namespace
}  // namespace kit::host
