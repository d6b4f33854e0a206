// The order and the conditions of the passes, and what becomes of a failing
// one, with scripted passes in place of the real ones: two of those can't fail.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "config_update/database_access.h"
#include "config_update/update_passes.h"
#include "tests/support/config_builder.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::Upgrade;

// What the passes, numbered from 1 as they stand in their table, are to return,
// and how they were run.
struct Script {
  int failing_pass = 0;
  int result = 0;  // of the failing pass; 0 of all others
  std::vector<int> order;
  std::vector<std::vector<int>> handles;
};

Script script;

template <int pass>
int RunScripted(int maapi_sock, int thandle, int cdb_sock) {
  script.order.push_back(pass);
  script.handles.push_back({maapi_sock, thandle, cdb_sock});
  return pass == script.failing_pass ? script.result : 0;
}

// The rows of update(), but for what they run.
template <size_t... row>
UpdatePasses ScriptedPasses(std::index_sequence<row...> /*rows*/) {
  UpdatePasses passes = kUpdatePasses;
  ((passes[row].run = &RunScripted<static_cast<int>(row) + 1>), ...);
  return passes;
}

std::string Config(bool v2, bool interfaces, bool v3) {
  ConfigBuilder config;
  if (v2) config.Entity(7);
  if (interfaces) config.PmInterface(7, "10.0.0.1");
  if (v3) config.V3Entity(1);
  return config.Xml();
}

int RunUpdate(const Upgrade& upgrade) {
  static const UpdatePasses passes = ScriptedPasses(
      std::make_index_sequence<std::tuple_size_v<UpdatePasses>>());
  return RunPasses(passes, upgrade.maapi_sock(), upgrade.thandle(),
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

// update_test.cc shows in which order each real pass takes them.
TEST_F(UpdatePassTableTest, EveryPassGetsTheHandles) {
  Upgrade upgrade(Config(true, true, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  const std::vector<int> handles = {upgrade.maapi_sock(), upgrade.thandle(),
                                    upgrade.cdb_sock()};
  EXPECT_EQ(script.handles, std::vector<std::vector<int>>(9, handles));
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
    for (int pass = 1; pass <= 9; ++pass) {
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
