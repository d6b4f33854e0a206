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
using ::testing::StartsWith;

class TerminalTest : public HostTest {
 protected:
  std::string Config() { return Write("demo.xml", kDemoXml); }
  static std::string Models(const std::string& side) {
    return TEST_DEMO_MODELS "/" + side;
  }
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
                      "\\x1b]0;title\\x07)\n  plug-in: " +
                      PluginPath("forges_exception") +
                      "\n  device: gives the upgrade up and keeps its "
                      "configuration as it was\n  What to do: no exception")));
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

// Bidirectional override, C1 control, separator, tag, newline, escape.
const char kHostile[] =
    "a\u202e\u009b31m\u2028\U000e0041\nWritten: here\x1b[2J\\n\xff";
const char kHostileShown[] =
    R"(a\u202e\u009b31m\u2028\U000e0041\nWritten: here\x1b[2J\\n\xff)";

TEST_F(TerminalTest, RecordsOfTheLogAreOneLineEach) {
  const std::string shown = kHostileShown;
  const Outcome outcome =
      RunDemo("forges_record", {Config(), "--log=" + Path("log")});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(RunDemo("forges_record", {Config(), "--log"}).out,
              AllOf(IsHarmless(),
                    HasSubstr("Log (1 record):\n  " + shown + "\nChanges")));
  EXPECT_EQ(Read("log"), shown + "\n");
  const Outcome verbose = RunDemo("forges_record", {Config(), "--verbose"});
  EXPECT_THAT(verbose.out, AllOf(IsHarmless(), StartsWith("log: " + shown +
                                                          "\n" + Path(""))));
}

TEST_F(TerminalTest, ValuesOfTheConfigurationAreOneLineEach) {
  const std::string value = "a\u202e\u009b31m\u2028\nWritten: here";
  const std::string shown = R"(a\u202e\u009b31m\u2028\nWritten: here)";
  const std::string config =
      Write("hostile.xml", "<demo xmlns=\"urn:demo\"><item><id>1</id><label>" +
                               value + "</label><obsolete>" + value +
                               "</obsolete></item><item><id>2</id><label>" +
                               value + "</label></item></demo>");
  const Outcome outcome =
      RunDemo("well_behaved", {config, "--diff", "--verbose"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              AllOf(IsHarmless(), HasSubstr("/obsolete (" + shown + "): "),
                    HasSubstr("    label: " + shown + " -> uno\n"),
                    HasSubstr("    label: " + shown + "\n")));

  const Outcome refused = RunDemo(
      "idle", {Write("refused.xml", "<demo xmlns=\"urn:demo\"><item><id>" +
                                        value + "</id></item></demo>")});
  EXPECT_EQ(refused.exit_code, 3) << refused;
  EXPECT_THAT(refused.err, AllOf(IsHarmless(), HasSubstr(shown)));
}

TEST_F(TerminalTest, NamesOfFilesAreOneLineEach) {
  const std::string config = Write(std::string("in") + kHostile, kDemoXml);
  const std::string output = Path(std::string("out") + kHostile);
  const std::string plugin = Path(std::string("plugin") + kHostile);
  std::filesystem::copy_file(PluginPath("idle"), plugin);
  const Outcome outcome =
      Run({"run", config, "--plugin", plugin, "-o", output, "--yang-before",
           Models("before"), "--yang-after", Models("after"), "--verbose"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  const std::string shown = kHostileShown;
  EXPECT_THAT(
      outcome.out,
      AllOf(IsHarmless(), StartsWith(Path("in") + shown + ": upgrade succeeds"),
            HasSubstr("\nPlug-in: " + Path("plugin") + shown + "\n"),
            HasSubstr("\nWritten: " + Path("out") + shown + " (XML, ")));

  const std::vector<std::vector<std::string>> rows = {
      {"missing" + config},
      {config, "--plugin", "missing" + plugin},
      {config, "-o", "missing/" + output},
      {config, "--log=missing/" + output},
      {config, "--yang-before", "missing" + output},
  };
  for (std::vector<std::string> row : rows) {
    row.insert(row.begin(), "run");
    const Outcome failed = Run(row);
    EXPECT_NE(failed.exit_code, 0) << failed;
    EXPECT_THAT(failed.err, AllOf(IsHarmless(), HasSubstr(shown)));
  }
}

TEST_F(TerminalTest, UsageErrorsQuoteArgumentsOnOneLine) {
  const std::string config = Config();
  const std::vector<std::vector<std::string>> rows = {
      {kHostile},
      {"run", config, kHostile},
      {"run", config, "--format", kHostile},
      {"run", config, "--timeout", kHostile},
      {"run", config, "--namespace", kHostile},
      {"run", config, std::string("--") + kHostile},
  };
  for (const std::vector<std::string>& row : rows) {
    const Outcome outcome = Run(row);
    EXPECT_EQ(outcome.exit_code, 3) << outcome;
    EXPECT_THAT(outcome.err,
                AllOf(IsHarmless(), HasSubstr(kHostileShown),
                      EndsWith("\nRun with --help for more information.\n")));
  }
}

TEST_F(TerminalTest, JsonIsAsciiAndKeepsTheText) {
  const Outcome outcome = RunDemo("forges_record", {Config(), "--json"});
  EXPECT_THAT(outcome.out, IsHarmless());
  const auto report = nlohmann::json::parse(outcome.out);
  const std::string text = kHostile;  // its last byte is no UTF-8
  EXPECT_EQ(report["log"][0], text.substr(0, text.size() - 1) + "\ufffd\n");
}

TEST_F(TerminalTest, JsonHasTheLinesBelowAReasonApart) {
  const auto report = nlohmann::json::parse(
      RunDemo("forges_and_aborts", {Config(), "--json"}).out);
  const auto& details = report["error"]["details"];
  ASSERT_EQ(details.size(), 6U) << details;
  EXPECT_EQ(details[0], "it printed:");
  EXPECT_EQ(details[1], "  printed\u009b31m");
  EXPECT_EQ(details[3], "last ConfD call, number 1: " +
                            report["calls"]["last"].get<std::string>());
  EXPECT_THAT(report["calls"]["last"].get<std::string>(),
              HasSubstr("{\"\nResult: update returned 0\u2028\"} -> -1"));
}

}  // namespace
}  // namespace host_test
