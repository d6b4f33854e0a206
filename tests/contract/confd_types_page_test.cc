// What confd_types(3) says of values, and of the types that models give them.
#include <string>
#include <vector>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdTypesPage : public CApiTest {
 protected:
  void SetUp() override { OpenTypes(""); }

  // Opens a configuration of the model "types".
  void OpenTypes(const std::string& inside) {
    Open("<config xmlns=\"http://tail-f.com/ns/config/1.0\">" + inside +
             "</config>",
         "types", "types");
  }
  // One of its containers at the top.
  void OpenWith(const std::string& container, const std::string& inside) {
    OpenTypes("<" + container + " xmlns=\"urn:test:types\">" + inside + "</" +
              container + ">");
  }
};

// ---- Type empty -------------------------------------------------------------

constexpr char kFlags[] =
    "<up/><way><n>1</n><end/><open/></way><way><n>2</n><end/></way>";

TEST_F(ConfdTypesPage, EmptyLeavesThatArePresentAreTheirOwnTagInArrays) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Object("/flags"), "C_XMLTAG, C_NOEXISTS, C_NOEXISTS, C_NOEXISTS");
  confd_value_t values[4];
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 4, "/flags"), 4);
  const uint32_t tag = CONFD_GET_XMLTAG(&values[0]);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&values[0]), 1006u);
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 3, "/flags/way{1 \"\"}"), 3);
  EXPECT_NE(CONFD_GET_XMLTAG(&values[2]), tag);
}

TEST_F(ConfdTypesPage, EmptyLeavesThatAreAbsentAreNothingInArrays) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Object("/flags/way{2 \"\"}"), "C_UINT8 2, C_EMPTY, C_NOEXISTS");
}

TEST_F(ConfdTypesPage, EmptyLeavesAreWrittenAsTagsInArrays) {
  OpenWith("flags", kFlags);
  confd_value_t values[3];
  values[0] = Uint8(2);
  CONFD_SET_EMPTY(&values[1]);
  CONFD_SET_XMLTAG(&values[2], 7, 1006);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "ok");
  EXPECT_EQ(Exists("/flags/way{2 \"\"}/open"), 1);
  CONFD_SET_NOEXISTS(&values[2]);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "ok");
  EXPECT_EQ(Exists("/flags/way{2 \"\"}/open"), 0);
  // That stands for one only in a union or as a key.
  CONFD_SET_EMPTY(&values[2]);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 3, "/flags/way")),
            "BADTYPE");
}

TEST_F(ConfdTypesPage, EmptyLeavesAreMadeAndRemovedAndAskedFor) {
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Create("/flags/up"), "ok");
  EXPECT_EQ(Exists("/flags/up"), 1);
  EXPECT_EQ(Create("/flags/up"), "ALREADY_EXISTS");
  EXPECT_EQ(Delete("/flags/up"), "ok");
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Delete("/flags/up"), "NOEXISTS");
}

TEST_F(ConfdTypesPage, EmptyLeavesHaveNoValueToGetOrSet) {
  confd_value_t empty;
  CONFD_SET_EMPTY(&empty);
  EXPECT_EQ(Get("/flags/up"), "BADTYPE");
  EXPECT_EQ(Set("/flags/up", empty), "BADTYPE");
  EXPECT_EQ(Outcome(maapi_set_elem2(maapi_, th_, "", "/flags/up")), "BADTYPE");
  EXPECT_EQ(Exists("/flags/up"), 0);
  EXPECT_EQ(Outcome(cdb_is_default(cdb_, "/flags/up")), "NOEXISTS");
  ASSERT_EQ(Create("/flags/up"), "ok");
  EXPECT_EQ(Get("/flags/up"), "BADTYPE");
  EXPECT_EQ(Set("/flags/up", empty), "BADTYPE");
}

TEST_F(ConfdTypesPage, EmptyLeavesThatArePresentAreNoDefaults) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(cdb_is_default(cdb_, "/flags/up"), 0);
}

TEST_F(ConfdTypesPage, TypeEmptyInAUnionIsAValue) {
  confd_value_t empty;
  CONFD_SET_EMPTY(&empty);
  EXPECT_EQ(Create("/flags/speed"), "NOTCREATABLE");
  EXPECT_EQ(Set("/flags/speed", empty), "ok");
  EXPECT_EQ(Get("/flags/speed"), "C_EMPTY");
  EXPECT_EQ(Object("/flags"), "C_NOEXISTS, C_EMPTY, C_NOEXISTS, C_NOEXISTS");
  EXPECT_EQ(Set("/flags/speed", Uint32(7)), "ok");
  EXPECT_EQ(Get("/flags/speed"), "C_UINT32 7");
}

TEST_F(ConfdTypesPage, TypeEmptyAsAKeyIsAValue) {
  OpenWith("flags", kFlags);
  EXPECT_EQ(Get("/flags/way{1 \"\"}/end"), "C_EMPTY");
  confd_value_t keys[2];
  keys[0] = Uint8(3);
  CONFD_SET_EMPTY(&keys[1]);
  EXPECT_EQ(Outcome(maapi_create(maapi_, th_, "/flags/way{%x %x}", &keys[0],
                                 &keys[1])),
            "ok");
  EXPECT_EQ(Get("/flags/way{3 \"\"}/n"), "C_UINT8 3");
}

// ---- Decimal64 --------------------------------------------------------------

confd_value_t Decimal(int64_t value, uint8_t fraction_digits) {
  confd_decimal64 decimal = {};
  decimal.value = value;
  decimal.fraction_digits = fraction_digits;
  confd_value_t v;
  CONFD_SET_DECIMAL64(&v, decimal);
  return v;
}

TEST_F(ConfdTypesPage, DecimalsMayBeGivenWithoutTheirFractionDigits) {
  EXPECT_EQ(Set("/numbers/price", Decimal(150, 2)), "ok");
  EXPECT_EQ(Set("/numbers/price", Decimal(275, 0)), "ok");
  confd_value_t read;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &read, "/numbers/price"), CONFD_OK);
  EXPECT_EQ(CONFD_GET_DECIMAL64(&read).value, 275);
  EXPECT_EQ(CONFD_GET_DECIMAL64(&read).fraction_digits, 2);
  EXPECT_EQ(Set("/numbers/price", Decimal(15, 1)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/price", Decimal(1500, 3)), "BADTYPE");
}

TEST_F(ConfdTypesPage, DecimalKeysMayBeGivenWithoutTheirFractionDigits) {
  confd_value_t key = Decimal(150, 0);
  ASSERT_EQ(maapi_create(maapi_, th_, "/numbers/by-price{%x}", &key), CONFD_OK);
  EXPECT_EQ(Get("/numbers/by-price{1.5}/k"), "C_DECIMAL64 1.50");
}

TEST_F(ConfdTypesPage, DecimalsOfUnionsMayBeGivenWithoutTheirFractionDigits) {
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Decimal(1500, 0)), "ok");
  EXPECT_EQ(Get("/numbers/narrow-or-wide"), "C_DECIMAL64 1.500");
}

// ---- Unions -----------------------------------------------------------------

confd_value_t Int64(int64_t number) {
  confd_value_t v;
  CONFD_SET_INT64(&v, number);
  return v;
}

TEST_F(ConfdTypesPage, UnionsKeepTheTagThatAValueWasSetWith) {
  EXPECT_EQ(Set("/numbers/wide", Int64(2)), "ok");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT64 2");
  EXPECT_EQ(Set("/numbers/wide", Int32(2)), "ok");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT32 2");
}

TEST_F(ConfdTypesPage, UnionsTakeATextForTheFirstMemberThatHasIt) {
  OpenWith("numbers", "<wide>2</wide>");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT32 2");
  OpenWith("numbers", "<wide>2147483648</wide>");
  EXPECT_EQ(Get("/numbers/wide"), "C_INT64 2147483648");
}

TEST_F(ConfdTypesPage, UnionsTakeNoValueThatNoMemberOfItsTypeHas) {
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(9)), "ok");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(20)), "ok");
  EXPECT_EQ(Get("/numbers/narrow-or-wide"), "C_UINT8 20");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint8(10)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Uint16(9)), "BADTYPE");
  EXPECT_EQ(Set("/numbers/narrow-or-wide", Str("9")), "BADTYPE");
}

// ---- Bits -------------------------------------------------------------------

TEST_F(ConfdTypesPage, LongBitSetsMayBeGivenShorterThanTheTypeButNotLonger) {
  unsigned char mask[10] = {};
  CONFD_BITBIG_SET_BIT(mask, 0);
  confd_value_t value;
  CONFD_SET_BITBIG(&value, mask, 1);
  EXPECT_EQ(Set("/numbers/rights", value), "ok");
  CONFD_SET_BITBIG(&value, mask, 10);
  EXPECT_EQ(Set("/numbers/rights", value), "BADTYPE");
  CONFD_BITBIG_SET_BIT(mask, 70);
  CONFD_SET_BITBIG(&value, mask, 9);
  EXPECT_EQ(Set("/numbers/rights", value), "ok");
  EXPECT_EQ(Get("/numbers/rights"), "C_BITBIG of 9 bytes");
}

}  // namespace
}  // namespace contract
