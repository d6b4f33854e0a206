// What others wrote reaches no terminal as it is, and passes for no line of the
// host's own.
#include <gmock/gmock.h>

#include <algorithm>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class TerminalTest : public HostTest {
 protected:
  std::string Config() { return Write("demo.xml", kDemoXml); }
};

// The texts of these tests are ASCII where they are harmless.
MATCHER(IsHarmless, "has nothing but visible ASCII and newlines") {
  return std::all_of(arg.begin(), arg.end(), [](char c) {
    return c == '\n' || (c >= ' ' && c <= '~');
  });
}

TEST_F(TerminalTest, AnExceptionsTextIsOneLine) {
  const Outcome outcome = RunDemo("forges_exception", {Config()});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  EXPECT_THAT(
      outcome.err,
      AllOf(IsHarmless(), Not(HasSubstr("\nWritten")),
            HasSubstr("std::runtime_error (gone\\nWritten: out.xml\\u2029"
                      "\\x1b]0;title\\x07)\n  What to do: no exception")));
}

TEST_F(TerminalTest, TheLastWordsOfAPluginAreIndentedAndItsLastCallOneLine) {
  const Outcome outcome = RunDemo("forges_and_aborts", {Config()});
  EXPECT_EQ(outcome.exit_code, 5) << outcome;
  const std::string call =
      R"(maapi_delete /demo/item{"\nResult: update returned 0\u2028"} -> -1)";
  EXPECT_THAT(outcome.err, AllOf(IsHarmless(),
                                 HasSubstr("\n  it printed:\n"
                                           "    printed\\u009b31m\n"
                                           "      What to do: \\u202enothing.\n"
                                           "  last ConfD call, number 1: " +
                                           call)));
  EXPECT_THAT(outcome.out,
              AllOf(IsHarmless(), HasSubstr("\nLast ConfD call: " + call)));
}

TEST_F(TerminalTest, JsonHasTheLinesBelowAReasonApart) {
  const auto report = nlohmann::json::parse(
      RunDemo("forges_and_aborts", {Config(), "--json"}).out);
  const auto& details = report["error"]["details"];
  ASSERT_EQ(details.size(), 4U) << details;
  EXPECT_EQ(details[0], "it printed:");
  EXPECT_EQ(details[1], "  printed\u009b31m");
  EXPECT_EQ(details[3], "last ConfD call, number 1: " +
                            report["calls"]["last"].get<std::string>());
  EXPECT_THAT(report["calls"]["last"].get<std::string>(),
              HasSubstr("{\"\nResult: update returned 0\u2028\"} -> -1"));
}

}  // namespace
}  // namespace host_test
