// The example of an upgrade in another domain: its models, its plug-in and what
// its README shows.
#include <gmock/gmock.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string kFolder = TEST_SOURCE_ROOT "/examples/vlan-upgrade/";

class VlanExampleTest : public HostTest {
 protected:
  // Upgrades with the example's models and plug-in to out.xml.
  Outcome Upgrade(const std::string& config, std::vector<std::string> more = {},
                  const std::string& plugin = TEST_VLAN_PLUGIN,
                  const std::string& models_before = "before") const {
    std::vector<std::string> args = {"run",
                                     config,
                                     "-o",
                                     Path("out.xml"),
                                     "--force",
                                     "--plugin",
                                     plugin,
                                     "--yang-before",
                                     kFolder + "yang/" + models_before,
                                     "--yang-after",
                                     kFolder + "yang/after"};
    args.insert(args.end(), more.begin(), more.end());
    return Run(args);
  }

  // The example's configuration with one text in another's place.
  std::string ExampleWith(const std::string& old_text,
                          const std::string& new_text) const {
    std::string config = ReadFile(kFolder + "before.xml");
    const size_t place = config.find(old_text);
    EXPECT_NE(place, std::string::npos) << old_text;
    return Write("before.xml",
                 config.replace(place, old_text.size(), new_text));
  }
};

TEST_F(VlanExampleTest, WritesTheExpectedConfiguration) {
  const Outcome outcome = Upgrade(kFolder + "before.xml");
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_EQ(Read("out.xml"), ReadFile(kFolder + "expected.xml"));
}

TEST_F(VlanExampleTest, LeavesNoCursorOpen) {
  EXPECT_THAT(Upgrade(kFolder + "before.xml", {"--verbose"}).out,
              HasSubstr("Cursors left open: 0\n"));
}

// The README shows the lines from the one that begins with `first` to that
// with `last`.
void ExpectInReadme(const std::string& text, const std::string& first,
                    const std::string& last) {
  const size_t begin = text.find("\n" + first);
  const size_t last_begin = text.find("\n" + last, begin);
  ASSERT_NE(last_begin, std::string::npos) << text;
  const std::string lines =
      text.substr(begin, text.find('\n', last_begin + 1) - begin);
  const bool is_shown =
      ReadFile(kFolder + "README.md").find(lines) != std::string::npos;
  EXPECT_TRUE(is_shown) << lines;
}

TEST_F(VlanExampleTest, TheReadmeShowsWhatIsPrinted) {
  const Outcome good = Upgrade(kFolder + "before.xml", {"--log", "--diff"});
  ExpectInReadme(good.out, "Log (", "Validation: ");
  const Outcome again =
      Upgrade(kFolder + "expected.xml", {"--log"}, TEST_VLAN_PLUGIN, "after");
  ExpectInReadme(again.out, "Log (", "Validation: ");
  const Outcome unknown = Upgrade(ExampleWith("eth10", "console"));
  ExpectInReadme(unknown.err, "  device: ", "  What to do: ");
  const Outcome one_name = Upgrade(ExampleWith("eth10", "eth02"));
  ExpectInReadme(one_name.err, "  log: ", "  last failed ");
  const Outcome timers = Upgrade(ExampleWith("12<", "5<"), {"--quiet"});
  ExpectInReadme(timers.err, "  What to do: ", "  /");
}

TEST_F(VlanExampleTest, TheSecondRunChangesNothing) {
  const Outcome outcome =
      Upgrade(kFolder + "expected.xml", {"--log"}, TEST_VLAN_PLUGIN, "after");
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("The configuration is of release 2 already\n"),
                    HasSubstr("Changes: none\n")));
  EXPECT_EQ(Read("out.xml"), ReadFile(kFolder + "expected.xml"));
}

TEST_F(VlanExampleTest, WithoutThePluginTheNewModelRefusesThePorts) {
  const Outcome outcome =
      Upgrade(kFolder + "before.xml", {}, PluginPath("idle"));
  EXPECT_EQ(outcome.exit_code, 2) << outcome;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("a port is called UNIT/NUMBER"),
                                 HasSubstr("(ConfD error 41)")));
}

TEST_F(VlanExampleTest, APortOfAnUnknownNameStopsTheUpgrade) {
  const Outcome outcome =
      Upgrade(ExampleWith("<name>eth10</name>", "<name>console</name>"));
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("port console is not called ethN\n"));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(VlanExampleTest, PortsThatWouldGetOneNameStopTheUpgrade) {
  const Outcome outcome = Upgrade(
      ExampleWith("<name>eth10</name>", "<name>eth02</name>"), {"--log"});
  EXPECT_EQ(outcome.exit_code, 1) << outcome;
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Port eth02 is now 1/2\n"),
                                 HasSubstr("cannot rename port eth2 to 1/2: "
                                           "/switch/port{eth2}: ")));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

TEST_F(VlanExampleTest, TimersThatTheNewModelCannotHoldAreExitCode2) {
  const Outcome outcome =
      Upgrade(ExampleWith("12</forward-delay>", "5</forward-delay>"));
  EXPECT_EQ(outcome.exit_code, 2) << outcome;
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("/spanning-tree/timers: "),
            HasSubstr("twice the forward delay less 1 s is below the age"),
            HasSubstr("(ConfD error 41)")));
  EXPECT_THAT(NewFiles(), IsEmpty());
}

}  // namespace
}  // namespace host_test
