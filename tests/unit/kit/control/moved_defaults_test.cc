#include <confd_lib.h>
#include <gtest/gtest.h>
// The other C headers need confd_lib.h before them.
#include <confd_maapi.h>

#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "tests/unit/kit/control/ospf_database.h"

namespace kit::control {
namespace {

using test_support::ConfigBuilder;
using Lines = std::vector<std::string>;

std::string Describe(const MovedDefault::Places& places) {
  std::string text = std::to_string(places.count);
  for (const std::string& path : places.examples) text += " " + path;
  return text;
}

// "LEAF BEFORE -> AFTER; unset COUNT PATH...; set COUNT PATH..."
Lines Moved(const Database& database) {
  Lines lines;
  for (const MovedDefault& moved : database.MovedDefaults()) {
    lines.push_back(moved.leaf + " " + moved.before.value_or("-") + " -> " +
                    moved.after.value_or("-") + "; unset " +
                    Describe(moved.unset) + "; set " +
                    Describe(moved.set_to_default));
  }
  return lines;
}

constexpr char kBandwidth[] =
    "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry/ospfv3PmEntRefBandwidth";
std::string V3Entity(int index) {
  return "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry{" +
         std::to_string(index) + "}";
}
const std::string kMove = std::string(kBandwidth) + " 100 -> 100000; ";

TEST(MovedDefaults, AreTheLeavesThatNobodySetOrSetToTheOldDefault) {
  const Database database =
      OpenOspf(ConfigBuilder()
                   .V3Entity(1)
                   .V3Entity(2, {{"ospfv3PmEntRefBandwidth", "100"}})
                   .V3Entity(3, {{"ospfv3PmEntRefBandwidth", "200"}})
                   .V3Entity(4));
  EXPECT_EQ(Moved(database), Lines({kMove + "unset 2 " + V3Entity(1) + " " +
                                    V3Entity(4) + "; set 1 " + V3Entity(2)}));
}

TEST(MovedDefaults, AreThoseThatHoldInTheResult) {
  Database database =
      OpenOspf(ConfigBuilder().V3Entity(1).V3Entity(2).V3Entity(3));
  const Handles handles = database.Attach();
  ASSERT_EQ(
      maapi_delete(handles.maapi_sock, handles.thandle, V3Entity(1).c_str()),
      CONFD_OK);
  ASSERT_EQ(maapi_set_elem2(handles.maapi_sock, handles.thandle, "100",
                            (V3Entity(2) + "/ospfv3PmEntRefBandwidth").c_str()),
            CONFD_OK);
  // It has no counterpart in the input.
  ASSERT_EQ(
      maapi_create(handles.maapi_sock, handles.thandle, V3Entity(4).c_str()),
      CONFD_OK);
  EXPECT_EQ(Moved(database),
            Lines({kMove + "unset 1 " + V3Entity(3) + "; set 0"}));
}

TEST(MovedDefaults, MayHaveBeenNoneBefore) {
  const Database database =
      OpenOspf(ConfigBuilder()
                   .PmInterface(7, "10.0.0.1", {{"ospfPmIfNmEntity", "2"}})
                   .PmInterface(7, "10.0.0.2"));
  EXPECT_EQ(
      Moved(database),
      Lines({"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry/ospfPmIfNmEntity - -> "
             "1; unset 1 "
             "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{7 10.0.0.2 0}; set 0"}));
}

TEST(MovedDefaults, KeepTenExamplesOfMany) {
  ConfigBuilder config;
  for (uint32_t i = 1; i <= 12; ++i) config.V3Entity(i);
  const Database database = OpenOspf(config);
  const std::vector<MovedDefault> moved = database.MovedDefaults();
  ASSERT_EQ(moved.size(), 1u);
  EXPECT_EQ(moved[0].unset.count, 12u);
  EXPECT_EQ(moved[0].unset.examples.size(), 10u);
}

TEST(MovedDefaults, AreSeenInContainersAndAcrossTypes) {
  const std::string models = std::string(TEST_SOURCE_ROOT) + "/tests/models/";
  const Database database = Database::Open(
      {models + "growth/before", {}}, {models + "growth/after", {}},
      "<g xmlns=\"urn:test:growth\"><kept>1</kept></g>", "g");
  const Lines moved = Moved(database);
  ASSERT_GE(moved.size(), 3u);
  EXPECT_EQ(moved[0], "/g/followed 10 -> 20; unset 1 /g; set 0");
  EXPECT_EQ(moved[1], "/g/default-gone 10 -> -; unset 1 /g; set 0");
  EXPECT_EQ(moved[2], "/g/narrowed-with-default - -> 9; unset 1 /g; set 0");
}

}  // namespace
}  // namespace kit::control
