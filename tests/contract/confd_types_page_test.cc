// What confd_types(3) says of values, and of the types that models give them.
#include <cstring>
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

}  // namespace
}  // namespace contract
