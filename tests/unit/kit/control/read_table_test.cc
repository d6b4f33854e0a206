#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::control {
namespace {

using test_support::ConfigBuilder;
using Rows = std::vector<std::string>;

// "PATH: LEAF LEAF*..." for each row: "-" without a value, * by default.
Rows Read(const Database& database, Side side, const std::string& list,
          const std::vector<std::string>& leaves) {
  Rows rows;
  EXPECT_TRUE(database.ReadTable(side, list, leaves,
                                 [&rows](const TableRow& row) {
                                   std::string text = row.path() + ":";
                                   for (const TableCell& cell : row.leaves) {
                                     text += " " + std::string(
                                                       cell.text.value_or("-"));
                                     if (cell.by_default) text += "*";
                                   }
                                   rows.push_back(text);
                                 }))
      << list;
  return rows;
}

constexpr char kInterfaces[] = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";

TEST(ReadTable, GivesLeavesSetAndByDefaultAsCanonicalText) {
  const Database database = OpenOspf(
      ConfigBuilder()
          .PmInterface(7, "10.0.0.2", {{"ospfPmIfAreaId", "0.0.0.10"}})
          .PmInterface(7, "10.0.0.1", {{"ospfPmIfType", "pointToPoint"}}));
  EXPECT_EQ(Read(database, Side::kInput, kInterfaces,
                 {"ospfPmIfIpAddress", "ospfPmIfAreaId", "ospfPmIfType",
                  "ospfPmIfNmEntity"}),
            Rows({"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.1 0}: "
                  "10.0.0.1 0.0.0.0* pointToPoint -",
                  "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.2 0}: "
                  "10.0.0.2 0.0.0.10 broadcast -"}));
}

TEST(ReadTable, ReadsTheSideThatIsAskedFor) {
  const Database database =
      OpenOspf(ConfigBuilder().PmInterface(7, "10.0.0.1"));
  EXPECT_EQ(
      Read(database, Side::kResult, kInterfaces, {"ospfPmIfNmEntity"}),
      Rows({"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.1 0}: 1*"}));
}

TEST(ReadTable, WalksListsInListsWithLeavesAroundThem) {
  const Database database =
      OpenOspf(ConfigBuilder()
                   .L3("a", "10.0.0.1/24", {"10.1.0.1/24", "10.2.0.1/24"})
                   .L3("b", "10.0.1.1/24")
                   .L3("c", "10.0.2.1/24", {"10.3.0.1/24"}));
  EXPECT_EQ(
      Read(database, Side::kInput,
           "/config/interface/l3/ipv4/address/secondary",
           {"ip", "../ip", "../../../name"}),
      Rows({"/config/interface/ipapp:l3{a}/ipv4/address/secondary{10.1.0.1/24}:"
            " 10.1.0.1/24 10.0.0.1/24 a",
            "/config/interface/ipapp:l3{a}/ipv4/address/secondary{10.2.0.1/24}:"
            " 10.2.0.1/24 10.0.0.1/24 a",
            "/config/interface/ipapp:l3{c}/ipv4/address/secondary{10.3.0.1/24}:"
            " 10.3.0.1/24 10.0.2.1/24 c"}));
}

TEST(ReadTable, FindsDefaultsInContainersThatAreAlwaysThere) {
  const std::string models =
      std::string(TEST_SOURCE_ROOT) + "/tests/models/zoo";
  const Database database = Database::Open(
      {models, {}}, {models, {}},
      "<object xmlns=\"urn:test:zoo\"><id>1</id></object>"
      "<object xmlns=\"urn:test:zoo\"><id>2</id><extra/></object>",
      "zoo.xml");
  EXPECT_EQ(Read(database, Side::kInput, "/object",
                 {"box/lid/color", "extra/level", "box/width"}),
            Rows({"/object{1}: green* - -", "/object{2}: green* 1* -"}));
}

TEST(ReadTable, SaysWhereTheModelsLackTheListOrALeaf) {
  const Database database =
      OpenOspf(ConfigBuilder().PmInterface(7, "10.0.0.1"));
  const auto reads = [&database](Side side, const std::string& list,
                                 const std::vector<std::string>& leaves) {
    return database.ReadTable(side, list, leaves, [](const TableRow&) {});
  };
  EXPECT_TRUE(reads(Side::kInput, kInterfaces, {"ospfPmIfAreaId"}));
  EXPECT_FALSE(reads(Side::kInput, "/VX-OSPF-MIB/absent", {}));
  EXPECT_FALSE(reads(Side::kInput, "/VX-OSPF-MIB/ospfPmIfTable", {}));
  EXPECT_FALSE(reads(Side::kInput, "", {}));
  // New in the models of the other side.
  EXPECT_FALSE(reads(Side::kInput, kInterfaces, {"ospfPmIfAreaId", "x"}));
  EXPECT_FALSE(reads(Side::kInput, kInterfaces, {"ospfPmIfPrefixSuppression"}));
  EXPECT_TRUE(reads(Side::kResult, kInterfaces, {"ospfPmIfPrefixSuppression"}));
  EXPECT_FALSE(reads(Side::kInput, kInterfaces, {"../../../../.."}));
  EXPECT_FALSE(reads(Side::kInput, kInterfaces, {"ospfPmIfAreaId/.."}));
  EXPECT_FALSE(reads(Side::kInput, "/config/interface/l3",
                     {"ipv4/address/secondary/ip"}));
}

}  // namespace
}  // namespace kit::control
