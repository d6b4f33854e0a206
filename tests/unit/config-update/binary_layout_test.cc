// The binary interface of what the passes are made of: hosts and tests compiled
// against these headers lay the objects out by themselves.
#include <confd_lib.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <type_traits>

#include "config_update/ospf_area_update.h"
#include "config_update/ospf_compound_idx_update.h"
#include "config_update/ospf_rfc_4577_support_update.h"
#include "config_update/ospf_secondary_update.h"
#include "config_update/ospf_te_update.h"
#include "config_update/ospfv3_area_update.h"

namespace config_update {
namespace {

// ---- Passes: plain aggregates of handles ------------------------------------

template <typename Pass>
class PassLayoutTest : public testing::Test {};

using Passes =
    testing::Types<OspfAreaUpdate, Ospfv3AreaUpdate, Ospfv2CompoundIndexUpdate,
                   OspfSecondaryUpdate, OspfTeUpdate, OspfV2Rfc4577Support>;
TYPED_TEST_SUITE(PassLayoutTest, Passes);

TYPED_TEST(PassLayoutTest, IsAPlainAggregateOfTheHandlesInItsOrder) {
  EXPECT_TRUE(std::is_aggregate_v<TypeParam>);
  EXPECT_TRUE(std::is_standard_layout_v<TypeParam>);
  EXPECT_TRUE(std::is_trivial_v<TypeParam>);
  EXPECT_FALSE(std::is_polymorphic_v<TypeParam>);
  EXPECT_TRUE((std::is_same_v<decltype(TypeParam::cdb_sock), int>));
  EXPECT_TRUE((std::is_same_v<decltype(TypeParam::maapi_sock), int>));
  EXPECT_TRUE((std::is_same_v<decltype(TypeParam::thandle), int>));
  if constexpr (std::is_same_v<TypeParam, Ospfv2CompoundIndexUpdate>) {
    EXPECT_EQ(sizeof(TypeParam), 16U);
    EXPECT_EQ(offsetof(TypeParam, maapi_sock), 0U);
    EXPECT_EQ(offsetof(TypeParam, thandle), 4U);
    EXPECT_EQ(offsetof(TypeParam, cdb_sock), 8U);
    EXPECT_EQ(offsetof(TypeParam, pm_ent_idx), 12U);
    EXPECT_TRUE((std::is_same_v<decltype(TypeParam::pm_ent_idx), uint32_t>));
  } else {
    EXPECT_EQ(sizeof(TypeParam), 12U);
    EXPECT_EQ(offsetof(TypeParam, cdb_sock), 0U);
    EXPECT_EQ(offsetof(TypeParam, maapi_sock), 4U);
    EXPECT_EQ(offsetof(TypeParam, thandle), 8U);
  }
}

// ---- Structures that operations of the passes hand on -----------------------

// Where a field of the given type lies; offsetof does not apply to structures
// that hold a string or a list.
template <typename Field, typename Struct>
ptrdiff_t Offset(Field Struct::*field) {
  static_assert(std::is_aggregate_v<Struct>);
  const Struct object{};
  return reinterpret_cast<const char*>(&(object.*field)) -
         reinterpret_cast<const char*>(&object);
}

TEST(StructLayoutTest, OspfAreaHasItsFieldsInTheirDeclaredOrder) {
  using Area = OspfAreaUpdate::ospf_area;
  EXPECT_EQ(Offset<uint32_t>(&Area::process_id), 0);
  EXPECT_EQ(Offset<in_addr>(&Area::area_id), 4);
  EXPECT_EQ(Offset<std::string>(&Area::area_id_str), 8);
  EXPECT_EQ(Offset<bool>(&Area::area_id_integer_format), 40);
}

TEST(StructLayoutTest, Ospfv3AreaHasItsFieldsInTheirDeclaredOrder) {
  EXPECT_EQ(Offset<uint32_t>(&ospfv3_area::appl_index), 0);
  EXPECT_EQ(Offset<in_addr>(&ospfv3_area::area_id), 4);
  EXPECT_EQ(Offset<std::string>(&ospfv3_area::area_id_str), 8);
  EXPECT_EQ(Offset<bool>(&ospfv3_area::area_id_integer_format), 40);
}

TEST(StructLayoutTest, OspfV2ParamHasItsFieldsInTheirDeclaredOrder) {
  using Param = ospf_v2_param;
  EXPECT_EQ(Offset<int32_t>(&Param::admin_stat), 0);
  EXPECT_EQ(Offset<in_addr>(&Param::area_id), 4);
  EXPECT_EQ(Offset<std::string>(&Param::if_name), 8);
  EXPECT_EQ(Offset<int32_t>(&Param::metric_value), 40);
  EXPECT_EQ(Offset<int32_t>(&Param::if_type), 44);
  EXPECT_EQ(Offset<uint32_t>(&Param::pm_ent_idx), 48);
  EXPECT_EQ(Offset<confd_ipv4_prefix>(&Param::ip_addr), 52);
  EXPECT_EQ(Offset<std::list<confd_ipv4_prefix>>(&Param::secondary_addrs), 64);
}

}  // namespace
}  // namespace config_update
