// The nine steps that move the entries of one list each to the new key.
#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_maapi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include "config_update/ospf_compound_idx_update.h"
#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"
#include "tests/unit/config-update/deliberate_leak.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::DeliberateLeak;
using test_support::ExpectGolden;
using test_support::Leaves;
using test_support::Upgrade;

constexpr uint32_t kProcessId = 7;
constexpr char kDelete[] = "failed delete to compound idx: ";
constexpr char kCreate[] = "failed create to compound idx: ";
constexpr char kSetObject[] = "failed set object ";

// A key leaf besides the entity index, in the first and the second entry.
struct KeyLeaf {
  std::string name;
  std::string first;
  std::string second;
};

struct Member {
  std::string name;
  int32_t (Ospfv2CompoundIndexUpdate::*step)() const;
  std::string list;
  int width;
  std::string index_leaf;
  std::vector<KeyLeaf> keys;
  Leaves leaves;  // of every entry, besides its keys
  std::string create_failure = kCreate;
  bool gate = false;
  std::string extra_leaf = "";
  std::string extra_value = "";
  std::string extra_failure = "";

  // "7 10.0.0.1 0" in braces.
  std::string Keys(uint32_t index, bool second = false) const {
    std::string text = "{" + std::to_string(index);
    for (const KeyLeaf& key : keys) {
      text += " " + (second ? key.second : key.first);
    }
    return text + "}";
  }
  std::string Entry(uint32_t index, bool second = false) const {
    return list + Keys(index, second);
  }
  std::string StartLine() const {
    return "update to compound idx: " + list + "\n";
  }
  // The log of a run that fails with an injected fault.
  std::string FailureLog(const std::string& what) const {
    return StartLine() + what + list + " error:24 'disk full'\n";
  }

  void Add(ConfigBuilder& config, uint32_t index, bool second = false) const {
    Leaves all = {{index_leaf, std::to_string(index)}};
    for (const KeyLeaf& key : keys) {
      all.emplace_back(key.name, second ? key.second : key.first);
    }
    all.insert(all.end(), leaves.begin(), leaves.end());
    config.Entry(list, all);
  }
  // One entry of the entity; two where the list has room for two.
  std::string Config(size_t entries = 1) const {
    ConfigBuilder config;
    Add(config, kProcessId);
    if (entries > 1) Add(config, kProcessId, true);
    return config.Xml();
  }
};

std::vector<Member> Members() {
  using Update = Ospfv2CompoundIndexUpdate;
  return {
      {"PmMjTable",
       &Update::PmMjTable,
       "/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry",
       10,
       "ospfPmMjEntIndex",
       {{"ospfPmMjPartnerType", "neighborManager", "bfd"},
        {"ospfPmMjPartnerIndex", "2", "3"}},
       {{"ospfPmMjAdminStatus", "down"}, {"ospfPmMjRetryTime", "30"}}},
      {"NmEntityTable",
       &Update::NmEntityTable,
       "/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry",
       20,
       "ospfNmEntIndex",
       {},
       {{"ospfNmMjEntityIndex", "7"}, {"ospfNmEntMaxNeighbors", "99"}},
       kDelete,
       false,
       "ospfNmMjEntityIndex",
       "C_UINT32 1",
       "failed to set ospfNmMjEntityIndex : "},
      {"PmAreaTable",
       &Update::PmAreaTable,
       "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry",
       40,
       "ospfPmAreaApplIndex",
       {{"ospfPmAreaId", "0.0.0.0", "0.0.0.9"}},
       {{"ospfPmAreaImportAsExtern", "importNssa"},
        {"ospfPmAreaNssaTranslatorStabInterval", "41"}}},
      {"PmStubAreaTable",
       &Update::PmStubAreaTable,
       "/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry",
       10,
       "ospfPmStubAreaApplIndex",
       {{"ospfPmStubAreaId", "0.0.0.1", "0.0.0.2"},
        {"ospfPmStubAreaTOS", "0", "4"}},
       {{"ospfPmStubAreaMetric", "20"}}},
      {"PmAreaAggTable",
       &Update::PmAreaAggTable,
       "/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry",
       10,
       "ospfPmAreaAggregateApplIndex",
       {{"ospfPmAreaAggregateAreaID", "0.0.0.1", "0.0.0.2"},
        {"ospfPmAreaAggregateLsdbType", "summaryLink", "nssaExternalLink"},
        {"ospfPmAreaAggregateNet", "10.1.0.0", "10.2.0.0"},
        {"ospfPmAreaAggregateMask", "255.255.0.0", "255.255.255.0"}},
       {{"ospfPmAreaAggregateCost", "5"}}},
      {"PmIntfTable",
       &Update::PmIntfTable,
       "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry",
       100,
       "ospfPmIfApplIndex",
       {{"ospfPmIfIpAddress", "10.0.0.1", "10.0.0.2"},
        {"ospfPmIfAddressLessIf", "0", "5"}},
       {{"ospfPmIfType", "pointToPoint"}, {"ospfPmIfNmEntity", "7"}},
       kCreate,
       false,
       "ospfPmIfNmEntity",
       "C_INT32 1",
       "failed to set ospfPmIfNmEntity to compound idx: "},
      {"PmIntfMetricTable",
       &Update::PmIntfMetricTable,
       "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry",
       10,
       "ospfPmIfMetricApplIndex",
       {{"ospfPmIfMetricIpAddress", "10.0.0.1", "10.0.0.2"},
        {"ospfPmIfMetricAddressLessIf", "0", "5"},
        {"ospfPmIfMetricTOS", "0", "4"}},
       {{"ospfPmIfMetricValue", "10"}}},
      {"InternalOspfAreaGlobalTable",
       &Update::InternalOspfAreaGlobalTable,
       "/internal/ospf-area-global",
       10,
       "process-id",
       {{"area-id", "0.0.0.0", "0.0.0.9"}},
       {{"areaIdIntegerFormat", "true"}, {"cli-sequence", "3"}},
       kCreate,
       true},
      {"InternalOspfInterfaceL3Table",
       &Update::InternalOspfInterfaceL3Table,
       "/internal/ospf-interface-l3",
       10,
       "ospf-pm-ent-index",
       {{"ospf-pm-area-id", "0.0.0.0", "0.0.0.9"},
        {"ospf-pm-if-name", "l3-a", "loopback-3"},
        {"ospf-pm-ip-address", "10.0.0.1", "10.0.0.2"}},
       {{"cli-sequence", "4"}, {"comment", "to the lab"}},
       kDelete},
  };
}

std::vector<Member> MembersWithTwoEntries() {
  std::vector<Member> members = Members();
  members.erase(
      std::remove_if(members.begin(), members.end(),
                     [](const Member& member) { return member.keys.empty(); }),
      members.end());
  return members;
}

std::vector<Member> MembersWithExtraLeaf() {
  std::vector<Member> members = Members();
  members.erase(std::remove_if(members.begin(), members.end(),
                               [](const Member& member) {
                                 return member.extra_leaf.empty();
                               }),
                members.end());
  return members;
}

int32_t RunStep(const Upgrade& upgrade, const Member& member) {
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       upgrade.cdb_sock(), kProcessId};
  return (pass.*member.step)();
}

// What follows the name of a function in the recorded calls.
std::vector<std::string> CallsOf(const Upgrade& upgrade,
                                 const std::string& function) {
  std::vector<std::string> found;
  for (const std::string& call : upgrade.Calls()) {
    if (call.compare(0, function.size() + 1, function + " ") == 0) {
      found.push_back(call.substr(function.size() + 1));
    }
  }
  return found;
}

void PrintTo(const Member& member, std::ostream* os) { *os << member.name; }

class CompoundKeyMember : public testing::TestWithParam<Member> {
 protected:
  const Member& member() const { return GetParam(); }
};
class CompoundKeyMemberWithTwoEntries : public CompoundKeyMember {};
class CompoundKeyMemberWithExtraLeaf : public CompoundKeyMember {};

std::string NameOf(const testing::TestParamInfo<Member>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, CompoundKeyMember, testing::ValuesIn(Members()),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(All, CompoundKeyMemberWithTwoEntries,
                         testing::ValuesIn(MembersWithTwoEntries()), NameOf);
INSTANTIATE_TEST_SUITE_P(All, CompoundKeyMemberWithExtraLeaf,
                         testing::ValuesIn(MembersWithExtraLeaf()), NameOf);

// Entries of the entity between those of foreign first keys.
TEST_P(CompoundKeyMember, MakesTheseCallsAndChanges) {
  ConfigBuilder config;
  member().Add(config, 3);
  member().Add(config, kProcessId);
  if (!member().keys.empty()) member().Add(config, kProcessId, true);
  member().Add(config, 9);
  Upgrade upgrade(config.Xml());
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(upgrade.Log(), member().StartLine());
  ExpectGolden("unit/config-update/golden/" + member().name + ".calls",
               upgrade.CallText());
  ExpectGolden("unit/config-update/golden/" + member().name + ".changes",
               upgrade.Changes());
}

TEST_P(CompoundKeyMember, EmptyTableLogsNothing) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.CallText(),
            "cdb_num_instances " + member().list + " -> 0\n");
}

TEST_P(CompoundKeyMember, TableThatCannotBeCountedLogsNothing) {
  Upgrade upgrade(member().Config());
  upgrade.Fail("cdb_num_instances", member().list, CONFD_ERR_BADPATH, "none");
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST_P(CompoundKeyMember, EntryOfAForeignFirstKeyStaysUnreported) {
  ConfigBuilder config;
  member().Add(config, 8);
  Upgrade upgrade(config.Xml());
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(upgrade.Log(), member().StartLine());
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Calls().size(), 3u) << "count, read, release";
}

TEST_P(CompoundKeyMember, ReleasesEveryValueAfterTheLastEntry) {
  const size_t entries = member().keys.empty() ? 1 : 2;
  Upgrade upgrade(member().Config(entries));
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(upgrade.Calls().back(),
            "confd_free_value x" +
                std::to_string(entries * static_cast<size_t>(member().width)));
  EXPECT_EQ(CallsOf(upgrade, "confd_free_value").size(), entries + 1)
      << "one more for each entry: the value that sizes it";
}

TEST_P(CompoundKeyMember, ReadsAllEntriesAtOnceFromTheFirst) {
  Upgrade upgrade(member().Config());
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  const std::vector<std::string> reads = CallsOf(upgrade, "cdb_get_objects");
  ASSERT_EQ(reads.size(), 1u);
  const std::string wanted =
      member().list + " n " + std::to_string(member().width) + " ix 0 nobj 1 ";
  EXPECT_EQ(reads[0].substr(0, wanted.size()), wanted);
}

TEST_P(CompoundKeyMember, MoreValuesThanTheWidthFailTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.result = member().width + 1;
  upgrade.Inject(fault);
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  const std::string width = std::to_string(member().width);
  EXPECT_EQ(upgrade.Log(),
            member().StartLine() + "there are more cdb fields (" +
                std::to_string(member().width + 1) +
                ") on the object than on maapi (" + width + ")\n");
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_TRUE(CallsOf(upgrade, "confd_free_value").empty());
}

TEST_P(CompoundKeyMember, AsManyValuesAsTheWidthAreFine) {
  Upgrade upgrade(member().Config());
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.result = member().width;
  upgrade.Inject(fault);
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_TRUE(upgrade.Exists(member().Entry(1)));
}

TEST_P(CompoundKeyMember, FailedReadAbortsTheProcess) {
  Upgrade upgrade(member().Config());
  upgrade.Fail("cdb_get_objects", member().list, CONFD_ERR_NOEXISTS, "gone");
  EXPECT_DEATH(RunStep(upgrade, member()),
               "src/config-update/ospf_compound_idx_update.cc:284: .*"
               "config_update::Ospfv2CompoundIndexUpdate::.* const.*"
               "\\(&cdb_objs\\[i\\]\\)->type == C_UINT32");
}

TEST_P(CompoundKeyMember, FirstKeyOfAnotherTypeAbortsTheProcess) {
  Upgrade upgrade(member().Config());
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.substitutes = {{0, C_INT32, kProcessId}};
  upgrade.Inject(fault);
  EXPECT_DEATH(RunStep(upgrade, member()),
               "\\(&cdb_objs\\[i\\]\\)->type == C_UINT32");
}

TEST_P(CompoundKeyMember, FailingDeleteIsReportedAndEndsTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  upgrade.Fail("maapi_delete", member().Entry(kProcessId), 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log(), member().FailureLog(kDelete));
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_TRUE(CallsOf(upgrade, "maapi_create").empty());
  EXPECT_TRUE(CallsOf(upgrade, "confd_free_value").empty());
}

TEST_P(CompoundKeyMember, FailingCreateIsReportedInTheWordsOfItsList) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  upgrade.Fail("maapi_create", member().Entry(1), 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log(), member().FailureLog(member().create_failure));
  EXPECT_EQ(upgrade.Changes(), "- " + member().Entry(kProcessId) + "\n");
  EXPECT_TRUE(CallsOf(upgrade, "maapi_get_object").empty());
  EXPECT_TRUE(CallsOf(upgrade, "confd_free_value").empty());
}

TEST_P(CompoundKeyMember, FailingSetObjectIsReportedAndEndsTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  upgrade.Fail("maapi_set_object", member().list, 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log(), member().FailureLog(kSetObject));
  EXPECT_TRUE(CallsOf(upgrade, "maapi_set_elem").empty());
  EXPECT_EQ(CallsOf(upgrade, "confd_free_value"),
            std::vector<std::string>{"x1"})
      << "only the value that sizes the entry";
}

TEST_P(CompoundKeyMember, EntryThatCannotBeSizedFailsItsSetObject) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  upgrade.Fail("maapi_get_object", member().Entry(1), 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log().find(
                member().StartLine() + kSetObject + member().list +
                " error:" + std::to_string(CONFD_ERR_PROTOUSAGE) + " '"),
            0u)
      << upgrade.Log();
  const std::vector<std::string> writes = CallsOf(upgrade, "maapi_set_object");
  ASSERT_EQ(writes.size(), 1u);
  EXPECT_EQ(writes[0].find(member().list + " n -1"), 0u) << writes[0];
}

TEST_P(CompoundKeyMember, NewEntryThatIsThereAlreadyFailsTheCreate) {
  const DeliberateLeak leak;
  ConfigBuilder config;
  member().Add(config, 1);
  member().Add(config, kProcessId);
  Upgrade upgrade(config.Xml());
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log().find(
                member().StartLine() + member().create_failure + member().list +
                " error:" + std::to_string(CONFD_ERR_ALREADY_EXISTS) + " '"),
            0u)
      << upgrade.Log();
}

TEST_P(CompoundKeyMember, EntryOfKeyOneIsMovedOntoItself) {
  ConfigBuilder config;
  member().Add(config, 1);
  Upgrade upgrade(config.Xml());
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       upgrade.cdb_sock(), 1};
  EXPECT_EQ((pass.*member().step)(), 0);
  EXPECT_EQ(CallsOf(upgrade, "maapi_delete"),
            std::vector<std::string>{member().Entry(1) + " -> 0"});
  EXPECT_EQ(CallsOf(upgrade, "maapi_create"),
            std::vector<std::string>{member().Entry(1) + " -> 0"});
  EXPECT_TRUE(upgrade.Exists(member().Entry(1)));
}

// Only the area list knows of entries that earlier passes have deleted.
TEST_P(CompoundKeyMember, EntryThatOnlyTheOldDataHoldsIsSkippedOrFails) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  ASSERT_EQ(maapi_delete(upgrade.maapi_sock(), upgrade.thandle(), "%s",
                         member().Entry(kProcessId).c_str()),
            CONFD_OK);
  upgrade.ClearCalls();
  if (member().gate) {
    EXPECT_EQ(RunStep(upgrade, member()), 0);
    EXPECT_EQ(upgrade.Log(), member().StartLine());
    EXPECT_EQ(CallsOf(upgrade, "maapi_exists"),
              std::vector<std::string>{member().Entry(kProcessId) + " -> 0"});
    EXPECT_TRUE(CallsOf(upgrade, "maapi_delete").empty());
    EXPECT_EQ(upgrade.Calls().back(), "confd_free_value x10");
  } else {
    EXPECT_EQ(RunStep(upgrade, member()), -1);
    EXPECT_EQ(upgrade.Log().find(
                  member().StartLine() + kDelete + member().list +
                  " error:" + std::to_string(CONFD_ERR_NOEXISTS) + " '"),
              0u)
        << upgrade.Log();
    EXPECT_TRUE(CallsOf(upgrade, "maapi_exists").empty());
  }
}

TEST_P(CompoundKeyMemberWithTwoEntries, MovesThemInTheOrderOfTheOldData) {
  Upgrade upgrade(member().Config(2));
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(
      CallsOf(upgrade, "maapi_delete"),
      (std::vector<std::string>{member().Entry(kProcessId) + " -> 0",
                                member().Entry(kProcessId, true) + " -> 0"}));
  EXPECT_EQ(CallsOf(upgrade, "maapi_create"),
            (std::vector<std::string>{member().Entry(1) + " -> 0",
                                      member().Entry(1, true) + " -> 0"}));
}

TEST_P(CompoundKeyMemberWithTwoEntries, FailureOnTheSecondLeavesTheFirstMoved) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config(2));
  upgrade.Fail("maapi_delete", member().Entry(kProcessId, true), 24,
               "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log(), member().FailureLog(kDelete));
  EXPECT_TRUE(upgrade.Exists(member().Entry(1)));
  EXPECT_FALSE(upgrade.Exists(member().Entry(kProcessId)));
  EXPECT_FALSE(upgrade.Exists(member().Entry(1, true)));
  EXPECT_TRUE(upgrade.Exists(member().Entry(kProcessId, true)));
}

TEST_P(CompoundKeyMemberWithTwoEntries, FailureOnTheFirstLeavesTheSecondAlone) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config(2));
  upgrade.Fail("maapi_set_object", member().list, 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(CallsOf(upgrade, "maapi_delete").size(), 1u);
  EXPECT_TRUE(upgrade.Exists(member().Entry(kProcessId, true)));
}

TEST_P(CompoundKeyMemberWithTwoEntries, EveryObjectsFirstKeyIsAsserted) {
  Upgrade upgrade(member().Config(2));
  kit::control::Fault fault;
  fault.function = "cdb_get_objects";
  fault.substitutes = {
      {static_cast<size_t>(member().width), C_ENUM_VALUE, kProcessId}};
  upgrade.Inject(fault);
  EXPECT_DEATH(RunStep(upgrade, member()),
               "\\(&cdb_objs\\[i\\]\\)->type == C_UINT32");
}

TEST_P(CompoundKeyMemberWithExtraLeaf, WritesItInItsOwnTypeAfterTheObject) {
  Upgrade upgrade(member().Config());
  EXPECT_EQ(RunStep(upgrade, member()), 0);
  EXPECT_EQ(
      CallsOf(upgrade, "maapi_set_elem"),
      std::vector<std::string>{member().Entry(1) + "/" + member().extra_leaf +
                               " " + member().extra_value + " -> 0"});
  EXPECT_EQ(upgrade.Leaf(member().Entry(1) + "/" + member().extra_leaf),
            member().extra_value);
}

TEST_P(CompoundKeyMemberWithExtraLeaf, FailureToWriteItEndsTheStep) {
  const DeliberateLeak leak;
  Upgrade upgrade(member().Config());
  upgrade.Fail("maapi_set_elem", member().Entry(1) + "/" + member().extra_leaf,
               24, "disk full");
  EXPECT_EQ(RunStep(upgrade, member()), -1);
  EXPECT_EQ(upgrade.Log(), member().FailureLog(member().extra_failure));
  EXPECT_EQ(CallsOf(upgrade, "confd_free_value"),
            std::vector<std::string>{"x1"});
}

TEST(InternalOspfAreaGlobalTableTest, FailingExistenceTestSkipsTheEntry) {
  Upgrade upgrade(ConfigBuilder().InternalArea(kProcessId, "0.0.0.0").Xml());
  upgrade.Fail("maapi_exists", "", 24, "disk full");
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       upgrade.cdb_sock(), kProcessId};
  EXPECT_EQ(pass.InternalOspfAreaGlobalTable(), 0);
  EXPECT_EQ(upgrade.Log(),
            "update to compound idx: /internal/ospf-area-global\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(InternalOspfAreaGlobalTableTest, SkippedEntryDoesNotStopTheNext) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(kProcessId, "0.0.0.1")
                      .InternalArea(kProcessId, "0.0.0.2")
                      .Xml());
  ASSERT_EQ(maapi_delete(upgrade.maapi_sock(), upgrade.thandle(),
                         "/internal/ospf-area-global{7 0.0.0.1}"),
            CONFD_OK);
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       upgrade.cdb_sock(), kProcessId};
  EXPECT_EQ(pass.InternalOspfAreaGlobalTable(), 0);
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.1}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.2}"));
}

// A name key of any text is carried over as it was read.
TEST(InternalOspfInterfaceL3TableTest, CarriesNamesWithBlanksAndPercentSigns) {
  Upgrade upgrade(
      ConfigBuilder()
          .InternalInterface(kProcessId, "0.0.0.0", "l3-a b", "10.0.0.1")
          .InternalInterface(kProcessId, "0.0.0.0", "l3-%s%n", "10.0.0.2")
          .Xml());
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       upgrade.cdb_sock(), kProcessId};
  EXPECT_EQ(pass.InternalOspfInterfaceL3Table(), 0);
  EXPECT_TRUE(upgrade.Exists(
      "/internal/ospf-interface-l3{1 0.0.0.0 \"l3-a b\" 10.0.0.1}"));
  EXPECT_TRUE(upgrade.Exists(
      "/internal/ospf-interface-l3{1 0.0.0.0 l3-%s%n 10.0.0.2}"));
}

}  // namespace
}  // namespace config_update
