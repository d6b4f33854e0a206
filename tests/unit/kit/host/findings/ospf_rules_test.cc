#include "kit/host/findings/ospf_rules.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/host/findings/data_rules.h"
#include "kit/host/findings/rule_reader.h"
#include "tests/support/config_builder.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::host {
namespace {

using control::Database;
using control::OpenOspf;
using control::Side;
using test_support::ConfigBuilder;
using test_support::Leaves;
using Places = std::vector<std::string>;

// Where a condition holds.
Places PlacesOf(const std::string& code, const Database& database) {
  const Catalogue catalogue = ReadCatalogue(
      "{\"rules\": [{\"id\": \"X\", \"severity\": \"look\", \"advice\": "
      "\"Look.\", \"in\": \"code\", \"message\": \"m\", \"code\": \"" +
          code + "\"}]}",
      "x.json", true);
  const bool before = catalogue.rules.front().code->side == Side::kInput;
  const std::vector<Finding> findings = before
                                            ? FindInInput(catalogue, database)
                                            : FindInResult(catalogue, database);
  return findings.empty() ? Places() : findings.front().places;
}

// Lists that are keyed by the process id, with further keys of an entry.
struct List {
  std::string path;
  std::string first_key;
  Leaves more;
  std::string keys;
};

const std::vector<List>& Lists() {
  static const std::vector<List> lists = {
      {"/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry",
       "ospfPmMjEntIndex",
       {{"ospfPmMjPartnerType", "neighborManager"},
        {"ospfPmMjPartnerIndex", "4"}},
       " neighborManager 4"},
      {"/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry",
       "ospfPmAreaApplIndex",
       {{"ospfPmAreaId", "0.0.0.5"}},
       " 0.0.0.5"},
      {"/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry",
       "ospfPmAreaAggregateApplIndex",
       {{"ospfPmAreaAggregateAreaID", "0.0.0.5"},
        {"ospfPmAreaAggregateLsdbType", "summaryLink"},
        {"ospfPmAreaAggregateNet", "10.0.0.0"},
        {"ospfPmAreaAggregateMask", "255.0.0.0"}},
       " 0.0.0.5 summaryLink 10.0.0.0 255.0.0.0"},
      {"/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry",
       "ospfPmStubAreaApplIndex",
       {{"ospfPmStubAreaId", "0.0.0.5"}, {"ospfPmStubAreaTOS", "0"}},
       " 0.0.0.5 0"},
      {"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry",
       "ospfPmIfApplIndex",
       {{"ospfPmIfIpAddress", "10.0.0.1"},
        {"ospfPmIfAddressLessIf", "0"},
        {"ospfPmIfType", "broadcast"}},
       " 10.0.0.1 0"},
      {"/internal/ospf-interface-l3",
       "ospf-pm-ent-index",
       {{"ospf-pm-area-id", "0.0.0.5"},
        {"ospf-pm-if-name", "l3-a"},
        {"ospf-pm-ip-address", "10.0.0.1"}},
       " 0.0.0.5 l3-a 10.0.0.1"},
      {"/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry",
       "ospfPmIfMetricApplIndex",
       {{"ospfPmIfMetricIpAddress", "10.0.0.1"},
        {"ospfPmIfMetricAddressLessIf", "0"},
        {"ospfPmIfMetricTOS", "0"},
        {"ospfPmIfMetricValue", "5"}},
       " 10.0.0.1 0 0"}};
  return lists;
}

Leaves EntryOf(const List& list, const std::string& process) {
  Leaves leaves = {{list.first_key, process}};
  leaves.insert(leaves.end(), list.more.begin(), list.more.end());
  return leaves;
}

constexpr char kInTheWay[] = "ospfv2-entries-in-the-way";

// Process 7 is to move, and the list has the same entry for these processes.
std::string Process7And(const List& list,
                        const std::vector<std::string>& processes,
                        const std::vector<uint32_t>& more_entities = {}) {
  ConfigBuilder config;
  config.Entity(7);
  for (const uint32_t entity : more_entities) config.Entity(entity);
  for (const std::string& process : processes) {
    config.Entry(list.path, EntryOf(list, process));
  }
  return config.Xml();
}

TEST(OspfRules, EntriesInTheWayAreSeenInEachList) {
  for (const List& list : Lists()) {
    EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(Process7And(list, {"1", "7"}))),
              Places({list.path + "{1" + list.keys + "}"}));
    EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(Process7And(list, {"2", "7"}))),
              Places());
    EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(Process7And(list, {"1"}))),
              Places());
  }
}

TEST(OspfRules, InternalAreasAreInTheWayUnlessTheyAreDangling) {
  ConfigBuilder config;
  config.Entity(7)
      .Area(7, "0.0.0.5")
      .InternalArea(7, "0.0.0.5")
      .InternalArea(1, "0.0.0.5");
  EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(config)), Places());
  config.Area(1, "0.0.0.5");
  EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(config)),
            Places({"/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry{1 0.0.0.5}",
                    "/internal/ospf-area-global{1 0.0.0.5}"}));
}

TEST(OspfRules, NothingIsInTheWayOfProcess1OrOfSeveralEntities) {
  const List& list = Lists().front();
  ConfigBuilder config;
  config.Entity(1).Entry(list.path, EntryOf(list, "1"));
  EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(config)), Places());
  EXPECT_EQ(PlacesOf(kInTheWay, OpenOspf(Process7And(list, {"1", "7"}, {9}))),
            Places());
}

TEST(OspfRules, ForeignEntriesAreSeenInEachList) {
  for (const List& list : Lists()) {
    EXPECT_EQ(PlacesOf("ospfv2-foreign-entries",
                       OpenOspf(Process7And(list, {"3", "7"}))),
              Places({list.path + "{3" + list.keys + "}"}));
  }
}

// What is said of loopback 0, which has these addresses.
std::string ReasonOfLoopback(const std::string& address,
                             const std::vector<std::string>& addresses) {
  const Catalogue catalogue = ReadCatalogue(
      R"({"rules": [{"id": "X", "severity": "look", "advice": "Look.",
          "in": "code", "code": "ospfv2-missed-interfaces",
          "message": "{reason}"}]})",
      "x.json", true);
  ConfigBuilder config;
  config.Entity(7)
      .Interface(7, "0.0.0.0", "loopback-0", address)
      .Loopback(0, addresses);
  const Database database = OpenOspf(config);
  return FindInResult(catalogue, database).at(0).message;
}

TEST(OspfRules, ALaterAddressOfALoopbackIsToldFromAForeignOne) {
  EXPECT_EQ(ReasonOfLoopback("192.0.2.2", {"192.0.2.1/32", "192.0.2.2/32"}),
            "it is not the first address of loopback 0, which alone gets one");
  EXPECT_EQ(ReasonOfLoopback("192.0.2.3", {"192.0.2.1/32", "192.0.2.2/32"}),
            "loopback 0 has 192.0.2.1");
  EXPECT_EQ(ReasonOfLoopback("192.0.2.3", {}), "loopback 0 has no address");
  EXPECT_EQ(ReasonOfLoopback("192.0.2.1", {"192.0.2.1/32", "192.0.2.2/32"}),
            "the pass did not come to it");
}

TEST(OspfRules, InternalAreasOfOspfv3InstancesAreNotForeign) {
  ConfigBuilder config;
  config.Entity(7).V3Entity(5).InternalArea(5, "0.0.0.0").NmEntity(3);
  EXPECT_EQ(PlacesOf("ospfv2-foreign-entries", OpenOspf(config)),
            Places({"/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry{3}"}));
}

}  // namespace
}  // namespace kit::host
