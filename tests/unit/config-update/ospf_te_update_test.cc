#include "config_update/ospf_te_update.h"

// confd_maapi.h needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <gtest/gtest.h>

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
using test_support::Upgrade;

static_assert(
    std::is_same_v<decltype(&OspfTeUpdate::Run), int (OspfTeUpdate::*)()>);
static_assert(std::is_same_v<decltype(&OspfTeUpdate::OspfTeIsEnabled),
                             bool (OspfTeUpdate::*)() const>);
static_assert(std::is_same_v<decltype(&OspfTeUpdate::SetOspfTe),
                             int (OspfTeUpdate::*)() const>);
static_assert(std::is_same_v<decltype(&OspfTeUpdate::kOspfv2PmIfEntrPath),
                             const std::string*>);
static_assert(std::is_same_v<decltype(&OspfTeUpdate::kOspfQosSupport),
                             const std::string*>);

const std::string kInterfaces = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";

const std::string kStart = "Start OSPF TE update\n";
const std::string kFinish = "Finish OSPF TE update\n";

OspfTeUpdate Pass(const Upgrade& upgrade) {
  return {upgrade.cdb_sock(), upgrade.maapi_sock(), upgrade.thandle()};
}

int RunPass(const Upgrade& upgrade) { return Pass(upgrade).Run(); }

std::string Leaf(const std::string& key) {
  return kInterfaces + "{" + key + "}/ospfPmIfQOSSupport";
}

// Interfaces 10.0.0.1, 10.0.0.2, ... of process 7, with these settings.
struct Interfaces : ConfigBuilder {
  explicit Interfaces(const std::vector<const char*>& qos_support) {
    Entity(7);
    int host = 0;
    for (const char* value : qos_support) {
      PmInterface(7, "10.0.0." + std::to_string(++host),
                  {{"ospfPmIfQOSSupport", value}});
    }
  }
};

// What a function called after this finds in its uninitialised locals.
void __attribute__((noinline)) DirtyStack() {
  volatile unsigned char stack[16384];
  for (volatile unsigned char& byte : stack) byte = 0x5A;
}

TEST(OspfTeUpdateTest, ConstantsNameTheListAndTheLeaf) {
  EXPECT_EQ(OspfTeUpdate::kOspfv2PmIfEntrPath,
            "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry");
  EXPECT_EQ(OspfTeUpdate::kOspfQosSupport, "ospfPmIfQOSSupport");
}

TEST(OspfTeUpdateTest, CallsInOrder) {
  Upgrade upgrade(Interfaces({"false", "true"}).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  ExpectGolden("unit/config-update/golden/ospf_te_update.calls",
               upgrade.CallText());
}

TEST(OspfTeUpdateTest, NoInterfacesLogTheNoEntriesLineAndNothingElse) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + "No entries for OSPF TE! No need to continue.\n");
  EXPECT_EQ(upgrade.CallText(), "cdb_num_instances " + kInterfaces + " -> 0\n");
}

TEST(OspfTeUpdateTest, FailedCountDoesNotStopThePass) {
  Upgrade upgrade(Interfaces({"false"}).Xml());
  upgrade.Fail("cdb_num_instances", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.1 0")), "C_ENUM_VALUE 1");
}

TEST(OspfTeUpdateTest, FirstInterfaceWithSupportStandsForAll) {
  Upgrade upgrade(Interfaces({"true", "false", "false"}).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + "OSPF TE already updated! No need to continue.\n");
  EXPECT_EQ(upgrade.Changes(), "");
  // Nor is the transaction looked at.
  EXPECT_EQ(upgrade.Calls().size(), 2U) << upgrade.CallText();
}

TEST(OspfTeUpdateTest, FirstInterfaceWithoutSupportHasEveryInterfaceWritten) {
  Upgrade upgrade(Interfaces({"false", "true", "false"}).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  for (const char* key : {"7 10.0.0.1 0", "7 10.0.0.2 0", "7 10.0.0.3 0"}) {
    // Also the second, which has it already.
    EXPECT_NE(upgrade.CallText().find("maapi_set_elem " + Leaf(key) +
                                      " C_ENUM_VALUE 1 -> 0\n"),
              std::string::npos)
        << key;
    EXPECT_EQ(upgrade.Leaf(Leaf(key)), "C_ENUM_VALUE 1") << key;
  }
}

TEST(OspfTeUpdateTest, FailedReadOfTheFirstInterfaceHasAllWritten) {
  Upgrade upgrade(Interfaces({"true", "false"}).Xml());
  upgrade.Fail("cdb_get_enum_value", kInterfaces + "[0]/ospfPmIfQOSSupport",
               CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + "Failed to get OSPF ospfPmIfQOSSupport (error: boom)\n" +
                kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.2 0")), "C_ENUM_VALUE 1");
}

TEST(OspfTeUpdateTest, OnlyTrueMeansEnabled) {
  EXPECT_TRUE(Pass(Upgrade(Interfaces({"true"}).Xml())).OspfTeIsEnabled());
  EXPECT_FALSE(Pass(Upgrade(Interfaces({"false"}).Xml())).OspfTeIsEnabled());
}

TEST(OspfTeUpdateTest, InterfacesThatOnlyTheTransactionHoldsAreWritten) {
  Upgrade upgrade(Interfaces({"false"}).Xml());
  ASSERT_EQ(maapi_delete(upgrade.maapi_sock(), upgrade.thandle(),
                         "%s{7 10.0.0.1 0}", kInterfaces.c_str()),
            CONFD_OK);
  ASSERT_EQ(maapi_create(upgrade.maapi_sock(), upgrade.thandle(),
                         "%s{1 10.0.0.1 0}", kInterfaces.c_str()),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("1 10.0.0.1 0")), "C_ENUM_VALUE 1");
  EXPECT_FALSE(upgrade.Exists(kInterfaces + "{7 10.0.0.1 0}"));
}

TEST(OspfTeUpdateTest, SupportInTheTransactionDoesNotCountAsUpdated) {
  Upgrade upgrade(Interfaces({"false", "false"}).Xml());
  confd_value_t enabled = {};
  CONFD_SET_ENUM_VALUE(&enabled, 1);
  ASSERT_EQ(maapi_set_elem(upgrade.maapi_sock(), upgrade.thandle(), &enabled,
                           "%s", Leaf("7 10.0.0.1 0").c_str()),
            CONFD_OK);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.2 0")), "C_ENUM_VALUE 1");
}

TEST(OspfTeUpdateTest, FailedWriteIsLoggedAndTheOthersAreStillWritten) {
  Upgrade upgrade(Interfaces({"false", "false", "false"}).Xml());
  upgrade.Fail("maapi_set_elem", Leaf("7 10.0.0.2 0"), CONFD_ERR_INTERNAL,
               "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart +
                "Failed to set OSPF ospfPmIfQOSSupport to 1 (error: boom)\n" +
                kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.1 0")), "C_ENUM_VALUE 1");
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.2 0")), "C_ENUM_VALUE 2");
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.3 0")), "C_ENUM_VALUE 1");
}

TEST(OspfTeUpdateTest, WritesThatAllFailDoNotFailThePass) {
  Upgrade upgrade(Interfaces({"false", "false"}).Xml());
  upgrade.Fail("maapi_set_elem", "", CONFD_ERR_INTERNAL, "boom", 0);
  EXPECT_EQ(Pass(upgrade).SetOspfTe(), 0);
  EXPECT_EQ(RunPass(upgrade), 0);
}

TEST(OspfTeUpdateTest, CursorThatDoesNotStartEndsTheLoop) {
  Upgrade upgrade(Interfaces({"false"}).Xml());
  upgrade.Fail("maapi_init_cursor", "", CONFD_ERR_INTERNAL, "boom");
  DirtyStack();
  EXPECT_EQ(Pass(upgrade).SetOspfTe(), 0);
  // Neither steps nor leaves the cursor undestroyed.
  const std::vector<std::string> calls = upgrade.Calls();
  ASSERT_EQ(calls.size(), 2U) << upgrade.CallText();
  EXPECT_EQ(calls[1].find("maapi_destroy_cursor"), 0U);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfTeUpdateTest, CursorThatDoesNotStartIsNoFailureOfThePass) {
  Upgrade upgrade(Interfaces({"false"}).Xml());
  upgrade.Fail("maapi_init_cursor", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
}

TEST(OspfTeUpdateTest, CursorThatStopsMidwayEndsTheLoopWithoutALine) {
  Upgrade upgrade(Interfaces({"false", "false"}).Xml());
  upgrade.Fail("maapi_get_next", "", CONFD_ERR_INTERNAL, "boom", 2);
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kStart + kFinish);
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.1 0")), "C_ENUM_VALUE 1");
  EXPECT_EQ(upgrade.Leaf(Leaf("7 10.0.0.2 0")), "C_ENUM_VALUE 2");
}

TEST(OspfTeUpdateTest, NoCursorIsLeftOpen) {
  Upgrade upgrade(Interfaces({"false", "false"}).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

}  // namespace
}  // namespace config_update
