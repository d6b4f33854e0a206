#include "config_update/ospf_area_update.h"

#include <gtest/gtest.h>

#include "tests/support/config_builder.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::Upgrade;

int RunPass(const Upgrade& upgrade) {
  return OspfAreaUpdate{upgrade.cdb_sock(), upgrade.maapi_sock(),
                        upgrade.thandle()}
      .Run();
}

TEST(OspfAreaUpdateTest, EmptyListsLogOnlyStartAndFinish) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Log(),
            "Start OSPF dangling area update\n"
            "Finish OSPF dangling area update\n");
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAreaUpdateTest, KeepsV2EntryThatAnOspfv3AreaUses) {
  Upgrade upgrade(
      ConfigBuilder().InternalArea(1, "0.0.0.0").V3Area(1, "0.0.0.0").Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(), "");
}

TEST(OspfAreaUpdateTest, DeletesBothOfTwoDanglingEntriesBeforeAUsedOne) {
  Upgrade upgrade(ConfigBuilder()
                      .InternalArea(1, "0.0.0.1")
                      .InternalArea(1, "0.0.0.2")
                      .InternalArea(1, "0.0.0.3")
                      .Area(1, "0.0.0.3")
                      .Xml());
  EXPECT_EQ(RunPass(upgrade), 0);
  EXPECT_EQ(upgrade.Changes(),
            "- /internal/ospf-area-global{1 0.0.0.1}\n"
            "- /internal/ospf-area-global{1 0.0.0.2}\n");
}

}  // namespace
}  // namespace config_update
