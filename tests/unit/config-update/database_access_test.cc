#include "config_update/database_access.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/config_builder.h"
#include "tests/support/upgrade.h"

namespace config_update {
namespace {

using test_support::ConfigBuilder;
using test_support::Upgrade;

static_assert(kOspfNamespace == 448085882);
static_assert(kOspfv3Namespace == 240301111);
static_assert(kRtmNamespace == 828596128);
static_assert(kTruthTrue == 1);
static_assert(kTruthFalse == 2);

in_addr Address(const char* text) {
  in_addr address = {};
  inet_pton(AF_INET, text, &address);
  return address;
}

TEST(DatabaseAccessTest, ValuesCarryTheTagAndTheMemberItSelects) {
  const confd_value_t int32 = Int32Value(-5);
  EXPECT_EQ(static_cast<int>(int32.type), 8);
  EXPECT_EQ(int32.val.i32, -5);

  const confd_value_t uint8 = Uint8Value(32);
  EXPECT_EQ(static_cast<int>(uint8.type), 10);
  EXPECT_EQ(uint8.val.u8, 32);

  const confd_value_t uint32 = Uint32Value(4294967295);
  EXPECT_EQ(static_cast<int>(uint32.type), 12);
  EXPECT_EQ(uint32.val.u32, 4294967295);

  const confd_value_t ipv4 = Ipv4Value(Address("10.1.2.3"));
  EXPECT_EQ(static_cast<int>(ipv4.type), 15);
  EXPECT_EQ(ntohl(ipv4.val.ip.s_addr), 0x0A010203U);

  const confd_value_t truth = BoolValue(true);
  EXPECT_EQ(static_cast<int>(truth.type), 17);
  EXPECT_EQ(truth.val.boolean, 1);
  EXPECT_EQ(BoolValue(false).val.boolean, 0);

  const confd_value_t enumeration = EnumValue(2);
  EXPECT_EQ(static_cast<int>(enumeration.type), 28);
  EXPECT_EQ(enumeration.val.enumvalue, 2);
}

TEST(DatabaseAccessTest, StringValueBorrowsItsTextWithoutTheTerminator) {
  std::string text = "global";
  const confd_value_t value = BufValue(text);
  EXPECT_EQ(static_cast<int>(value.type), 5);
  EXPECT_EQ(value.val.buf.size, 6U);
  EXPECT_EQ(static_cast<const void*>(value.val.buf.ptr), text.data());
}

TEST(DatabaseAccessTest, RoomForObjectsIsFilledWithAbsentValues) {
  const std::vector<confd_value_t> room = ObjectRoom(3, 10);
  ASSERT_EQ(room.size(), 30U);
  for (const confd_value_t& value : room) {
    EXPECT_EQ(static_cast<int>(value.type), 1);
  }
}

TEST(DatabaseAccessTest, NoObjectsAndFailedCountsTakeNoRoom) {
  EXPECT_TRUE(ObjectRoom(0, 10).empty());
  EXPECT_TRUE(ObjectRoom(-1, 10).empty());
}

// Sizes are not computed as ints.
TEST(DatabaseAccessTest, RoomForMoreObjectsThanMemoryHoldsThrows) {
  EXPECT_THROW(ObjectRoom(2147483647, 2147483647), std::length_error);
}

TEST(DatabaseAccessTest, EverySlotIsReleasedByACallOfItsOwn) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  std::vector<confd_value_t> values = ObjectRoom(2, 40);
  FreeValues(values);
  EXPECT_EQ(upgrade.CallText(), "confd_free_value x80\n");
}

TEST(DatabaseAccessTest, AddressesAreDottedQuads) {
  for (const char* text :
       {"0.0.0.0", "9.10.99.100", "101.109.110.200", "255.255.255.255"}) {
    EXPECT_EQ(AddressText(Address(text)), text);
  }
}

TEST(DatabaseAccessTest, InstanceOfAnAreaEntryIsUnsignedDecimal) {
  EXPECT_EQ(AreaEntryPath("/internal/ospf-area-global", 1, "0.0.0.0"),
            "/internal/ospf-area-global{1 0.0.0.0}");
  EXPECT_EQ(AreaEntryPath("X/y", 4294967295, "0.0.0.1"),
            "X/y{4294967295 0.0.0.1}");
}

TEST(DatabaseAccessTest, FailureLinesCarryTheLastErrorAndGiveMinusOne) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  upgrade.Fail("cdb_num_instances", "", CONFD_ERR_OS, "socket closed");
  ASSERT_EQ(cdb_num_instances(upgrade.cdb_sock(), kOspfv2EntityList), -1);
  EXPECT_EQ(GetFailed("process-id"), -1);
  EXPECT_EQ(SetNamespaceFailed(), -1);
  EXPECT_EQ(upgrade.Log(),
            "Failed to get process-id (error: socket closed)\n"
            "OSPF: cdb_set_namespace (error: socket closed)\n");
}

TEST(DatabaseAccessTest, NamespacesAreThoseOfTheModelsOnBothSides) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  for (const int hash : {kOspfNamespace, kOspfv3Namespace, kRtmNamespace}) {
    EXPECT_EQ(cdb_set_namespace(upgrade.cdb_sock(), hash), CONFD_OK);
    EXPECT_EQ(
        maapi_set_namespace(upgrade.maapi_sock(), upgrade.thandle(), hash),
        CONFD_OK);
  }
}

// ---- Visiting entries -------------------------------------------------------

std::vector<uint32_t> VisitedEntities(const Upgrade& upgrade) {
  std::vector<uint32_t> visited;
  ForEachEntry(upgrade.maapi_sock(), upgrade.thandle(), kOspfv2EntityList,
               [&](confd_value_t* keys) {
                 visited.push_back(CONFD_GET_UINT32(&keys[0]));
               });
  return visited;
}

TEST(DatabaseAccessTest, EntriesAreVisitedInOrderAndTheCursorIsReleased) {
  Upgrade upgrade(ConfigBuilder().Entity(10).Entity(9).Entity(1).Xml());
  EXPECT_EQ(VisitedEntities(upgrade), (std::vector<uint32_t>{1, 9, 10}));
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

TEST(DatabaseAccessTest, EmptyListIsVisitedNowhere) {
  Upgrade upgrade(ConfigBuilder().V3Entity(1).Xml());
  EXPECT_EQ(VisitedEntities(upgrade), std::vector<uint32_t>{});
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

// Nothing is read out of a cursor that was never started.
TEST(DatabaseAccessTest, FailedStartOfTheCursorIsTheEnd) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Xml());
  upgrade.Fail("maapi_init_cursor", "", CONFD_ERR_OS, "socket closed");
  EXPECT_EQ(VisitedEntities(upgrade), std::vector<uint32_t>{});
  const std::string calls = upgrade.CallText();
  EXPECT_EQ(calls.find("maapi_get_next"), std::string::npos);
  EXPECT_NE(calls.find("maapi_destroy_cursor"), std::string::npos);
}

TEST(DatabaseAccessTest, FailedStepOfTheCursorIsTheEnd) {
  Upgrade upgrade(ConfigBuilder().Entity(1).Entity(2).Entity(3).Xml());
  upgrade.Fail("maapi_get_next", "", CONFD_ERR_OS, "socket closed", 2);
  EXPECT_EQ(VisitedEntities(upgrade), std::vector<uint32_t>{1});
  EXPECT_EQ(upgrade.database().OpenCursors(), 0U);
}

}  // namespace
}  // namespace config_update
