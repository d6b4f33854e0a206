// The order and the conditions of the passes, and what becomes of a failing
// one, with scripted passes in place of the real ones: two of those can't fail,
// and none can show which handles it was given.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "config_update/database_access.h"
#include "config_update/ospf_area_update.h"
#include "config_update/ospf_asbr_update.h"
#include "config_update/ospf_bfd_idx_update.h"
#include "config_update/ospf_compound_idx_update.h"
#include "config_update/ospf_rfc_4577_support_update.h"
#include "config_update/ospf_secondary_update.h"
#include "config_update/ospf_te_update.h"
#include "config_update/ospf_timer_update.h"
#include "config_update/ospfv3_area_update.h"
#include "config_update/update.h"
#include "config_update/update_logger.h"
#include "tests/support/config_builder.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace scripted {

// Numbered as they run.
enum Pass {
  kArea = 1,
  kV3Area,
  kCompoundIndex,
  kSecondary,
  kAsbr,
  kTimers,
  kTe,
  kBfd,
  kRfc4577
};

// What the passes are to return, and how they were run.
struct Script {
  int failing_pass = 0;
  int result = 0;  // of the failing pass; 0 of all others
  std::vector<int> order;
  std::vector<std::vector<int>> handles;
};

Script script;

int Run(Pass pass, std::vector<int> handles) {
  script.order.push_back(pass);
  script.handles.push_back(std::move(handles));
  return pass == script.failing_pass ? script.result : 0;
}

template <Pass kPass>
struct ThreeFields {
  int first;
  int second;
  int third;
  int Run() { return scripted::Run(kPass, {first, second, third}); }
};

template <Pass kPass>
struct FourFields {
  int first;
  int second;
  int third;
  unsigned int fourth;
  int Run() {
    return scripted::Run(kPass,
                         {first, second, third, static_cast<int>(fourth)});
  }
};

template <Pass kPass>
int Function(int first, int second, int third) {
  return Run(kPass, {first, second, third});
}

}  // namespace scripted
}  // namespace config_update

// The headers are all in, so that only the code of update.cc is changed.
#define OspfAreaUpdate scripted::ThreeFields<scripted::kArea>
#define Ospfv3AreaUpdate scripted::ThreeFields<scripted::kV3Area>
#define Ospfv2CompoundIndexUpdate scripted::FourFields<scripted::kCompoundIndex>
#define OspfSecondaryUpdate scripted::ThreeFields<scripted::kSecondary>
#define ospf_asbr_update scripted::Function<scripted::kAsbr>
#define ospf_timer_update scripted::Function<scripted::kTimers>
#define OspfTeUpdate scripted::ThreeFields<scripted::kTe>
#define ospf_bfd_idx_update scripted::Function<scripted::kBfd>
#define OspfV2Rfc4577Support scripted::ThreeFields<scripted::kRfc4577>
#define update scripted_update
extern "C" int scripted_update(int maapi_sock, int thandle, int cdb_sock);
#include "src/config-update/update.cc"
#undef update
#undef OspfV2Rfc4577Support
#undef ospf_bfd_idx_update
#undef OspfTeUpdate
#undef ospf_timer_update
#undef ospf_asbr_update
#undef OspfSecondaryUpdate
#undef Ospfv2CompoundIndexUpdate
#undef Ospfv3AreaUpdate
#undef OspfAreaUpdate

namespace config_update {
namespace {

using scripted::Pass;
using scripted::script;
using test_support::ConfigBuilder;
using test_support::Upgrade;

std::string Config(bool v2, bool interfaces, bool v3) {
  ConfigBuilder config;
  if (v2) config.Entity(7);
  if (interfaces) config.PmInterface(7, "10.0.0.1");
  if (v3) config.V3Entity(1);
  return config.Xml();
}

int RunUpdate(const Upgrade& upgrade) {
  return scripted_update(upgrade.maapi_sock(), upgrade.thandle(),
                         upgrade.cdb_sock());
}

class UpdatePassTableTest : public testing::Test {
 protected:
  UpdatePassTableTest() { script = {}; }
};

TEST_F(UpdatePassTableTest, EachPassRunsUnderItsConditionInOrder) {
  struct Row {
    bool v2;
    bool interfaces;
    bool v3;
    std::vector<int> order;
  };
  const Row rows[] = {
      {false, false, false, {}},
      {false, true, false, {}},
      {false, false, true, {1, 2, 5, 6}},
      {false, true, true, {1, 2, 5, 6, 7}},
      {true, false, false, {1, 3, 4, 5, 6, 8, 9}},
      {true, true, false, {1, 3, 4, 5, 6, 7, 8, 9}},
      {true, false, true, {1, 2, 3, 4, 5, 6, 8, 9}},
      {true, true, true, {1, 2, 3, 4, 5, 6, 7, 8, 9}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "v2 " << row.v2 << " interfaces "
                                    << row.interfaces << " v3 " << row.v3);
    script = {};
    Upgrade upgrade(Config(row.v2, row.interfaces, row.v3));
    EXPECT_EQ(RunUpdate(upgrade), 0);
    EXPECT_EQ(script.order, row.order);
    EXPECT_EQ(upgrade.Log(),
              row.order.empty()
                  ? "Current database doesn't have OSPF, returning\n"
                  : "");
    // Between its passes it counts, once, and does nothing else.
    EXPECT_EQ(upgrade.Calls().size(), 3U);
  }
}

TEST_F(UpdatePassTableTest, AllThreeFailedCountsCountAsPresent) {
  Upgrade upgrade(Config(false, false, false));
  upgrade.Fail("cdb_num_instances", "", CONFD_ERR_OS, "socket closed", 0);
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(script.order, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
  EXPECT_EQ(upgrade.Log(), "");
}

TEST_F(UpdatePassTableTest, PassesGetTheHandlesInTheirOwnOrder) {
  Upgrade upgrade(Config(true, true, true));
  const int maapi = upgrade.maapi_sock();
  const int thandle = upgrade.thandle();
  const int cdb = upgrade.cdb_sock();
  EXPECT_EQ(RunUpdate(upgrade), 0);
  const std::vector<int> fields = {cdb, maapi, thandle};
  const std::vector<int> arguments = {maapi, thandle, cdb};
  const std::vector<int> compound_index = {maapi, thandle, cdb, 0};
  EXPECT_EQ(script.handles,
            (std::vector<std::vector<int>>{fields, fields, compound_index,
                                           fields, arguments, arguments, fields,
                                           arguments, fields}));
}

TEST_F(UpdatePassTableTest, FirstFailingPassIsNamedOnceAndIsTheLast) {
  const std::array<const char*, 9> failures = {
      "Failed to update OSPF dangling area (error: stale text)\n",
      "Failed to update OSPFv3 area (error: stale text)\n",
      "Failed to update OSPFv2 compound index (error: stale text)\n",
      "Failed to update ospf secondary addr (error: stale text)\n",
      "Failed to update ospf asbr (error: stale text)\n",
      "Failed to update ospf timers (error: stale text)\n",
      "Failed to update OSPFv2 TE (error: stale text)\n",
      "Failed to update BFD INDEX in OSPFv2 (error: stale text)\n",
      "Failed to update RFC 4577 support in OSPFv2 (error: stale text)\n",
  };
  // Every result but 0 is a failure.
  for (const int result : {-1, 1, -2147483647}) {
    for (int pass = scripted::kArea; pass <= scripted::kRfc4577; ++pass) {
      SCOPED_TRACE(testing::Message() << "pass " << pass << " -> " << result);
      script = {};
      script.failing_pass = pass;
      script.result = result;
      Upgrade upgrade(Config(true, true, true));
      // ConfD's last error, whichever call it was of.
      upgrade.Fail("cdb_num_instances", kOspfv3EntityList, CONFD_ERR_OS,
                   "stale text");
      EXPECT_EQ(RunUpdate(upgrade), -1);
      EXPECT_EQ(upgrade.Log(), failures[static_cast<size_t>(pass) - 1]);
      EXPECT_EQ(script.order.size(), static_cast<size_t>(pass));
      EXPECT_EQ(script.order.back(), pass);
      EXPECT_EQ(upgrade.Calls().size(), 3U);
    }
  }
}

}  // namespace
}  // namespace config_update
