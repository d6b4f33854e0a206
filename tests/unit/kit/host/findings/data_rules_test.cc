#include "kit/host/findings/data_rules.h"

#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_maapi.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/host/findings/rule_reader.h"
#include "tests/support/config_builder.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::host {
namespace {

using control::Database;
using control::OpenOspf;
using test_support::ConfigBuilder;
using Lines = std::vector<std::string>;

// A catalogue of one rule without what does not matter here.
Catalogue OneRule(const std::string& members, bool is_own = true) {
  return ReadCatalogue(
      "{\"rules\": [{\"id\": \"X\", \"severity\": \"look\", "
      "\"advice\": \"Look.\", \"unit\": [\"one\", \"many\"],\n" +
          members + "}]}",
      "own.json", is_own);
}

// "MESSAGE (UNIT) PLACE..." for each.
Lines Describe(const std::vector<Finding>& findings) {
  Lines lines;
  for (const Finding& finding : findings) {
    std::string line = finding.message + " (" + finding.unit + ")";
    for (const std::string& place : finding.places) line += " " + place;
    lines.push_back(line);
  }
  return lines;
}

std::string FaultOf(const Catalogue& catalogue) {
  const Database database = OpenOspf(ConfigBuilder().Entity(7));
  try {
    CheckExpressions(catalogue, database);
  } catch (const RuleError& error) {
    return error.what();
  }
  return "";
}

constexpr char kThrottle[] = R"("select":
    "/VX-OSPF-V3-MIB:VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
    "when": "ospfv3PmEntRefBandwidth > 150",
    "message": "{ospfv3PmEntIndex}: {ospfv3PmEntRefBandwidth}")";

std::string V3Path(int index) {
  return "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{" +
         std::to_string(index) + "}";
}

TEST(DataRules, ExpressionsFindPlacesOnTheSideTheyNameAlone) {
  const Database database =
      OpenOspf(ConfigBuilder()
                   .V3Entity(1)
                   .V3Entity(2, {{"ospfv3PmEntRefBandwidth", "200"}})
                   .V3Entity(3, {{"ospfv3PmEntRefBandwidth", "300"}}));
  const Catalogue input =
      OneRule("\"in\": \"input\", " + std::string(kThrottle));
  EXPECT_EQ(Describe(FindInInput(input, database)),
            Lines({"2: 200 (2 many) " + V3Path(2) + " " + V3Path(3)}));
  EXPECT_EQ(Describe(FindInResult(input, database)), Lines());
  const Catalogue result =
      OneRule("\"in\": \"result\", " + std::string(kThrottle));
  EXPECT_EQ(Describe(FindInInput(result, database)), Lines());
  EXPECT_EQ(Describe(FindInResult(result, database)),
            Lines({"1: 100000 (3 many) " + V3Path(1) + " " + V3Path(2) + " " +
                   V3Path(3)}));
}

TEST(DataRules, FindingsCarryWhatTheRuleSaysAndTenPlaces) {
  ConfigBuilder config;
  for (uint32_t i = 1; i <= 12; ++i) config.V3Entity(i);
  const Database database = OpenOspf(config);
  const Catalogue catalogue = ReadCatalogue(
      R"({"rules": [{"id": "V", "severity": "stop", "advice": "Do this.",
          "section": "docs/x.md#1", "in": "input", "select":
          "/VX-OSPF-V3-MIB:VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
          "message": "{ospfv3PmEntIndex}"}]})",
      "own.json", true);
  const std::vector<Finding> findings = FindInInput(catalogue, database);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].rule, "V");
  EXPECT_EQ(findings[0].severity, Severity::kStop);
  EXPECT_EQ(findings[0].advice, "Do this.");
  EXPECT_EQ(findings[0].section, "docs/x.md#1");
  EXPECT_EQ(findings[0].count, 12u);
  EXPECT_EQ(findings[0].unit, "");
  EXPECT_EQ(findings[0].places.size(), 10u);
}

std::string Comparison(const std::string& found) {
  const std::string side =
      R"({"select":
          "/VX-OSPF-V3-MIB:VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
          "key": "ospfv3PmEntIndex", "value": "ospfv3PmEntRefBandwidth"})";
  return "\"in\": \"both\", \"found\": \"" + found + "\", \"before\": " + side +
         ", \"after\": " + side + ", \"message\": \"{key}: {before}, {after}\"";
}

TEST(DataRules, ComparisonsJoinBothSidesByKey) {
  Database database =
      OpenOspf(ConfigBuilder()
                   .V3Entity(1)
                   .V3Entity(2, {{"ospfv3PmEntRefBandwidth", "200"}})
                   .V3Entity(3, {{"ospfv3PmEntRefBandwidth", "300"}}));
  const control::Handles handles = database.Attach();
  ASSERT_EQ(
      maapi_delete(handles.maapi_sock, handles.thandle, V3Path(3).c_str()),
      CONFD_OK);
  ASSERT_EQ(
      maapi_create(handles.maapi_sock, handles.thandle, V3Path(4).c_str()),
      CONFD_OK);
  const auto finds = [&database](const std::string& found) {
    return Describe(FindInResult(OneRule(Comparison(found)), database));
  };
  EXPECT_EQ(finds("missing"),
            Lines({"3: 300, (nothing) (1 one) " + V3Path(3)}));
  EXPECT_EQ(finds("new"), Lines({"4: (nothing), 100000 (1 one) " + V3Path(4)}));
  EXPECT_EQ(finds("different"), Lines({"1: 100, 100000 (1 one) " + V3Path(1)}));
  EXPECT_EQ(finds("equal"), Lines({"2: 200, 200 (1 one) " + V3Path(2)}));
}

TEST(DataRules, CodeFindsPlacesAndFillsInMessages) {
  const Database database =
      OpenOspf(ConfigBuilder().Entity(7).Entity(9).Area(7, "0.0.0.0"));
  EXPECT_EQ(Describe(FindInInput(
                OneRule("\"in\": \"code\", \"code\": "
                        "\"ospfv2-entities-without-areas\", \"message\": "
                        "\"{entity} of {entity}\""),
                database)),
            Lines({"9 of 9 (1 one) "
                   "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{9}"}));
}

TEST(DataRules, FaultyExpressionsAreNamedWithTheirPlaceInTheFile) {
  EXPECT_EQ(FaultOf(OneRule("\"in\": \"input\", " + std::string(kThrottle))),
            "");
  EXPECT_EQ(FaultOf(OneRule("\"in\": \"input\", \"select\": "
                            "\"/VX-OSPF-MIB:VX-OSPF-MIB\",\n"
                            " \"when\": \"= 5\", \"message\": \"m\""))
                .find("own.json:3:10: the expression \"= 5\" of rule X: "),
            0u);
  EXPECT_EQ(FaultOf(OneRule("\"in\": \"input\", \"select\": "
                            "\"/VX-OSPF-MIB:VX-OSPF-MIB\",\n"
                            " \"message\": \"m {ospfPmEntTable}\""))
                .find("own.json:3:16: the expression \"ospfPmEntTable\" of "
                      "rule X: it leads to \"ospfPmEntTable\", which is no "
                      "leaf"),
            0u);
}

TEST(DataRules, NodesThatTheModelsLackAreAFaultOfASitesOwnRulesAlone) {
  const std::string rule =
      "\"in\": \"input\", \"select\": \"/other:top\", \"message\": \"m\"";
  EXPECT_EQ(
      FaultOf(OneRule(rule)),
      "own.json:2:26: the expression \"/other:top\" of rule X: the models "
      "have no module \"other\"");
  EXPECT_EQ(FaultOf(OneRule(rule, false)), "");
  const Database database = OpenOspf(ConfigBuilder().Entity(7));
  EXPECT_EQ(Describe(FindInInput(OneRule(rule, false), database)), Lines());
}

}  // namespace
}  // namespace kit::host
