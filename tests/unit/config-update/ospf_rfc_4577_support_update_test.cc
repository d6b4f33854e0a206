#include "config_update/ospf_rfc_4577_support_update.h"

// confd_maapi.h needs confd_lib.h before it.
// clang-format off
#include <confd_lib.h>
#include <confd_maapi.h>
// clang-format on
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

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
using testing::HasSubstr;

using Pass = OspfV2Rfc4577Support;

// None of its operations is const.
static_assert(std::is_same_v<decltype(&Pass::Run), int (Pass::*)()>);
static_assert(std::is_same_v<decltype(&Pass::Iterate),
                             int (Pass::*)(confd_value_t*, int, int)>);
static_assert(std::is_same_v<decltype(&Pass::CanUpgrade),
                             bool (Pass::*)(uint32_t, uint32_t)>);
static_assert(
    std::is_same_v<decltype(&Pass::SetRfc4577Support), int (Pass::*)(int)>);
static_assert(
    std::is_same_v<decltype(&Pass::kOspfToProcIdList), const std::string*>);
static_assert(
    std::is_same_v<decltype(&Pass::krtmEntryMibList), const std::string*>);
static_assert(
    std::is_same_v<decltype(&Pass::kospfv2EntryMibList), const std::string*>);

const std::string kEntities = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
const std::string kProcessIds = "/internal/ospf-index-to-proc-id";
const std::string kRedistribution = "/VX-RTM-MIB/rtmRedistTable/rtmRedistEntry";
const std::string kBgpStatus =
    "/VX-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry{1 ipv4 mplsBgpVpn}/"
    "bgpRmAfiSafiAdminStatus";

const std::string kStart = "Start OSPFv2 rfc 4577 update\n";
const std::string kHasVpn = "has_bgp_addr_fam_vpnv4\n";

constexpr uint32_t kProcessSource = 0x02010000;
constexpr uint32_t kVpnSource = 0x05000000;

// Old data of a release that has the internal list already.
struct Device : ConfigBuilder {
  // An entity and where its process runs.
  Device& Instance(uint32_t index, uint32_t proc_id, const std::string& vrf,
                   uint32_t rtm_idx) {
    Entity(index);
    return Listed(index, proc_id, vrf, rtm_idx);
  }
  // The same without the entity.
  Device& Listed(uint32_t index, uint32_t proc_id, const std::string& vrf,
                 uint32_t rtm_idx) {
    Entry(kProcessIds, {{"index", std::to_string(index)},
                        {"proc_id", std::to_string(proc_id)},
                        {"vrf_name", vrf},
                        {"rtm_idx", std::to_string(rtm_idx)}});
    return *this;
  }
  // The two redistribution entries of a process in a VPN.
  Device& VpnRedistribution(uint32_t rtm_idx, uint32_t proc_id) {
    Redistribution(rtm_idx, kProcessSource | proc_id, "ospf");
    Redistribution(rtm_idx, kVpnSource, "bgp");
    return *this;
  }
  Device& BgpVpn(const std::string& status, uint32_t entity = 1) {
    const std::string index = std::to_string(entity);
    Entry("/VX-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
          {{"bgpRmEntIndex", index}, {"bgpRmEntLocalAs", "64496"}});
    Entry("/VX-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
          {{"bgpRmAfiSafiEntIndex", index},
           {"bgpRmAfiSafiAfi", "ipv4"},
           {"bgpRmAfiSafiSafi", "mplsBgpVpn"},
           {"bgpRmAfiSafiAdminStatus", status}});
    return *this;
  }
};

// Everything that the process 20 of entity 2, in the VRF blue, needs.
struct VpnDevice : Device {
  VpnDevice() {
    Instance(1, 10, "global", 1);
    Instance(2, 20, "blue", 2);
    VpnRedistribution(2, 20).BgpVpn("up");
  }
};

// The same of two entities.
struct TwoVpnsDevice : VpnDevice {
  TwoVpnsDevice() {
    Instance(3, 20, "red", 3);
    VpnRedistribution(3, 20);
  }
};

class Rfc4577Test : public testing::Test {
 protected:
  void Open(const ConfigBuilder& device,
            const Models& models = {"intermediate", "after"}) {
    upgrade_.reset();
    upgrade_.emplace(device.Xml(), models);
  }
  Upgrade& upgrade() { return *upgrade_; }
  Pass pass() {
    return {upgrade_->cdb_sock(), upgrade_->maapi_sock(), upgrade_->thandle()};
  }
  int RunPass() { return pass().Run(); }

  static std::string Support(uint32_t index) {
    return kEntities + "{" + std::to_string(index) +
           "}/ospfPmEntVpnPeCeSupport";
  }
  static std::string SetLine(uint32_t index) {
    return "set VpnPeCeSupport for ospfPmEntEntry{" + std::to_string(index) +
           "}\n";
  }
  static std::string EntryPath(uint32_t rtm_idx, uint32_t source) {
    return kRedistribution + "{" + std::to_string(rtm_idx) + " " +
           std::to_string(source) + "}";
  }
  bool Called(const std::string& text) {
    return upgrade_->CallText().find(text) != std::string::npos;
  }

  void ExpectStartLineOnly() {
    EXPECT_EQ(RunPass(), 0);
    EXPECT_EQ(upgrade_->Log(), kStart);
    EXPECT_EQ(upgrade_->Changes(), "");
  }
  void ExpectNothingRead() {
    ExpectStartLineOnly();
    EXPECT_FALSE(Called("cdb_get_objects")) << upgrade_->CallText();
    EXPECT_FALSE(Called("maapi_")) << upgrade_->CallText();
  }

  void Return(const std::string& function, const std::string& path,
              int result) {
    Fault fault;
    fault.function = function;
    fault.path = path;
    fault.occurrence = 0;
    fault.result = result;
    upgrade_->Inject(fault);
  }
  void Substitute(const std::string& function, const std::string& path,
                  size_t slot, int tag, uint64_t bits) {
    Fault fault;
    fault.function = function;
    fault.path = path;
    fault.substitutes = {{slot, tag, bits}};
    upgrade_->Inject(fault);
  }

  // How the C library prints a failed assertion of the pass.
  static std::string Assertion(int line, const std::string& function,
                               const std::string& condition) {
    return ": src/config-update/ospf_rfc_4577_support_update.cc:" +
           std::to_string(line) + ": " + function + ": Assertion `" +
           condition + "' failed.";
  }

 private:
  std::optional<Upgrade> upgrade_;
};

using Rfc4577DeathTest = Rfc4577Test;

TEST_F(Rfc4577Test, ConstantsNameTheLists) {
  EXPECT_EQ(Pass::kOspfToProcIdList, "/internal/ospf-index-to-proc-id");
  EXPECT_EQ(Pass::krtmEntryMibList,
            "/VX-RTM-MIB/rtmRedistTable/rtmRedistEntry");
  EXPECT_EQ(Pass::kospfv2EntryMibList,
            "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry");
}

// ---- Run --------------------------------------------------------------------

TEST_F(Rfc4577Test, CallsInOrder) {
  Open(TwoVpnsDevice());
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(),
            kStart + kHasVpn + SetLine(2) + kHasVpn + SetLine(3));
  ExpectGolden("unit/config-update/golden/ospf_rfc_4577_support_update.calls",
               upgrade().CallText());
}

TEST_F(Rfc4577Test, SwitchesOnTheEntityInTheVpnAndNoOther) {
  Open(VpnDevice());
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + SetLine(2));
  EXPECT_EQ(upgrade().Changes(),
            "~ " + kEntities +
                "{2}\n    ospfPmEntVpnPeCeSupport: (none) -> \"true\"\n");
}

// The re-keying of this very upgrade creates the list in the transaction only,
// whether the old model knows such a list or not.
TEST_F(Rfc4577Test, ListThatOnlyTheTransactionHoldsDoesNothing) {
  for (const char* before : {"before", "intermediate"}) {
    Device device;
    device.Entity(2);
    device.VpnRedistribution(2, 20).BgpVpn("up");
    Open(device, {before, "after"});
    confd_value_t entry[4] = {};
    std::string vrf = "blue";
    CONFD_SET_UINT32(&entry[0], 2U);
    CONFD_SET_UINT32(&entry[1], 20U);
    CONFD_SET_BUF(&entry[2], vrf.data(), vrf.size());
    CONFD_SET_UINT32(&entry[3], 2U);
    const int sock = upgrade().maapi_sock();
    const int thandle = upgrade().thandle();
    const std::string path = kProcessIds + "{2}";
    ASSERT_EQ(maapi_create(sock, thandle, "%s", path.c_str()), CONFD_OK);
    ASSERT_EQ(maapi_set_object(sock, thandle, entry, 4, "%s", path.c_str()),
              CONFD_OK);
    upgrade().ClearCalls();
    EXPECT_EQ(RunPass(), 0);
    EXPECT_EQ(upgrade().Log(), kStart);
    EXPECT_FALSE(Called("cdb_get_objects")) << upgrade().CallText();
    EXPECT_FALSE(Called("maapi_")) << upgrade().CallText();
    EXPECT_EQ(upgrade().Leaf(Support(2)), "C_ENUM_VALUE 2");
  }
}

TEST_F(Rfc4577Test, ModelWithoutTheListEndsThePassBeforeTheCounts) {
  Open(ConfigBuilder().Entity(7), {"before", "after"});
  ExpectStartLineOnly();
  EXPECT_EQ(upgrade().Calls().size(), 1U) << upgrade().CallText();
}

TEST_F(Rfc4577Test, EmptyListDoesNothing) {
  Device device;
  device.Entity(2);
  device.VpnRedistribution(2, 20).BgpVpn("up");
  Open(device);
  ExpectNothingRead();
}

TEST_F(Rfc4577Test, FailedExistenceTestOfTheListDoesNothing) {
  Open(VpnDevice());
  upgrade().Fail("cdb_exists", "", CONFD_ERR_INTERNAL, "boom");
  ExpectNothingRead();
}

TEST_F(Rfc4577Test, CountOfNoEntitiesDoesNothing) {
  Device device;
  device.Listed(2, 20, "blue", 2).VpnRedistribution(2, 20).BgpVpn("up");
  Open(device);
  ExpectNothingRead();
}

TEST_F(Rfc4577Test, CountOfNoListEntriesDoesNothing) {
  Open(VpnDevice());
  Return("cdb_num_instances", kProcessIds, 0);
  ExpectNothingRead();
}

TEST_F(Rfc4577Test, CountOfNoRedistributionDoesNothing) {
  Device device;
  device.Instance(2, 20, "blue", 2).BgpVpn("up");
  Open(device);
  ExpectNothingRead();
}

TEST_F(Rfc4577Test, CountsAreMadeInOrderEvenAfterAZero) {
  Device device;
  device.Listed(2, 20, "blue", 2);
  Open(device);
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().CallText(),
            "cdb_exists " + kProcessIds + " -> 1\ncdb_num_instances " +
                kEntities + " -> 0\ncdb_num_instances " + kProcessIds +
                " -> 1\ncdb_num_instances " + kRedistribution + " -> 0\n");
}

TEST_F(Rfc4577Test, FailedCountsAreNotZero) {
  for (const std::string& list : {kEntities, kRedistribution}) {
    Open(VpnDevice());
    upgrade().Fail("cdb_num_instances", list, CONFD_ERR_INTERNAL, "boom");
    EXPECT_EQ(RunPass(), 0);
    EXPECT_EQ(upgrade().Leaf(Support(2)), "C_ENUM_VALUE 1") << list;
  }
}

TEST_F(Rfc4577Test, FailedListCountReadsNothingAndReleasesNothing) {
  Open(VpnDevice());
  upgrade().Fail("cdb_num_instances", kProcessIds, CONFD_ERR_INTERNAL, "boom");
  ExpectStartLineOnly();
  EXPECT_TRUE(Called("cdb_get_objects " + kProcessIds + " n 4 ix 0 nobj -1"))
      << upgrade().CallText();
  EXPECT_FALSE(Called("confd_free_value")) << upgrade().CallText();
}

TEST_F(Rfc4577Test, EverySlotIsReleasedOnce) {
  Open(TwoVpnsDevice());
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Calls().back(), "confd_free_value x12");
}

TEST_F(Rfc4577Test, EverySlotIsReleasedAfterAFailureToo) {
  Open(TwoVpnsDevice());
  upgrade().Fail("maapi_get_elem", Support(2), CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(), -1);
  EXPECT_EQ(upgrade().Calls().back(), "confd_free_value x12");
}

// ---- Iterate ----------------------------------------------------------------

TEST_F(Rfc4577Test, GlobalInstanceIsNeverExaminedFurther) {
  Device device;
  device.Instance(1, 10, "global", 1).VpnRedistribution(1, 10).BgpVpn("up");
  Open(device);
  ExpectStartLineOnly();
  EXPECT_FALSE(Called("maapi_")) << upgrade().CallText();
}

TEST_F(Rfc4577Test, OnlyTheExactNameGlobalIsTheDefaultInstance) {
  for (const char* vrf : {"Global", "GLOBAL", "global1", "globa", "g"}) {
    Device device;
    device.Instance(2, 20, vrf, 2).VpnRedistribution(2, 20).BgpVpn("up");
    Open(device);
    EXPECT_EQ(RunPass(), 0);
    EXPECT_EQ(upgrade().Leaf(Support(2)), "C_ENUM_VALUE 1") << vrf;
  }
}

TEST_F(Rfc4577Test, WiderObjectsGiveOneWarningAndGoOnWithFour) {
  Open(TwoVpnsDevice());
  Return("cdb_get_objects", "", 5);
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(),
            kStart +
                "there are more cdb fields (5) on the object than expected "
                "(4)\n" +
                kHasVpn + SetLine(2) + kHasVpn + SetLine(3));
  EXPECT_EQ(upgrade().Calls().back(), "confd_free_value x12");
}

TEST_F(Rfc4577Test, NoOtherResultOfTheReadCounts) {
  for (int result : {-1, 0, 3, 4}) {
    Open(VpnDevice());
    Return("cdb_get_objects", "", result);
    EXPECT_EQ(RunPass(), 0);
    EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + SetLine(2)) << result;
  }
}

TEST_F(Rfc4577Test, ObjectsAreAsFarApartAsTheCallerSays) {
  Open(TwoVpnsDevice());
  std::vector<confd_value_t> room(15);
  for (confd_value_t& value : room) CONFD_SET_NOEXISTS(&value);
  EXPECT_EQ(pass().Iterate(room.data(), 3, 5), 0);
  EXPECT_TRUE(Called("cdb_get_objects " + kProcessIds + " n 5 ix 0 nobj 3"))
      << upgrade().CallText();
  EXPECT_EQ(upgrade().Log(), kHasVpn + SetLine(2) + kHasVpn + SetLine(3));
  for (confd_value_t& value : room) confd_free_value(&value);
}

TEST_F(Rfc4577Test, ReadsTheListAlsoWhenThereIsNothingToWalk) {
  Open(VpnDevice());
  EXPECT_EQ(pass().Iterate(nullptr, 0, 4), 0);
  EXPECT_TRUE(Called("cdb_get_objects " + kProcessIds + " n 4 ix 0 nobj 0"));
  EXPECT_EQ(upgrade().Log(), "");
}

TEST_F(Rfc4577Test, SecondOfTwoEntitiesIsWrittenAfterTheFirstFailed) {
  Open(TwoVpnsDevice());
  upgrade().Fail("maapi_set_elem", Support(2), CONFD_ERR_NOT_WRITABLE,
                 "locked");
  EXPECT_EQ(RunPass(), -1);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + SetLine(2) +
                                 "failed set object " + kEntities +
                                 " error:4 'locked'\n" + kHasVpn + SetLine(3));
  EXPECT_EQ(upgrade().Leaf(Support(2)), "C_ENUM_VALUE 2");
  EXPECT_EQ(upgrade().Leaf(Support(3)), "C_ENUM_VALUE 1");
}

TEST_F(Rfc4577Test, SecondOfTwoEntitiesIsWrittenAfterTheFirstCouldNotBeRead) {
  Open(TwoVpnsDevice());
  upgrade().Fail("maapi_get_elem", Support(2), CONFD_ERR_INTERNAL, "boom");
  EXPECT_EQ(RunPass(), -1);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + "failed get object " +
                                 kEntities + " error:18 'boom'\n" + kHasVpn +
                                 SetLine(3));
  EXPECT_EQ(upgrade().Leaf(Support(3)), "C_ENUM_VALUE 1");
}

// ---- CanUpgrade -------------------------------------------------------------

TEST_F(Rfc4577Test, DisabledBgpVpnChangesNothingWithoutALine) {
  Device device;
  device.Instance(2, 20, "blue", 2).VpnRedistribution(2, 20).BgpVpn("down");
  Open(device);
  ExpectStartLineOnly();
}

TEST_F(Rfc4577Test, BgpStatusBesides1And2IsNotEnabled) {
  Open(VpnDevice());
  Substitute("maapi_get_elem", kBgpStatus, 0, C_ENUM_VALUE, 3);
  EXPECT_FALSE(pass().CanUpgrade(2, 20));
  EXPECT_EQ(upgrade().Log(), "");
}

TEST_F(Rfc4577Test, MissingBgpVpnChangesNothingWithoutALine) {
  Device device;
  device.Instance(2, 20, "blue", 2).VpnRedistribution(2, 20);
  Open(device);
  ExpectStartLineOnly();
}

TEST_F(Rfc4577Test, FailedBgpStatusReadChangesNothingWithoutALine) {
  Open(VpnDevice());
  upgrade().Fail("maapi_get_elem", kBgpStatus, CONFD_ERR_INTERNAL, "boom");
  ExpectStartLineOnly();
}

TEST_F(Rfc4577Test, VpnOfAnotherBgpEntityDoesNotCount) {
  Device device;
  device.Instance(2, 20, "blue", 2).VpnRedistribution(2, 20).BgpVpn("up", 2);
  Open(device);
  ExpectStartLineOnly();
}

// The line is about BGP alone.
TEST_F(Rfc4577Test, EnabledBgpVpnIsLoggedEvenWithoutTheRedistribution) {
  Device device;
  device.Instance(2, 20, "blue", 2).BgpVpn("up");
  device.Redistribution(9, 1, "ospf");
  Open(device);
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn);
  EXPECT_EQ(upgrade().Changes(), "");
}

TEST_F(Rfc4577Test, EachRedistributionEntryIsNeeded) {
  for (uint32_t source : {kProcessSource | 20, kVpnSource}) {
    Device device;
    device.Instance(2, 20, "blue", 2).BgpVpn("up");
    device.Redistribution(2, source, "ospf");
    Open(device);
    EXPECT_FALSE(pass().CanUpgrade(2, 20)) << source;
    EXPECT_EQ(upgrade().Log(), kHasVpn);
  }
}

TEST_F(Rfc4577Test, RedistributionOfAnotherRtmInstanceDoesNotCount) {
  Device device;
  device.Instance(2, 20, "blue", 2).VpnRedistribution(3, 20).BgpVpn("up");
  Open(device);
  EXPECT_FALSE(pass().CanUpgrade(2, 20));
}

TEST_F(Rfc4577Test, RedistributionOfAnotherProcessDoesNotCount) {
  Device device;
  device.Instance(2, 20, "blue", 2).VpnRedistribution(2, 21).BgpVpn("up");
  Open(device);
  EXPECT_FALSE(pass().CanUpgrade(2, 20));
}

// The process id shares a bit with the fixed part, so that a sum would differ.
TEST_F(Rfc4577Test, ProcessIdIsOrdIntoTheSecondKeyRatherThanAdded) {
  Device device;
  device.Instance(2, 0x10014, "blue", 2).BgpVpn("up");
  device.Redistribution(2, 0x02010014, "ospf");
  device.Redistribution(2, kVpnSource, "bgp");
  Open(device);
  EXPECT_TRUE(pass().CanUpgrade(2, 0x10014));
}

TEST_F(Rfc4577Test, FailedExistenceTestsCountAsExisting) {
  Device device;
  device.Instance(2, 20, "blue", 2).BgpVpn("up");
  device.Redistribution(9, 1, "ospf");
  Open(device);
  upgrade().Fail("maapi_exists", "", CONFD_ERR_INTERNAL, "boom", 0);
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + SetLine(2));
  EXPECT_EQ(upgrade().Leaf(Support(2)), "C_ENUM_VALUE 1");
}

TEST_F(Rfc4577Test, FailedExistenceTestDoesNotMakeUpForAnAbsentEntry) {
  for (uint32_t failing : {kProcessSource | 20, kVpnSource}) {
    Device device;
    device.Instance(2, 20, "blue", 2).BgpVpn("up");
    Open(device);
    upgrade().Fail("maapi_exists", EntryPath(2, failing), CONFD_ERR_INTERNAL,
                   "boom");
    EXPECT_FALSE(pass().CanUpgrade(2, 20)) << failing;
  }
}

TEST_F(Rfc4577Test, BothExistenceTestsAreMadeBeforeTheBgpRead) {
  Device device;
  device.Instance(2, 20, "blue", 2);
  Open(device);
  EXPECT_FALSE(pass().CanUpgrade(2, 20));
  const std::vector<std::string> calls = upgrade().Calls();
  ASSERT_EQ(calls.size(), 3U) << upgrade().CallText();
  EXPECT_EQ(calls[0],
            "maapi_exists " + EntryPath(2, kProcessSource | 20) + " -> 0");
  EXPECT_EQ(calls[1], "maapi_exists " + EntryPath(2, kVpnSource) + " -> 0");
  EXPECT_THAT(calls[2], HasSubstr("maapi_get_elem " + kBgpStatus + " -> -1"));
}

// What an earlier pass wrote counts.
TEST_F(Rfc4577Test, RedistributionIsLookedUpInTheTransaction) {
  Open(VpnDevice());
  ASSERT_EQ(maapi_delete(upgrade().maapi_sock(), upgrade().thandle(), "%s",
                         EntryPath(2, kVpnSource).c_str()),
            CONFD_OK);
  EXPECT_FALSE(pass().CanUpgrade(2, 20));
}

// ---- SetRfc4577Support ------------------------------------------------------

TEST_F(Rfc4577Test, EntityThatHasTheSupportIsNeitherWrittenNorLogged) {
  Open(VpnDevice());
  confd_value_t enabled = {};
  CONFD_SET_ENUM_VALUE(&enabled, 1);
  ASSERT_EQ(maapi_set_elem(upgrade().maapi_sock(), upgrade().thandle(),
                           &enabled, "%s", Support(2).c_str()),
            CONFD_OK);
  upgrade().ClearCalls();
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn);
  EXPECT_FALSE(Called("maapi_set_elem")) << upgrade().CallText();
}

TEST_F(Rfc4577Test, OnlyAnExplicitFalseIsChanged) {
  Open(VpnDevice());
  Substitute("maapi_get_elem", Support(2), 0, C_ENUM_VALUE, 3);
  EXPECT_EQ(pass().SetRfc4577Support(2), 0);
  EXPECT_EQ(upgrade().Log(), "");
  EXPECT_FALSE(Called("maapi_set_elem")) << upgrade().CallText();
}

TEST_F(Rfc4577Test, ListedIndexWithoutAnEntityFailsThePass) {
  Device device;
  device.Entity(1);
  device.Listed(2, 20, "blue", 2).VpnRedistribution(2, 20).BgpVpn("up");
  Open(device);
  EXPECT_EQ(RunPass(), -1);
  EXPECT_THAT(upgrade().Log(),
              HasSubstr(kStart + kHasVpn + "failed get object " + kEntities +
                        " error:1 '" + Support(2)));
}

TEST_F(Rfc4577Test, LargeIndexesArePrintedUnsigned) {
  Device device;
  device.Instance(4000000000, 20, "blue", 2);
  device.VpnRedistribution(2, 20).BgpVpn("up");
  Open(device);
  EXPECT_EQ(RunPass(), 0);
  EXPECT_EQ(upgrade().Log(), kStart + kHasVpn + SetLine(4000000000));
  EXPECT_EQ(upgrade().Leaf(Support(4000000000)), "C_ENUM_VALUE 1");
}

// ---- Assertions: part of what support sees of a crash -----------------------

constexpr char kIterate[] =
    "int config_update::OspfV2Rfc4577Support::Iterate(confd_value_t*, int, "
    "int)";

TEST_F(Rfc4577DeathTest, WrongTagInAnySlotOfAnObjectAborts) {
  const struct {
    size_t slot;
    int line;
    const char* condition;
  } cases[] = {
      {0, 125, "(&cdb_objs[i + 0])->type == C_UINT32"},
      {1, 126, "(&cdb_objs[i + 1])->type == C_UINT32"},
      {2, 127, "(&cdb_objs[i + 2])->type == C_BUF"},
      {3, 128, "(&cdb_objs[i + 3])->type == C_UINT32"},
  };
  for (const auto& wrong : cases) {
    for (size_t object : {0U, 1U}) {
      Open(VpnDevice());
      Substitute("cdb_get_objects", "", object * 4 + wrong.slot, C_INT32, 7);
      EXPECT_DEATH(RunPass(),
                   HasSubstr(Assertion(wrong.line, kIterate, wrong.condition)));
    }
  }
}

TEST_F(Rfc4577DeathTest, ObjectsOfAFailedReadAbort) {
  Open(VpnDevice());
  upgrade().Fail("cdb_get_objects", "", CONFD_ERR_INTERNAL, "boom");
  EXPECT_DEATH(RunPass(),
               HasSubstr(Assertion(125, kIterate,
                                   "(&cdb_objs[i + 0])->type == C_UINT32")));
}

TEST_F(Rfc4577DeathTest, WrongTagOfTheBgpStatusAborts) {
  Open(VpnDevice());
  Substitute("maapi_get_elem", kBgpStatus, 0, C_INT32, 1);
  EXPECT_DEATH(
      RunPass(),
      HasSubstr(Assertion(
          103,
          "bool config_update::OspfV2Rfc4577Support::CanUpgrade(uint32_t, "
          "uint32_t)",
          "(&admin_status)->type == C_ENUM_VALUE")));
}

TEST_F(Rfc4577DeathTest, WrongTagOfTheEntitysSupportAborts) {
  Open(VpnDevice());
  Substitute("maapi_get_elem", Support(2), 0, C_UINT32, 2);
  EXPECT_DEATH(
      RunPass(),
      HasSubstr(Assertion(
          74, "int config_update::OspfV2Rfc4577Support::SetRfc4577Support(int)",
          "(&myval)->type == C_ENUM_VALUE")));
}

}  // namespace
}  // namespace config_update
