// The frame of the compound-index pass, the PM entity table, and the helpers
// that other steps and passes use.
#include "config_update/ospf_compound_idx_update.h"

#include <confd_lib.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"
#include "tests/unit/config-update/deliberate_leak.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::DeliberateLeak;
using test_support::ExpectGolden;
using test_support::Models;
using test_support::Upgrade;
using Pass = Ospfv2CompoundIndexUpdate;

using Step = int32_t (Pass::*)();
using ConstStep = int32_t (Pass::*)() const;
static_assert(std::is_same_v<decltype(&Pass::Run), Step>);
static_assert(std::is_same_v<decltype(&Pass::PmEntityTable), Step>);
static_assert(std::is_same_v<decltype(&Pass::InternalOspfIDTables), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmMjTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::NmEntityTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmAreaTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmStubAreaTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmAreaAggTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmIntfTable), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::PmIntfMetricTable), ConstStep>);
static_assert(
    std::is_same_v<decltype(&Pass::InternalOspfAreaGlobalTable), ConstStep>);
static_assert(
    std::is_same_v<decltype(&Pass::InternalOspfInterfaceL3Table), ConstStep>);
static_assert(std::is_same_v<decltype(&Pass::GetMaapiFields),
                             int (Pass::*)(int, const char*, ...) const>);
static_assert(
    std::is_same_v<decltype(&Pass::GetMaapiPmEntIdx),
                   int (*)(int, int, int, unsigned int, unsigned int&)>);

constexpr char kEntity[] = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kUpdateEntity[] =
    "update to compound idx: /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry\n";
constexpr char kProcIdList[] = "/internal/ospf-proc-id-to-index";
constexpr char kIndexList[] = "/internal/ospf-index-to-proc-id";

Pass PassOn(const Upgrade& upgrade, uint32_t pm_ent_idx = 0) {
  return {upgrade.maapi_sock(), upgrade.thandle(), upgrade.cdb_sock(),
          pm_ent_idx};
}

size_t CountCalls(const Upgrade& upgrade, const std::string& start) {
  size_t count = 0;
  for (const std::string& call : upgrade.Calls()) {
    if (call.compare(0, start.size(), start) == 0) ++count;
  }
  return count;
}

// An entity with one entry in each dependent table.
std::string WholeConfig(uint32_t process_id) {
  const std::string process = std::to_string(process_id);
  const std::string mib = "/VX-OSPF-MIB/";
  return ConfigBuilder()
      .Entity(process_id, {{"ospfPmEntDescription", "core"}})
      .Entry(mib + "ospfPmMjTable/ospfPmMjEntry",
             {{"ospfPmMjEntIndex", process},
              {"ospfPmMjPartnerType", "bfd"},
              {"ospfPmMjPartnerIndex", "4"}})
      .NmEntity(process_id)
      .Area(process_id, "0.0.0.1")
      .InternalArea(process_id, "0.0.0.1")
      .Entry(mib + "ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry",
             {{"ospfPmAreaAggregateApplIndex", process},
              {"ospfPmAreaAggregateAreaID", "0.0.0.1"},
              {"ospfPmAreaAggregateLsdbType", "summaryLink"},
              {"ospfPmAreaAggregateNet", "10.0.0.0"},
              {"ospfPmAreaAggregateMask", "255.0.0.0"}})
      .Entry(mib + "ospfPmStubAreaTable/ospfPmStubAreaEntry",
             {{"ospfPmStubAreaApplIndex", process},
              {"ospfPmStubAreaId", "0.0.0.1"},
              {"ospfPmStubAreaTOS", "0"}})
      .Interface(process_id, "0.0.0.1", "l3-a", "10.0.0.1")
      .Xml();
}

// ---- Run --------------------------------------------------------------------

TEST(Ospfv2CompoundIndexUpdateTest, WholeRunMakesTheseCallsAndChanges) {
  Upgrade upgrade(WholeConfig(7));
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  ExpectGolden("unit/config-update/golden/ospf_compound_idx_update.calls",
               upgrade.CallText());
  ExpectGolden("unit/config-update/golden/ospf_compound_idx_update.changes",
               upgrade.Changes());
}

TEST(Ospfv2CompoundIndexUpdateTest, LogsTheTablesInTheirFixedOrder) {
  Upgrade upgrade(WholeConfig(7));
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(
      upgrade.Log(),
      "Start OSPFv2 update to compound idx\n"
      "update to compound idx: /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry\n"
      "update to compound idx: /VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry\n"
      "update to compound idx: /VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry\n"
      "update to compound idx: /VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry\n"
      "update to compound idx: /internal/ospf-area-global\n"
      "update to compound idx: "
      "/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry\n"
      "update to compound idx: "
      "/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry\n"
      "update to compound idx: /VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry\n"
      "update to compound idx: /internal/ospf-interface-l3\n"
      "update to compound idx: "
      "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry\n"
      "Finish OSPFv2 update to compound idx\n");
}

TEST(Ospfv2CompoundIndexUpdateTest, EntityWithoutAnyTableIsMovedAlone) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(),
            std::string("Start OSPFv2 update to compound idx\n") +
                kUpdateEntity + "Finish OSPFv2 update to compound idx\n");
}

TEST(Ospfv2CompoundIndexUpdateTest, NamespaceFailureNamesTheOtherCall) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  upgrade.Fail("maapi_set_namespace", "", 22, "no session");
  EXPECT_EQ(PassOn(upgrade).Run(), -1);
  EXPECT_EQ(upgrade.Log(), "OSPF: cdb_set_namespace (error: no session)\n");
  EXPECT_EQ(upgrade.Calls(),
            std::vector<std::string>{"maapi_set_namespace hash 448085882 -> -1 "
                                     "error 22 'no session'"});
}

TEST(Ospfv2CompoundIndexUpdateTest, OldListByProcessIdMeansSilentlyDone) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(7)
                      .Entry(kProcIdList, {{"process-id", "7"},
                                           {"vrf-name", "global"},
                                           {"index", "1"},
                                           {"rtm_idx", "1"}})
                      .Entry(kIndexList, {{"index", "1"},
                                          {"proc_id", "7"},
                                          {"vrf_name", "global"},
                                          {"rtm_idx", "1"}})
                      .Xml(),
                  {"intermediate", "after"});
  // The model lets no entry of one list stand without the other's.
  kit::control::Fault fault;
  fault.function = "cdb_num_instances";
  fault.path = kIndexList;
  fault.result = 0;
  upgrade.Inject(fault);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.CallText(),
            "maapi_set_namespace hash 448085882 -> 0\n"
            "cdb_num_instances /internal/ospf-proc-id-to-index -> 1\n"
            "cdb_num_instances /internal/ospf-index-to-proc-id -> 0\n");
}

TEST(Ospfv2CompoundIndexUpdateTest, OldListByIndexMeansSilentlyDone) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(7)
                      .Entry(kIndexList, {{"index", "1"},
                                          {"proc_id", "7"},
                                          {"vrf_name", "global"},
                                          {"rtm_idx", "1"}})
                      .Xml(),
                  {"intermediate", "after"});
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(Ospfv2CompoundIndexUpdateTest, EmptyIdListsOfTheOldDataAreNone) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml(), {"intermediate", "after"});
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_TRUE(upgrade.Exists(std::string(kEntity) + "{1}"));
}

class WrongNumberOfEntities
    : public testing::TestWithParam<std::vector<uint32_t>> {};

INSTANTIATE_TEST_SUITE_P(Counts, WrongNumberOfEntities,
                         testing::Values(std::vector<uint32_t>{},
                                         std::vector<uint32_t>{1, 7},
                                         std::vector<uint32_t>{1, 7, 8}));

// The text of the last failure is a stale one: counting the ID lists failed.
TEST_P(WrongNumberOfEntities, FailsThePassWithTheCountAndAStaleError) {
  ConfigBuilder config;
  for (uint32_t index : GetParam()) config.Entity(index);
  Upgrade upgrade(config.Xml());
  upgrade.Fail("cdb_num_instances", kIndexList, CONFD_ERR_BADPATH, "stale");
  Pass pass = PassOn(upgrade);
  EXPECT_EQ(pass.Run(), -1);
  EXPECT_EQ(upgrade.Log(),
            "Start OSPFv2 update to compound idx\n"
            "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry have obj_num=" +
                std::to_string(GetParam().size()) +
                " and was expecting 1\n"
                "failed upgrade of ospfPmEntTable (error: stale)\n");
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(pass.pm_ent_idx, 0u);
}

TEST(Ospfv2CompoundIndexUpdateTest, EntitiesThatCannotBeCountedFailThePass) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  upgrade.Fail("cdb_num_instances", kEntity, CONFD_ERR_BADPATH, "none");
  EXPECT_EQ(PassOn(upgrade).Run(), -1);
  EXPECT_EQ(upgrade.Log(),
            "Start OSPFv2 update to compound idx\n"
            "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry have obj_num=-1 and "
            "was expecting 1\n"
            "failed upgrade of ospfPmEntTable (error: none)\n");
}

struct FailingStep {
  std::string table;        // as the log names it
  std::string created;      // the first entry that the step creates
  std::string next_create;  // the first one of the next step
};

class StepOfRun : public testing::TestWithParam<FailingStep> {};

std::vector<FailingStep> StepsOfRun() {
  const std::string mib = "/VX-OSPF-MIB/";
  std::vector<FailingStep> steps = {
      {"ospfPmEntTable", std::string(kEntity) + "{1}", ""},
      {"OSPF internal ID tables", std::string(kProcIdList) + "{7 global}", ""},
      {"ospfPmMjTable", mib + "ospfPmMjTable/ospfPmMjEntry{1 bfd 4}", ""},
      {"ospfNmEntTable", mib + "ospfNmEntTable/ospfNmEntEntry{1}", ""},
      {"ospfPmAreaTable", mib + "ospfPmAreaTable/ospfPmAreaEntry{1 0.0.0.1}",
       ""},
      {"ospf-area-global", "/internal/ospf-area-global{1 0.0.0.1}", ""},
      {"ospfPmAreaAggregateTable",
       mib + "ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry"
             "{1 0.0.0.1 summaryLink 10.0.0.0 255.0.0.0}",
       ""},
      {"ospfPmStubAreaTable",
       mib + "ospfPmStubAreaTable/ospfPmStubAreaEntry{1 0.0.0.1 0}", ""},
      {"ospfPmIfTable", mib + "ospfPmIfTable/ospfPmIfEntry{1 10.0.0.1 0}", ""},
      {"ospf-interface-l3",
       "/internal/ospf-interface-l3{1 0.0.0.1 l3-a 10.0.0.1}", ""},
      {"ospfPmIfMetricTable",
       mib + "ospfPmIfMetricTable/ospfPmIfMetricEntry{1 10.0.0.1 0 0}", ""},
  };
  for (size_t i = 0; i + 1 < steps.size(); ++i) {
    steps[i].next_create = steps[i + 1].created;
  }
  return steps;
}

INSTANTIATE_TEST_SUITE_P(Every, StepOfRun, testing::ValuesIn(StepsOfRun()));

TEST_P(StepOfRun, FailureIsLoggedWithTheErrorAndEndsThePass) {
  const DeliberateLeak leak;
  Upgrade upgrade(WholeConfig(7));
  upgrade.Fail("maapi_create", GetParam().created, 24, "disk full");
  EXPECT_EQ(PassOn(upgrade).Run(), -1);
  const std::string last =
      "failed upgrade of " + GetParam().table + " (error: disk full)\n";
  ASSERT_GE(upgrade.Log().size(), last.size());
  EXPECT_EQ(upgrade.Log().substr(upgrade.Log().size() - last.size()), last);
  EXPECT_EQ(CountCalls(upgrade, "maapi_create " + GetParam().created), 1u);
  if (!GetParam().next_create.empty()) {
    EXPECT_EQ(CountCalls(upgrade, "maapi_create " + GetParam().next_create),
              0u);
  }
  EXPECT_NE(upgrade.Calls().back().find(GetParam().created), std::string::npos)
      << "no call follows the failing one";
}

// ---- PM entity table --------------------------------------------------------

class EntityOfProcess : public testing::TestWithParam<uint32_t> {};

INSTANTIATE_TEST_SUITE_P(ProcessIds, EntityOfProcess,
                         testing::Values(1u, 7u, 4294967295u));

TEST_P(EntityOfProcess, MovesToIndexOneWithAllItsValues) {
  const std::string old = std::to_string(GetParam());
  Upgrade upgrade(ConfigBuilder()
                      .Entity(GetParam(), {{"ospfPmEntDescription", "core"},
                                           {"ospfPmEntMaxPaths", "32"}})
                      .Xml());
  Pass pass = PassOn(upgrade);
  EXPECT_EQ(pass.PmEntityTable(), 0);
  EXPECT_EQ(pass.pm_ent_idx, GetParam());
  EXPECT_EQ(upgrade.Log(), kUpdateEntity);
  EXPECT_EQ(CountCalls(upgrade, "maapi_delete " + std::string(kEntity) + "{" +
                                    old + "} -> 0"),
            1u);
  EXPECT_EQ(
      CountCalls(upgrade, "maapi_create " + std::string(kEntity) + "{1} -> 0"),
      1u);
  const std::string entry = std::string(kEntity) + "{1}";
  EXPECT_EQ(upgrade.Leaf(entry + "/ospfPmEntRtrId"), "C_IPV4 192.0.2.1");
  EXPECT_EQ(upgrade.Leaf(entry + "/ospfPmEntDescription"), "C_BUF \"core\"");
  EXPECT_EQ(upgrade.Leaf(entry + "/ospfPmEntMaxPaths"), "C_UINT8 32");
  EXPECT_EQ(upgrade.Exists(std::string(kEntity) + "{" + old + "}"),
            GetParam() == 1);
}

TEST(PmEntityTableTest, MakesTheseCalls) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(PassOn(upgrade).PmEntityTable(), 0);
  ExpectGolden("unit/config-update/golden/PmEntityTable.calls",
               upgrade.CallText());
}

TEST(PmEntityTableTest, ReleasesEightyValuesOnSuccess) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(PassOn(upgrade).PmEntityTable(), 0);
  EXPECT_EQ(upgrade.Calls().back(), "confd_free_value x80");
}

TEST(PmEntityTableTest, EntityOfKeyOneIsDeletedAndCreatedAgain) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(
      CountCalls(upgrade, "maapi_delete " + std::string(kEntity) + "{1} -> 0"),
      1u);
  EXPECT_EQ(upgrade.Leaf("/internal/ospf-proc-id-to-index{1 global}/index"),
            "C_UINT32 1");
  EXPECT_EQ(upgrade.Leaf("/internal/ospf-index-to-proc-id{1}/proc_id"),
            "C_UINT32 1");
}

struct FailingEntityCall {
  std::string function;
  std::string path;
  std::string message;
};

class PmEntityTableFailure : public testing::TestWithParam<FailingEntityCall> {
};

INSTANTIATE_TEST_SUITE_P(
    EveryWrite, PmEntityTableFailure,
    testing::Values(
        FailingEntityCall{"maapi_delete", std::string(kEntity) + "{7}",
                          "failed delete to compound idx: "},
        FailingEntityCall{"maapi_create", std::string(kEntity) + "{1}",
                          "failed create to compound idx: "},
        FailingEntityCall{"maapi_set_object", kEntity, "failed set object "}));

TEST_P(PmEntityTableFailure, LogsItAndDoesNotStoreTheProcessId) {
  const DeliberateLeak leak;
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  upgrade.Fail(GetParam().function, GetParam().path, 24, "disk full");
  Pass pass = PassOn(upgrade);
  EXPECT_EQ(pass.PmEntityTable(), -1);
  EXPECT_EQ(upgrade.Log(), kUpdateEntity + GetParam().message + kEntity +
                               " error:24 'disk full'\n");
  EXPECT_EQ(pass.pm_ent_idx, 0u);
  EXPECT_EQ(CountCalls(upgrade, "confd_free_value x80"), 0u);
  EXPECT_EQ(upgrade.Calls().back().find(GetParam().function + " "), 0u);
}

TEST(PmEntityTableTest, MoreThanEightyValuesFailTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.result = 81;
  upgrade.Inject(fault);
  EXPECT_EQ(PassOn(upgrade).PmEntityTable(), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kUpdateEntity) +
                "there are more cdb fields (81) on the object than on maapi "
                "(80)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(PmEntityTableTest, EightyValuesAreFine) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.result = 80;
  upgrade.Inject(fault);
  EXPECT_EQ(PassOn(upgrade).PmEntityTable(), 0);
}

TEST(PmEntityTableTest, FailedReadAbortsTheProcess) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  upgrade.Fail("cdb_get_objects", kEntity, CONFD_ERR_NOEXISTS, "gone");
  EXPECT_DEATH(PassOn(upgrade).PmEntityTable(),
               "src/config-update/ospf_compound_idx_update.cc:225: .*"
               "config_update::Ospfv2CompoundIndexUpdate::PmEntityTable\\(\\).*"
               "\\(&cdb_objs\\[i\\]\\)->type == C_UINT32");
}

// ---- GetMaapiFields ---------------------------------------------------------

const char kJoin[] = "/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry";

// A join entry of the small models; the stock models have no room to spare.
std::string JoinConfig() {
  return ConfigBuilder()
      .Entry(kJoin, {{"ospfPmMjEntIndex", "7"},
                     {"ospfPmMjPartnerType", "2"},
                     {"ospfPmMjPartnerIndex", "3"},
                     {"ospfPmMjAdmin", "11"},
                     {"ospfPmMjRetry", "12"},
                     {"ospfPmMjName", "join"},
                     {"ospfPmMjNote", "old"}})
      .Xml();
}

Models Joins(const std::string& before, const std::string& after) {
  const std::string sets =
      std::string(TEST_SOURCE_ROOT) + "/tests/models/joins/";
  return {sets + before, sets + after};
}

TEST(GetMaapiFieldsTest, NewEntryWithFewerLeavesDropsTheRestSilently) {
  Upgrade upgrade(JoinConfig(), Joins("usual", "narrow"));
  EXPECT_EQ(PassOn(upgrade, 7).PmMjTable(), 0);
  EXPECT_EQ(upgrade.Log(),
            "update to compound idx: /VX-OSPF-MIB/ospfPmMjTable/"
            "ospfPmMjEntry\n");
  EXPECT_EQ(upgrade.Changes(),
            "+ /VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry{1 2 3}\n"
            "    ospfPmMjAdmin: \"11\"\n"
            "    ospfPmMjRetry: \"12\"\n"
            "- /VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry{7 2 3}\n");
  EXPECT_EQ(CountCalls(upgrade, std::string("maapi_set_object ") + kJoin +
                                    " n 5 C_UINT32 1, "),
            1u);
}

TEST(GetMaapiFieldsTest, NewEntryWiderThanTheArrayGetsTheArraysWidth) {
  Upgrade upgrade(JoinConfig(), Joins("usual", "wide"));
  EXPECT_EQ(PassOn(upgrade, 7).PmMjTable(), 0);
  EXPECT_EQ(upgrade.Log(),
            "update to compound idx: /VX-OSPF-MIB/ospfPmMjTable/"
            "ospfPmMjEntry\n"
            "Warning new database have more fields than collected from cdb "
            "maapi_fields=12, expected_fields=10\n");
  EXPECT_EQ(CountCalls(upgrade, std::string("maapi_set_object ") + kJoin +
                                    " n 10 C_UINT32 1, "),
            1u);
  EXPECT_EQ(upgrade.Changes(),
            "+ /VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry{1 2 3}\n"
            "    ospfPmMjAdmin: \"11\"\n"
            "    ospfPmMjRetry: \"12\"\n"
            "    ospfPmMjName: \"join\"\n"
            "    ospfPmMjNote: \"old\"\n"
            "- /VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry{7 2 3}\n");
}

TEST(GetMaapiFieldsTest, OldEntryWiderThanTheArrayFailsTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(JoinConfig(), Joins("wide", "wide"));
  EXPECT_EQ(PassOn(upgrade, 7).PmMjTable(), -1);
  EXPECT_EQ(
      upgrade.Log(),
      "update to compound idx: /VX-OSPF-MIB/ospfPmMjTable/"
      "ospfPmMjEntry\n"
      "there are more cdb fields (12) on the object than on maapi (10)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(GetMaapiFieldsTest, TablesThatTheOldModelLacksAreEmpty) {
  Upgrade upgrade(JoinConfig(), Joins("usual", "usual"));
  const Pass pass = PassOn(upgrade, 7);
  for (ConstStep step :
       {&Pass::NmEntityTable, &Pass::PmAreaTable, &Pass::PmStubAreaTable,
        &Pass::PmAreaAggTable, &Pass::PmIntfTable, &Pass::PmIntfMetricTable,
        &Pass::InternalOspfAreaGlobalTable,
        &Pass::InternalOspfInterfaceL3Table}) {
    EXPECT_EQ((pass.*step)(), 0);
  }
  EXPECT_EQ(upgrade.Log(), "");
}

class FieldCount : public testing::TestWithParam<std::pair<int, int>> {};

// What ConfD says of an entry against room for 80 values.
INSTANTIATE_TEST_SUITE_P(AgainstRoomFor80, FieldCount,
                         testing::Values(std::pair{-1, -1}, std::pair{0, 0},
                                         std::pair{1, 1}, std::pair{79, 79},
                                         std::pair{80, 80}, std::pair{81, 80},
                                         std::pair{100000, 80}));

TEST_P(FieldCount, IsTheEntrysButNoMoreThanThereIsRoomFor) {
  const auto [counted, expected] = GetParam();
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  kit::control::Fault fault;
  fault.function = "maapi_get_object";
  fault.result = counted;
  upgrade.Inject(fault);
  EXPECT_EQ(PassOn(upgrade).GetMaapiFields(80, "%s{%u}", kEntity, 7u),
            expected);
  EXPECT_EQ(upgrade.Log(),
            counted <= 80
                ? ""
                : "Warning new database have more fields than collected from "
                  "cdb maapi_fields=" +
                      std::to_string(counted) + ", expected_fields=80\n");
}

TEST(GetMaapiFieldsTest, FormatsThePathReadsOneValueAndReleasesIt) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  confd_value_t key;
  CONFD_SET_UINT32(&key, 7);
  EXPECT_EQ(PassOn(upgrade).GetMaapiFields(
                80, "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{%x}", &key),
            47);
  EXPECT_EQ(upgrade.CallText(),
            "confd_vformat_keypath "
            "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7} -> 45\n"
            "maapi_get_object /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7} n "
            "1 -> 47 C_UINT32 7\n"
            "confd_free_value x1\n");
}

TEST(GetMaapiFieldsTest, ErrorIsHandedBackWithoutALine) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(PassOn(upgrade).GetMaapiFields(80, "%s{%u}", kEntity, 8u), -1);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.Calls().back(), "confd_free_value x1");
}

// ---- GetMaapiPmEntIdx -------------------------------------------------------

// The transaction maps process 7 to index 1, and process 2 to index 5; indexes
// 1 and 2 are in use.
std::string MappedConfig() {
  auto by_process = [](const std::string& process, const std::string& vrf,
                       const std::string& index) {
    return test_support::Leaves{{"process-id", process},
                                {"vrf-name", vrf},
                                {"index", index},
                                {"rtm_idx", "1"}};
  };
  auto by_index = [](const std::string& index, const std::string& process) {
    return test_support::Leaves{{"index", index},
                                {"proc_id", process},
                                {"vrf_name", "global"},
                                {"rtm_idx", "1"}};
  };
  return ConfigBuilder()
      .Entry(kProcIdList, by_process("7", "global", "1"))
      .Entry(kProcIdList, by_process("2", "global", "5"))
      .Entry(kProcIdList, by_process("8", "red", "2"))
      .Entry(kIndexList, by_index("1", "7"))
      .Entry(kIndexList, by_index("2", "8"))
      .Entry(kIndexList, by_index("5", "2"))
      .Xml();
}

int MapIndex(const Upgrade& upgrade, uint32_t index, uint32_t& out) {
  return Pass::GetMaapiPmEntIdx(upgrade.maapi_sock(), upgrade.thandle(),
                                upgrade.cdb_sock(), index, out);
}

TEST(GetMaapiPmEntIdxTest, NewIndexComesBackUnchanged) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 99;
  EXPECT_EQ(MapIndex(upgrade, 1, out), 0);
  EXPECT_EQ(out, 1u);
  EXPECT_EQ(upgrade.CallText(),
            "maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{1}/proc_id "
            "-> 0 C_UINT32 7\n");
}

TEST(GetMaapiPmEntIdxTest, NewIndexWinsOverTheSameNumberAsAProcessId) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 99;
  EXPECT_EQ(MapIndex(upgrade, 2, out), 0);
  EXPECT_EQ(out, 2u);
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(GetMaapiPmEntIdxTest, ProcessIdOfTheGlobalVrfGivesItsIndex) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 99;
  EXPECT_EQ(MapIndex(upgrade, 7, out), 0);
  EXPECT_EQ(out, 1u);
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(GetMaapiPmEntIdxTest, ResultMayOverwriteTheIndexAskedFor) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t index = 7;
  EXPECT_EQ(MapIndex(upgrade, index, index), 0);
  EXPECT_EQ(index, 1u);
}

TEST(GetMaapiPmEntIdxTest, ProcessIdOfAnotherVrfIsUnknown) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 0;
  EXPECT_EQ(MapIndex(upgrade, 8, out), -1);
  EXPECT_EQ(upgrade.Log().find("Failed to get ospf-pm-ent-index (error: "), 0u)
      << upgrade.Log();
}

TEST(GetMaapiPmEntIdxTest, UnknownNumberFailsWithTheErrorOfTheSecondRead) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 0;
  EXPECT_EQ(MapIndex(upgrade, 4294967295u, out), -1);
  EXPECT_EQ(upgrade.Log().find("Failed to get ospf-pm-ent-index (error: "
                               "/internal/ospf-proc-id-to-index{4294967295 "
                               "global}/index: "),
            0u)
      << upgrade.Log();
}

TEST(GetMaapiPmEntIdxTest, CdbSocketIsNotUsed) {
  Upgrade upgrade(MappedConfig(), {"intermediate", "after"});
  uint32_t out = 0;
  EXPECT_EQ(Pass::GetMaapiPmEntIdx(upgrade.maapi_sock(), upgrade.thandle(), -1,
                                   7, out),
            0);
  EXPECT_EQ(out, 1u);
}

}  // namespace
}  // namespace config_update
