#include <gmock/gmock.h>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::string Example(const std::string& name) {
  return std::string(TEST_SOURCE_ROOT) + "/examples/" + name;
}

std::string Models(const std::string& release) {
  return std::string(TEST_SOURCE_ROOT) + "/yang/" + release;
}

// Of the OSPFv2 tables: one entity that has these leaves.
std::string Entity(const std::string& leaves) {
  return "<VX-OSPF-MIB xmlns=\"http://quellix.example/ns/mib/VX-OSPF-MIB\">"
         "<ospfPmEntTable><ospfPmEntEntry>\n<ospfPmEntIndex>1</ospfPmEntIndex>"
         "<ospfPmEntRtrId>1.1.1.1</ospfPmEntRtrId>\n" +
         leaves + "</ospfPmEntEntry></ospfPmEntTable></VX-OSPF-MIB>\n";
}

// A leaf of `before` that `after` has no more.
constexpr char kOldLeaf[] =
    "<VX-RTM-MIB xmlns=\"http://quellix.example/ns/mib/VX-RTM-MIB\">\n"
    "<rtmRedistTable><rtmRedistEntry><rtmRedistFteIndex>1</rtmRedistFteIndex>\n"
    "<rtmRedistEntIndex>1</rtmRedistEntIndex>"
    "<rtmRedistInfoDest>ospf</rtmRedistInfoDest>\n"
    "<rtmRedistFilterNumber>12</rtmRedistFilterNumber>\n"
    "</rtmRedistEntry></rtmRedistTable></VX-RTM-MIB>\n";
constexpr char kIntermediateLeaf[] =
    "<ospfPmEntGrHelperSupport>true</ospfPmEntGrHelperSupport>\n";
constexpr char kAfterLeaf[] =
    "<ospfPmEntASBdrRtrStatus>true</ospfPmEntASBdrRtrStatus>\n";

class ReleaseTest : public HostTest {
 protected:
  // The error of a run that is refused for its configuration.
  std::string Refusal(const std::string& text,
                      std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"run", Write("config.xml", text)});
    const Outcome outcome = Run(options);
    EXPECT_EQ(outcome.exit_code, 3) << outcome;
    return outcome.err;
  }
};

TEST_F(ReleaseTest, AnUpgradedConfigurationIsCalledThat) {
  for (const char* example : {"branch-router.xml", "provider-edge.xml"}) {
    ASSERT_EQ(Run({"run", Example(example), "-o", Path(example)}).exit_code, 0);
    const Outcome again = Run({"run", Path(example)});
    EXPECT_EQ(again.exit_code, 3) << again;
    EXPECT_THAT(again.err, StartsWith("ospf-upgrade: " + Path(example) +
                                      ": this fits `after`: upgraded already\n"
                                      "  it does not fit `before`: line "));
  }
}

TEST_F(ReleaseTest, AConfigurationOfTheReleaseBetweenIsReadWithIts) {
  const std::string text = Entity(kIntermediateLeaf) + kOldLeaf;
  EXPECT_THAT(
      Refusal(text),
      AllOf(HasSubstr("this fits `intermediate`: use --from intermediate\n"
                      "  it does not fit `before`: line 3: "),
            HasSubstr("run again with --from intermediate.\n"),
            Not(HasSubstr("after"))));
  const Outcome followed = Run({"run", Path("config.xml"), "--plugin",
                                PluginPath("idle"), "--from", "intermediate"});
  EXPECT_EQ(followed.exit_code, 0) << followed;
}

TEST_F(ReleaseTest, EachReleaseThatItFitsIsNamed) {
  EXPECT_THAT(Refusal(Entity(kIntermediateLeaf)),
              HasSubstr("this fits `intermediate`: use --from intermediate; or "
                        "`after`: upgraded already\n"));
  EXPECT_THAT(Refusal(kOldLeaf, {"--from", "after"}),
              AllOf(HasSubstr("this fits `before`: use --from before; or "
                              "`intermediate`: use --from intermediate\n"),
                    HasSubstr("it does not fit `after`: line 4: ")));
}

TEST_F(ReleaseTest, AnUpgradedConfigurationIsNotOneOfTheReleaseBetween) {
  EXPECT_THAT(Refusal(Entity(kAfterLeaf), {"--from", "intermediate"}),
              AllOf(HasSubstr("this fits `after`: upgraded already\n"
                              "  it does not fit `intermediate`: line 3: ")));
}

TEST_F(ReleaseTest, ModelsOfOnesOwnAreTriedToo) {
  EXPECT_THAT(Refusal(Entity(kAfterLeaf), {"--yang-before", Models("before"),
                                           "--yang-after", Models("after")}),
              AllOf(HasSubstr("this fits the models of --yang-after: upgraded "
                              "already\n  it does not fit the models of "
                              "--yang-before: line 3: ")));
  EXPECT_THAT(Refusal(kOldLeaf, {"--yang-before", Models("after")}),
              AllOf(HasSubstr("this fits `before`: use --from before"),
                    HasSubstr("with --from before in place of --yang-before")));
}

TEST_F(ReleaseTest, WhatFitsNoReleaseIsRefusedForItsFault) {
  EXPECT_THAT(Refusal(Entity("<ospfPmEntColour>red</ospfPmEntColour>\n")),
              AllOf(HasSubstr("config.xml: line 3: /VX-OSPF-MIB/"),
                    Not(HasSubstr("fits"))));
}

}  // namespace
}  // namespace host_test
