#include "config_update/ospf_area_update.h"

#include <confd_lib.h>
#include <gtest/gtest.h>

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

constexpr char kStart[] = "Start OSPF dangling area update\n";
constexpr char kFinish[] = "Finish OSPF dangling area update\n";

OspfAreaUpdate Pass(const Upgrade& upgrade) {
  return OspfAreaUpdate{upgrade.cdb_sock(), upgrade.maapi_sock(),
                        upgrade.thandle()};
}

int RunPass(const Upgrade& upgrade) { return Pass(upgrade).Run(); }

std::string DeleteLine(const std::string& instance, const std::string& area) {
  return "No corresponding interface entry for OSPFv2/v3 " + instance +
         " area " + area + ". Delete it.\n";
}

OspfAreaUpdate::ospf_area AreaOf(uint32_t process_id, const char* area) {
  OspfAreaUpdate::ospf_area key{};
  key.process_id = process_id;
  key.area_id_str = area;
  return key;
}

// ---- Shape of the class -----------------------------------------------------

using Area = OspfAreaUpdate::ospf_area;
using Version = OspfAreaUpdate::ospf_ver;

static_assert(OspfAreaUpdate::OSPF_V2 == 0);
static_assert(OspfAreaUpdate::OSPF_V3 == 1);
static_assert(std::is_convertible_v<Version, int>, "not a scoped enumeration");

static_assert(
    std::is_same_v<decltype(&OspfAreaUpdate::Run), int (OspfAreaUpdate::*)()>);
static_assert(std::is_same_v<decltype(&OspfAreaUpdate::Ospfv2DanglingAreaEntry),
                             int (OspfAreaUpdate::*)() const>);
static_assert(std::is_same_v<decltype(&OspfAreaUpdate::Ospfv3DanglingAreaEntry),
                             int (OspfAreaUpdate::*)() const>);
static_assert(
    std::is_same_v<decltype(&OspfAreaUpdate::GetOspfAreaKeys),
                   int (OspfAreaUpdate::*)(int, Version, Area&) const>);
static_assert(
    std::is_same_v<decltype(&OspfAreaUpdate::FindOspfAreaMibEntry),
                   bool (OspfAreaUpdate::*)(Version, const Area&) const>);
static_assert(
    std::is_same_v<decltype(&OspfAreaUpdate::DeleteOspfDanglingAreaEntry),
                   int (OspfAreaUpdate::*)(Version, const Area&) const>);

TEST(OspfAreaUpdateTest, ConstantsAreStringsAndMibPathsHaveNoLeadingSlash) {
  static_assert(std::is_same_v<decltype(OspfAreaUpdate::kOspfv2AreaMibList),
                               const std::string>);
  EXPECT_EQ(OspfAreaUpdate::kOspfv2AreaInternalList,
            "/internal/ospf-area-global");
  EXPECT_EQ(OspfAreaUpdate::kOspfv3AreaInternalList,
            "/internal/ospfv3-area-global");
  EXPECT_EQ(OspfAreaUpdate::kOspfv2AreaMibList,
            "VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry");
  EXPECT_EQ(OspfAreaUpdate::kOspfv3AreaMibList,
            "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry");
}

// ---- What is dangling -------------------------------------------------------

TEST(OspfAreaUpdateTest, EmptyListsLogOnlyStartAndFinish) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAreaUpdateTest, KeepsV2EntryThatAnOspfv2AreaUses) {
  Upgrade upgrade(
      ConfigBuilder().InternalArea(1, "0.0.0.0").Area(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
}

TEST(OspfAreaUpdateTest, KeepsV2EntryThatAnOspfv3AreaUses) {
  Upgrade upgrade(
      ConfigBuilder().InternalArea(1, "0.0.0.0").V3Area(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
}

TEST(OspfAreaUpdateTest, KeepsV3EntryThatAnOspfv3AreaUses) {
  Upgrade upgrade(
      ConfigBuilder().InternalV3Area(1, "0.0.0.0").V3Area(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
}

// The line speaks of an interface and of both versions all the same.
TEST(OspfAreaUpdateTest, DeletesV3EntryThatOnlyAnOspfv2AreaHas) {
  Upgrade upgrade(
      ConfigBuilder().InternalV3Area(1, "0.0.0.0").Area(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospfv3-area-global{1 0.0.0.0}\n");
  EXPECT_EQ(upgrade.Log(), kStart + DeleteLine("1", "0.0.0.0") + kFinish);
}

TEST(OspfAreaUpdateTest, DeletesEntryWhenOnlyAnotherInstanceHasTheArea) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0")
                      .Area(2, "0.0.0.0")
                      .V3Area(2, "0.0.0.0")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospf-area-global{1 0.0.0.0}\n");
}

TEST(OspfAreaUpdateTest, DeletesEntryWhenTheInstanceHasOnlyAnotherArea) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0")
                      .Area(1, "0.0.0.1")
                      .V3Area(1, "1.0.0.0")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospf-area-global{1 0.0.0.0}\n");
}

TEST(OspfAreaUpdateTest, DeletesBothOfTwoDanglingEntriesBeforeAUsedOne) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.1")
                      .InternalArea(1, "0.0.0.2")
                      .InternalArea(1, "0.0.0.3")
                      .Area(1, "0.0.0.3")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{1 0.0.0.1}\n"
            "- /internal/ospf-area-global{1 0.0.0.2}\n");
  EXPECT_EQ(upgrade.Log(), kStart + DeleteLine("1", "0.0.0.1") +
                               DeleteLine("1", "0.0.0.2") + kFinish);
}

// The third entry is still at position 2 of the old data, and gets checked.
TEST(OspfAreaUpdateTest, DeletionsShiftNoPosition) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.1")
                      .InternalArea(1, "0.0.0.2")
                      .InternalArea(1, "0.0.0.3")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{1 0.0.0.1}\n"
            "- /internal/ospf-area-global{1 0.0.0.2}\n"
            "- /internal/ospf-area-global{1 0.0.0.3}\n");
}

TEST(OspfAreaUpdateTest, ProcessIdBeyondIntIsUnsignedInKeysAndLog) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(4294967295, "0.0.0.1")
                      .InternalArea(4294967295, "255.255.255.255")
                      .Area(4294967295, "255.255.255.255")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{4294967295 0.0.0.1}\n");
  EXPECT_EQ(upgrade.Log(),
            kStart + DeleteLine("4294967295", "0.0.0.1") + kFinish);
}

TEST(OspfAreaUpdateTest, FindsNothingToDoInDataItHasCleaned) {
  Upgrade first(ConfigBuilder()
                    .InternalArea(1, "0.0.0.0")
                    .InternalArea(1, "0.0.0.1")
                    .InternalV3Area(2, "0.0.0.0")
                    .InternalV3Area(2, "0.0.0.1")
                    .Area(1, "0.0.0.0")
                    .V3Area(2, "0.0.0.0")
                    .Xml());
  ASSERT_EQ(RunPass(first), 0);
  ASSERT_NE(first.Changes(), "");

  Upgrade second(first.Saved(), {"after", "after"});
  EXPECT_EQ(RunPass(second), 0);
  EXPECT_EQ(second.Changes(), "");
  EXPECT_EQ(second.Log(), std::string(kStart) + kFinish);
}

// ---- Failures ---------------------------------------------------------------

// Dangling entries in both lists, two and one.
std::string DanglingEntries() {
  return ConfigBuilder()
      .InternalArea(1, "0.0.0.1")
      .InternalArea(1, "0.0.0.2")
      .InternalV3Area(3, "0.0.0.3")
      .Xml();
}

TEST(OspfAreaUpdateTest, FailedReadOfTheFirstAreaIdLeavesBothListsAlone) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("cdb_get_ipv4", "/internal/ospf-area-global[0]/area-id",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(
      upgrade.Log(),
      std::string(kStart) + "Failed to get area-id (error: socket closed)\n");
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.CallText().find("ospfv3-area-global"), std::string::npos);
}

TEST(OspfAreaUpdateTest, FailedReadOfAProcessIdKeepsEarlierDeletions) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("cdb_get_u_int32", "/internal/ospf-area-global[1]/process-id",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + DeleteLine("1", "0.0.0.1") +
                "Failed to get process-id (error: socket closed)\n");
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospf-area-global{1 0.0.0.1}\n");
  // The area id of an entry without a process id is not asked for.
  EXPECT_EQ(upgrade.CallText().find("[1]/area-id"), std::string::npos);
}

TEST(OspfAreaUpdateTest, FailedReadInTheV3ListEndsThePassWithoutFinishLine) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("cdb_get_ipv4", "/internal/ospfv3-area-global[0]/area-id",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + DeleteLine("1", "0.0.0.1") + DeleteLine("1", "0.0.0.2") +
                "Failed to get area-id (error: socket closed)\n");
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{1 0.0.0.1}\n"
            "- /internal/ospf-area-global{1 0.0.0.2}\n");
}

// An unreported error of both tests costs the entry that both would find.
TEST(OspfAreaUpdateTest, FailedExistenceChecksDeleteAUsedEntrySilently) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0")
                      .Area(1, "0.0.0.0")
                      .V3Area(1, "0.0.0.0")
                      .Xml());
  upgrade.Fail("maapi_exists", "", CONFD_ERR_OS, "socket closed", 0);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospf-area-global{1 0.0.0.0}\n");
  EXPECT_EQ(upgrade.Log(), kStart + DeleteLine("1", "0.0.0.0") + kFinish);
}

TEST(OspfAreaUpdateTest, FailedOspfv2CheckIsMadeUpForByTheOspfv3One) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0")
                      .Area(1, "0.0.0.0")
                      .V3Area(1, "0.0.0.0")
                      .Xml());
  upgrade.Fail("maapi_exists",
               "VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry{1 0.0.0.0}",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAreaUpdateTest, OnlyTheResultOneCountsAsFound) {
  Upgrade upgrade(
      ConfigBuilder().InternalV3Area(1, "0.0.0.0").V3Area(1, "0.0.0.0").Xml());
  kit::control::Fault fault;
  fault.function = "maapi_exists";
  fault.result = 2;
  upgrade.Inject(fault);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospfv3-area-global{1 0.0.0.0}\n");
}

TEST(OspfAreaUpdateTest, FailedDeletionIsLoggedAndIgnored) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("maapi_delete", "/internal/ospf-area-global{1 0.0.0.1}",
               CONFD_ERR_NOTDELETABLE, "entry is locked");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + DeleteLine("1", "0.0.0.1") +
                "Failed to delete to /internal/ospf-area-global{1 0.0.0.1} "
                "(entry is locked).\n" +
                DeleteLine("1", "0.0.0.2") + DeleteLine("3", "0.0.0.3") +
                kFinish);
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{1 0.0.0.2}\n"
            "- /internal/ospfv3-area-global{3 0.0.0.3}\n");
}

TEST(OspfAreaUpdateTest, FailedDeletionNamesTheV3ListToo) {
  Upgrade upgrade(ConfigBuilder().InternalV3Area(2, "0.0.0.5").Xml());
  upgrade.Fail("maapi_delete", "", CONFD_ERR_NOTDELETABLE, "entry is locked");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + DeleteLine("2", "0.0.0.5") +
                "Failed to delete to /internal/ospfv3-area-global{2 0.0.0.5} "
                "(entry is locked).\n" +
                kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAreaUpdateTest, FailedCountOfTheV2ListCountsAsEmpty) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("cdb_num_instances", "/internal/ospf-area-global", CONFD_ERR_OS,
               "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + DeleteLine("3", "0.0.0.3") + kFinish);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospfv3-area-global{3 0.0.0.3}\n");
}

TEST(OspfAreaUpdateTest, FailedCountOfTheV3ListCountsAsEmpty) {
  Upgrade upgrade(DanglingEntries());
  upgrade.Fail("cdb_num_instances", "/internal/ospfv3-area-global",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + DeleteLine("1", "0.0.0.1") +
                               DeleteLine("1", "0.0.0.2") + kFinish);
}

// ---- Calls ------------------------------------------------------------------

// Each list is counted once. An entry of the OSPFv2 list is looked up in both
// tables, even when the first has it; one of the OSPFv3 list in its own only.
TEST(OspfAreaUpdateTest, OrderOfCalls) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0")
                      .InternalArea(1, "0.0.0.1")
                      .InternalArea(2, "0.0.0.2")
                      .InternalV3Area(2, "0.0.0.2")
                      .InternalV3Area(2, "0.0.0.3")
                      .Area(1, "0.0.0.0")
                      .V3Area(2, "0.0.0.2")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  ExpectGolden("unit/config-update/golden/ospf_area_update.calls",
               upgrade.CallText());
}

// ---- Single operations ------------------------------------------------------

TEST(OspfAreaUpdateTest, SweepOfOneVersionLeavesTheOtherListAlone) {
  {
    Upgrade upgrade(DanglingEntries());
    EXPECT_EQ(Pass(upgrade).Ospfv2DanglingAreaEntry(), 0);
    EXPECT_EQ(upgrade.Changes(),
              "- /internal/ospf-area-global{1 0.0.0.1}\n"
              "- /internal/ospf-area-global{1 0.0.0.2}\n");
    EXPECT_EQ(upgrade.Log(),
              DeleteLine("1", "0.0.0.1") + DeleteLine("1", "0.0.0.2"));
  }
  Upgrade upgrade(DanglingEntries());
  EXPECT_EQ(Pass(upgrade).Ospfv3DanglingAreaEntry(), 0);
  EXPECT_EQ(upgrade.Changes(), "- /internal/ospfv3-area-global{3 0.0.0.3}\n");
  EXPECT_EQ(upgrade.Log(), DeleteLine("3", "0.0.0.3"));
}

// The format of the area id is no business of this pass, even when it is set.
TEST(OspfAreaUpdateTest, KeysAreReadFromTheListOfTheVersion) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.1", true)
                      .InternalV3Area(3, "10.0.0.3", true)
                      .Xml());
  Area area{};
  EXPECT_EQ(Pass(upgrade).GetOspfAreaKeys(0, OspfAreaUpdate::OSPF_V2, area), 0);
  EXPECT_EQ(area.process_id, 1U);
  EXPECT_EQ(area.area_id.s_addr, htonl(0x00000001));
  EXPECT_EQ(area.area_id_str, "0.0.0.1");
  EXPECT_FALSE(area.area_id_integer_format);

  EXPECT_EQ(Pass(upgrade).GetOspfAreaKeys(0, OspfAreaUpdate::OSPF_V3, area), 0);
  EXPECT_EQ(area.process_id, 3U);
  EXPECT_EQ(area.area_id.s_addr, htonl(0x0A000003));
  EXPECT_EQ(area.area_id_str, "10.0.0.3");
  EXPECT_FALSE(area.area_id_integer_format);
}

TEST(OspfAreaUpdateTest, KeysOfAPositionPastTheEndAreAFailure) {
  Upgrade upgrade(ConfigBuilder().InternalArea(1, "0.0.0.1").Xml());
  Area area{};
  EXPECT_EQ(Pass(upgrade).GetOspfAreaKeys(1, OspfAreaUpdate::OSPF_V2, area),
            -1);
  EXPECT_EQ(upgrade.Log().rfind("Failed to get process-id (error: ", 0), 0U);
}

TEST(OspfAreaUpdateTest, AreaIsLookedUpInTheTableOfTheVersionSilently) {
  Upgrade upgrade(
      ConfigBuilder().Area(1, "0.0.0.1").V3Area(3, "0.0.0.3").Xml());
  const OspfAreaUpdate pass = Pass(upgrade);
  const Area v2 = AreaOf(1, "0.0.0.1");
  const Area v3 = AreaOf(3, "0.0.0.3");
  EXPECT_TRUE(pass.FindOspfAreaMibEntry(OspfAreaUpdate::OSPF_V2, v2));
  EXPECT_FALSE(pass.FindOspfAreaMibEntry(OspfAreaUpdate::OSPF_V2, v3));
  EXPECT_FALSE(pass.FindOspfAreaMibEntry(OspfAreaUpdate::OSPF_V3, v2));
  EXPECT_TRUE(pass.FindOspfAreaMibEntry(OspfAreaUpdate::OSPF_V3, v3));
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(OspfAreaUpdateTest, DeletionReturnsZeroEvenForAnEntryThatIsNotThere) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  EXPECT_EQ(Pass(upgrade).DeleteOspfDanglingAreaEntry(OspfAreaUpdate::OSPF_V3,
                                                      AreaOf(2, "0.0.0.5")),
            0);
  EXPECT_EQ(
      upgrade.Log().rfind(
          DeleteLine("2", "0.0.0.5") +
              "Failed to delete to /internal/ospfv3-area-global{2 0.0.0.5} (",
          0),
      0U);
}

}  // namespace
}  // namespace config_update
