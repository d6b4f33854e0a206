#include "config_update/ospfv3_area_update.h"

// The other C header needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
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
using testing::HasSubstr;

constexpr char kStart[] = "Start OSPFv3 area update\n";
constexpr char kFinish[] = "Finish OSPFv3 area update\n";
Ospfv3AreaUpdate Pass(const Upgrade& upgrade) {
  return Ospfv3AreaUpdate{upgrade.cdb_sock(), upgrade.maapi_sock(),
                          upgrade.thandle()};
}

int RunPass(const Upgrade& upgrade) { return Pass(upgrade).Run(); }

std::string UpdatingLine(int areas) {
  return "Updating " + std::to_string(areas) +
         " interfaces(s) of OSPFv3 router.\n";
}

std::string CreateLines(const std::string& key, const std::string& format) {
  return "Creating OSPFv3 area entry /internal/ospfv3-area-global{" + key +
         "}\nSetting OSPFv3 area areaIdIntegerFormat " + format + "\n";
}

std::string DeleteLine(const std::string& instance, const std::string& area) {
  return "No entry for OSPFv2 " + instance + " area " + area + ". Delete it.\n";
}

ospfv3_area AreaOf(uint32_t instance, const std::string& area_id) {
  ospfv3_area area{};
  area.appl_index = instance;
  area.area_id_str = area_id;
  inet_pton(AF_INET, area_id.c_str(), &area.area_id);
  return area;
}

// Area 0.0.0.0 of OSPFv3 instance 1 with its entry in the OSPFv2 list.
class OneArea : public ConfigBuilder {
 public:
  explicit OneArea(bool integer_format = true) {
    V3Entity(1).V3Area(1, "0.0.0.0");
    InternalArea(1, "0.0.0.0", integer_format);
  }
};

// Three areas of OSPFv3 instance 1, all with their entries in the OSPFv2 list.
class ThreeAreas : public ConfigBuilder {
 public:
  ThreeAreas() {
    V3Entity(1);
    for (const char* area : {"0.0.0.0", "0.0.0.1", "0.0.0.2"}) {
      V3Area(1, area).InternalArea(1, area);
    }
  }
};

// What a call hands out in one slot in place of the store's value.
kit::control::Fault HandOut(const std::string& function, size_t slot, int tag,
                            uint64_t bits) {
  kit::control::Fault fault;
  fault.function = function;
  fault.substitutes = {{slot, tag, bits}};
  return fault;
}

// ---- Shape of the class -----------------------------------------------------

// Not nested in the class.
using Area = config_update::ospfv3_area;

static_assert(std::is_same_v<decltype(&Ospfv3AreaUpdate::Run),
                             int (Ospfv3AreaUpdate::*)()>);
static_assert(std::is_same_v<decltype(&Ospfv3AreaUpdate::GetOspfv3AreaKeys),
                             int (Ospfv3AreaUpdate::*)(int, Area&) const>);
static_assert(std::is_same_v<decltype(&Ospfv3AreaUpdate::Ospfv3AreaExists),
                             bool (Ospfv3AreaUpdate::*)(const Area&) const>);
static_assert(
    std::is_same_v<decltype(&Ospfv3AreaUpdate::GetOspfv3AreaIntegerFormat),
                   int (Ospfv3AreaUpdate::*)(uint32_t, const std::string&,
                                             Area&) const>);
static_assert(std::is_same_v<decltype(&Ospfv3AreaUpdate::CreateOspfv3AreaEntry),
                             int (Ospfv3AreaUpdate::*)(const Area&) const>);
static_assert(std::is_same_v<decltype(&Ospfv3AreaUpdate::DeleteOspfAreaEntry),
                             int (Ospfv3AreaUpdate::*)(const Area&) const>);

TEST(Ospfv3AreaUpdateTest, ConstantsAreStringsAndTheMibPathHasNoLeadingSlash) {
  static_assert(std::is_same_v<decltype(Ospfv3AreaUpdate::kOspfv3AreaMibList),
                               const std::string>);
  EXPECT_EQ(Ospfv3AreaUpdate::kOspfv2AreaInternalList,
            "/internal/ospf-area-global");
  EXPECT_EQ(Ospfv3AreaUpdate::kOspfv2IntfInternalList,
            "/internal/ospf-interface-l3");
  EXPECT_EQ(Ospfv3AreaUpdate::kOspfv3AreaInternalList,
            "/internal/ospfv3-area-global");
  EXPECT_EQ(Ospfv3AreaUpdate::kOspfv3IntfInternalList,
            "/internal/ospfv3-interface-l3");
  EXPECT_EQ(Ospfv3AreaUpdate::kOspfv3AreaMibList,
            "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry");
}

// ---- Whether there is anything to do ----------------------------------------

TEST(Ospfv3AreaUpdateTest, EntityWithoutAreasNeedsNothing) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).InternalArea(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            std::string(kStart) + "No OSPFv3 router! No need to continue.\n");
  EXPECT_EQ(upgrade.Changes(), "");
  // The internal list is not even counted.
  EXPECT_EQ(upgrade.CallText(),
            "cdb_num_instances "
            "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry -> 0\n");
}

TEST(Ospfv3AreaUpdateTest, OneOldInternalEntryMarksAllThreeAreasAsDone) {
  Upgrade upgrade(ThreeAreas().InternalV3Area(1, "0.0.0.1").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) +
                               "OSPFv3 area already updated! No need to "
                               "continue.\n");
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Calls().size(), 2U);
}

TEST(Ospfv3AreaUpdateTest, FindsItsOwnResultAlreadyUpdated) {
  Upgrade first(OneArea().Xml());
  ASSERT_EQ(RunPass(first), 0);
  ASSERT_NE(first.Changes(), "");

  Upgrade second(first.Saved(), {"after", "after"});
  EXPECT_EQ(RunPass(second), 0);
  EXPECT_EQ(second.Log(), std::string(kStart) +
                              "OSPFv3 area already updated! No need to "
                              "continue.\n");
  EXPECT_EQ(second.Changes(), "");
}

TEST(Ospfv3AreaUpdateTest, FailedCountOfAreasIsLoggedAsSuchAndEndsInSuccess) {
  Upgrade upgrade(OneArea().InternalV3Area(1, "0.0.0.0").Xml());
  upgrade.Fail("cdb_num_instances", Ospfv3AreaUpdate::kOspfv3AreaMibList,
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + UpdatingLine(-1) + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
  // Both lists were counted all the same, and nothing else was asked.
  EXPECT_EQ(upgrade.CallText(),
            "cdb_num_instances "
            "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry -> -1 error 24 "
            "'socket closed'\n"
            "cdb_num_instances /internal/ospfv3-area-global -> 1\n");
}

TEST(Ospfv3AreaUpdateTest, FailedCountOfTheInternalListCountsAsNotUpdated) {
  Upgrade upgrade(ThreeAreas().InternalV3Area(1, "0.0.0.1").Xml());
  upgrade.Fail("cdb_num_instances", "/internal/ospfv3-area-global",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.2}"));
}

// ---- What it does -----------------------------------------------------------

TEST(Ospfv3AreaUpdateTest, MovesAreaThatNoOspfv2InterfaceUses) {
  Upgrade upgrade(OneArea().Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + UpdatingLine(1) +
                               CreateLines("1 0.0.0.0", "true") +
                               DeleteLine("1", "0.0.0.0") + kFinish);
  EXPECT_EQ(upgrade.Leaf("/internal/ospfv3-area-global{1 0.0.0.0}/"
                         "areaIdIntegerFormat"),
            "C_ENUM_VALUE 1");
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

TEST(Ospfv3AreaUpdateTest, KeepsOldEntryOfAreaThatAnOspfv2InterfaceUses) {
  Upgrade upgrade(
      OneArea().Interface(1, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(1) + CreateLines("1 0.0.0.0", "true") +
                "OSPFv2 1 uses area 0.0.0.0. Keep it.\n" + kFinish);
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

TEST(Ospfv3AreaUpdateTest, InterfaceInALaterAreaDoesNotKeepTheOldEntry) {
  Upgrade upgrade(
      OneArea().Interface(1, "0.0.0.1", "l3-vlan10", "10.0.0.1").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  // The search did land on the interface.
  EXPECT_THAT(upgrade.CallText(),
              HasSubstr("maapi_find_next /internal/ospf-interface-l3 from "
                        "C_UINT32 1, C_IPV4 0.0.0.0 -> 0 C_UINT32 1, C_IPV4 "
                        "0.0.0.1"));
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
}

TEST(Ospfv3AreaUpdateTest, InterfaceInAnEarlierAreaDoesNotKeepTheOldEntry) {
  Upgrade upgrade(ConfigBuilder()
                      .V3Area(1, "0.0.0.1")
                      .InternalArea(1, "0.0.0.1")
                      .Interface(1, "0.0.0.0", "l3-vlan10", "10.0.0.1")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.1}"));
}

TEST(Ospfv3AreaUpdateTest, SameAreaOfAnotherInstanceDoesNotKeepTheOldEntry) {
  Upgrade upgrade(
      OneArea().Interface(2, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
}

// All four bytes count, not only the last.
TEST(Ospfv3AreaUpdateTest, AreasThatDifferInTheirFirstByteAreDifferent) {
  Upgrade upgrade(
      OneArea().Interface(1, "1.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
}

TEST(Ospfv3AreaUpdateTest, FormatFalseIsWrittenAsTwo) {
  Upgrade upgrade(OneArea(false).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_THAT(upgrade.Log(), HasSubstr(CreateLines("1 0.0.0.0", "false")));
  EXPECT_EQ(upgrade.Leaf("/internal/ospfv3-area-global{1 0.0.0.0}/"
                         "areaIdIntegerFormat"),
            "C_ENUM_VALUE 2");
}

TEST(Ospfv3AreaUpdateTest, AnyFormatButOneIsWrittenAsTwo) {
  for (const uint32_t format : {0U, 3U, 4294967295U}) {
    Upgrade upgrade(OneArea().Xml());
    upgrade.Inject(HandOut("maapi_get_elem", 0, C_ENUM_VALUE, format));
    EXPECT_EQ(RunPass(upgrade), 0);
    EXPECT_EQ(upgrade.Leaf("/internal/ospfv3-area-global{1 0.0.0.0}/"
                           "areaIdIntegerFormat"),
              "C_ENUM_VALUE 2")
        << format;
  }
}

// CDB still has the format as true.
TEST(Ospfv3AreaUpdateTest, FormatIsTheOneOfTheTransaction) {
  Upgrade upgrade(OneArea(true).Xml());
  confd_value_t value = {};
  CONFD_SET_ENUM_VALUE(&value, 2);
  ASSERT_EQ(maapi_set_elem(upgrade.maapi_sock(), upgrade.thandle(), &value,
                           "/internal/ospf-area-global{1 0.0.0.0}/"
                           "areaIdIntegerFormat"),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Leaf("/internal/ospfv3-area-global{1 0.0.0.0}/"
                         "areaIdIntegerFormat"),
            "C_ENUM_VALUE 2");
}

TEST(Ospfv3AreaUpdateTest, NoLeafButTheFormatIsCarriedOver) {
  Upgrade upgrade(
      ConfigBuilder()
          .V3Area(1, "0.0.0.0")
          .Entry("/internal/ospf-area-global", {{"process-id", "1"},
                                                {"area-id", "0.0.0.0"},
                                                {"areaIdIntegerFormat", "true"},
                                                {"cli-sequence", "7"},
                                                {"comment", "backbone"}})
          .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_FALSE(
      upgrade.Leaf("/internal/ospfv3-area-global{1 0.0.0.0}/cli-sequence"));
}

TEST(Ospfv3AreaUpdateTest, InstanceBeyondIntIsUnsignedInKeysAndLog) {
  Upgrade upgrade(ConfigBuilder()
                      .V3Area(4294967295, "0.0.0.0")
                      .V3Area(4294967295, "0.0.0.1")
                      .InternalArea(4294967295, "0.0.0.0")
                      .InternalArea(4294967295, "0.0.0.1")
                      .Interface(4294967295, "0.0.0.1", "l3-a", "10.0.0.1")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(2) +
                CreateLines("4294967295 0.0.0.0", "false") +
                DeleteLine("4294967295", "0.0.0.0") +
                CreateLines("4294967295 0.0.0.1", "false") +
                "OSPFv2 4294967295 uses area 0.0.0.1. Keep it.\n" + kFinish);
  EXPECT_TRUE(
      upgrade.Exists("/internal/ospfv3-area-global{4294967295 0.0.0.0}"));
  EXPECT_FALSE(
      upgrade.Exists("/internal/ospf-area-global{4294967295 0.0.0.0}"));
}

// An entry that the transaction has got meanwhile; CDB knows nothing of it.
TEST(Ospfv3AreaUpdateTest, AreaThatTheTransactionHasIsPassedOver) {
  Upgrade upgrade(ThreeAreas().Xml());
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(),
                         "/internal/ospfv3-area-global{1 0.0.0.1}"),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                DeleteLine("1", "0.0.0.0") +
                "OSPFv3 area entry (/internal/ospfv3-area-global{1 0.0.0.1}) "
                "already created\n" +
                CreateLines("1 0.0.0.2", "false") + DeleteLine("1", "0.0.0.2") +
                kFinish);
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.1}"));
}

// ---- Failures that end the pass ---------------------------------------------

TEST(Ospfv3AreaUpdateTest, FailedReadOfAnInstanceKeepsEarlierWork) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail(
      "cdb_get_u_int32",
      Ospfv3AreaUpdate::kOspfv3AreaMibList + "[1]/ospfv3PmAreaApplIndex",
      CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                DeleteLine("1", "0.0.0.0") +
                "Failed to get ospfv3PmAreaApplIndex (error: socket closed)\n");
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
  EXPECT_FALSE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.2}"));
  EXPECT_EQ(upgrade.CallText().find("[1]/ospfv3PmAreaId"), std::string::npos);
}

TEST(Ospfv3AreaUpdateTest, FailedReadOfAnAreaIdEndsThePass) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("cdb_get_ipv4",
               Ospfv3AreaUpdate::kOspfv3AreaMibList + "[0]/ospfv3PmAreaId",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) +
                "Failed to get ospfv3PmAreaId (error: socket closed)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(Ospfv3AreaUpdateTest, AreaWithoutOspfv2InternalEntryFailsTheWholePass) {
  Upgrade upgrade(ConfigBuilder()
                      .V3Area(1, "0.0.0.0")
                      .V3Area(1, "0.0.0.1")
                      .InternalArea(1, "0.0.0.1")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log().rfind(
                kStart + UpdatingLine(2) +
                    "Failed to get areaIdIntegerFormat (error: /internal/"
                    "ospf-area-global{1 0.0.0.0}/areaIdIntegerFormat",
                0),
            0U);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(Ospfv3AreaUpdateTest, FailedCreationEndsThePassBeforeTheDeletion) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("maapi_create", "", CONFD_ERR_NOTCREATABLE, "list is full");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) +
                "Creating OSPFv3 area entry /internal/ospfv3-area-global{1 "
                "0.0.0.0}\n"
                "Failed to create OSPFv3 area entry (error: list is full)\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(Ospfv3AreaUpdateTest, FailedWriteOfTheFormatLeavesTheNewEntryBehind) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("maapi_set_elem", "", CONFD_ERR_NOT_WRITABLE, "read only");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                "Failed to set OSPFv3 area areaIdIntegerFormat (error: read "
                "only)\n");
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
  EXPECT_FALSE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.1}"));
}

TEST(Ospfv3AreaUpdateTest, FailedExistenceCheckCountsAsAbsenceSilently) {
  Upgrade upgrade(OneArea().Xml());
  upgrade.Fail("maapi_exists", "", CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + UpdatingLine(1) +
                               CreateLines("1 0.0.0.0", "true") +
                               DeleteLine("1", "0.0.0.0") + kFinish);
}

TEST(Ospfv3AreaUpdateTest, RealDuplicateBehindAFailedCheckFailsInTheCreation) {
  Upgrade upgrade(OneArea().Xml());
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(),
                         "/internal/ospfv3-area-global{1 0.0.0.0}"),
            CONFD_OK);
  upgrade.Fail("maapi_exists", "", CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_THAT(upgrade.Log(),
              HasSubstr("Failed to create OSPFv3 area entry (error: /internal/"
                        "ospfv3-area-global{1 0.0.0.0}: "));
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
}

TEST(Ospfv3AreaUpdateTest, OnlyTheResultOneCountsAsExisting) {
  Upgrade upgrade(OneArea().Xml());
  kit::control::Fault fault;
  fault.function = "maapi_exists";
  fault.result = 2;
  upgrade.Inject(fault);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
}

// ---- Failures that are logged and ignored -----------------------------------

// Each leaves the old entry of the first area; the others go their way.
std::string RestOfThreeAreas() {
  return CreateLines("1 0.0.0.1", "false") + DeleteLine("1", "0.0.0.1") +
         CreateLines("1 0.0.0.2", "false") + DeleteLine("1", "0.0.0.2") +
         kFinish;
}

void ExpectOnlyTheFirstOldEntryLeft(const Upgrade& upgrade) {
  EXPECT_TRUE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.1}"));
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.2}"));
  EXPECT_TRUE(upgrade.Exists("/internal/ospfv3-area-global{1 0.0.0.0}"));
}

TEST(Ospfv3AreaUpdateTest, FailedCursorIsLoggedWithoutConfdTextAndIgnored) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("maapi_init_cursor", "", CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                "Failed to init cursor for /internal/ospf-interface-l3.\n" +
                RestOfThreeAreas());
  ExpectOnlyTheFirstOldEntryLeft(upgrade);
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

TEST(Ospfv3AreaUpdateTest, FailedSearchIsLoggedAndLeavesItsCursorUnreleased) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("maapi_find_next", "", CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                "Failed to find next (socket closed).\n" + RestOfThreeAreas());
  ExpectOnlyTheFirstOldEntryLeft(upgrade);
  EXPECT_EQ(upgrade.database().OpenCursors(), 1U);
}

TEST(Ospfv3AreaUpdateTest, FailedDeletionIsLoggedAndLeavesItsCursorUnreleased) {
  Upgrade upgrade(ThreeAreas().Xml());
  upgrade.Fail("maapi_delete", "", CONFD_ERR_NOTDELETABLE, "entry is locked");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + UpdatingLine(3) + CreateLines("1 0.0.0.0", "false") +
                DeleteLine("1", "0.0.0.0") +
                "Failed to delete to /internal/ospf-area-global{1 0.0.0.0} "
                "(entry is locked).\n" +
                RestOfThreeAreas());
  ExpectOnlyTheFirstOldEntryLeft(upgrade);
  EXPECT_EQ(upgrade.database().OpenCursors(), 1U);
}

// ---- Assertions -------------------------------------------------------------

class Ospfv3AreaUpdateDeathTest : public testing::Test {
 protected:
  Ospfv3AreaUpdateDeathTest() {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }

  static constexpr char kFile[] = "src/config-update/ospfv3_area_update.cc:";
};

TEST_F(Ospfv3AreaUpdateDeathTest, FormatOfAnotherTypeAborts) {
  Upgrade upgrade(OneArea().Xml());
  upgrade.Inject(HandOut("maapi_get_elem", 0, C_UINT32, 1));
  EXPECT_EXIT(RunPass(upgrade), testing::KilledBySignal(SIGABRT),
              HasSubstr(std::string(": ") + kFile +
                        "76: int config_update::Ospfv3AreaUpdate::"
                        "GetOspfv3AreaIntegerFormat(uint32_t, const "
                        "std::string&, "
                        "config_update::ospfv3_area&) const: Assertion "
                        "`(&vl_set)->type == C_ENUM_VALUE' failed.\n"));
}

TEST_F(Ospfv3AreaUpdateDeathTest, FirstKeyOfAnotherTypeAborts) {
  Upgrade upgrade(
      OneArea().Interface(1, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  upgrade.Inject(HandOut("maapi_find_next", 0, C_INT32, 1));
  EXPECT_EXIT(RunPass(upgrade), testing::KilledBySignal(SIGABRT),
              HasSubstr(std::string(": ") + kFile +
                        "135: int config_update::Ospfv3AreaUpdate::"
                        "DeleteOspfAreaEntry(const config_update::ospfv3_area&)"
                        " const: Assertion `(&mc.keys[0])->type == C_UINT32' "
                        "failed.\n"));
}

TEST_F(Ospfv3AreaUpdateDeathTest, SecondKeyOfAnotherTypeAborts) {
  Upgrade upgrade(
      OneArea().Interface(1, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  upgrade.Inject(HandOut("maapi_find_next", 1, C_UINT32, 0));
  EXPECT_EXIT(RunPass(upgrade), testing::KilledBySignal(SIGABRT),
              HasSubstr(std::string(": ") + kFile +
                        "136: int config_update::Ospfv3AreaUpdate::"
                        "DeleteOspfAreaEntry(const config_update::ospfv3_area&)"
                        " const: Assertion `(&mc.keys[1])->type == C_IPV4' "
                        "failed.\n"));
}

// Under another instance the area doesn't matter, nor does its type.
TEST(Ospfv3AreaUpdateTest, SecondKeyOfAnotherInstanceIsNotLookedAt) {
  Upgrade upgrade(
      OneArea().Interface(2, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  upgrade.Inject(HandOut("maapi_find_next", 1, C_UINT32, 0));
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_FALSE(upgrade.Exists("/internal/ospf-area-global{1 0.0.0.0}"));
}

// ---- Calls ------------------------------------------------------------------

// One area of each kind: moved, kept for an interface, present already, and
// one whose deletion fails. The format read is not released.
TEST(Ospfv3AreaUpdateTest, OrderOfCalls) {
  ThreeAreas config;
  config.V3Area(2, "0.0.0.0").InternalArea(2, "0.0.0.0", true);
  config.Interface(1, "0.0.0.1", "l3-vlan10", "10.0.0.1");
  Upgrade upgrade(config.Xml());
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(),
                         "/internal/ospfv3-area-global{1 0.0.0.2}"),
            CONFD_OK);
  upgrade.ClearCalls();
  upgrade.Fail("maapi_delete", "/internal/ospf-area-global{2 0.0.0.0}",
               CONFD_ERR_NOTDELETABLE, "entry is locked");
  EXPECT_EQ(RunPass(upgrade), 0);
  ExpectGolden("unit/config-update/golden/ospfv3_area_update.calls",
               upgrade.CallText());
}

// ---- Single operations ------------------------------------------------------

TEST(Ospfv3AreaUpdateTest, KeysAreReadByPosition) {
  Upgrade upgrade(
      ConfigBuilder().V3Area(1, "0.0.0.0").V3Area(4, "10.0.0.3").Xml());
  Area area{};
  EXPECT_EQ(Pass(upgrade).GetOspfv3AreaKeys(1, area), 0);
  EXPECT_EQ(area.appl_index, 4U);
  EXPECT_EQ(area.area_id.s_addr, htonl(0x0A000003));
  EXPECT_EQ(area.area_id_str, "10.0.0.3");
  EXPECT_FALSE(area.area_id_integer_format);
  EXPECT_EQ(Pass(upgrade).GetOspfv3AreaKeys(2, area), -1);
}

// The key comes from the arguments, not from the area to fill.
TEST(Ospfv3AreaUpdateTest, FormatIsReadFromTheEntryOfTheGivenKey) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.0", false)
                      .InternalArea(2, "0.0.0.5", true)
                      .Xml());
  Area area = AreaOf(1, "0.0.0.0");
  EXPECT_EQ(Pass(upgrade).GetOspfv3AreaIntegerFormat(2, "0.0.0.5", area), 0);
  EXPECT_TRUE(area.area_id_integer_format);
  EXPECT_EQ(area.appl_index, 1U);
  EXPECT_EQ(Pass(upgrade).GetOspfv3AreaIntegerFormat(1, "0.0.0.0", area), 0);
  EXPECT_FALSE(area.area_id_integer_format);
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(Ospfv3AreaUpdateTest, SearchUsesTheAddressAndNotItsText) {
  Upgrade upgrade(
      OneArea().Interface(1, "0.0.0.0", "l3-vlan10", "10.0.0.1").Xml());
  Area area = AreaOf(1, "0.0.0.0");
  area.area_id_str = "0.0.0.7";
  EXPECT_EQ(Pass(upgrade).DeleteOspfAreaEntry(area), 0);
  EXPECT_EQ(upgrade.Log(), "OSPFv2 1 uses area 0.0.0.7. Keep it.\n");
}

TEST(Ospfv3AreaUpdateTest, DeletionReturnsZeroForAnEntryThatIsNotThere) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).Xml());
  EXPECT_EQ(Pass(upgrade).DeleteOspfAreaEntry(AreaOf(1, "0.0.0.0")), 0);
  EXPECT_EQ(upgrade.Log().rfind(
                DeleteLine("1", "0.0.0.0") +
                    "Failed to delete to /internal/ospf-area-global{1 0.0.0.0}"
                    " (",
                0),
            0U);
  EXPECT_EQ(upgrade.database().OpenCursors(), 1U);
}

TEST(Ospfv3AreaUpdateTest, NewEntryHasItsKeysAndTheFormatOnly) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).Xml());
  Area area = AreaOf(1, "0.0.0.0");
  area.area_id_integer_format = true;
  EXPECT_EQ(Pass(upgrade).CreateOspfv3AreaEntry(area), 0);
  EXPECT_EQ(upgrade.Changes(),
            "+ /internal/ospfv3-area-global{1 0.0.0.0}\n"
            "    areaIdIntegerFormat: \"true\"\n");
  EXPECT_EQ(upgrade.CallText(),
            "maapi_create /internal/ospfv3-area-global{1 0.0.0.0} -> 0\n"
            "maapi_set_elem /internal/ospfv3-area-global{1 0.0.0.0}/"
            "areaIdIntegerFormat C_ENUM_VALUE 1 -> 0\n");
}

}  // namespace
}  // namespace config_update
