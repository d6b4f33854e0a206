// Passwords and keys are in the output and nowhere else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// Its keys are those of two interfaces that are moved.
const std::string kExample = TEST_SOURCE_ROOT "/examples/provider-edge.xml";
constexpr char kSecret[] = "bb-ams";

const std::vector<std::vector<std::string>> kViews = {
    {"--trace"},
    {"--diff"},
    {"--diff=pass"},
    {"--verbose"},
    {"--ledger", "--json", "--trace", "--diff"},
    {"--json", "--trace", "--diff=pass"},
};

class SecretsTest : public HostTest {
 protected:
  Outcome RunExample(std::vector<std::string> args) {
    args.insert(args.begin(), {"run", kExample});
    return Run(args);
  }
};

TEST_F(SecretsTest, NoViewShowsThem) {
  for (const std::vector<std::string>& view : kViews) {
    const Outcome outcome = RunExample(view);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_THAT(outcome.out + outcome.err, Not(HasSubstr(kSecret)))
        << testing::PrintToString(view);
  }
}

TEST_F(SecretsTest, AllViewsShowThemToWhoeverAsks) {
  for (std::vector<std::string> view : kViews) {
    // A move shows what has changed, and no key has.
    if (view.back().find("--diff") == 0 && view.size() == 1) continue;
    view.push_back("--show-secrets");
    EXPECT_THAT(RunExample(view).out, HasSubstr(kSecret))
        << testing::PrintToString(view);
  }
}

TEST_F(SecretsTest, TheOutputHasThem) {
  EXPECT_EQ(RunExample({"-o", Path("out")}).exit_code, 0);
  EXPECT_THAT(Read("out"), HasSubstr(">" + std::string(kSecret) + "<"));
}

// The demo models' label as a secret.
class OwnSecretsTest : public HostTest {
 protected:
  Outcome RunWithSecret(const std::string& plugin, const std::string& config,
                        std::vector<std::string> args = {}) {
    args.insert(args.begin(),
                {config, "--rules",
                 Write("own.json",
                       R"({"secrets": ["/demo/item/label", "/demo/item/size"],
                           "rules": []})")});
    return RunDemo(plugin, args);
  }
};

TEST_F(OwnSecretsTest, AreMaskedWhateverTheyBecome) {
  const Outcome outcome = RunWithSecret(
      "well_behaved", Write("demo.xml", kDemoXml), {"--diff", "--trace"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  // Values that the plug-in writes are no less secret.
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("/demo/item{1}/label: **** -> ****\n"),
                    HasSubstr("    label: **** -> ****\n"),
                    Not(HasSubstr("uno")), Not(HasSubstr("nine"))));
}

TEST_F(OwnSecretsTest, AreMaskedInFaultsOfTheInput) {
  const Outcome outcome = RunWithSecret(
      "idle", Write("bad.xml",
                    "<demo xmlns=\"urn:demo\"><item><id>1</id>"
                    "<label>a</label><size>777</size></item></demo>"));
  EXPECT_EQ(outcome.exit_code, 3) << outcome;
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("/demo/item{1}/size"),
                                 HasSubstr("****"), Not(HasSubstr("777"))));
}

}  // namespace
}  // namespace host_test
