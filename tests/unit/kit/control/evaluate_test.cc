#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::control {
namespace {

using test_support::ConfigBuilder;
using Matches = std::vector<std::string>;

// "QUERY PATH TEXT..." for each node that fits, "-" for a text without a leaf.
Matches Evaluate(const Database& database, const std::vector<Query>& queries,
                 Side side = Side::kInput) {
  Matches matches;
  database.Evaluate(side, queries, [&matches](const QueryMatch& match) {
    std::string line = std::to_string(match.query) + " " + match.path();
    for (const auto& text : match.texts) line += " " + text.value_or("-");
    matches.push_back(line);
  });
  return matches;
}

// Expression and reason of the error.
std::string FaultOf(const Query& query) {
  const Database database = OpenOspf(ConfigBuilder().Entity(7));
  try {
    database.Evaluate(Side::kInput, {query}, [](const QueryMatch&) {});
  } catch (const QueryError& error) {
    return error.expression() + ": " + error.what();
  }
  return "none";
}

constexpr char kEntity[] =
    "/VX-OSPF-MIB:VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kArea[] =
    "/VX-OSPF-MIB:VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry";

TEST(Evaluate, SelectsNodesThatMeetTheConditionWithTheirTexts) {
  const Database database = OpenOspf(ConfigBuilder()
                                         .Entity(7)
                                         .Entity(9)
                                         .Area(7, "0.0.0.0")
                                         .Area(7, "0.0.0.5"));
  const std::string areas =
      "../../ospfPmAreaTable/ospfPmAreaEntry[ospfPmAreaApplIndex=current()/"
      "ospfPmEntIndex]";
  EXPECT_EQ(
      Evaluate(database, {{kEntity, "not(" + areas + ")", {"ospfPmEntIndex"}},
                          {kEntity, areas, {areas + "/ospfPmAreaId"}},
                          {kArea, "", {"ospfPmAreaId"}}}),
      Matches(
          {"0 /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{9} 9",
           "1 /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7} 0.0.0.0",
           "2 /VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry{7 0.0.0.0} 0.0.0.0",
           "2 /VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry{7 0.0.0.5} "
           "0.0.0.5"}));
}

TEST(Evaluate, SeesDefaultsAndContainersThatAreAlwaysThere) {
  const Database database = OpenOspf(ConfigBuilder().Entity(7));
  EXPECT_EQ(
      Evaluate(
          database,
          {{kEntity, "ospfPmEntSpfThrottle='fixed'", {"ospfPmEntSpfThrottle"}},
           {kEntity, "ospfPmEntSpfThrottle!='fixed'", {}},
           {"/quellix-internal:internal", "not(ospf-area-global)", {}}}),
      Matches({"0 /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7} fixed",
               "2 /internal"}));
}

TEST(Evaluate, LooksAtTheSideThatIsAskedFor) {
  const Database database = OpenOspf(ConfigBuilder().V3Entity(1));
  const Query query = {
      "/VX-OSPF-V3-MIB:VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
      "",
      {"ospfv3PmEntRefBandwidth"}};
  EXPECT_EQ(Evaluate(database, {query}, Side::kResult),
            Matches({"0 /VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{1} "
                     "100000"}));
}

TEST(Evaluate, QueriesOfNodesThatTheModelsLackFitNoneAndAreNamed) {
  const Database database = OpenOspf(ConfigBuilder().Entity(7));
  const Query absent_node = {std::string(kEntity) + "/absent", "", {}};
  const Query absent_module = {"/absent:top", "", {}};
  const Query absent_in_condition = {kEntity, "ospfPmEntVpnPeCeSupport", {}};
  const Query literal = {kEntity, "'absent:top' != \"x:y\"", {}};
  EXPECT_EQ(Evaluate(database, {absent_node, absent_module, absent_in_condition,
                                literal}),
            Matches({"3 /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7}"}));
  EXPECT_NE(database.LackOf(Side::kInput, absent_node).find("\"absent\""),
            std::string::npos);
  EXPECT_EQ(database.LackOf(Side::kInput, absent_module),
            "the models have no module \"absent\"");
  EXPECT_NE(database.LackOf(Side::kInput, absent_in_condition), "");
  EXPECT_EQ(database.LackOf(Side::kResult, absent_in_condition), "");
  EXPECT_EQ(database.LackOf(Side::kInput, literal), "");
}

TEST(Evaluate, FaultyExpressionsAreErrorsThatNameThemWithAReason) {
  EXPECT_EQ(FaultOf({kEntity, "", {}}), "none");
  EXPECT_EQ(FaultOf({"/VX-OSPF-MIB:VX-OSPF-MIB[", "", {}})
                .find("/VX-OSPF-MIB:VX-OSPF-MIB[: Unexpected XPath"),
            0u);
  EXPECT_EQ(FaultOf({kEntity, "= 5", {}}).find("= 5: "), 0u);
  EXPECT_NE(FaultOf({kEntity, "= 5", {}}), "= 5: ");
  EXPECT_EQ(FaultOf({kEntity, "", {"concat(ospfPmEntIndex, 'x')"}}),
            "concat(ospfPmEntIndex, 'x'): it gives no nodes");
  EXPECT_EQ(FaultOf({"1 + 1", "", {}}), "1 + 1: it gives no nodes");
  EXPECT_EQ(FaultOf({kEntity, "", {".."}}),
            "..: it leads to \"ospfPmEntTable\", which is no leaf");
  EXPECT_EQ(FaultOf({kEntity, "nope(1)", {}}).find("nope(1): "), 0u);
}

TEST(Evaluate, AnEmptyConfigurationHasNoEntries) {
  const Database database = OpenOspf("{}");
  EXPECT_EQ(Evaluate(database, {{kEntity, "", {}}}), Matches());
}

}  // namespace
}  // namespace kit::control
