// The pass that gives secondary addresses OSPF entries of their own: what it
// writes, what it ignores and where it stops.
#include "config_update/ospf_secondary_update.h"

#include <arpa/inet.h>
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config_update/ospf_compound_idx_update.h"
#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::ExpectGolden;
using test_support::Models;
using test_support::Upgrade;
using Pass = OspfSecondaryUpdate;

constexpr char kStart[] = "Start OSPFv2 interface secondary IPv4 update\n";
constexpr char kFinish[] = "Finish OSPFv2 interface secondary IPv4 update\n";

Pass PassOn(const Upgrade& upgrade) {
  return {upgrade.cdb_sock(), upgrade.maapi_sock(), upgrade.thandle()};
}

confd_ipv4_prefix Prefix(const std::string& address, uint8_t length) {
  confd_ipv4_prefix prefix{};
  inet_pton(AF_INET, address.c_str(), &prefix.ip);
  prefix.len = length;
  return prefix;
}

// Calls that change the transaction, a line each.
std::string Writes(const Upgrade& upgrade) {
  std::string writes;
  for (const std::string& call : upgrade.Calls()) {
    if (call.compare(0, 12, "maapi_create") == 0 ||
        call.compare(0, 9, "maapi_set") == 0) {
      writes += call + "\n";
    }
  }
  const std::string select = "maapi_set_namespace hash 448085882 -> 0\n";
  if (writes.compare(0, select.size(), select) == 0) {
    writes.erase(0, select.size());
  }
  return writes;
}

std::string Netmask(const std::string& keys, int length,
                    const std::string& result = "0") {
  return "maapi_set_elem /internal/ospf-interface-l3{" + keys +
         "}/ospf-pm-ip-netmask C_UINT8 " + std::to_string(length) + " -> " +
         result + "\n";
}

// The nine writes that a secondary address takes, all of them successful.
std::string SecondaryWrites(const std::string& index, const std::string& area,
                            const std::string& name, const std::string& address,
                            int length) {
  const std::string interface = " /VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{" +
                                index + " " + address + " 0}";
  const std::string metric =
      " /VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{" + index + " " +
      address + " 0 0}";
  const std::string keys = index + " " + area + " " + name + " " + address;
  const std::string internal = " /internal/ospf-interface-l3{" + keys + "}";
  const std::vector<std::string> calls = {
      "maapi_create" + interface,
      "maapi_set_elem" + interface + "/ospfPmIfPassive C_ENUM_VALUE 1",
      "maapi_set_elem" + interface + "/ospfPmIfAdminStat C_ENUM_VALUE 2",
      "maapi_set_elem" + interface + "/ospfPmIfType C_ENUM_VALUE 3",
      "maapi_create" + metric,
      "maapi_set_elem" + metric + "/ospfPmIfMetricValue C_INT32 77",
      "maapi_create" + internal,
      "maapi_set_elem" + internal + "/ospf-pm-ip-address-secondary C_BOOL true",
  };
  std::string text;
  for (const std::string& call : calls) text += call + " -> 0\n";
  return text + Netmask(keys, length);
}

std::string Creating(const std::string& keys) {
  return "Creating entry /internal/ospf-interface-l3{" + keys + "}\n";
}

// Point-to-point, disabled, metric 77.
void AddInterface(ConfigBuilder& config, uint32_t process,
                  const std::string& name, const std::string& address) {
  config
      .PmInterface(
          process, address,
          {{"ospfPmIfType", "pointToPoint"}, {"ospfPmIfAdminStat", "disabled"}})
      .PmMetric(process, address, 77)
      .InternalInterface(process, "0.0.0.5", name, address);
}

// Runs the pass that gives the entity its new index, without a trace.
void Migrate(Upgrade& upgrade) {
  Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                 upgrade.cdb_sock(), 0};
  ASSERT_EQ(pass.Run(), 0) << upgrade.Log();
  upgrade.ClearCalls();
  upgrade.ClearLog();
}

// Process 7 with one interface, which has two secondary addresses.
std::string TwoSecondaries() {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a", "10.0.0.1");
  config.L3("a", "10.0.0.1/24", {"10.1.1.1/24", "10.2.2.2/16"});
  return config.Xml();
}

// Interfaces a, b and c; b has two secondary addresses, a and c have one. The
// process is 1, so that old entries can have the keys of new ones.
ConfigBuilder& ThreeInterfaces(ConfigBuilder& config, uint32_t process = 1) {
  config.Entity(process);
  AddInterface(config, process, "l3-a", "10.0.0.1");
  AddInterface(config, process, "l3-b", "10.0.0.2");
  AddInterface(config, process, "l3-c", "10.0.0.3");
  return config.L3("a", "10.0.0.1/24", {"10.1.0.1/25"})
      .L3("b", "10.0.0.2/24", {"10.2.0.1/26", "10.2.0.2/27"})
      .L3("c", "10.0.0.3/24", {"10.3.0.1/28"});
}

// ---- Run --------------------------------------------------------------------

TEST(OspfSecondaryUpdateRunTest, WholeRunMakesTheseCallsAndChanges) {
  ConfigBuilder config;
  ThreeInterfaces(config, 7);
  AddInterface(config, 7, "loopback-3", "192.0.2.3");
  config.Loopback(3, {"192.0.2.3/32", "192.0.2.33/24"});
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  ExpectGolden("unit/config-update/golden/ospf_secondary_update.calls",
               upgrade.CallText());
  ExpectGolden("unit/config-update/golden/ospf_secondary_update.changes",
               upgrade.Changes());
}

TEST(OspfSecondaryUpdateRunTest, EmptyInternalListWritesNothing) {
  Upgrade upgrade(ConfigBuilder().Entity(7).Xml());
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
  EXPECT_EQ(upgrade.CallText(),
            "maapi_set_namespace hash 448085882 -> 0\n"
            "cdb_num_instances /internal/ospf-interface-l3 -> 0\n");
}

TEST(OspfSecondaryUpdateRunTest, UncountableInternalListCountsAsEmpty) {
  Upgrade upgrade(TwoSecondaries());
  upgrade.Fail("cdb_num_instances", "/internal/ospf-interface-l3", 24,
               "disk full");
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfSecondaryUpdateRunTest,
     NamespaceFailureIsOneLineWithANewlineOfItsOwn) {
  Upgrade upgrade(TwoSecondaries());
  upgrade.Fail("maapi_set_namespace", "", 24, "disk full");
  EXPECT_EQ(PassOn(upgrade).Run(), -1);
  EXPECT_EQ(upgrade.Log(), std::string(kStart) +
                               "OSPF: maapi_set_namespace err=disk full\n"
                               "\n");
  EXPECT_EQ(upgrade.Calls().size(), 1u);
}

TEST(OspfSecondaryUpdateRunTest, EachSecondaryAddressGetsItsThreeEntries) {
  Upgrade upgrade(TwoSecondaries());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(Writes(upgrade),
            SecondaryWrites("1", "0.0.0.5", "l3-a", "10.1.1.1", 24) +
                SecondaryWrites("1", "0.0.0.5", "l3-a", "10.2.2.2", 16) +
                Netmask("1 0.0.0.5 l3-a 10.0.0.1", 24));
  EXPECT_EQ(upgrade.Log(), kStart + Creating("1 0.0.0.5 l3-a 10.1.1.1") +
                               Creating("1 0.0.0.5 l3-a 10.2.2.2") + kFinish);
}

TEST(OspfSecondaryUpdateRunTest, InterfaceWithoutSecondariesGetsItsNetmask) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a", "10.0.0.1");
  AddInterface(config, 7, "loopback-3", "192.0.2.3");
  config.L3("a", "10.0.0.1/24").Loopback(3, {"192.0.2.3/32", "192.0.2.33/24"});
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(Writes(upgrade), Netmask("1 0.0.0.5 l3-a 10.0.0.1", 24) +
                                 Netmask("1 0.0.0.5 loopback-3 192.0.2.3", 32));
  EXPECT_EQ(upgrade.Log(), std::string(kStart) + kFinish);
}

TEST(OspfSecondaryUpdateRunTest, NewIndexOfAMigratedDatabaseIsUsedAsItIs) {
  ConfigBuilder config;
  config.Entry("/internal/ospf-proc-id-to-index", {{"process-id", "7"},
                                                   {"vrf-name", "global"},
                                                   {"index", "2"},
                                                   {"rtm_idx", "1"}});
  config.Entry("/internal/ospf-index-to-proc-id", {{"index", "2"},
                                                   {"proc_id", "7"},
                                                   {"vrf_name", "global"},
                                                   {"rtm_idx", "1"}});
  config.Entity(2).Interface(2, "0.0.0.0", "l3-a", "10.0.0.1");
  config.L3("a", "10.0.0.1/24");
  Upgrade upgrade(config.Xml(), Models{"intermediate", "after"});
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(Writes(upgrade), Netmask("2 0.0.0.0 l3-a 10.0.0.1", 24));
}

// The netmask goes to the entry of the configured primary address, which the
// internal list may lack.
TEST(OspfSecondaryUpdateRunTest, NetmaskAddressesTheConfiguredPrimaryAddress) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a", "10.9.9.9");
  config.L3("a", "10.0.0.1/24");
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_NE(
      Writes(upgrade).find("maapi_set_elem /internal/ospf-interface-l3{1 "
                           "0.0.0.5 l3-a 10.0.0.1}/ospf-pm-ip-netmask C_UINT8 "
                           "24 -> -1 error 1 "),
      std::string::npos)
      << Writes(upgrade);
}

TEST(OspfSecondaryUpdateRunTest, MissingInterfaceWritesToAddressZero) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-gone", "10.0.0.1");
  AddInterface(config, 7, "loopback-9", "192.0.2.9");
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  upgrade.Fail("maapi_set_elem", "", 1, "absent", 0);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(
      Writes(upgrade),
      Netmask("1 0.0.0.5 l3-gone 0.0.0.0", 0, "-1 error 1 'absent'") +
          Netmask("1 0.0.0.5 loopback-9 0.0.0.0", 0, "-1 error 1 'absent'"));
  EXPECT_EQ(upgrade.Log(), std::string(kStart) +
                               "L3 Interface does not exist: "
                               "/config/interface/ipapp:l3{gone}\n"
                               "Loopback Interface does not exist: "
                               "/config/interface/ipapp:loopback{9}\n" +
                               kFinish);
}

// A blank in the name makes a path that fits no entry; the write is in vain.
TEST(OspfSecondaryUpdateRunTest, NameWithABlankIsWrittenToInVain) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a b", "10.0.0.1");
  config.L3("a", "10.0.0.1/24", {"10.1.1.1/25"});
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(),
            kStart + Creating("1 0.0.0.5 l3-a b 10.1.1.1") + kFinish);
  EXPECT_TRUE(
      upgrade.Exists("/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{1 10.1.1.1 0}"));
  EXPECT_NE(Writes(upgrade).find("maapi_set_elem /internal/ospf-interface-l3{1 "
                                 "0.0.0.5 l3-a b 10.0.0.1}/ospf-pm-ip-netmask "
                                 "C_UINT8 24 -> -1 error 8 "),
            std::string::npos)
      << Writes(upgrade);
}

// ---- Early stop -------------------------------------------------------------

// Where the old data already has a secondary address's PM interface entry.
struct EarlyStop {
  std::string test;
  std::string existing;
  std::string writes;
  std::string log;
};

std::string WritesOfA() {
  return SecondaryWrites("1", "0.0.0.5", "l3-a", "10.1.0.1", 25) +
         Netmask("1 0.0.0.5 l3-a 10.0.0.1", 24);
}

std::string WritesOfB() {
  return SecondaryWrites("1", "0.0.0.5", "l3-b", "10.2.0.1", 26) +
         SecondaryWrites("1", "0.0.0.5", "l3-b", "10.2.0.2", 27) +
         Netmask("1 0.0.0.5 l3-b 10.0.0.2", 24);
}

std::vector<EarlyStop> EarlyStops() {
  const std::string a = Creating("1 0.0.0.5 l3-a 10.1.0.1");
  const std::string b1 = Creating("1 0.0.0.5 l3-b 10.2.0.1");
  const std::string b2 = Creating("1 0.0.0.5 l3-b 10.2.0.2");
  return {
      {"OnTheFirstInterface", "10.1.0.1", "", ""},
      {"OnAMiddleInterface", "10.2.0.1", WritesOfA(), a},
      {"OnTheSecondAddressOfAnInterface", "10.2.0.2",
       WritesOfA() + SecondaryWrites("1", "0.0.0.5", "l3-b", "10.2.0.1", 26),
       a + b1},
      {"OnTheLastInterface", "10.3.0.1", WritesOfA() + WritesOfB(),
       a + b1 + b2},
  };
}

class OspfSecondaryEarlyStop : public testing::TestWithParam<EarlyStop> {};

INSTANTIATE_TEST_SUITE_P(Stops, OspfSecondaryEarlyStop,
                         testing::ValuesIn(EarlyStops()),
                         [](const testing::TestParamInfo<EarlyStop>& param) {
                           return param.param.test;
                         });

TEST_P(OspfSecondaryEarlyStop, KeepsWhatWasWrittenAndHandlesNothingMore) {
  ConfigBuilder config;
  ThreeInterfaces(config).PmInterface(1, GetParam().existing);
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(Writes(upgrade), GetParam().writes);
  const std::string entry = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{1 " +
                            GetParam().existing + " 0}";
  EXPECT_EQ(upgrade.Log(), kStart + GetParam().log +
                               "Entry already create for secondary: " + entry +
                               ". No need to continue.\n");
  EXPECT_EQ(upgrade.Calls().back(), "cdb_exists " + entry + " -> 1");
}

// The test looks at the old data under the new index: an entry of the process
// id's key does not count, nor does one that only the transaction has.
TEST(OspfSecondaryUpdateRunTest, EntryUnderTheOldIndexDoesNotStopThePass) {
  ConfigBuilder config;
  ThreeInterfaces(config, 7).PmInterface(7, "10.1.0.1");
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), kStart + Creating("1 0.0.0.5 l3-a 10.1.0.1") +
                               Creating("1 0.0.0.5 l3-b 10.2.0.1") +
                               Creating("1 0.0.0.5 l3-b 10.2.0.2") +
                               Creating("1 0.0.0.5 l3-c 10.3.0.1") + kFinish);
}

TEST(OspfSecondaryUpdateRunTest, FailingExistenceTestCountsAsAbsent) {
  Upgrade upgrade(TwoSecondaries());
  Migrate(upgrade);
  upgrade.Fail("cdb_exists",
               "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{1 10.1.1.1 0}", 24,
               "disk full");
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), kStart + Creating("1 0.0.0.5 l3-a 10.1.1.1") +
                               Creating("1 0.0.0.5 l3-a 10.2.2.2") + kFinish);
}

// ---- Ignored results --------------------------------------------------------

TEST(OspfSecondaryUpdateRunTest, NoFailingWriteIsLookedAt) {
  Upgrade upgrade(TwoSecondaries());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  const std::string log = upgrade.Log();
  const size_t calls = upgrade.Calls().size();

  Upgrade failing(TwoSecondaries());
  Migrate(failing);
  failing.Fail("maapi_create", "", 24, "disk full", 0);
  failing.Fail("maapi_set_elem", "", 24, "disk full", 0);
  const std::string before = failing.Changes();
  EXPECT_EQ(PassOn(failing).Run(), 0);
  EXPECT_EQ(failing.Log(), log);
  EXPECT_EQ(failing.Calls().size(), calls);
  EXPECT_EQ(failing.Changes(), before);
}

TEST(OspfSecondaryUpdateRunTest, LeavesFollowACreateThatFindsItsEntryThere) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a", "10.0.0.1");
  // Moved to key 1 by the pass before, so that only the old data lacks it.
  config.PmInterface(7, "10.1.1.1", {{"ospfPmIfType", "broadcast"}});
  config.L3("a", "10.0.0.1/24", {"10.1.1.1/24"});
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  const std::string entry =
      "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{1 10.1.1.1 0}";
  EXPECT_NE(Writes(upgrade).find("maapi_create " + entry + " -> -1 error 2 "),
            std::string::npos);
  EXPECT_EQ(upgrade.Leaf(entry + "/ospfPmIfType"), "C_ENUM_VALUE 3");
  EXPECT_EQ(upgrade.Leaf(entry + "/ospfPmIfPassive"), "C_ENUM_VALUE 1");
}

struct FailedLookup {
  std::string test;
  std::string function;
  std::string path;
  std::string log;
  std::vector<std::string> writes;  // paths of the first interface's
};

std::vector<FailedLookup> FailedLookups() {
  const std::string list = "/internal/ospf-interface-l3";
  auto address_zero = [&](const std::string& keys) {
    return std::vector<std::string>{list + "{" + keys +
                                    " 0.0.0.0}/ospf-pm-ip-netmask"};
  };
  auto all_of = [&](const std::string& address) {
    const std::string interface =
        "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 " + address + " 0}";
    const std::string metric =
        "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{7 " + address +
        " 0 0}";
    const std::string internal = list + "{7 0.0.0.5 l3-a " + address + "}";
    return std::vector<std::string>{interface,
                                    interface + "/ospfPmIfPassive",
                                    interface + "/ospfPmIfAdminStat",
                                    interface + "/ospfPmIfType",
                                    metric,
                                    metric + "/ospfPmIfMetricValue",
                                    internal,
                                    internal + "/ospf-pm-ip-address-secondary",
                                    internal + "/ospf-pm-ip-netmask"};
  };
  const std::string primary =
      list + "{7 0.0.0.5 l3-a 10.0.0.1}/ospf-pm-ip-netmask";
  std::vector<std::string> first = all_of("10.1.1.1");
  std::vector<std::string> both = first;
  const std::vector<std::string> second = all_of("10.2.2.2");
  both.insert(both.end(), second.begin(), second.end());
  first.push_back(primary);
  both.push_back(primary);
  return {
      {"Name", "cdb_get_str", list + "[0]/ospf-pm-if-name",
       "Failed to get ospf-pm-if-name (error: disk full)\n",
       address_zero("0 0.0.0.0 ")},
      {"EntityIndex", "cdb_get_u_int32", list + "[0]/ospf-pm-ent-index",
       "Failed to get ospf-pm-ent-index (error: disk full)\n",
       address_zero("0 0.0.0.0 l3-a")},
      {"AreaId", "cdb_get_ipv4", list + "[0]/ospf-pm-area-id",
       "Failed to get ospf-pm-area-id (error: disk full)\n",
       address_zero("7 0.0.0.0 l3-a")},
      {"Metric", "cdb_get_int32",
       "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{7 10.0.0.1 0 "
       "0}/ospfPmIfMetricValue",
       "Failed to get ospfPmIfMetricValue (error: disk full)\n",
       address_zero("7 0.0.0.5 l3-a")},
      {"SecondSecondaryAddress", "cdb_get_ipv4_and_plen",
       "/config/interface/ipapp:l3{a}/ipv4/address/secondary[1]/ip",
       "Failed to get secondary IPv4 address from L3 interface (error: disk "
       "full)\n" +
           Creating("7 0.0.0.5 l3-a 10.1.1.1"),
       first},
      {"IndexMapping", "maapi_get_u_int32_elem",
       "/internal/ospf-proc-id-to-index{7 global}/index",
       "Failed to get ospf-pm-ent-index (error: disk full)\n"
       "Failed to get maapi pm-ent-idx (error: disk full)\n" +
           Creating("7 0.0.0.5 l3-a 10.1.1.1") +
           Creating("7 0.0.0.5 l3-a 10.2.2.2"),
       both},
  };
}

class OspfSecondaryFailedLookup : public testing::TestWithParam<FailedLookup> {
};

INSTANTIATE_TEST_SUITE_P(Reads, OspfSecondaryFailedLookup,
                         testing::ValuesIn(FailedLookups()),
                         [](const testing::TestParamInfo<FailedLookup>& param) {
                           return param.param.test;
                         });

// The lookup of the first interface fails; a loopback follows it.
TEST_P(OspfSecondaryFailedLookup, WritesWithWhatWasReadAndGoesOn) {
  ConfigBuilder config;
  config.Entity(7);
  AddInterface(config, 7, "l3-a", "10.0.0.1");
  AddInterface(config, 7, "loopback-3", "192.0.2.3");
  config.L3("a", "10.0.0.1/24", {"10.1.1.1/24", "10.2.2.2/16"})
      .Loopback(3, {"192.0.2.3/32"});
  Upgrade upgrade(config.Xml());
  Migrate(upgrade);
  upgrade.Fail(GetParam().function, GetParam().path, 24, "disk full");
  EXPECT_EQ(PassOn(upgrade).Run(), 0);
  EXPECT_EQ(upgrade.Log(), kStart + GetParam().log + kFinish);

  std::vector<std::string> paths;
  for (const std::string& call : upgrade.Calls()) {
    for (const char* function : {"maapi_create ", "maapi_set_elem "}) {
      if (call.find(function) != 0) continue;
      const size_t begin = std::string(function).size();
      // The path ends where its leaf does, or with its keys.
      const size_t brace = call.find('}', begin);
      paths.push_back(call.substr(begin, call.find(' ', brace) - begin));
    }
  }
  std::vector<std::string> expected = GetParam().writes;
  expected.push_back(
      "/internal/ospf-interface-l3{1 0.0.0.5 loopback-3 "
      "192.0.2.3}/ospf-pm-ip-netmask");
  EXPECT_EQ(paths, expected);
}

// ---- The two writers --------------------------------------------------------

ospf_v2_param Param() {
  ospf_v2_param param{};
  param.admin_stat = 2;
  param.area_id = Prefix("0.0.0.5", 0).ip;
  param.if_name = "l3-a";
  param.metric_value = 77;
  param.if_type = 3;
  param.pm_ent_idx = 4294967295;
  param.ip_addr = Prefix("10.0.0.1", 24);
  return param;
}

TEST(CreateSecondaryOspfEntryTest, SetsOnlyTheListedLeaves) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(PassOn(upgrade).CreateSecondaryOspfEntry(
                Param(), Prefix("255.255.255.255", 31)),
            0);
  EXPECT_EQ(upgrade.CallText(), SecondaryWrites("4294967295", "0.0.0.5", "l3-a",
                                                "255.255.255.255", 31));
  EXPECT_EQ(
      upgrade.Changes(),
      "+ /VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{4294967295 255.255.255.255 "
      "0}\n"
      "    ospfPmIfType: \"pointToPoint\"\n"
      "    ospfPmIfAdminStat: \"disabled\"\n"
      "    ospfPmIfPassive: \"true\"\n"
      "+ /VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{4294967295 "
      "255.255.255.255 0 0}\n"
      "    ospfPmIfMetricValue: \"77\"\n"
      "+ /internal/ospf-interface-l3{4294967295 0.0.0.5 l3-a "
      "255.255.255.255}\n"
      "    ospf-pm-ip-address-secondary: \"true\"\n"
      "    ospf-pm-ip-netmask: \"31\"\n");
  EXPECT_EQ(upgrade.Log(), Creating("4294967295 0.0.0.5 l3-a 255.255.255.255"));
}

TEST(CreateSecondaryOspfEntryTest, AnnouncesTheInternalEntryBeforeItsCreate) {
  Upgrade upgrade(ConfigBuilder().Xml());
  upgrade.Fail("maapi_create",
               "/internal/ospf-interface-l3{4294967295 0.0.0.5 l3-a 10.1.1.1}",
               24, "disk full");
  EXPECT_EQ(
      PassOn(upgrade).CreateSecondaryOspfEntry(Param(), Prefix("10.1.1.1", 8)),
      0);
  EXPECT_EQ(upgrade.Log(), Creating("4294967295 0.0.0.5 l3-a 10.1.1.1"));
  EXPECT_EQ(upgrade.Calls().size(), 9u);
}

TEST(SetIpv4AddrNetmaskOspfEntryTest, WritesThePrefixLengthOfThePrimary) {
  for (int length : {0, 1, 24, 32}) {
    Upgrade upgrade(ConfigBuilder()
                        .InternalInterface(2, "0.0.0.0", "l3-a", "10.0.0.1")
                        .Xml());
    ospf_v2_param param = Param();
    param.pm_ent_idx = 2;
    param.area_id = {};
    param.ip_addr.len = static_cast<uint8_t>(length);
    EXPECT_EQ(PassOn(upgrade).SetIpv4AddrNetmaskOspfEntry(param), 0);
    EXPECT_EQ(upgrade.CallText(), Netmask("2 0.0.0.0 l3-a 10.0.0.1", length));
    EXPECT_EQ(upgrade.Log(), "");
  }
}

TEST(SetIpv4AddrNetmaskOspfEntryTest, WriteToAnAbsentEntryFailsUnseen) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(PassOn(upgrade).SetIpv4AddrNetmaskOspfEntry(Param()), 0);
  EXPECT_EQ(upgrade.Log(), "");
  EXPECT_EQ(upgrade.Changes(), "");
}

}  // namespace
}  // namespace config_update
