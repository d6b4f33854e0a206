// Where an entry or leaf of a result comes from, and where one of the input
// went.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_test.h"

namespace host_test {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Json = nlohmann::json;

const std::string kExample = TEST_SOURCE_ROOT "/examples/provider-edge.xml";
const std::string kInterfaces = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
const std::string kEntities = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";

class ExplainTest : public HostTest {
 protected:
  Outcome Explain(const std::string& path,
                  const std::vector<std::string>& options = {}) const {
    std::vector<std::string> args = {"explain", kExample, path};
    args.insert(args.end(), options.begin(), options.end());
    return Run(args);
  }
  Outcome ExplainDemo(const std::string& plugin, const std::string& path,
                      const std::vector<std::string>& options = {}) const {
    std::vector<std::string> args =
        DemoArgs(plugin, {Write("demo.xml", kDemoXml), path});
    args.front() = "explain";
    args.insert(args.end(), options.begin(), options.end());
    return Run(args);
  }
};

TEST_F(ExplainTest, AReKeyedEntryHasItsOldKeysThePassAndItsCalls) {
  const std::string before = kInterfaces + "{100 10.100.0.1 0}";
  const std::string after = kInterfaces + "{1 10.100.0.1 0}";
  const Outcome outcome = Explain(after);
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.err, IsEmpty());
  EXPECT_THAT(outcome.out,
              StartsWith(after + ": was " + before +
                         ", got other keys in pass 3, compound index"));
  EXPECT_THAT(
      outcome.out,
      AllOf(HasSubstr("\nInput: " + before + "\n"),
            HasSubstr("\nPass 3, compound index:\n    log: update to compound "
                      "idx: " +
                      kInterfaces + "\n"),
            ContainsRegex("\n    #[0-9]+ maapi_delete .*\\{100 10.100.0.1 0\\} "
                          "-> 0\n        deleted "),
            ContainsRegex("\n    #[0-9]+ maapi_create .*\\{1 10.100.0.1 0\\}"),
            HasSubstr("\n        ospfPmIfNmEntity: 100 -> 1\n"),
            HasSubstr("\nResult: " + after + "\n")));
  EXPECT_THAT(Explain(before).out,
              StartsWith(before +
                         ": got other keys in pass 3, compound index: "
                         "is " +
                         after + " now"));
}

TEST_F(ExplainTest, ACreatedEntryHasItsPassAndWhatItsValuesWereReadFrom) {
  const std::string path = kInterfaces + "{1 10.210.0.1 0}";
  const Outcome outcome = Explain(path + "/");
  EXPECT_EQ(outcome.exit_code, 0) << outcome;
  EXPECT_THAT(outcome.out,
              StartsWith(path +
                         ": created by pass 4, secondary addresses, with "
                         "ospfPmIfAdminStat and ospfPmIfType as read from " +
                         kInterfaces + "{100 10.110.0.1 0}\n"));
  EXPECT_THAT(Explain(path + "/ospfPmIfPassive").out,
              StartsWith(path + "/ospfPmIfPassive: came with its entry, "
                                "created by pass 4, secondary addresses"));
}

}  // namespace
}  // namespace host_test
