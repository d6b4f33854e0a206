// The two lists that map process ids to entity indexes and back.
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <cstdint>
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
using test_support::Upgrade;

int32_t RunStep(const Upgrade& upgrade, uint32_t process_id) {
  return Ospfv2CompoundIndexUpdate{upgrade.maapi_sock(), upgrade.thandle(),
                                   upgrade.cdb_sock(), process_id}
      .InternalOspfIDTables();
}

class InternalOspfIDTablesOfProcess : public testing::TestWithParam<uint32_t> {
};

INSTANTIATE_TEST_SUITE_P(ProcessIds, InternalOspfIDTablesOfProcess,
                         testing::Values(1u, 7u, 4294967295u));

TEST_P(InternalOspfIDTablesOfProcess, CreatesOneEntryInEachList) {
  const std::string process = std::to_string(GetParam());
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(RunStep(upgrade, GetParam()), 0);
  EXPECT_EQ(upgrade.Changes(), "+ /internal/ospf-proc-id-to-index{" + process +
                                   " global}\n"
                                   "    index: \"1\"\n"
                                   "    rtm_idx: \"1\"\n"
                                   "+ /internal/ospf-index-to-proc-id{1}\n"
                                   "    proc_id: \"" +
                                   process +
                                   "\"\n"
                                   "    vrf_name: \"global\"\n"
                                   "    rtm_idx: \"1\"\n");
  EXPECT_EQ(upgrade.Log(), "");
}

TEST(InternalOspfIDTablesTest, MakesTheseCalls) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(RunStep(upgrade, 7), 0);
  ExpectGolden("unit/config-update/golden/InternalOspfIDTables.calls",
               upgrade.CallText());
}

TEST(InternalOspfIDTablesTest, VrfNameIsSixBytesWithoutATerminator) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(RunStep(upgrade, 7), 0);
  // The recorded value is rendered from its size, so a seventh byte would show.
  EXPECT_EQ(upgrade.Calls().back(),
            "maapi_set_elem /internal/ospf-index-to-proc-id{1}/vrf_name "
            "C_BUF \"global\" -> 0");
  EXPECT_EQ(upgrade.Leaf("/internal/ospf-index-to-proc-id{1}/vrf_name"),
            "C_BUF \"global\"");
}

TEST(InternalOspfIDTablesTest, ReadsOnlyTheTransactionSide) {
  Upgrade upgrade(ConfigBuilder().Xml());
  const Ospfv2CompoundIndexUpdate pass{upgrade.maapi_sock(), upgrade.thandle(),
                                       -1, 7};
  EXPECT_EQ(pass.InternalOspfIDTables(), 0);
}

TEST(InternalOspfIDTablesTest, NoValueIsReleasedThroughTheDatabaseLibrary) {
  Upgrade upgrade(ConfigBuilder().Xml());
  EXPECT_EQ(RunStep(upgrade, 7), 0);
  EXPECT_EQ(upgrade.CallText().find("confd_free_value"), std::string::npos);
}

struct FailingWrite {
  std::string function;
  std::string path;
  std::string message;
  size_t calls;  // made until then, the failing one among them
};

class InternalOspfIDTablesFailure
    : public testing::TestWithParam<FailingWrite> {};

INSTANTIATE_TEST_SUITE_P(
    EveryWrite, InternalOspfIDTablesFailure,
    testing::Values(
        FailingWrite{"maapi_create",
                     "/internal/ospf-proc-id-to-index{7 global}",
                     "cannot create INTERNAL_OSPF_PROC_ID_TO_IDX", 1},
        FailingWrite{
            "maapi_set_elem", "/internal/ospf-proc-id-to-index{7 global}/index",
            "error setting /internal/ospf-proc-id-to-index{7 global}/index", 2},
        FailingWrite{
            "maapi_set_elem",
            "/internal/ospf-proc-id-to-index{7 global}/rtm_idx",
            "error setting /internal/ospf-proc-id-to-index{7 global}/rtm_idx",
            3},
        FailingWrite{"maapi_create", "/internal/ospf-index-to-proc-id{1}",
                     "cannot create INTERNAL_OSPF_IDX_TO_PROC_ID", 4},
        FailingWrite{
            "maapi_set_elem", "/internal/ospf-index-to-proc-id{1}/proc_id",
            "error setting /internal/ospf-index-to-proc-id{1}/proc_id", 5},
        FailingWrite{
            "maapi_set_elem", "/internal/ospf-index-to-proc-id{1}/rtm_idx",
            "error setting /internal/ospf-index-to-proc-id{1}/rtm_idx", 6},
        FailingWrite{
            "maapi_set_elem", "/internal/ospf-index-to-proc-id{1}/vrf_name",
            "error setting /internal/ospf-index-to-proc-id{1}/vrf_name", 7}));

TEST_P(InternalOspfIDTablesFailure, LogsOneBareLineAndStops) {
  Upgrade upgrade(ConfigBuilder().Xml());
  upgrade.Fail(GetParam().function, GetParam().path, 24, "disk full");
  EXPECT_EQ(RunStep(upgrade, 7), -1);
  EXPECT_EQ(upgrade.Log(), GetParam().message + "\n");
  EXPECT_EQ(upgrade.Calls().size(), GetParam().calls);
}

TEST(InternalOspfIDTablesTest, WhatWasWrittenBeforeAFailureStays) {
  Upgrade upgrade(ConfigBuilder().Xml());
  upgrade.Fail("maapi_set_elem", "/internal/ospf-index-to-proc-id{1}/rtm_idx",
               24, "disk full");
  EXPECT_EQ(RunStep(upgrade, 7), -1);
  EXPECT_EQ(upgrade.Changes(),
            "+ /internal/ospf-proc-id-to-index{7 global}\n"
            "    index: \"1\"\n"
            "    rtm_idx: \"1\"\n"
            "+ /internal/ospf-index-to-proc-id{1}\n"
            "    proc_id: \"7\"\n");
}

}  // namespace
}  // namespace config_update
