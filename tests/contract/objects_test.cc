// Value arrays: one element for each leaf of an entry, in the model's order.
#include <cstring>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdLibPagesObjects : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        "<object><id>1</id></object>"
        "<object><id>2</id><name>two</name><size>9</size>"
        "<part><n>1</n></part><tags>a</tags><tags>b</tags>"
        "<box><width>4</width><lid><color>red</color></lid></box>"
        "<extra><note>hm</note></extra><last>-1</last>"
        "<zm:badge xmlns:zm=\"urn:test:zoo-more\">gold</zm:badge></object>"
        "<strict><id>1</id><needed>2</needed><free>3</free></strict>"
        "<lists><pair><a>1</a><b>red</b><note>x</note></pair></lists>");
  }

  std::string SetObject(const char* path, std::vector<confd_value_t> values) {
    return Outcome(maapi_set_object(maapi_, th_, values.data(),
                                    static_cast<int>(values.size()), "%s",
                                    path));
  }
  // The objects' elements as cdb_get_objects stores them, "." where it left
  // the array alone.
  std::string Objects(const char* path, int n, int ix, int nobj, int* result) {
    constexpr auto kUntouched = static_cast<confd_vtype>(63);
    confd_value_t values[64];
    for (confd_value_t& value : values) {
      value = {};
      value.type = kUntouched;
    }
    *result = cdb_get_objects(cdb_, values, n, ix, nobj, "%s", path);
    std::string text;
    for (int i = 0; i < n * nobj; ++i) {
      if (i > 0) text += ", ";
      text += values[i].type == kUntouched ? "." : Show(values[i]);
      confd_free_value(&values[i]);
    }
    return text;
  }
};

// keys | name size part tags | box: width, lid: color | extra | last | augment
constexpr char kLeastObject[] =
    "C_UINT32 1, C_NOEXISTS, C_UINT8 7, C_NOEXISTS, C_NOEXISTS, C_XMLTAG, "
    "C_NOEXISTS, C_XMLTAG, C_ENUM_VALUE 1, C_NOEXISTS, C_NOEXISTS, "
    "C_NOEXISTS, C_NOEXISTS";
constexpr char kFullObject[] =
    "C_UINT32 2, C_BUF two, C_UINT8 9, C_NOEXISTS, C_LIST [C_BUF a, C_BUF b], "
    "C_XMLTAG, C_UINT16 4, C_XMLTAG, C_ENUM_VALUE 3, C_XMLTAG, C_BUF hm, "
    "C_UINT8 1, C_INT8 -1, C_NOEXISTS, C_BUF gold";

TEST_F(ConfdLibPagesObjects, HoldLeavesDefaultsContainersLeafListsAndSubLists) {
  EXPECT_EQ(Object("/object{1}"), kLeastObject);
  EXPECT_EQ(Object("/object{2}"), kFullObject);
}

TEST_F(ConfdLibPagesObjects, HoldTheKeysFirst) {
  EXPECT_EQ(Object("/lists/pair{1 red}"),
            "C_UINT32 1, C_ENUM_VALUE 3, C_BUF x");
}

TEST_F(ConfdLibPagesObjects, ContainersAreObjectsToo) {
  EXPECT_EQ(Object("/object{2}/box"), "C_UINT16 4, C_XMLTAG, C_ENUM_VALUE 3");
  EXPECT_EQ(Object("/object{2}/extra"), "C_BUF hm, C_UINT8 1");
  EXPECT_EQ(Object("/object{1}/extra"), "NOEXISTS");
}

TEST_F(ConfdLibPagesObjects, ContainerTagsTellContainersApart) {
  confd_value_t values[15];
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 15, "/object{2}"), 15);
  EXPECT_NE(CONFD_GET_XMLTAG(&values[5]), CONFD_GET_XMLTAG(&values[7]));
  EXPECT_NE(CONFD_GET_XMLTAG(&values[5]), CONFD_GET_XMLTAG(&values[9]));
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&values[5]), 1001u);
  for (confd_value_t& value : values) confd_free_value(&value);
}

TEST_F(ConfdLibPagesObjects, MissingEntriesAndOtherNodes) {
  EXPECT_EQ(Object("/object{9}"), "NOEXISTS");
  EXPECT_EQ(Object("/object{9}/box"), "NOEXISTS");
  EXPECT_EQ(Object("/object"), "BADPATH");
  EXPECT_EQ(Object("/object{1}/size"), "BADPATH");
  EXPECT_EQ(Object("/object{1}/nothing"), "BADPATH");
}

TEST_F(ConfdLibPagesObjects, GetObjectReturnsWhatIsNeededAndStoresWhatFits) {
  confd_value_t values[3];
  values[2] = Uint8(99);
  EXPECT_EQ(maapi_get_object(maapi_, th_, values, 2, "/object{2}"), 15);
  EXPECT_EQ(Show(values, 3), "C_UINT32 2, C_BUF two, C_UINT8 99");
  confd_free_value(&values[1]);
  EXPECT_EQ(maapi_get_object(maapi_, th_, values, 0, "/object{1}"), 13);
}

TEST_F(ConfdLibPagesObjects, GetObjectsLaysObjectsOutByWidth) {
  int result = 0;
  const std::string rest = ", ., .";
  EXPECT_EQ(Objects("/object", 15, 0, 2, &result),
            kLeastObject + rest + ", " + kFullObject);
  // The highest number that one of them has.
  EXPECT_EQ(result, 15);
  EXPECT_EQ(Objects("/object", 15, 0, 1, &result), kLeastObject + rest);
  EXPECT_EQ(result, 13);
  EXPECT_EQ(Objects("/object", 2, 1, 1, &result), "C_UINT32 2, C_BUF two");
  EXPECT_EQ(result, 15);
  EXPECT_EQ(Objects("/object", 1, 0, 2, &result), "C_UINT32 1, C_UINT32 2");
  EXPECT_EQ(result, 15);
}

TEST_F(ConfdLibPagesObjects,
       GetObjectsReturnsTheHighestNumberWhereverItStands) {
  OpenZoo(
      "<object><id>1</id><extra/></object><object><id>2</id></object>"
      "<object><id>3</id></object>");
  int result = 0;
  Objects("/object", 1, 0, 3, &result);
  EXPECT_EQ(result, 15);
  Objects("/object", 1, 1, 2, &result);
  EXPECT_EQ(result, 13);
}

TEST_F(ConfdLibPagesObjects, GetObjectsPastTheEndDoNotExist) {
  int result = 0;
  for (auto [ix, nobj] : {std::pair{0, 3}, {1, 2}, {2, 1}, {3, 0}}) {
    Objects("/object", 2, ix, nobj, &result);
    EXPECT_EQ(Outcome(result), "NOEXISTS") << ix << " " << nobj;
  }
  Objects("/object", 2, 2, 0, &result);
  EXPECT_EQ(result, 0);
  Objects("/object{1}/part", 2, 0, 1, &result);
  EXPECT_EQ(Outcome(result), "NOEXISTS");
}

TEST_F(ConfdLibPagesObjects, GetObjectsNeedTheListItself) {
  int result = 0;
  for (const char* path : {"/object{1}", "/values", "/nothing", "/object[0]"}) {
    Objects(path, 2, 0, 1, &result);
    EXPECT_EQ(Outcome(result), "BADPATH") << path;
  }
}

// ---- maapi_set_object
// ---------------------------------------------------------

TEST_F(ConfdLibPagesObjects,
       SetObjectWithTheListsPathTakesTheKeysFromTheValues) {
  EXPECT_EQ(SetObject("/object", {Uint32(5), Str("five"), Uint8(50)}), "ok");
  EXPECT_EQ(Get("/object{5}/zoo:name"), "C_BUF five");
  EXPECT_EQ(Get("/object{5}/size"), "C_UINT8 50");
  EXPECT_EQ(SetObject("/lists/pair", {Uint32(8), Enum(1), Str("n")}), "ok");
  EXPECT_EQ(Get("/lists/pair{8 green}/note"), "C_BUF n");
}

TEST_F(ConfdLibPagesObjects,
       SetObjectWithAnEntrysPathIgnoresTheKeysInTheValues) {
  EXPECT_EQ(SetObject("/object{6}", {Uint32(999), Str("six")}), "ok");
  EXPECT_EQ(Get("/object{6}/zoo:name"), "C_BUF six");
  EXPECT_EQ(Exists("/object{999}"), 0);
  EXPECT_EQ(SetObject("/object{6}", {NoExists(), Str("again")}), "ok");
  EXPECT_EQ(Get("/object{6}/zoo:name"), "C_BUF again");
}

TEST_F(ConfdLibPagesObjects, SetObjectDeletesLeavesWithoutAValue) {
  EXPECT_EQ(SetObject("/object{2}", {Uint32(2), NoExists(), NoExists()}), "ok");
  EXPECT_EQ(Get("/object{2}/zoo:name"), "NOEXISTS");
  EXPECT_EQ(Get("/object{2}/size"), "C_UINT8 7");
  // Behind the array's end nothing changes.
  EXPECT_EQ(Get("/object{2}/last"), "C_INT8 -1");
}

TEST_F(ConfdLibPagesObjects, SetObjectLeavesSubListsAlone) {
  EXPECT_EQ(SetObject("/object{2}", {Uint32(2), NoExists(), NoExists(),
                                     NoExists(), NoExists()}),
            "ok");
  EXPECT_EQ(Exists("/object{2}/part{1}"), 1);
  EXPECT_EQ(Get("/object{2}/tags"), "NOEXISTS");
  EXPECT_EQ(
      SetObject("/object{2}", {Uint32(2), NoExists(), NoExists(), Uint8(1)}),
      "BADTYPE");
}

TEST_F(ConfdLibPagesObjects, WhatGetObjectGivesSetObjectTakes) {
  confd_value_t values[15];
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 15, "/object{2}"), 15);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 15, "/object{7}")),
            "ok");
  for (confd_value_t& value : values) confd_free_value(&value);
  std::string copy = kFullObject;
  copy.replace(copy.find('2'), 1, "2");
  EXPECT_EQ(Object("/object{7}"),
            "C_UINT32 7" + std::string(kFullObject).substr(10));
}

TEST_F(ConfdLibPagesObjects, SetObjectKeepsNothingOfTheCallBefore) {
  confd_value_t least[15];
  confd_value_t full[15];
  ASSERT_EQ(maapi_get_object(maapi_, th_, least, 15, "/object{1}"), 13);
  ASSERT_EQ(maapi_get_object(maapi_, th_, full, 15, "/object{2}"), 15);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, full, 15, "/object{7}")),
            "ok");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, least, 13, "/object{8}")),
            "ok");
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, full, 15, "/object{9}")),
            "ok");
  for (confd_value_t& value : full) confd_free_value(&value);
  const auto of_number = [](int number, const char* object) {
    return "C_UINT32 " + std::to_string(number) +
           std::string(object).substr(std::strlen("C_UINT32 1"));
  };
  EXPECT_EQ(Object("/object{8}"), of_number(8, kLeastObject));
  EXPECT_EQ(Object("/object{9}"), of_number(9, kFullObject));
}

TEST_F(ConfdLibPagesObjects,
       SetObjectRemovesPresenceContainersThatAreAbsentInIt) {
  confd_value_t values[13];
  ASSERT_EQ(maapi_get_object(maapi_, th_, values, 13, "/object{1}"), 13);
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, values, 13, "/object{2}")),
            "ok");
  EXPECT_EQ(Exists("/object{2}/extra"), 0);
  EXPECT_EQ(Get("/object{2}/box/width"), "NOEXISTS");
}

TEST_F(ConfdLibPagesObjects, SetObjectNeedsTheKeysAndNoMoreThanTheEntryTakes) {
  EXPECT_EQ(SetObject("/lists/pair", {Uint32(8)}), "BADTYPE");
  EXPECT_EQ(SetObject("/lists/pair", {}), "BADTYPE");
  EXPECT_EQ(SetObject("/lists/pair", {NoExists(), Enum(1)}), "BADTYPE");
  EXPECT_EQ(
      SetObject("/lists/pair", {Uint32(8), Enum(1), Str("n"), NoExists()}),
      "BADTYPE");
  // Fewer values than the largest entry, but more than this one has.
  std::vector<confd_value_t> values(15, NoExists());
  confd_value_t tag;
  CONFD_SET_XMLTAG(&tag, 0, 0);
  values[0] = Uint32(8);
  values[5] = values[7] = tag;
  EXPECT_EQ(SetObject("/object", values), "ok");
  values[13] = Str("left over");
  EXPECT_EQ(SetObject("/object", values), "BADTYPE");
}

TEST_F(ConfdLibPagesObjects, SetObjectWithABadValueChangesNothing) {
  EXPECT_EQ(SetObject("/object", {Uint32(5), Str("five"), Str("no number")}),
            "BADTYPE");
  EXPECT_EQ(Exists("/object{5}"), 0);
  EXPECT_EQ(SetObject("/object{2}", {Uint32(2), Str("new"), Uint32(1)}),
            "BADTYPE");
  EXPECT_EQ(Get("/object{2}/zoo:name"), "C_BUF two");
  EXPECT_EQ(SetObject("/object", {Uint8(5)}), "BADTYPE");
  EXPECT_STREQ(confd_lasterr(),
               "/object: leaf \"id\": a C_UINT8 value was given for a leaf of "
               "type uint32 (C_UINT32)");
}

TEST_F(ConfdLibPagesObjects, SetObjectDoesNotDeleteMandatoryLeaves) {
  EXPECT_EQ(SetObject("/strict{1}", {Uint8(1), NoExists()}), "BADTYPE");
  EXPECT_EQ(Get("/strict{1}/needed"), "C_UINT8 2");
  EXPECT_EQ(SetObject("/strict{1}", {Uint8(1), Uint8(4), NoExists()}), "ok");
  EXPECT_EQ(Get("/strict{1}/free"), "NOEXISTS");
  // A new entry may get its mandatory leaves later.
  EXPECT_EQ(SetObject("/strict", {Uint8(2), NoExists()}), "ok");
  EXPECT_EQ(Exists("/strict{2}"), 1);
}

TEST_F(ConfdLibPagesObjects, SetObjectBelowAMissingEntryAndOfOtherNodes) {
  EXPECT_EQ(SetObject("/object{9}/part", {Uint8(1)}), "NOEXISTS");
  EXPECT_EQ(SetObject("/shed/shelf{1}", {Uint8(1)}), "NOEXISTS");
  EXPECT_EQ(Exists("/object{9}"), 0);
  EXPECT_EQ(SetObject("/shed/none", {Uint8(1)}), "BADPATH");
  EXPECT_EQ(SetObject("/", {Uint8(1)}), "BADPATH");
  EXPECT_EQ(SetObject("/object{1}/size", {Uint8(1)}), "BADPATH");
}

}  // namespace
}  // namespace contract
