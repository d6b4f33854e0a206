#include "config_update/ospf_timer_update.h"

// confd_maapi.h needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using kit::control::Fault;
using test_support::ConfigBuilder;
using test_support::ExpectGolden;
using test_support::Models;
using test_support::Upgrade;

static_assert(std::is_same_v<decltype(ospf_timer_update), int(int, int, int)>);

const std::string kEntities = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
const std::string kV3Entities =
    "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry";
const std::string kProcessIds = "/internal/ospf-index-to-proc-id";

const std::string kStart = "Start OSPF(v2/v3) timers update\n";
const std::string kFinish = "Finish OSPF(v2/v3) timers update\n";

// In the order in which they are written.
constexpr std::initializer_list<const char*> kLeaves = {
    "ospfPmEntSpfMaxWait",     "ospfPmEntSpfStartTime",
    "ospfPmEntSpfHoldTime",    "ospfPmEntMinLsArrival",
    "ospfPmEntMaxLsInterval",  "ospfPmEntMinLsInterval",
    "ospfPmEntHoldLsInterval", "ospfPmEntSpfThrottle"};
constexpr std::initializer_list<const char*> kV3Leaves = {
    "ospfv3PmEntSpfThrottle",   "ospfv3PmEntSpfMaxWait",
    "ospfv3PmEntSpfStartTime",  "ospfv3PmEntSpfHoldTime",
    "ospfv3PmEntMinLsArrival",  "ospfv3PmEntMaxLsInterval",
    "ospfv3PmEntMinLsInterval", "ospfv3PmEntHoldLsInterval"};

constexpr char kV3Timers[] =
    "    ospfv3PmEntSpfThrottle: (none) -> \"exponential\"\n"
    "    ospfv3PmEntSpfMaxWait: (none) -> \"5000\"\n"
    "    ospfv3PmEntSpfStartTime: (none) -> \"100\"\n"
    "    ospfv3PmEntSpfHoldTime: (none) -> \"500\"\n"
    "    ospfv3PmEntMinLsArrival: (none) -> \"100\"\n"
    "    ospfv3PmEntMaxLsInterval: (none) -> \"5000\"\n"
    "    ospfv3PmEntMinLsInterval: (none) -> \"100\"\n"
    "    ospfv3PmEntHoldLsInterval: (none) -> \"500\"\n";

int RunPass(const Upgrade& upgrade) {
  return ospf_timer_update(upgrade.maapi_sock(), upgrade.thandle(),
                           upgrade.cdb_sock());
}

std::string V3Announcements(uint32_t entity) {
  std::string lines;
  for (const char* leaf : kV3Leaves) {
    lines += "maapi_set_elem " + kV3Entities + "{" + std::to_string(entity) +
             "}/" + leaf + "\n";
  }
  return lines;
}

// The calls do their work and give this result all the same.
Fault Result(const std::string& function, const std::string& path, int result) {
  Fault fault;
  fault.function = function;
  fault.path = path;
  fault.occurrence = 0;
  fault.result = result;
  return fault;
}

void Write(Upgrade& upgrade, const std::string& path, confd_value_t value) {
  ASSERT_EQ(maapi_set_elem(upgrade.maapi_sock(), upgrade.thandle(), &value,
                           "%s", path.c_str()),
            CONFD_OK)
      << path << ": " << confd_lasterr();
}

void Create(Upgrade& upgrade, const std::string& path) {
  ASSERT_EQ(
      maapi_create(upgrade.maapi_sock(), upgrade.thandle(), "%s", path.c_str()),
      CONFD_OK)
      << path << ": " << confd_lasterr();
}

// What the re-keying of a process's entity leaves for this pass to read.
void MigrateEntity(Upgrade& upgrade, uint32_t process_id) {
  const std::string old_entity =
      kEntities + "{" + std::to_string(process_id) + "}";
  ASSERT_EQ(maapi_delete(upgrade.maapi_sock(), upgrade.thandle(), "%s",
                         old_entity.c_str()),
            CONFD_OK);
  Create(upgrade, kEntities + "{1}");
  Create(upgrade, kProcessIds + "{1}");
  confd_value_t value = {};
  CONFD_SET_UINT32(&value, process_id);
  Write(upgrade, kProcessIds + "{1}/proc_id", value);
  upgrade.ClearCalls();
}

// Process 7, already entity 1 of the transaction.
class V2TimerUpdateTest : public testing::Test {
 protected:
  explicit V2TimerUpdateTest(const std::string& throttle = "fixed")
      : upgrade_(ConfigBuilder()
                     .Entity(7, {{"ospfPmEntSpfThrottle", throttle}})
                     .Xml()) {
    MigrateEntity(upgrade_, 7);
    untouched_ = upgrade_.Changes();
  }

  void ExpectSilentSkip() {
    EXPECT_EQ(RunPass(upgrade_), 0);
    EXPECT_EQ(upgrade_.Log(), kStart + kFinish);
    EXPECT_EQ(upgrade_.Changes(), untouched_);
  }

  void FailWriteOf(const std::string& leaf) {
    upgrade_.Fail("maapi_set_elem", kEntities + "{1}/" + leaf,
                  CONFD_ERR_INTERNAL, "boom");
  }

  static std::string WriteFailed(const std::string& leaf) {
    return "error setting maapi_set_elem " + kEntities + "{1}/" + leaf +
           " (error: boom)\n";
  }

  Upgrade upgrade_;
  std::string untouched_;
};

class V2TimerUpdateWithNewThrottleTest : public V2TimerUpdateTest {
 protected:
  V2TimerUpdateWithNewThrottleTest() : V2TimerUpdateTest("exponential") {}
};

// The only OSPFv3 entity has index 5.
class V3TimerUpdateTest : public testing::Test {
 protected:
  explicit V3TimerUpdateTest(const std::string& throttle = "fixed")
      : upgrade_(ConfigBuilder()
                     .V3Entity(5, {{"ospfv3PmEntSpfThrottle", throttle}})
                     .Xml()) {}

  Upgrade upgrade_;
};

class V3TimerUpdateWithNewThrottleTest : public V3TimerUpdateTest {
 protected:
  V3TimerUpdateWithNewThrottleTest() : V3TimerUpdateTest("exponential") {}
};

TEST(OspfTimerUpdateTest, NeitherVersionConfiguredLogsOnlyStartAndFinish) {
  Upgrade upgrade(ConfigBuilder().Redistribution(1, 1, "ospf").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.CallText(), "cdb_num_instances " + kEntities +
                                    " -> 0\n"
                                    "cdb_num_instances " +
                                    kV3Entities + " -> 0\n");
}

TEST(OspfTimerUpdateTest, CallsInOrder) {
  Upgrade upgrade(ConfigBuilder().Entity(7).V3Entity(5).Xml());
  MigrateEntity(upgrade, 7);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(5) + kFinish);
  ExpectGolden("unit/config-update/golden/ospf_timer_update.calls",
               upgrade.CallText());
}

// ---- OSPFv2: skips silently -------------------------------------------------

TEST_F(V2TimerUpdateTest, WritesEveryTimerToTheNewEntityWithoutALine) {
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + kFinish);
  for (const auto& [leaf, value] :
       {std::pair("ospfPmEntSpfThrottle", "C_ENUM_VALUE 1"),
        std::pair("ospfPmEntSpfMaxWait", "C_UINT32 5000"),
        std::pair("ospfPmEntSpfStartTime", "C_UINT32 100"),
        std::pair("ospfPmEntSpfHoldTime", "C_UINT32 500"),
        std::pair("ospfPmEntMinLsArrival", "C_INT32 100"),
        std::pair("ospfPmEntMaxLsInterval", "C_INT32 5000"),
        std::pair("ospfPmEntMinLsInterval", "C_INT32 100"),
        std::pair("ospfPmEntHoldLsInterval", "C_INT32 500")}) {
    EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/" + leaf), value) << leaf;
  }
}

TEST_F(V2TimerUpdateWithNewThrottleTest, LeavesTheEntityAlone) {
  ExpectSilentSkip();
}

TEST(OspfTimerUpdateTest, NoV2EntitySkipsV2SilentlyAndStillRunsV3) {
  Upgrade upgrade(ConfigBuilder().V3Entity(5).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(5) + kFinish);
  EXPECT_EQ(upgrade.Changes(), "~ " + kV3Entities + "{5}\n" + kV3Timers);
}

TEST(OspfTimerUpdateTest, TwoV2EntitiesSkipV2SilentlyAndStillRunV3) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Entity(8).V3Entity(5).Xml());
  MigrateEntity(upgrade, 7);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(5) + kFinish);
  EXPECT_EQ(upgrade.Leaf(kEntities + "{1}/ospfPmEntSpfMaxWait"), std::nullopt);
}

TEST(OspfTimerUpdateTest, NoNewV2EntitySkipsV2SilentlyAndStillRunsV3) {
  Upgrade upgrade(ConfigBuilder().Entity(7).V3Entity(5).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(5) + kFinish);
  EXPECT_EQ(upgrade.Changes(), "~ " + kV3Entities + "{5}\n" + kV3Timers);
}

TEST_F(V2TimerUpdateTest, FailedCountSkipsSilently) {
  upgrade_.Fail("cdb_num_instances", kEntities, CONFD_ERR_INTERNAL, "boom");
  ExpectSilentSkip();
}

TEST_F(V2TimerUpdateTest, FailedExistenceTestSkipsSilently) {
  upgrade_.Fail("maapi_exists", "", CONFD_ERR_INTERNAL, "boom");
  ExpectSilentSkip();
}

TEST_F(V2TimerUpdateTest, FailedProcessIdReadSkipsSilently) {
  upgrade_.Fail("maapi_get_u_int32_elem", "", CONFD_ERR_INTERNAL, "boom");
  ExpectSilentSkip();
}

TEST_F(V2TimerUpdateTest, FailedThrottleReadSkipsSilently) {
  upgrade_.Fail("cdb_get_enum_value", "", CONFD_ERR_INTERNAL, "boom");
  ExpectSilentSkip();
}

TEST_F(V2TimerUpdateTest, ThrottleReadThatFailsWithTheValueStoredSkips) {
  upgrade_.Inject(Result("cdb_get_enum_value", "", CONFD_ERR));
  ExpectSilentSkip();
}

TEST(OspfTimerUpdateTest, V2SkippedAfterAReadFailureStillRunsV3) {
  for (const char* function :
       {"maapi_exists", "maapi_get_u_int32_elem", "cdb_get_enum_value"}) {
    Upgrade upgrade(ConfigBuilder().Entity(7).V3Entity(5).Xml());
    MigrateEntity(upgrade, 7);
    upgrade.Fail(function, "", CONFD_ERR_INTERNAL, "boom");
    EXPECT_EQ(RunPass(upgrade), 0) << function;
    EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(5) + kFinish);
    EXPECT_EQ(upgrade.Leaf(kV3Entities + "{5}/ospfv3PmEntSpfThrottle"),
              "C_ENUM_VALUE 1");
  }
}

// The old entity is looked up by process id, so old data that is keyed by
// entity index already holds nothing to convert.
TEST(OspfTimerUpdateTest, OldEntityIsNotLookedUpByEntityIndex) {
  Upgrade upgrade(ConfigBuilder()
                      .Entity(1)
                      .Entry(kProcessIds, {{"index", "1"},
                                           {"proc_id", "7"},
                                           {"vrf_name", "global"},
                                           {"rtm_idx", "1"}})
                      .Xml(),
                  Models{"intermediate", "after"});
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

// The key is formatted as a signed number, which no uint32 key takes.
TEST(OspfTimerUpdateTest, ProcessIdBeyondTheSignedRangeIsNeverFound) {
  Upgrade upgrade(ConfigBuilder().Entity(3000000000).Xml());
  MigrateEntity(upgrade, 3000000000);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(kEntities + "{1}/ospfPmEntSpfMaxWait"), std::nullopt);
  EXPECT_NE(upgrade.CallText().find("cdb_get_enum_value " + kEntities +
                                    "{-1294967296}/ospfPmEntSpfThrottle -> -1"),
            std::string::npos)
      << upgrade.CallText();
}

TEST_F(V2TimerUpdateTest, FailedNamespaceFailsThePass) {
  upgrade_.Fail("cdb_set_namespace", "", CONFD_ERR_NOSESSION, "no session");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart +
                                "OSPF: cdb_set_namespace (error: no session)\n"
                                "failed setting OSPFv2 throttle timers\n");
  EXPECT_EQ(upgrade_.Changes(), untouched_);
}

// ---- OSPFv2: the last write alone decides -----------------------------------

TEST_F(V2TimerUpdateTest, EarlierWriteThatFailsIsLoggedAndForgotten) {
  FailWriteOf("ospfPmEntMinLsArrival");
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(),
            kStart + WriteFailed("ospfPmEntMinLsArrival") + kFinish);
  EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/ospfPmEntMinLsArrival"),
            std::nullopt);
  EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/ospfPmEntMaxLsInterval"),
            "C_INT32 5000");
  EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/ospfPmEntSpfThrottle"),
            "C_ENUM_VALUE 1");
}

TEST_F(V2TimerUpdateTest, AllWritesButTheLastMayFail) {
  std::string lines;
  for (const char* leaf : kLeaves) {
    if (leaf == std::string("ospfPmEntSpfThrottle")) continue;
    FailWriteOf(leaf);
    lines += WriteFailed(leaf);
  }
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + lines + kFinish);
}

TEST_F(V2TimerUpdateTest, LastWriteThatFailsFailsThePassAndKeepsTheOthers) {
  FailWriteOf("ospfPmEntSpfThrottle");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart + WriteFailed("ospfPmEntSpfThrottle") +
                                "failed setting OSPFv2 throttle timers\n");
  EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/ospfPmEntSpfMaxWait"),
            "C_UINT32 5000");
  EXPECT_EQ(upgrade_.Leaf(kEntities + "{1}/ospfPmEntHoldLsInterval"),
            "C_INT32 500");
}

TEST_F(V2TimerUpdateTest, EveryWriteIsTriedWhenAllFail) {
  upgrade_.Fail("maapi_set_elem", "", CONFD_ERR_INTERNAL, "boom", 0);
  std::string lines;
  for (const char* leaf : kLeaves) lines += WriteFailed(leaf);
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(),
            kStart + lines + "failed setting OSPFv2 throttle timers\n");
}

TEST(OspfTimerUpdateTest, FailureOfV2LeavesV3Untouched) {
  Upgrade upgrade(ConfigBuilder().Entity(7).V3Entity(5).Xml());
  MigrateEntity(upgrade, 7);
  upgrade.Fail("maapi_set_elem", kEntities + "{1}/ospfPmEntSpfThrottle",
               CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), -1);
  EXPECT_EQ(upgrade.CallText().find(kV3Entities), std::string::npos);
  EXPECT_EQ(upgrade.Leaf(kV3Entities + "{5}/ospfv3PmEntSpfMaxWait"),
            std::nullopt);
}

// ---- OSPFv3 -----------------------------------------------------------------

TEST_F(V3TimerUpdateTest, AnnouncesAndWritesEveryTimerUnderItsOwnKey) {
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + V3Announcements(5) + kFinish);
  for (const auto& [leaf, value] :
       {std::pair("ospfv3PmEntSpfThrottle", "C_ENUM_VALUE 1"),
        std::pair("ospfv3PmEntSpfMaxWait", "C_UINT32 5000"),
        std::pair("ospfv3PmEntSpfStartTime", "C_UINT32 100"),
        std::pair("ospfv3PmEntSpfHoldTime", "C_UINT32 500"),
        std::pair("ospfv3PmEntMinLsArrival", "C_INT32 100"),
        std::pair("ospfv3PmEntMaxLsInterval", "C_INT32 5000"),
        std::pair("ospfv3PmEntMinLsInterval", "C_INT32 100"),
        std::pair("ospfv3PmEntHoldLsInterval", "C_INT32 500")}) {
    EXPECT_EQ(upgrade_.Leaf(kV3Entities + "{5}/" + leaf), value) << leaf;
  }
}

TEST_F(V3TimerUpdateWithNewThrottleTest, LeavesTheEntityAlone) {
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade_.Changes(), "");
}

TEST(OspfTimerUpdateTest, TwoV3EntitiesAreLeftAlone) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).V3Entity(5).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST_F(V3TimerUpdateTest, FailedCountLeavesTheEntityAlone) {
  upgrade_.Fail("cdb_num_instances", kV3Entities, CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade_.Changes(), "");
}

TEST(OspfTimerUpdateTest, LargestV3KeyIsWrittenUnsigned) {
  Upgrade upgrade(ConfigBuilder().V3Entity(4294967295).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + V3Announcements(4294967295) + kFinish);
}

TEST_F(V3TimerUpdateTest, FailedNamespaceFailsThePass) {
  upgrade_.Fail("cdb_set_namespace", "", CONFD_ERR_NOSESSION, "no session");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart +
                                "OSPF: cdb_set_namespace (error: no session)\n"
                                "failed setting OSPFv3 throttle timers\n");
}

TEST_F(V3TimerUpdateTest, FailedThrottleReadFailsThePassUnlikeThatOfV2) {
  upgrade_.Fail("cdb_get_enum_value", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(),
            kStart +
                "Failed to get ospfv3PmEntSpfThrottle (error: boom)\n"
                "failed setting OSPFv3 throttle timers\n");
  EXPECT_EQ(upgrade_.Changes(), "");
}

TEST_F(V3TimerUpdateTest, FailedIndexReadFailsThePass) {
  upgrade_.Fail("cdb_get_u_int32", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart +
                                "Failed to get ospfv3PmEntIndex (error: boom)\n"
                                "failed setting OSPFv3 throttle timers\n");
  EXPECT_EQ(upgrade_.Changes(), "");
}

TEST_F(V3TimerUpdateWithNewThrottleTest, IndexIsNotReadWithoutNeed) {
  upgrade_.Fail("cdb_get_u_int32", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), 0);
  EXPECT_EQ(upgrade_.Log(), kStart + kFinish);
}

TEST_F(V3TimerUpdateTest, FirstWriteThatFailsStopsAndItsLineShowsKey1) {
  upgrade_.Fail("maapi_set_elem", kV3Entities + "{5}/ospfv3PmEntSpfThrottle",
                CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart + "maapi_set_elem " + kV3Entities +
                                "{5}/ospfv3PmEntSpfThrottle\n"
                                "error setting maapi_set_elem " +
                                kV3Entities +
                                "{1}/ospfv3PmEntSpfThrottle (error: boom)\n"
                                "failed setting OSPFv3 throttle timers\n");
  EXPECT_EQ(upgrade_.Changes(), "");
}

TEST_F(V3TimerUpdateTest, LaterWriteThatFailsKeepsThoseBeforeIt) {
  upgrade_.Fail("maapi_set_elem", kV3Entities + "{5}/ospfv3PmEntSpfStartTime",
                CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart + "maapi_set_elem " + kV3Entities +
                                "{5}/ospfv3PmEntSpfThrottle\n"
                                "maapi_set_elem " +
                                kV3Entities +
                                "{5}/ospfv3PmEntSpfMaxWait\n"
                                "maapi_set_elem " +
                                kV3Entities +
                                "{5}/ospfv3PmEntSpfStartTime\n"
                                "error setting maapi_set_elem " +
                                kV3Entities +
                                "{1}/ospfv3PmEntSpfStartTime (error: boom)\n"
                                "failed setting OSPFv3 throttle timers\n");
  EXPECT_EQ(upgrade_.Changes(),
            "~ " + kV3Entities +
                "{5}\n"
                "    ospfv3PmEntSpfThrottle: (none) -> \"exponential\"\n"
                "    ospfv3PmEntSpfMaxWait: (none) -> \"5000\"\n");
}

TEST_F(V3TimerUpdateTest, LastWriteThatFailsFailsThePass) {
  upgrade_.Fail("maapi_set_elem", kV3Entities + "{5}/ospfv3PmEntHoldLsInterval",
                CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade_), -1);
  EXPECT_EQ(upgrade_.Log(), kStart + V3Announcements(5) +
                                "error setting maapi_set_elem " + kV3Entities +
                                "{1}/ospfv3PmEntHoldLsInterval (error: boom)\n"
                                "failed setting OSPFv3 throttle timers\n");
}

}  // namespace
}  // namespace config_update
