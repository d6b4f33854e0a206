#include "config_update/ospf_asbr_update.h"

// confd_maapi.h needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <type_traits>

#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::ExpectGolden;
using test_support::Upgrade;

static_assert(std::is_same_v<decltype(ospf_asbr_update), int(int, int, int)>);
static_assert(std::is_same_v<decltype(has_rtm_redist_entries),
                             int(int, int, int, unsigned int, bool&)>);

constexpr char kRedistribution[] = "/VX-RTM-MIB/rtmRedistTable/rtmRedistEntry";
constexpr char kEntities[] = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kV3Entities[] =
    "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry";

constexpr char kStart[] = "Start OSPF(v2/v3) ASBR update\n";
constexpr char kStartAndFinish[] =
    "Start OSPF(v2/v3) ASBR update\n"
    "Finish OSPF(v2/v3) ASBR update\n";

int RunPass(const Upgrade& upgrade) {
  return ospf_asbr_update(upgrade.maapi_sock(), upgrade.thandle(),
                          upgrade.cdb_sock());
}

int FindRedistribution(const Upgrade& upgrade, unsigned int fte_index,
                       bool& found) {
  return has_rtm_redist_entries(upgrade.maapi_sock(), upgrade.thandle(),
                                upgrade.cdb_sock(), fte_index, found);
}

std::string Redistribution(int position, const std::string& leaf) {
  return kRedistribution + ("[" + std::to_string(position) + "]/") + leaf;
}

std::optional<std::string> Status(const Upgrade& upgrade, int index) {
  return upgrade.Leaf(kEntities + ("{" + std::to_string(index) + "}") +
                      "/ospfPmEntASBdrRtrStatus");
}

std::optional<std::string> V3Status(const Upgrade& upgrade, int index) {
  return upgrade.Leaf(kV3Entities + ("{" + std::to_string(index) + "}") +
                      "/ospfv3PmEntASBdrRtrStatus");
}

void WriteStatus(Upgrade& upgrade, const std::string& leaf, int32_t status) {
  confd_value_t value = {};
  CONFD_SET_ENUM_VALUE(&value, status);
  ASSERT_EQ(maapi_set_elem(upgrade.maapi_sock(), upgrade.thandle(), &value,
                           "%s", leaf.c_str()),
            CONFD_OK);
  upgrade.ClearCalls();
}

// Redistribution into OSPF of both versions.
struct BothVersions : ConfigBuilder {
  BothVersions() {
    Entity(1);
    V3Entity(1).V3Entity(5);
    Redistribution(1, 10, "bgp").Redistribution(1, 20, "ospf");
    Redistribution(2, 10, "ospf");
  }
};

// ---- The pass ---------------------------------------------------------------

TEST(OspfAsbrUpdateTest, CallsInOrder) {
  Upgrade upgrade(BothVersions().Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  ExpectGolden("unit/config-update/golden/ospf_asbr_update.calls",
               upgrade.CallText());
}

TEST(OspfAsbrUpdateTest, EmptyTableGivesV2EntityFalseAndLeavesV3Alone) {
  Upgrade upgrade(ConfigBuilder().Entity(1).V3Entity(1).Xml());
  WriteStatus(upgrade, std::string(kEntities) + "{1}/ospfPmEntASBdrRtrStatus",
              1);
  WriteStatus(upgrade,
              std::string(kV3Entities) + "{1}/ospfv3PmEntASBdrRtrStatus", 1);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(Status(upgrade, 1), "C_ENUM_VALUE 2");
  // A status of OSPFv3 is never cleared.
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 1");
}

TEST(OspfAsbrUpdateTest, EmptyTableWithoutV2EntityWritesNothing) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAsbrUpdateTest, V2RedistributionGivesV2EntityTrueOnly) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(1)
                      .V3Entity(1)
                      .Redistribution(1, 10, "ospf")
                      .Redistribution(2, 10, "bgp")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "~ /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{1}\n"
            "    ospfPmEntASBdrRtrStatus: (none) -> \"true\"\n");
}

TEST(OspfAsbrUpdateTest, V3RedistributionGivesEveryV3EntityTrueAndV2False) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(1)
                      .V3Entity(1)
                      .V3Entity(5)
                      .V3Entity(9)
                      .Redistribution(2, 10, "ospf")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "~ /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{1}\n"
            "    ospfPmEntASBdrRtrStatus: (none) -> \"false\"\n"
            "~ /VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{1}\n"
            "    ospfv3PmEntASBdrRtrStatus: (none) -> \"true\"\n"
            "~ /VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{5}\n"
            "    ospfv3PmEntASBdrRtrStatus: (none) -> \"true\"\n"
            "~ /VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{9}\n"
            "    ospfv3PmEntASBdrRtrStatus: (none) -> \"true\"\n");
}

TEST(OspfAsbrUpdateTest, RedistributionOfAnotherRtmInstanceCountsForNeither) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(1)
                      .V3Entity(1)
                      .Redistribution(3, 10, "ospf")
                      .Xml());
  WriteStatus(upgrade, std::string(kEntities) + "{1}/ospfPmEntASBdrRtrStatus",
              1);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(Status(upgrade, 1), "C_ENUM_VALUE 2");
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 2");
}

TEST(OspfAsbrUpdateTest, WritesNoV2EntityButTheOneWithKey1) {
  Upgrade upgrade(
      ConfigBuilder().Entity(1).Entity(2).Redistribution(1, 10, "ospf").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "~ /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{1}\n"
            "    ospfPmEntASBdrRtrStatus: (none) -> \"true\"\n");
}

TEST(OspfAsbrUpdateTest, V2EntitiesWithoutKey1AreSkippedSilently) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(2)
                      .Entity(7)
                      .V3Entity(1)
                      .Redistribution(1, 10, "ospf")
                      .Redistribution(2, 10, "ospf")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(upgrade.Changes(),
            "~ /VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{1}\n"
            "    ospfv3PmEntASBdrRtrStatus: (none) -> \"true\"\n");
}

TEST(OspfAsbrUpdateTest, FailedV2ExistenceTestCountsAsAbsence) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("maapi_exists", std::string(kEntities) + "{1}",
               CONFD_ERR_INTERNAL, "no answer");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(Status(upgrade, 1), "C_ENUM_VALUE 2");  // the default
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 1");
  EXPECT_EQ(V3Status(upgrade, 5), "C_ENUM_VALUE 1");
}

TEST(OspfAsbrUpdateTest, V3RedistributionWithoutV3EntitiesWritesNothing) {
  Upgrade upgrade(ConfigBuilder().Redistribution(2, 10, "ospf").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAsbrUpdateTest, FailedV3CountMeansNoV3Entities) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("cdb_num_instances", kV3Entities, CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 2");
}

// Entities come from the old data, whatever the transaction holds.
TEST(OspfAsbrUpdateTest, V3EntityThatOnlyTheTransactionHoldsIsLeftAlone) {
  Upgrade upgrade(BothVersions().Xml());
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(), "%s{6}",
                         kV3Entities),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(V3Status(upgrade, 5), "C_ENUM_VALUE 1");
  EXPECT_EQ(V3Status(upgrade, 6), "C_ENUM_VALUE 2");
}

// ---- Failures of the pass ---------------------------------------------------

TEST(OspfAsbrUpdateTest, FailedCdbNamespaceEndsThePassAtOnce) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("cdb_set_namespace", "", CONFD_ERR_NOSESSION, "no session");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) +
                               "OSPF: cdb_set_namespace (error: no session)\n");
  EXPECT_EQ(upgrade.Calls().size(), 1U);
}

TEST(OspfAsbrUpdateTest, FailedV2RedistributionReadEndsThePass) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("cdb_get_u_int32", Redistribution(1, "rtmRedistFteIndex"),
               CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(
      upgrade.Log(),
      std::string(kStart) +
          "Failed to get rtmRedistFteIndex for instance[1] (error: boom)\n"
          "failed to get OSPF redistribution from RTM (error: boom)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAsbrUpdateTest, FailedMaapiNamespaceForV2IsLoggedAsTheCdbCall) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("maapi_set_namespace", "", CONFD_ERR_NOEXISTS, "unknown", 1);
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) + "OSPF: cdb_set_namespace (error: unknown)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAsbrUpdateTest, FailedV2WriteEndsThePassWithOneLine) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("maapi_set_elem",
               std::string(kEntities) + "{1}/ospfPmEntASBdrRtrStatus",
               CONFD_ERR_NOT_WRITABLE, "read-only");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) + "Failed to set ASBR (error: read-only)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAsbrUpdateTest, FailedV3RedistributionReadKeepsTheV2Write) {
  Upgrade upgrade(BothVersions().Xml());
  // The second scan is that for OSPFv3.
  upgrade.Fail("cdb_get_u_int32", Redistribution(0, "rtmRedistFteIndex"),
               CONFD_ERR_INTERNAL, "boom", 2);
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(
      upgrade.Log(),
      std::string(kStart) +
          "Failed to get rtmRedistFteIndex for instance[0] (error: boom)\n"
          "failed to get OSPFv3 redistribution from RTM (error: boom)\n");
  EXPECT_EQ(upgrade.Changes(),
            "~ /VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{1}\n"
            "    ospfPmEntASBdrRtrStatus: (none) -> \"true\"\n");
}

TEST(OspfAsbrUpdateTest, FailedMaapiNamespaceForV3IsLoggedTwice) {
  Upgrade upgrade(BothVersions().Xml());
  upgrade.Fail("maapi_set_namespace", "", CONFD_ERR_NOEXISTS, "unknown", 2);
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) +
                "OSPF: cdb_set_namespace (error: unknown)\n"
                "failed to set OSPFv3 asbr status (error: unknown)\n");
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 2");
}

TEST(OspfAsbrUpdateTest, NoV3NamespaceIsSelectedWithoutV3Redistribution) {
  Upgrade upgrade(ConfigBuilder().Entity(1).V3Entity(1).Xml());
  upgrade.Fail("maapi_set_namespace", "", CONFD_ERR_NOEXISTS, "unknown", 2);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStartAndFinish);
}

TEST(OspfAsbrUpdateTest, FailedV3IndexReadEndsTheLoopAndKeepsEarlierWrites) {
  Upgrade upgrade(BothVersions().V3Entity(9).Xml());
  upgrade.Fail("cdb_get_u_int32",
               std::string(kV3Entities) + "[1]/ospfv3PmEntIndex",
               CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) +
                "Failed to get ospfv3PmEntIndex (error: boom)\n"
                "failed to set OSPFv3 asbr status (error: boom)\n");
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 1");
  EXPECT_EQ(V3Status(upgrade, 5), "C_ENUM_VALUE 2");
  EXPECT_EQ(V3Status(upgrade, 9), "C_ENUM_VALUE 2");
}

TEST(OspfAsbrUpdateTest, FailedV3WriteEndsTheLoopAndKeepsEarlierWrites) {
  Upgrade upgrade(BothVersions().V3Entity(9).Xml());
  upgrade.Fail("maapi_set_elem",
               std::string(kV3Entities) + "{5}/ospfv3PmEntASBdrRtrStatus",
               CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) +
                "Failed to set ASBR (error: boom)\n"
                "failed to set OSPFv3 asbr status (error: boom)\n");
  EXPECT_EQ(V3Status(upgrade, 1), "C_ENUM_VALUE 1");
  EXPECT_EQ(V3Status(upgrade, 9), "C_ENUM_VALUE 2");
}

// ---- has_rtm_redist_entries -------------------------------------------------

TEST(HasRtmRedistEntriesTest, EmptyTableClearsTheFlag) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  bool found = true;
  EXPECT_EQ(FindRedistribution(upgrade, 1, found), 0);
  EXPECT_FALSE(found);
}

TEST(HasRtmRedistEntriesTest, FailedCountClearsTheFlagAndSucceeds) {
  Upgrade upgrade(ConfigBuilder().Redistribution(1, 1, "ospf").Xml());
  upgrade.Fail("cdb_num_instances", "", CONFD_ERR_INTERNAL, "boom");
  bool found = true;
  EXPECT_EQ(FindRedistribution(upgrade, 1, found), 0);
  EXPECT_FALSE(found);
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(HasRtmRedistEntriesTest, NoMatchClearsTheFlag) {
  Upgrade upgrade(ConfigBuilder()
                      .Redistribution(1, 1, "bgp")
                      .Redistribution(2, 1, "ospf")
                      .Xml());
  bool found = true;
  EXPECT_EQ(FindRedistribution(upgrade, 1, found), 0);
  EXPECT_FALSE(found);
}

TEST(HasRtmRedistEntriesTest, OnlyOspfIsADestinationThatCounts) {
  for (const char* other : {"any", "static", "rip", "isis", "bgp"}) {
    Upgrade upgrade(ConfigBuilder().Redistribution(1, 1, other).Xml());
    bool found = true;
    EXPECT_EQ(FindRedistribution(upgrade, 1, found), 0);
    EXPECT_FALSE(found) << other;
  }
}

TEST(HasRtmRedistEntriesTest, ScansOnPastOtherDestinationsUpToTheFirstMatch) {
  Upgrade upgrade(ConfigBuilder()
                      .Redistribution(1, 1, "bgp")
                      .Redistribution(1, 2, "ospf")
                      .Redistribution(1, 3, "ospf")
                      .Xml());
  bool found = false;
  EXPECT_EQ(FindRedistribution(upgrade, 1, found), 0);
  EXPECT_TRUE(found);
  EXPECT_EQ(upgrade.CallText(),
            "cdb_num_instances /VX-RTM-MIB/rtmRedistTable/rtmRedistEntry"
            " -> 3\n"
            "cdb_get_u_int32 /VX-RTM-MIB/rtmRedistTable/rtmRedistEntry[0]"
            "/rtmRedistFteIndex -> 0 C_UINT32 1\n"
            "cdb_get_enum_value /VX-RTM-MIB/rtmRedistTable/rtmRedistEntry[0]"
            "/rtmRedistInfoDest -> 0 C_ENUM_VALUE 917504\n"
            "cdb_get_u_int32 /VX-RTM-MIB/rtmRedistTable/rtmRedistEntry[1]"
            "/rtmRedistFteIndex -> 0 C_UINT32 1\n"
            "cdb_get_enum_value /VX-RTM-MIB/rtmRedistTable/rtmRedistEntry[1]"
            "/rtmRedistInfoDest -> 0 C_ENUM_VALUE 851968\n");
}

TEST(HasRtmRedistEntriesTest, DestinationOfAnotherRtmInstanceIsNotRead) {
  Upgrade upgrade(ConfigBuilder()
                      .Redistribution(1, 1, "ospf")
                      .Redistribution(2, 1, "ospf")
                      .Xml());
  upgrade.Fail("cdb_get_enum_value", Redistribution(0, "rtmRedistInfoDest"),
               CONFD_ERR_INTERNAL, "boom", 0);
  bool found = false;
  EXPECT_EQ(FindRedistribution(upgrade, 2, found), 0);
  EXPECT_TRUE(found);
}

TEST(HasRtmRedistEntriesTest, FailedIndexReadLeavesTheFlagUntouched) {
  for (bool before : {false, true}) {
    Upgrade upgrade(ConfigBuilder()
                        .Redistribution(1, 1, "bgp")
                        .Redistribution(1, 2, "ospf")
                        .Xml());
    upgrade.Fail("cdb_get_u_int32", Redistribution(1, "rtmRedistFteIndex"),
                 CONFD_ERR_INTERNAL, "boom");
    bool found = before;
    EXPECT_EQ(FindRedistribution(upgrade, 1, found), -1);
    EXPECT_EQ(found, before);
    EXPECT_EQ(
        upgrade.Log(),
        "Failed to get rtmRedistFteIndex for instance[1] (error: boom)\n");
  }
}

TEST(HasRtmRedistEntriesTest, FailedDestinationReadLeavesTheFlagUntouched) {
  for (bool before : {false, true}) {
    Upgrade upgrade(ConfigBuilder()
                        .Redistribution(1, 1, "bgp")
                        .Redistribution(1, 2, "ospf")
                        .Xml());
    upgrade.Fail("cdb_get_enum_value", Redistribution(1, "rtmRedistInfoDest"),
                 CONFD_ERR_INTERNAL, "boom");
    bool found = before;
    EXPECT_EQ(FindRedistribution(upgrade, 1, found), -1);
    EXPECT_EQ(found, before);
    // Without the leaf's prefix.
    EXPECT_EQ(upgrade.Log(),
              "Failed to get RedistInfoDest for instance[1] (error: boom)\n");
  }
}

TEST(HasRtmRedistEntriesTest, MaapiHandlesAreNotUsed) {
  Upgrade upgrade(ConfigBuilder().Redistribution(4, 1, "ospf").Xml());
  bool found = false;
  EXPECT_EQ(has_rtm_redist_entries(-1, -1, upgrade.cdb_sock(), 4, found), 0);
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace config_update
