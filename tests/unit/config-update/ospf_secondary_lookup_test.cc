// The read side of the secondary-address pass: what it finds out about one
// entry of the internal interface list.
#include <arpa/inet.h>
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <list>
#include <string>
#include <type_traits>
#include <vector>

#include "config_update/ospf_compound_idx_update.h"
#include "config_update/ospf_secondary_update.h"
#include "tests/support/config_builder.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::Upgrade;
using Pass = OspfSecondaryUpdate;

static_assert(std::is_same_v<decltype(Pass::kL3Path), const std::string>);
static_assert(std::is_same_v<decltype(&Pass::Run), int32_t (Pass::*)()>);
static_assert(std::is_same_v<decltype(&Pass::GetIpv4AddrFromIf),
                             int32_t (Pass::*)(confd_ipv4_prefix&,
                                               std::list<confd_ipv4_prefix>&,
                                               std::string&) const>);
static_assert(std::is_same_v<decltype(&Pass::GetOspfKeysFromInternalId),
                             int32_t (Pass::*)(int, ospf_v2_param&) const>);
static_assert(std::is_same_v<decltype(&Pass::CreateSecondaryOspfEntry),
                             int32_t (Pass::*)(const ospf_v2_param&,
                                               confd_ipv4_prefix) const>);
static_assert(std::is_same_v<decltype(&Pass::SetIpv4AddrNetmaskOspfEntry),
                             int32_t (Pass::*)(const ospf_v2_param&) const>);

Pass PassOn(const Upgrade& upgrade) {
  return {upgrade.cdb_sock(), upgrade.maapi_sock(), upgrade.thandle()};
}

std::string Text(const in_addr& address) {
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &address, text, sizeof text);
  return text;
}

std::string Text(const confd_ipv4_prefix& prefix) {
  return Text(prefix.ip) + "/" + std::to_string(prefix.len);
}

std::string Text(const std::list<confd_ipv4_prefix>& prefixes) {
  std::string text;
  for (const confd_ipv4_prefix& prefix : prefixes) {
    text += (text.empty() ? "" : " ") + Text(prefix);
  }
  return text;
}

confd_ipv4_prefix Prefix(const std::string& address, uint8_t length) {
  confd_ipv4_prefix prefix{};
  inet_pton(AF_INET, address.c_str(), &prefix.ip);
  prefix.len = length;
  return prefix;
}

TEST(OspfSecondaryUpdateTest, PathsAreThoseOfTheModels) {
  EXPECT_EQ(Pass::kL3Path, "/config/interface/ipapp:l3");
  EXPECT_EQ(Pass::kL3IpSecPath,
            "/config/interface/ipapp:l3{%s}/ipv4/address/secondary");
  EXPECT_EQ(Pass::kLoPath, "/config/interface/ipapp:loopback");
  EXPECT_EQ(Pass::kOspfInternalList, "/internal/ospf-interface-l3");
  EXPECT_EQ(Pass::kOspfPmIfEntry, "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry");
  EXPECT_EQ(Pass::kOspfPmIfMetricEntry,
            "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry");
}

// ---- Addresses of an interface ----------------------------------------------

struct Addresses {
  int32_t result;
  std::string primary;
  std::string secondary;
};

Addresses AddressesOf(const Upgrade& upgrade, std::string name) {
  confd_ipv4_prefix primary{};
  std::list<confd_ipv4_prefix> secondary;
  const int32_t result =
      PassOn(upgrade).GetIpv4AddrFromIf(primary, secondary, name);
  return {result, Text(primary), Text(secondary)};
}

std::string Interfaces() {
  return ConfigBuilder()
      .L3("vlan10", "10.0.0.1/24", {"10.2.2.2/16", "10.1.1.1/8", "10.3.3.3/32"})
      .L3("plain", "10.0.1.1/30")
      .L3("a", "10.0.2.1/31")
      .L3("l3-a", "10.0.3.1/0", {"10.0.4.1/1"})
      .L3(std::string(64, 'w'), "10.0.5.1/25")
      .Loopback(0, {"192.0.2.10/32", "192.0.2.100/32"})
      .Loopback(3, {"192.0.2.3/32", "192.0.2.33/24"})
      .Loopback(12, {"192.0.2.12/31"})
      .Loopback(4294967295, {"192.0.2.255/28"})
      .Xml();
}

struct NamedInterface {
  std::string name;
  std::string primary;
  std::string secondary;
  std::string missing = "";  // the interface that the log calls missing
};

const NamedInterface kNamedInterfaces[] = {
    // L3 interfaces: what follows "l3-", up to white space.
    {"l3-vlan10", "10.0.0.1/24", "10.1.1.1/8 10.2.2.2/16 10.3.3.3/32"},
    {"l3-plain", "10.0.1.1/30", ""},
    {"l3-a", "10.0.2.1/31", ""},
    {"l3-a b", "10.0.2.1/31", ""},
    {"l3-a\tb", "10.0.2.1/31", ""},
    {"l3-l3-a", "10.0.3.1/0", "10.0.4.1/1"},
    {"l3-" + std::string(64, 'w'), "10.0.5.1/25", ""},
    {"l3-none", "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{none}"},
    // "l3-" in the middle: an L3 interface without a name.
    {"xl3-a", "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{}"},
    {"loopback-3l3-a", "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{}"},
    {"l3-", "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{}"},
    // Longer than any name that the model allows.
    {"l3-" + std::string(247, 'n'), "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{" +
         std::string(247, 'n') + "}"},
    {"l3-" + std::string(252, 'n'), "0.0.0.0/0", "",
     "L3 Interface does not exist: /config/interface/ipapp:l3{" +
         std::string(252, 'n') + "}"},
    // Loopbacks: the first address only, and never a secondary one.
    {"loopback-3", "192.0.2.3/32", ""},
    {"loopback-0", "192.0.2.10/32", ""},
    {"loopback-12x", "192.0.2.12/31", ""},
    {"loopback-012", "192.0.2.12/31", ""},
    {"loopback-4294967295", "192.0.2.255/28", ""},
    {"loopback-4", "0.0.0.0/0", "",
     "Loopback Interface does not exist: /config/interface/ipapp:loopback{4}"},
    {"loopback-4294967294", "0.0.0.0/0", "",
     "Loopback Interface does not exist: "
     "/config/interface/ipapp:loopback{-2}"},
    // Names of any other kind are loopback 0.
    {"eth0", "192.0.2.10/32", ""},
    {"loopback3", "192.0.2.10/32", ""},
    {"loopback-x", "192.0.2.10/32", ""},
    {"xloopback-3", "192.0.2.10/32", ""},
    {"Loopback-3", "192.0.2.10/32", ""},
    {"L3-a", "192.0.2.10/32", ""},
    {"l3", "192.0.2.10/32", ""},
    {std::string(250, 'e'), "192.0.2.10/32", ""},
    {"", "192.0.2.10/32", ""},
};

TEST(GetIpv4AddrFromIfTest, NameTellsTheInterfaceAndMissingOnesAreNoFailure) {
  const std::string config = Interfaces();
  Upgrade upgrade(config);
  for (const NamedInterface& one : kNamedInterfaces) {
    SCOPED_TRACE("\"" + one.name + "\"");
    upgrade.ClearLog();
    const Addresses found = AddressesOf(upgrade, one.name);
    EXPECT_EQ(found.result, 0);
    EXPECT_EQ(found.primary, one.primary);
    EXPECT_EQ(found.secondary, one.secondary);
    EXPECT_EQ(upgrade.Log(), one.missing.empty() ? "" : one.missing + "\n");
  }
}

TEST(GetIpv4AddrFromIfTest, LoopbackZeroMayBeMissingForAnUnknownName) {
  Upgrade upgrade(ConfigBuilder().Loopback(3, {"192.0.2.3/32"}).Xml());
  EXPECT_EQ(AddressesOf(upgrade, "eth0").primary, "0.0.0.0/0");
  EXPECT_EQ(upgrade.Log(),
            "Loopback Interface does not exist: "
            "/config/interface/ipapp:loopback{0}\n");
}

TEST(GetIpv4AddrFromIfTest, NameOfMoreThanAKilobyteIsScannedInBounds) {
  Upgrade upgrade(Interfaces());
  const Addresses found = AddressesOf(upgrade, "l3-" + std::string(2000, 'n'));
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(found.primary, "0.0.0.0/0");
  EXPECT_EQ(upgrade.Log().find("L3 Interface does not exist: "
                               "/config/interface/ipapp:l3{" +
                               std::string(64, 'n')),
            0u);
}

TEST(GetIpv4AddrFromIfTest, L3InterfaceIsReadWithTheseCalls) {
  Upgrade upgrade(Interfaces());
  AddressesOf(upgrade, "l3-vlan10");
  EXPECT_EQ(upgrade.CallText(),
            "cdb_exists /config/interface/ipapp:l3{vlan10} -> 1\n"
            "cdb_get_ipv4_and_plen "
            "/config/interface/ipapp:l3{vlan10}/ipv4/address/ip -> 0 "
            "C_IPV4_AND_PLEN 10.0.0.1/24\n"
            "cdb_num_instances "
            "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary -> 3\n"
            "cdb_get_ipv4_and_plen "
            "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[0]/ip "
            "-> 0 C_IPV4_AND_PLEN 10.1.1.1/8\n"
            "cdb_get_ipv4_and_plen "
            "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[1]/ip "
            "-> 0 C_IPV4_AND_PLEN 10.2.2.2/16\n"
            "cdb_get_ipv4_and_plen "
            "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[2]/ip "
            "-> 0 C_IPV4_AND_PLEN 10.3.3.3/32\n");
}

TEST(GetIpv4AddrFromIfTest, LoopbackIsReadWithTheseCalls) {
  Upgrade upgrade(Interfaces());
  AddressesOf(upgrade, "loopback-3");
  EXPECT_EQ(upgrade.CallText(),
            "cdb_exists /config/interface/ipapp:loopback{3} -> 1\n"
            "cdb_get_ipv4_and_plen "
            "/config/interface/ipapp:loopback{3}/ipv4/address[0]/ip -> 0 "
            "C_IPV4_AND_PLEN 192.0.2.3/32\n");
}

TEST(GetIpv4AddrFromIfTest, MissingInterfaceLeavesBothAddressesAsTheyWere) {
  Upgrade upgrade(Interfaces());
  for (std::string name : {"l3-none", "loopback-4"}) {
    confd_ipv4_prefix primary = Prefix("203.0.113.1", 9);
    std::list<confd_ipv4_prefix> secondary = {Prefix("203.0.113.2", 10)};
    EXPECT_EQ(PassOn(upgrade).GetIpv4AddrFromIf(primary, secondary, name), 0);
    EXPECT_EQ(Text(primary), "203.0.113.1/9");
    EXPECT_EQ(Text(secondary), "203.0.113.2/10");
  }
}

TEST(GetIpv4AddrFromIfTest, SecondaryAddressesAreAppended) {
  Upgrade upgrade(Interfaces());
  confd_ipv4_prefix primary{};
  std::list<confd_ipv4_prefix> secondary = {Prefix("203.0.113.2", 10)};
  std::string name = "l3-vlan10";
  EXPECT_EQ(PassOn(upgrade).GetIpv4AddrFromIf(primary, secondary, name), 0);
  EXPECT_EQ(Text(secondary),
            "203.0.113.2/10 10.1.1.1/8 10.2.2.2/16 10.3.3.3/32");
}

TEST(GetIpv4AddrFromIfTest, FailingExistenceTestCountsAsMissing) {
  Upgrade upgrade(Interfaces());
  upgrade.Fail("cdb_exists", "", 24, "disk full", 0);
  EXPECT_EQ(AddressesOf(upgrade, "l3-vlan10").result, 0);
  EXPECT_EQ(AddressesOf(upgrade, "loopback-3").result, 0);
  EXPECT_EQ(upgrade.Log(),
            "L3 Interface does not exist: /config/interface/ipapp:l3{vlan10}\n"
            "Loopback Interface does not exist: "
            "/config/interface/ipapp:loopback{3}\n");
}

TEST(GetIpv4AddrFromIfTest, UnreadablePrimaryAddressOfAnL3InterfaceFails) {
  Upgrade upgrade(Interfaces());
  upgrade.Fail("cdb_get_ipv4_and_plen",
               "/config/interface/ipapp:l3{vlan10}/ipv4/address/ip", 24,
               "disk full");
  const Addresses found = AddressesOf(upgrade, "l3-vlan10");
  EXPECT_EQ(found.result, -1);
  EXPECT_EQ(found.secondary, "");
  EXPECT_EQ(upgrade.Log(),
            "Failed to get primary IPv4 address from L3 interface (error: disk "
            "full)\n");
}

TEST(GetIpv4AddrFromIfTest, UncountableSecondaryAddressesAreNone) {
  Upgrade upgrade(Interfaces());
  upgrade.Fail("cdb_num_instances",
               "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary", 24,
               "disk full");
  const Addresses found = AddressesOf(upgrade, "l3-vlan10");
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(found.primary, "10.0.0.1/24");
  EXPECT_EQ(found.secondary, "");
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(GetIpv4AddrFromIfTest, SecondOfThreeSecondaryAddressesFailingKeepsOne) {
  Upgrade upgrade(Interfaces());
  upgrade.Fail(
      "cdb_get_ipv4_and_plen",
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[1]/ip", 24,
      "disk full");
  const Addresses found = AddressesOf(upgrade, "l3-vlan10");
  EXPECT_EQ(found.result, -1);
  EXPECT_EQ(found.primary, "10.0.0.1/24");
  EXPECT_EQ(found.secondary, "10.1.1.1/8");
  EXPECT_EQ(upgrade.Log(),
            "Failed to get secondary IPv4 address from L3 interface (error: "
            "disk full)\n");
  EXPECT_EQ(upgrade.CallText().find("secondary[2]"), std::string::npos);
}

TEST(GetIpv4AddrFromIfTest, UnreadableLoopbackAddressFails) {
  Upgrade upgrade(Interfaces());
  upgrade.Fail("cdb_get_ipv4_and_plen",
               "/config/interface/ipapp:loopback{3}/ipv4/address[0]/ip", 24,
               "disk full");
  EXPECT_EQ(AddressesOf(upgrade, "loopback-3").result, -1);
  EXPECT_EQ(upgrade.Log(),
            "Failed to get IPv4 address from Loopback interface (error: disk "
            "full)\n");
}

TEST(GetIpv4AddrFromIfTest, LoopbackWithoutAnAddressFails) {
  Upgrade upgrade(ConfigBuilder().Loopback(3, {}).Xml());
  EXPECT_EQ(AddressesOf(upgrade, "loopback-3").result, -1);
  EXPECT_EQ(upgrade.Log().find("Failed to get IPv4 address from Loopback "
                               "interface (error: "),
            0u)
      << upgrade.Log();
}

// ---- What there is to know about one entry ----------------------------------

std::string LookupConfig() {
  return ConfigBuilder()
      .Entity(7)
      .PmInterface(
          7, "10.9.9.9",
          {{"ospfPmIfType", "pointToPoint"}, {"ospfPmIfAdminStat", "disabled"}})
      .PmMetric(7, "10.9.9.9", 77)
      .InternalInterface(7, "0.0.0.5", "l3-vlan10", "10.9.9.9")
      .L3("vlan10", "10.0.0.1/24", {"10.1.1.1/8", "10.2.2.2/16", "10.3.3.3/32"})
      .Xml();
}

// The upgrade after the pass that gives the entity its new index.
class OspfKeyLookup : public testing::Test {
 protected:
  OspfKeyLookup() : upgrade_(LookupConfig()) {
    Ospfv2CompoundIndexUpdate pass{upgrade_.maapi_sock(), upgrade_.thandle(),
                                   upgrade_.cdb_sock(), 0};
    EXPECT_EQ(pass.Run(), 0);
    upgrade_.ClearCalls();
    upgrade_.ClearLog();
  }

  int32_t LookUp(int position = 0) {
    return PassOn(upgrade_).GetOspfKeysFromInternalId(position, param_);
  }
  // The fields in their declared order.
  std::string Found() const {
    return std::to_string(param_.admin_stat) + ", " + Text(param_.area_id) +
           ", " + param_.if_name + ", " + std::to_string(param_.metric_value) +
           ", " + std::to_string(param_.if_type) + ", " +
           std::to_string(param_.pm_ent_idx) + ", " + Text(param_.ip_addr) +
           ", {" + Text(param_.secondary_addrs) + "}";
  }

  Upgrade upgrade_;
  ospf_v2_param param_{};
};

TEST_F(OspfKeyLookup, GathersEverythingUnderTheNewIndex) {
  EXPECT_EQ(LookUp(), 0);
  EXPECT_EQ(Found(),
            "2, 0.0.0.5, l3-vlan10, 77, 3, 1, 10.0.0.1/24, {10.1.1.1/8 "
            "10.2.2.2/16 10.3.3.3/32}");
  EXPECT_EQ(upgrade_.Log(), "");
}

// The PM tables are read with the old index and the internal list's address.
TEST_F(OspfKeyLookup, ReadsInThisOrderAndMapsTheIndexLast) {
  EXPECT_EQ(LookUp(), 0);
  EXPECT_EQ(
      upgrade_.CallText(),
      "cdb_get_str /internal/ospf-interface-l3[0]/ospf-pm-if-name -> 0 "
      "\"l3-vlan10\"\n"
      "cdb_get_u_int32 /internal/ospf-interface-l3[0]/ospf-pm-ent-index -> 0 "
      "C_UINT32 7\n"
      "cdb_get_ipv4 /internal/ospf-interface-l3[0]/ospf-pm-area-id -> 0 C_IPV4 "
      "0.0.0.5\n"
      "cdb_get_ipv4 /internal/ospf-interface-l3[0]/ospf-pm-ip-address -> 0 "
      "C_IPV4 10.9.9.9\n"
      "cdb_get_enum_value /VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.9.9.9 "
      "0}/ospfPmIfType -> 0 C_ENUM_VALUE 3\n"
      "cdb_get_enum_value /VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.9.9.9 "
      "0}/ospfPmIfAdminStat -> 0 C_ENUM_VALUE 2\n"
      "cdb_get_int32 /VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{7 "
      "10.9.9.9 0 0}/ospfPmIfMetricValue -> 0 C_INT32 77\n"
      "cdb_exists /config/interface/ipapp:l3{vlan10} -> 1\n"
      "cdb_get_ipv4_and_plen "
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/ip -> 0 C_IPV4_AND_PLEN "
      "10.0.0.1/24\n"
      "cdb_num_instances "
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary -> 3\n"
      "cdb_get_ipv4_and_plen "
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[0]/ip -> 0 "
      "C_IPV4_AND_PLEN 10.1.1.1/8\n"
      "cdb_get_ipv4_and_plen "
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[1]/ip -> 0 "
      "C_IPV4_AND_PLEN 10.2.2.2/16\n"
      "cdb_get_ipv4_and_plen "
      "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[2]/ip -> 0 "
      "C_IPV4_AND_PLEN 10.3.3.3/32\n"
      "maapi_get_u_int32_elem /internal/ospf-index-to-proc-id{7}/proc_id -> -1 "
      "error 1 '/internal/ospf-index-to-proc-id{7}/proc_id: the entry above it "
      "does not exist'\n"
      "maapi_get_u_int32_elem /internal/ospf-proc-id-to-index{7 global}/index "
      "-> 0 C_UINT32 1\n");
}

TEST_F(OspfKeyLookup, PositionPastTheEndFailsAtTheName) {
  EXPECT_EQ(LookUp(1), -1);
  EXPECT_EQ(upgrade_.Log().find("Failed to get ospf-pm-if-name (error: "), 0u)
      << upgrade_.Log();
  EXPECT_EQ(Found(), "0, 0.0.0.0, , 0, 0, 0, 0.0.0.0/0, {}");
}

TEST_F(OspfKeyLookup, MissingInterfaceIsNoFailureAndTheIndexIsStillMapped) {
  kit::control::Fault fault;
  fault.function = "cdb_exists";
  fault.result = 0;
  upgrade_.Inject(fault);
  EXPECT_EQ(LookUp(), 0);
  EXPECT_EQ(Found(), "2, 0.0.0.5, l3-vlan10, 77, 3, 1, 0.0.0.0/0, {}");
  EXPECT_EQ(
      upgrade_.Log(),
      "L3 Interface does not exist: /config/interface/ipapp:l3{vlan10}\n");
}

struct FailingRead {
  std::string test;
  std::string function;
  std::string path;
  std::string log;
  std::string found;  // what the structure holds afterwards
};

const FailingRead kFailingReads[] = {
    {"Name", "cdb_get_str", "/internal/ospf-interface-l3[0]/ospf-pm-if-name",
     "Failed to get ospf-pm-if-name (error: disk full)\n",
     "0, 0.0.0.0, , 0, 0, 0, 0.0.0.0/0, {}"},
    {"EntityIndex", "cdb_get_u_int32",
     "/internal/ospf-interface-l3[0]/ospf-pm-ent-index",
     "Failed to get ospf-pm-ent-index (error: disk full)\n",
     "0, 0.0.0.0, l3-vlan10, 0, 0, 0, 0.0.0.0/0, {}"},
    {"AreaId", "cdb_get_ipv4", "/internal/ospf-interface-l3[0]/ospf-pm-area-id",
     "Failed to get ospf-pm-area-id (error: disk full)\n",
     "0, 0.0.0.0, l3-vlan10, 0, 0, 7, 0.0.0.0/0, {}"},
    {"IpAddress", "cdb_get_ipv4",
     "/internal/ospf-interface-l3[0]/ospf-pm-ip-address",
     "Failed to get ospf-pm-ip-address (error: disk full)\n",
     "0, 0.0.0.5, l3-vlan10, 0, 0, 7, 0.0.0.0/0, {}"},
    {"Type", "cdb_get_enum_value",
     "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.9.9.9 0}/ospfPmIfType",
     "Failed to get ospfPmIfType (error: disk full)\n",
     "0, 0.0.0.5, l3-vlan10, 0, 0, 7, 0.0.0.0/0, {}"},
    {"AdminStat", "cdb_get_enum_value",
     "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.9.9.9 0}/ospfPmIfAdminStat",
     "Failed to get ospfPmIfAdminStat (error: disk full)\n",
     "0, 0.0.0.5, l3-vlan10, 0, 3, 7, 0.0.0.0/0, {}"},
    {"Metric", "cdb_get_int32",
     "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{7 10.9.9.9 0 "
     "0}/ospfPmIfMetricValue",
     "Failed to get ospfPmIfMetricValue (error: disk full)\n",
     "2, 0.0.0.5, l3-vlan10, 0, 3, 7, 0.0.0.0/0, {}"},
    {"PrimaryAddress", "cdb_get_ipv4_and_plen",
     "/config/interface/ipapp:l3{vlan10}/ipv4/address/ip",
     "Failed to get primary IPv4 address from L3 interface (error: disk "
     "full)\n",
     "2, 0.0.0.5, l3-vlan10, 77, 3, 7, 0.0.0.0/0, {}"},
    {"SecondarySecond", "cdb_get_ipv4_and_plen",
     "/config/interface/ipapp:l3{vlan10}/ipv4/address/secondary[1]/ip",
     "Failed to get secondary IPv4 address from L3 interface (error: disk "
     "full)\n",
     "2, 0.0.0.5, l3-vlan10, 77, 3, 7, 10.0.0.1/24, {10.1.1.1/8}"},
};

class OspfKeyLookupFailure : public OspfKeyLookup,
                             public testing::WithParamInterface<FailingRead> {};

INSTANTIATE_TEST_SUITE_P(EveryRead, OspfKeyLookupFailure,
                         testing::ValuesIn(kFailingReads),
                         [](const testing::TestParamInfo<FailingRead>& param) {
                           return param.param.test;
                         });

TEST_P(OspfKeyLookupFailure, EndsTheLookupWithWhatWasReadUntilThen) {
  upgrade_.Fail(GetParam().function, GetParam().path, 24, "disk full");
  EXPECT_EQ(LookUp(), -1);
  EXPECT_EQ(upgrade_.Log(), GetParam().log);
  EXPECT_EQ(Found(), GetParam().found);
  EXPECT_EQ(upgrade_.Calls().back().find(GetParam().function + " " +
                                         GetParam().path + " -> -1"),
            0u)
      << upgrade_.Calls().back();
}

TEST_F(OspfKeyLookup, IndexThatCannotBeMappedAddsALineAndStaysTheOldOne) {
  upgrade_.Fail("maapi_get_u_int32_elem",
                "/internal/ospf-proc-id-to-index{7 global}/index", 24,
                "disk full");
  EXPECT_EQ(LookUp(), -1);
  EXPECT_EQ(upgrade_.Log(),
            "Failed to get ospf-pm-ent-index (error: disk full)\n"
            "Failed to get maapi pm-ent-idx (error: disk full)\n");
  EXPECT_EQ(Found(),
            "2, 0.0.0.5, l3-vlan10, 77, 3, 7, 10.0.0.1/24, {10.1.1.1/8 "
            "10.2.2.2/16 10.3.3.3/32}");
}

TEST(OspfKeyLookupTest, NameOf255CharactersIsReadWhole) {
  const std::string name = "l3-" + std::string(252, 'n');
  Upgrade upgrade(
      ConfigBuilder().Interface(7, "0.0.0.0", name, "10.0.0.1").Xml());
  ospf_v2_param param{};
  PassOn(upgrade).GetOspfKeysFromInternalId(0, param);
  EXPECT_EQ(param.if_name, name);
}

}  // namespace
}  // namespace config_update
