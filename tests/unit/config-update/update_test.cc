// The whole upgrade, by the real passes on a real store.
#include "config_update/update.h"

#include <confd_lib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "config_update/ospf_area_update.h"
#include "config_update/ospf_asbr_update.h"
#include "config_update/ospf_bfd_idx_update.h"
#include "config_update/ospf_compound_idx_update.h"
#include "config_update/ospf_rfc_4577_support_update.h"
#include "config_update/ospf_secondary_update.h"
#include "config_update/ospf_te_update.h"
#include "config_update/ospf_timer_update.h"
#include "config_update/ospfv3_area_update.h"
#include "config_update/update_passes.h"
#include "tests/support/config_builder.h"
#include "tests/support/golden.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::ExpectGolden;
using test_support::Models;
using test_support::Upgrade;

static_assert(std::is_same_v<decltype(&update), int (*)(int, int, int)>);

constexpr char kV2List[] = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kInterfaceList[] = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
constexpr char kV3List[] = "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry";
constexpr char kNoOspf[] = "Current database doesn't have OSPF, returning\n";

int RunUpdate(const Upgrade& upgrade) {
  return update(upgrade.maapi_sock(), upgrade.thandle(), upgrade.cdb_sock());
}

// A pass by its name here, the line it starts with, and a run of it alone.
struct NamedPass {
  const char* name;
  const char* start;
  std::function<int(const Upgrade&)> run;
};

const std::vector<NamedPass>& AllPasses() {
  static const std::vector<NamedPass> passes = {
      {"area", "Start OSPF dangling area update",
       [](const Upgrade& u) {
         return OspfAreaUpdate{u.cdb_sock(), u.maapi_sock(), u.thandle()}.Run();
       }},
      {"v3 area", "Start OSPFv3 area update",
       [](const Upgrade& u) {
         return Ospfv3AreaUpdate{u.cdb_sock(), u.maapi_sock(), u.thandle()}
             .Run();
       }},
      {"compound", "Start OSPFv2 update to compound idx",
       [](const Upgrade& u) {
         return Ospfv2CompoundIndexUpdate{u.maapi_sock(), u.thandle(),
                                          u.cdb_sock(), 0}
             .Run();
       }},
      {"secondary", "Start OSPFv2 interface secondary IPv4 update",
       [](const Upgrade& u) {
         return OspfSecondaryUpdate{u.cdb_sock(), u.maapi_sock(), u.thandle()}
             .Run();
       }},
      {"asbr", "Start OSPF(v2/v3) ASBR update",
       [](const Upgrade& u) {
         return ospf_asbr_update(u.maapi_sock(), u.thandle(), u.cdb_sock());
       }},
      {"timers", "Start OSPF(v2/v3) timers update",
       [](const Upgrade& u) {
         return ospf_timer_update(u.maapi_sock(), u.thandle(), u.cdb_sock());
       }},
      {"te", "Start OSPF TE update",
       [](const Upgrade& u) {
         return OspfTeUpdate{u.cdb_sock(), u.maapi_sock(), u.thandle()}.Run();
       }},
      {"bfd", "Start OSPFv2 BFD INDEX update",
       [](const Upgrade& u) {
         return ospf_bfd_idx_update(u.maapi_sock(), u.thandle(), u.cdb_sock());
       }},
      {"rfc4577", "Start OSPFv2 rfc 4577 update",
       [](const Upgrade& u) {
         return OspfV2Rfc4577Support{u.cdb_sock(), u.maapi_sock(), u.thandle()}
             .Run();
       }},
  };
  return passes;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Names of the passes that the log shows to have started, in order.
std::vector<std::string> Started(const std::string& log) {
  std::vector<std::string> names;
  for (const std::string& line : Lines(log)) {
    for (const NamedPass& pass : AllPasses()) {
      if (line == pass.start) names.emplace_back(pass.name);
    }
  }
  return names;
}

using Names = std::vector<std::string>;

// OSPFv2 as process 7 with a dangling area, one interface where asked for, and
// OSPFv3 as instance 1 with one area, where asked for.
std::string Config(bool v2, bool interfaces, bool v3) {
  ConfigBuilder config;
  if (v2) {
    config.Entity(7).NmEntity(7).Area(7, "0.0.0.0");
    config.InternalArea(7, "0.0.0.0").InternalArea(7, "0.0.0.9");
  }
  if (interfaces) {
    config.Interface(7, "0.0.0.0", "l3-vlan10", "10.0.0.1");
    config.L3("vlan10", "10.0.0.1/24", {"10.0.1.1/25"});
  }
  if (v3) {
    config.V3Entity(1).V3Area(1, "0.0.0.0").InternalArea(1, "0.0.0.0", true);
  }
  config.Redistribution(1, 1, "ospf").Redistribution(2, 1, "ospf");
  return config.Xml();
}

// Models of a release that had the internal ID lists already.
const Models kIntermediate = {"intermediate", "after"};

// An OSPFv2 entity in the VRF of a VPN, for those models.
std::string VpnConfig() {
  ConfigBuilder config;
  config.Entity(2).PmInterface(2, "10.0.0.1");
  config.Entry("/internal/ospf-index-to-proc-id", {{"index", "2"},
                                                   {"proc_id", "7"},
                                                   {"vrf_name", "red"},
                                                   {"rtm_idx", "3"}});
  config.Redistribution(3, 0x02010007, "ospf");
  config.Redistribution(3, 0x05000000, "bgp");
  config.Entry("/VX-BGP-MIB/bgpRmEntTable/bgpRmEntEntry",
               {{"bgpRmEntIndex", "1"}, {"bgpRmEntLocalAs", "65000"}});
  config.Entry("/VX-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry",
               {{"bgpRmAfiSafiEntIndex", "1"},
                {"bgpRmAfiSafiAfi", "ipv4"},
                {"bgpRmAfiSafiSafi", "mplsBgpVpn"},
                {"bgpRmAfiSafiAdminStatus", "up"}});
  return config.Xml();
}

// ---- Which pass runs when ---------------------------------------------------

TEST(UpdateTest, CountsEntitiesInterfacesAndV3EntitiesInThisOrderFirst) {
  Upgrade upgrade(Config(true, true, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  const Names calls = upgrade.Calls();
  ASSERT_GE(calls.size(), 3U);
  EXPECT_EQ(calls[0], "cdb_num_instances " + std::string(kV2List) + " -> 1");
  EXPECT_EQ(calls[1],
            "cdb_num_instances " + std::string(kInterfaceList) + " -> 1");
  EXPECT_EQ(calls[2], "cdb_num_instances " + std::string(kV3List) + " -> 1");
}

TEST(UpdateTest, DatabaseWithoutOspfGetsOneLineAndNoPass) {
  Upgrade upgrade(Config(false, false, false));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kNoOspf);
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Calls().size(), 3U);
}

TEST(UpdateTest, InterfacesAloneAreNoOspf) {
  Upgrade upgrade(Config(false, true, false));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kNoOspf);
  EXPECT_EQ(upgrade.Changes(), "");
  EXPECT_EQ(upgrade.Calls().size(), 3U);
}

TEST(UpdateTest, FailedInterfaceCountAloneIsNoOspf) {
  Upgrade upgrade(Config(false, false, false));
  upgrade.Fail("cdb_num_instances", kInterfaceList, CONFD_ERR_OS, "closed");
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), kNoOspf);
}

TEST(UpdateTest, Ospfv2WithInterfacesRunsAllButTheV3Pass) {
  Upgrade upgrade(Config(true, true, false));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "compound", "secondary", "asbr", "timers", "te",
                   "bfd", "rfc4577"}));
}

TEST(UpdateTest, Ospfv2WithoutInterfacesSkipsTheTePass) {
  Upgrade upgrade(Config(true, false, false));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "compound", "secondary", "asbr", "timers", "bfd",
                   "rfc4577"}));
}

TEST(UpdateTest, Ospfv3AloneRunsAreaV3AreaAsbrAndTimers) {
  Upgrade upgrade(Config(false, false, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "v3 area", "asbr", "timers"}));
}

TEST(UpdateTest, Ospfv3WithV2InterfacesRunsTheTePassToo) {
  Upgrade upgrade(Config(false, true, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "v3 area", "asbr", "timers", "te"}));
}

TEST(UpdateTest, BothVersionsRunAllPasses) {
  Upgrade upgrade(Config(true, true, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "v3 area", "compound", "secondary", "asbr", "timers",
                   "te", "bfd", "rfc4577"}));
}

TEST(UpdateTest, BothVersionsWithoutInterfacesSkipTheTePassOnly) {
  Upgrade upgrade(Config(true, false, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "v3 area", "compound", "secondary", "asbr", "timers",
                   "bfd", "rfc4577"}));
}

// ---- A failed count counts as present ---------------------------------------

TEST(UpdateTest, FailedV2CountRunsTheV2Passes) {
  Upgrade upgrade(Config(true, true, false));
  upgrade.Fail("cdb_num_instances", kV2List, CONFD_ERR_OS, "closed");
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "compound", "secondary", "asbr", "timers", "te",
                   "bfd", "rfc4577"}));
}

// The compound-index pass meets what the count has missed.
TEST(UpdateTest, FailedV2CountOfADatabaseWithoutOspfFailsInThePass) {
  Upgrade upgrade(Config(false, false, false));
  upgrade.Fail("cdb_num_instances", kV2List, CONFD_ERR_OS, "closed");
  EXPECT_EQ(RunUpdate(upgrade), -1);
  EXPECT_EQ(Started(upgrade.Log()), (Names{"area", "compound"}));
  EXPECT_EQ(Lines(upgrade.Log())
                .back()
                .rfind("Failed to update OSPFv2 compound index (error: ", 0),
            0U);
}

TEST(UpdateTest, FailedV3CountRunsTheV3Pass) {
  Upgrade upgrade(Config(false, false, false));
  upgrade.Fail("cdb_num_instances", kV3List, CONFD_ERR_OS, "closed");
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "v3 area", "asbr", "timers"}));
}

TEST(UpdateTest, FailedInterfaceCountRunsTheTePass) {
  Upgrade upgrade(Config(true, false, false));
  upgrade.Fail("cdb_num_instances", kInterfaceList, CONFD_ERR_OS, "closed");
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(Started(upgrade.Log()),
            (Names{"area", "compound", "secondary", "asbr", "timers", "te",
                   "bfd", "rfc4577"}));
}

// ---- Success ----------------------------------------------------------------

struct Outcome {
  std::string log;
  std::string changes;
};

// What the passes up to the named one, and without it, do one by one.
Outcome OfPassesBefore(const std::string& name, const std::string& config,
                       const Models& models = {}) {
  Upgrade upgrade(config, models);
  for (const NamedPass& pass : AllPasses()) {
    if (pass.name == name) break;
    EXPECT_EQ(pass.run(upgrade), 0) << pass.name;
  }
  return {upgrade.Log(), upgrade.Changes()};
}

TEST(UpdateTest, LogsNothingOfItsOwnOnSuccess) {
  const std::string config = Config(true, true, true);
  const Outcome expected = OfPassesBefore("the end", config);
  Upgrade upgrade(config);
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(upgrade.Log(), expected.log);
  EXPECT_EQ(upgrade.Changes(), expected.changes);
}

// Everything that the passes called, logged and changed: all but the last by
// themselves, the last one by `run`.
std::string Trace(const std::string& config, const Models& models,
                  size_t passes,
                  const std::function<int(const Upgrade&)>& run) {
  Upgrade upgrade(config, models);
  for (size_t i = 0; i + 1 < passes; ++i) {
    EXPECT_EQ(AllPasses()[i].run(upgrade), 0) << AllPasses()[i].name;
  }
  const int result = run(upgrade);
  return std::to_string(result) + "\n" + upgrade.CallText() + upgrade.Log() +
         upgrade.Changes();
}

// In the second configuration the last pass uses all of its handles.
TEST(UpdateTest, EachRowRunsItsOwnPassAndHandsItTheHandlesInItsOrder) {
  const std::pair<std::string, Models> inputs[] = {
      {Config(true, true, true), {}}, {VpnConfig(), kIntermediate}};
  ASSERT_EQ(AllPasses().size(), kUpdatePasses.size());
  for (const auto& [config, models] : inputs) {
    for (size_t i = 0; i < kUpdatePasses.size(); ++i) {
      SCOPED_TRACE(AllPasses()[i].name);
      const auto run_row = [i](const Upgrade& upgrade) {
        return kUpdatePasses[i].run(upgrade.maapi_sock(), upgrade.thandle(),
                                    upgrade.cdb_sock());
      };
      EXPECT_EQ(Trace(config, models, i + 1, run_row),
                Trace(config, models, i + 1, AllPasses()[i].run));
    }
  }
}

TEST(UpdateTest, KeepsNoStateBetweenCalls) {
  const std::string config = Config(true, true, true);
  std::vector<std::string> calls;
  for (int run = 0; run < 2; ++run) {
    Upgrade upgrade(config);
    EXPECT_EQ(RunUpdate(upgrade), 0);
    calls.push_back(upgrade.CallText());
  }
  EXPECT_EQ(calls[0], calls[1]);
}

// Whole entries without their values: those are the business of the passes.
std::string WithoutObjects(const Names& calls) {
  std::string text;
  for (const std::string& call : calls) {
    const bool object = call.find("_object") < call.find(' ');
    text += (object ? call.substr(0, call.find(" C_")) : call) + "\n";
  }
  return text;
}

TEST(UpdateTest, OrderOfCalls) {
  Upgrade upgrade(Config(true, true, true));
  EXPECT_EQ(RunUpdate(upgrade), 0);
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
  ExpectGolden("unit/config-update/golden/update.calls",
               WithoutObjects(upgrade.Calls()));
}

// ---- The first failing pass ends the upgrade --------------------------------

// The fault is the first thing that the pass meets, so that all that is left in
// the transaction is the work of the passes before it.
void ExpectEndsIn(const std::string& pass, const std::string& function,
                  const std::string& path, uint64_t occurrence,
                  const std::string& failure, const Names& started) {
  const std::string config = Config(true, true, true);
  const Outcome before = OfPassesBefore(pass, config);
  Upgrade upgrade(config);
  upgrade.Fail(function, path, CONFD_ERR_OS, "socket closed", occurrence);
  EXPECT_EQ(RunUpdate(upgrade), -1);
  EXPECT_EQ(Started(upgrade.Log()), started);

  // The log of the passes before, then the pass's own lines, then the failure.
  EXPECT_EQ(upgrade.Log().rfind(before.log, 0), 0U);
  const std::string line = failure + " (error: socket closed)";
  const Names lines = Lines(upgrade.Log());
  EXPECT_EQ(lines.back(), line);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1);

  // Nothing is called after the failing call, and nothing is undone.
  EXPECT_NE(upgrade.Calls().back().find("-> -1 error 24 'socket closed'"),
            std::string::npos)
      << upgrade.Calls().back();
  EXPECT_EQ(upgrade.Changes(), before.changes);
}

TEST(UpdateTest, FailedAreaPassEndsBeforeTheV3Pass) {
  ExpectEndsIn("area", "cdb_get_u_int32",
               "/internal/ospf-area-global[0]/process-id", 1,
               "Failed to update OSPF dangling area", {"area"});
}

TEST(UpdateTest, FailedV3AreaPassEndsBeforeTheCompoundIndexPass) {
  ExpectEndsIn("v3 area", "cdb_get_u_int32",
               "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry[0]/"
               "ospfv3PmAreaApplIndex",
               1, "Failed to update OSPFv3 area", {"area", "v3 area"});
}

// Without its namespace this pass has not even logged its start.
TEST(UpdateTest, FailedCompoundIndexPassEndsBeforeTheSecondaryPass) {
  ExpectEndsIn("compound", "maapi_set_namespace", "", 1,
               "Failed to update OSPFv2 compound index", {"area", "v3 area"});
}

TEST(UpdateTest, FailedSecondaryPassEndsBeforeTheAsbrPass) {
  ExpectEndsIn("secondary", "maapi_set_namespace", "", 2,
               "Failed to update ospf secondary addr",
               {"area", "v3 area", "compound", "secondary"});
}

TEST(UpdateTest, FailedAsbrPassEndsBeforeTheTimerPass) {
  ExpectEndsIn("asbr", "cdb_set_namespace", "", 1, "Failed to update ospf asbr",
               {"area", "v3 area", "compound", "secondary", "asbr"});
}

TEST(UpdateTest, FailedTimerPassEndsBeforeTheTePass) {
  ExpectEndsIn("timers", "cdb_set_namespace", "", 2,
               "Failed to update ospf timers",
               {"area", "v3 area", "compound", "secondary", "asbr", "timers"});
}

// Only old data with the internal ID lists takes this pass to where it can
// fail. The TE and BFD passes never do; see update_pass_table_test.cc.
TEST(UpdateTest, FailedRfc4577PassIsTheLast) {
  const std::string xml = VpnConfig();
  const Outcome before = OfPassesBefore("rfc4577", xml, kIntermediate);

  Upgrade upgrade(xml, kIntermediate);
  upgrade.Fail("maapi_get_elem",
               std::string(kV2List) + "{2}/ospfPmEntVpnPeCeSupport",
               CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(RunUpdate(upgrade), -1);
  // The compound-index pass met its lists and was silent.
  EXPECT_EQ(Started(upgrade.Log()), (Names{"area", "secondary", "asbr",
                                           "timers", "te", "bfd", "rfc4577"}));
  EXPECT_EQ(Lines(upgrade.Log()).back(),
            "Failed to update RFC 4577 support in OSPFv2 (error: socket "
            "closed)");
  EXPECT_EQ(upgrade.Changes(), before.changes);
}

}  // namespace
}  // namespace config_update
