#include "kit/host/report/verdict.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

class VerdictTest : public testing::Test {
 protected:
  void Find(Severity severity) {
    Finding finding;
    finding.severity = severity;
    report_.findings.push_back(finding);
  }
  void Fail(ExitCode code) {
    report_.failure = Failure{code, "reason", "advice"};
  }

  Report report_;
};

TEST_F(VerdictTest, NotesDoNotAskForALook) {
  EXPECT_EQ(Verdict(report_), "upgrade succeeds");
  Find(Severity::kNote);
  EXPECT_EQ(Verdict(report_), "upgrade succeeds");
}

TEST_F(VerdictTest, ASuccessSaysHowMuchThereIsToLookAt) {
  Find(Severity::kLook);
  EXPECT_EQ(Verdict(report_), "upgrade succeeds, 1 thing to look at");
  Find(Severity::kLook);
  EXPECT_EQ(Verdict(report_), "upgrade succeeds, 2 things to look at");
  Find(Severity::kStop);
  EXPECT_EQ(Verdict(report_),
            "upgrade succeeds, but 1 thing should stop it, and 2 are to look "
            "at");
}

TEST_F(VerdictTest, AFailureOfThePluginNamesItsPassAndResult) {
  Fail(ExitCode::kPluginFailed);
  report_.result = -1;
  EXPECT_EQ(Verdict(report_), "upgrade fails: update returned -1");
  report_.passes = {{"one", "Start", ""}, {"two", "Begin", ""}};
  report_.journal.Add(LogRecord{0, 2, "Begin"});
  report_.journal.Add(LogRecord{9, 2, "oh"});
  EXPECT_EQ(Verdict(report_),
            "upgrade fails in pass 2, two: update returned -1");
  report_.failure->code = ExitCode::kPluginDied;
  report_.result.reset();
  EXPECT_EQ(Verdict(report_), "upgrade fails in pass 2, two");
}

TEST_F(VerdictTest, APassOutOfTheTableIsNotNamed) {
  Fail(ExitCode::kPluginDied);
  report_.journal.Add(LogRecord{0, 7, "Begin"});
  EXPECT_EQ(Verdict(report_), "upgrade fails");
}

TEST_F(VerdictTest, AResultThatBreaksTheModelIsAFailure) {
  Fail(ExitCode::kInvalidResult);
  report_.violations = {{12, "/a", "why"}};
  EXPECT_EQ(Verdict(report_),
            "upgrade fails: the result breaks the new model in 1 place");
}

TEST_F(VerdictTest, WithoutAnUpgradeThereIsNoVerdictOnIt) {
  Fail(ExitCode::kBadInput);
  EXPECT_EQ(Verdict(report_), "upgrade not rehearsed to its end");
}

}  // namespace
}  // namespace kit::host
