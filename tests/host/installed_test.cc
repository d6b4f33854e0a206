// The plug-in, the models and the examples that come with the program.
#include <gmock/gmock.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

using InstalledTest = HostTest;

std::string Example(const std::string& name) {
  return std::string(TEST_SOURCE_ROOT) + "/examples/" + name;
}

TEST_F(InstalledTest, PluginAndModelsAreFoundBesideTheProgram) {
  const Outcome outcome = Run({"run", Example("no-ospf.xml"), "--verbose"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("libquellix_ext_ospf_prot_update.so\n"),
            HasSubstr("Current database doesn't have OSPF, returning"),
            HasSubstr("\nConfD calls: 3\n"), HasSubstr("Changes: none\n")));
}

TEST_F(InstalledTest, TheExamplesComeOutValid) {
  for (const char* example : {"branch-router.xml", "provider-edge.xml"}) {
    const Outcome outcome = Run({"run", Example(example), "-o", Path(example)});
    EXPECT_EQ(outcome.exit_code, 0) << outcome;
    EXPECT_THAT(outcome.out, HasSubstr("is valid under the new model"));
    EXPECT_TRUE(Exists(example));
  }
}

TEST_F(InstalledTest, XmlAndJsonOfOneConfigurationGiveTheSameResult) {
  const std::string models =
      std::filesystem::path(TEST_HOST).parent_path().parent_path() /
      "share/ospf-upgrade/yang/before";
  // Unchanged by a plug-in that does nothing, in the old models.
  ASSERT_EQ(Run({"run", Example("branch-router.xml"), "--plugin",
                 PluginPath("idle"), "--yang-after", models, "--format", "json",
                 "-o", Path("before.json")})
                .exit_code,
            0);
  ASSERT_EQ(
      Run({"run", Path("before.json"), "-o", Path("from_json.json")}).exit_code,
      0);
  ASSERT_EQ(Run({"run", Example("branch-router.xml"), "--format", "json", "-o",
                 Path("from_xml.json")})
                .exit_code,
            0);
  EXPECT_EQ(Read("from_json.json"), Read("from_xml.json"));
}

}  // namespace
}  // namespace host_test
