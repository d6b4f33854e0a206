#include "config_update/ospf_bfd_idx_update.h"

// confd_maapi.h needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::ExpectGolden;
using test_support::Models;
using test_support::Upgrade;

static_assert(
    std::is_same_v<decltype(ospf_bfd_idx_update), int(int, int, int)>);

const std::string kNmEntities = "/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry";

const std::string kStart = "Start OSPFv2 BFD INDEX update\n";
const std::string kFinish = "Finish OSPFv2 BFD INDEX update\n";

int RunPass(const Upgrade& upgrade) {
  return ospf_bfd_idx_update(upgrade.maapi_sock(), upgrade.thandle(),
                             upgrade.cdb_sock());
}

std::string Leaf(int index) {
  return kNmEntities + "{" + std::to_string(index) +
         "}/ospfNmEntBfdEntityIndex";
}

// What a function called after this finds in its uninitialised locals.
void __attribute__((noinline)) DirtyStack() {
  volatile unsigned char stack[16384];
  for (volatile unsigned char& byte : stack) byte = 0x5A;
}

TEST(OspfBfdIdxUpdateTest, CallsInOrder) {
  Upgrade upgrade(ConfigBuilder().NmEntity(3).NmEntity(7).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  ExpectGolden("unit/config-update/golden/ospf_bfd_idx_update.calls",
               upgrade.CallText());
}

TEST(OspfBfdIdxUpdateTest, NoNmEntitiesLogOnlyStartAndFinish) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfBfdIdxUpdateTest, EveryNmEntityEndsWith1WhateverItHeld) {
  Upgrade upgrade(ConfigBuilder()
                      .NmEntity(1)
                      .NmEntity(2, {{"ospfNmEntBfdEntityIndex", "1"}})
                      .NmEntity(3, {{"ospfNmEntBfdEntityIndex", "4"}})
                      .NmEntity(4, {{"ospfNmEntBfdEntityIndex", "0"}})
                      .Xml(),
                  Models{"intermediate", "after"});
  EXPECT_EQ(RunPass(upgrade), 0);
  for (int index = 1; index <= 4; ++index) {
    EXPECT_EQ(upgrade.Leaf(Leaf(index)), "C_UINT32 1") << index;
    // Written also where it is right already.
    EXPECT_NE(upgrade.CallText().find("maapi_set_elem " + Leaf(index) +
                                      " C_UINT32 1 -> 0\n"),
              std::string::npos)
        << index;
  }
}

TEST(OspfBfdIdxUpdateTest, NmEntityThatOnlyTheTransactionHoldsIsWritten) {
  Upgrade upgrade(ConfigBuilder().NmEntity(7).Xml());
  ASSERT_EQ(maapi_delete(upgrade.maapi_sock(), upgrade.thandle(), "%s{7}",
                         kNmEntities.c_str()),
            CONFD_OK);
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(), "%s{1}",
                         kNmEntities.c_str()),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf(1)), "C_UINT32 1");
  EXPECT_FALSE(upgrade.Exists(kNmEntities + "{7}"));
}

TEST(OspfBfdIdxUpdateTest, FailedWriteIsLoggedAndTheOthersAreStillWritten) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).NmEntity(2).NmEntity(3).Xml());
  upgrade.Fail("maapi_set_elem", Leaf(2), CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(
      upgrade.Log(),
      kStart + "Failed to set OSPF NM BFD INDEX (error: boom)\n" + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf(1)), "C_UINT32 1");
  EXPECT_EQ(upgrade.Leaf(Leaf(2)), std::nullopt);
  EXPECT_EQ(upgrade.Leaf(Leaf(3)), "C_UINT32 1");
}

TEST(OspfBfdIdxUpdateTest, WritesThatAllFailDoNotFailThePass) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).NmEntity(2).Xml());
  upgrade.Fail("maapi_set_elem", "", CONFD_ERR_INTERNAL, "boom", 0);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart +
                "Failed to set OSPF NM BFD INDEX (error: boom)\n"
                "Failed to set OSPF NM BFD INDEX (error: boom)\n" +
                kFinish);
}

TEST(OspfBfdIdxUpdateTest, CursorThatDoesNotStartEndsTheLoop) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).Xml());
  upgrade.Fail("maapi_init_cursor", "", CONFD_ERR_INTERNAL, "boom");
  DirtyStack();
  EXPECT_EQ(RunPass(upgrade), 0);
  // Neither steps nor leaves the cursor undestroyed.
  const std::vector<std::string> calls = upgrade.Calls();
  ASSERT_EQ(calls.size(), 2U) << upgrade.CallText();
  EXPECT_EQ(calls[1].find("maapi_destroy_cursor"), 0U);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfBfdIdxUpdateTest, CursorThatStopsMidwayEndsTheLoopWithoutALine) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).NmEntity(2).Xml());
  upgrade.Fail("maapi_get_next", "", CONFD_ERR_INTERNAL, "boom", 2);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf(1)), "C_UINT32 1");
  EXPECT_EQ(upgrade.Leaf(Leaf(2)), std::nullopt);
}

TEST(OspfBfdIdxUpdateTest, NoCursorIsLeftOpen) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

TEST(OspfBfdIdxUpdateTest, CdbSocketIsNotUsed) {
  Upgrade upgrade(ConfigBuilder().NmEntity(1).Xml());
  EXPECT_EQ(ospf_bfd_idx_update(upgrade.maapi_sock(), upgrade.thandle(), -1),
            0);
  EXPECT_EQ(upgrade.Leaf(Leaf(1)), "C_UINT32 1");
  EXPECT_EQ(upgrade.CallText().find("cdb_"), std::string::npos);
}

}  // namespace
}  // namespace config_update
