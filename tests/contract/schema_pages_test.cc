// What confd_lib_lib(3) says of parts of loaded schemas, and of text by types.
#include <string>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

constexpr uint32_t kZoo = 1001;
constexpr uint32_t kZooMore = 1005;
constexpr uint32_t kUnknown = 4711;

class ConfdLibLibPageSchemas : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo("<object><id>3</id><box/></object>");
    types_ns_ = confd_str2hash("urn:test:zoo-types");
  }

  // The text of a value, or "error".
  static std::string Text(confd_type* type, const confd_value_t& value) {
    char buf[64] = "untouched";
    const int length = confd_val2str(type, &value, buf, sizeof buf);
    if (length == CONFD_ERR) return ErrorName(confd_errno);
    EXPECT_EQ(static_cast<size_t>(length), std::string(buf).size());
    return buf;
  }
  static std::string Parsed(confd_type* type, const char* text) {
    confd_value_t value;
    if (confd_str2val(type, text, &value) != CONFD_OK) {
      return ErrorName(confd_errno);
    }
    std::string shown = Show(value);
    confd_free_value(&value);
    return shown;
  }
  static confd_type* BuiltIn(const char* name) {
    return confd_find_ns_type(0, name);
  }

  uint32_t types_ns_ = 0;
};

TEST_F(ConfdLibLibPageSchemas, TypesAreFoundByNamespaceAndName) {
  EXPECT_EQ(Text(confd_find_ns_type(kZoo, "color"), Enum(3)), "red");
  EXPECT_EQ(Text(confd_find_ns_type(types_ns_, "percent"), Uint8(7)), "7");
  EXPECT_EQ(confd_find_ns_type(kZoo, "colour"), nullptr);
  EXPECT_EQ(confd_find_ns_type(types_ns_, "color"), nullptr);
  EXPECT_EQ(confd_find_ns_type(kUnknown, "color"), nullptr);
  EXPECT_EQ(confd_find_ns_type(kZoo, nullptr), nullptr);
  EXPECT_EQ(confd_find_ns_type(kZoo, "color; } leaf x { type string"), nullptr);
}

TEST_F(ConfdLibLibPageSchemas, NamespaceZeroHasTheBuiltInTypes) {
  EXPECT_EQ(Text(BuiltIn("uint32"), Uint32(7)), "7");
  EXPECT_EQ(Text(BuiltIn("string"), Str("a b")), "a b");
  EXPECT_EQ(BuiltIn("color"), nullptr);
  // It has no values by itself.
  EXPECT_EQ(BuiltIn("enumeration"), nullptr);
}

TEST_F(ConfdLibLibPageSchemas, Val2strGoesByTheType) {
  EXPECT_EQ(Text(confd_find_ns_type(kZoo, "color"), Enum(-2)), "dark-blue");
  confd_value_t value;
  CONFD_SET_BIT32(&value, 0x80000001);
  EXPECT_EQ(Text(confd_find_ns_type(kZoo, "rights"), value), "read admin");
  const unsigned char bytes[] = {0, 1, 2};
  CONFD_SET_BINARY(&value, bytes, sizeof bytes);
  EXPECT_EQ(Text(BuiltIn("binary"), value), "AAEC");
  CONFD_SET_DECIMAL64(&value, (confd_decimal64{1500, 3}));
  EXPECT_EQ(Text(confd_find_ns_type(types_ns_, "price"), value), "1.5");
  confd_type* kind = confd_find_ns_type(types_ns_, "kind");
  confd_value_t bird;
  ASSERT_EQ(confd_str2val(kind, "zt:bird", &bird), CONFD_OK);
  EXPECT_EQ(Text(kind, bird), "zt:bird");
}

TEST_F(ConfdLibLibPageSchemas, Val2strFailsForAValueOfAnotherType) {
  confd_type* color = confd_find_ns_type(kZoo, "color");
  EXPECT_EQ(Text(color, Enum(99)), "BADTYPE");
  EXPECT_EQ(Text(color, Uint32(3)), "BADTYPE");
  EXPECT_EQ(Text(confd_find_ns_type(types_ns_, "percent"), Uint8(101)),
            "BADTYPE");
}

TEST_F(ConfdLibLibPageSchemas, Val2strWritesAtMostBufsizBytes) {
  const confd_value_t blue = Enum(-2);
  char buf[] = "########";
  EXPECT_EQ(confd_val2str(confd_find_ns_type(kZoo, "color"), &blue, buf, 5), 9);
  EXPECT_STREQ(buf, "dark");
  EXPECT_EQ(buf[5], '#');
}

TEST_F(ConfdLibLibPageSchemas, Val2strPtrIsForEnumerations) {
  confd_type* color = confd_find_ns_type(kZoo, "color");
  const confd_value_t red = Enum(3);
  const confd_value_t none = Enum(99);
  const confd_value_t number = Uint32(3);
  EXPECT_STREQ(confd_val2str_ptr(color, &red), "red");
  EXPECT_EQ(confd_val2str_ptr(color, &none), nullptr);
  EXPECT_EQ(confd_val2str_ptr(BuiltIn("uint32"), &number), nullptr);
  EXPECT_EQ(confd_val2str_ptr(BuiltIn("uint32"), &red), nullptr);
}

TEST_F(ConfdLibLibPageSchemas, Str2valReadsTextOfTheType) {
  confd_type* color = confd_find_ns_type(kZoo, "color");
  EXPECT_EQ(Parsed(color, "dark-blue"), "C_ENUM_VALUE -2");
  EXPECT_EQ(Parsed(color, "mauve"), "BADTYPE");
  EXPECT_EQ(Parsed(BuiltIn("string"), "text"), "C_BUF text");
  EXPECT_EQ(Parsed(BuiltIn("uint8"), "255"), "C_UINT8 255");
  EXPECT_EQ(Parsed(BuiltIn("uint8"), "256"), "BADTYPE");
  EXPECT_EQ(Parsed(confd_find_ns_type(types_ns_, "gate"), "10.0.0.1"),
            "C_IPV4 10.0.0.1");
  EXPECT_EQ(Parsed(confd_find_ns_type(types_ns_, "kind"), "zt:cat"), "BADTYPE");
}

TEST_F(ConfdLibLibPageSchemas, TextByTypeNeedsItsArguments) {
  const confd_value_t red = Enum(3);
  confd_value_t value;
  char buf[8];
  EXPECT_EQ(Outcome(confd_val2str(nullptr, &red, buf, 8)), "PROTOUSAGE");
  EXPECT_EQ(Outcome(confd_str2val(nullptr, "red", &value)), "PROTOUSAGE");
  EXPECT_EQ(Outcome(confd_str2val(BuiltIn("string"), nullptr, &value)),
            "PROTOUSAGE");
  EXPECT_EQ(confd_val2str_ptr(nullptr, &red), nullptr);
}

TEST_F(ConfdLibLibPageSchemas, FractionDigitsAreThoseOfADecimal64) {
  EXPECT_EQ(confd_get_decimal64_fraction_digits(
                confd_find_ns_type(types_ns_, "price")),
            3);
  EXPECT_EQ(confd_get_decimal64_fraction_digits(BuiltIn("uint8")), 0);
}

TEST_F(ConfdLibLibPageSchemas, HashesAreThoseOfNamesAndNamespaces) {
  const uint32_t box = confd_str2hash("box");
  EXPECT_NE(box, 0u);
  EXPECT_STREQ(confd_hash2str(box), "box");
  EXPECT_EQ(confd_str2hash("urn:test:zoo"), kZoo);
  EXPECT_STREQ(confd_hash2str(kZoo), "urn:test:zoo");
  EXPECT_EQ(confd_str2hash("nowhere"), 0u);
  EXPECT_EQ(confd_str2hash(nullptr), 0u);
  EXPECT_EQ(confd_hash2str(kUnknown), nullptr);
  // The number that a container has in arrays.
  confd_value_t values[16];
  ASSERT_GE(maapi_get_object(maapi_, th_, values, 16, "/object{3}"), 0);
  bool found = false;
  for (const confd_value_t& value : values) {
    if (value.type != C_XMLTAG) continue;
    found = CONFD_GET_XMLTAG(&value) == box;
    if (found) break;
  }
  EXPECT_TRUE(found);
}

TEST_F(ConfdLibLibPageSchemas, HashesAreThoseOfIdentitiesAndCasesToo) {
  confd_identityref bird = {};
  ASSERT_EQ(maapi_set_elem2(maapi_, th_, "zt:bird", "/values/kin"), CONFD_OK);
  ASSERT_EQ(maapi_get_identityref_elem(maapi_, th_, &bird, "/values/kin"),
            CONFD_OK);
  EXPECT_STREQ(confd_hash2str(bird.id), "bird");
  EXPECT_EQ(confd_str2hash("bird"), bird.id);
  confd_value_t fast;
  ASSERT_EQ(maapi_get_case(maapi_, th_, "how", &fast, "/pick"), CONFD_OK);
  EXPECT_STREQ(confd_hash2str(CONFD_GET_XMLTAG(&fast)), "fast");
}

TEST_F(ConfdLibLibPageSchemas, PrefixesAreFoundByNamespace) {
  EXPECT_STREQ(confd_ns2prefix(kZoo), "zoo");
  EXPECT_STREQ(confd_ns2prefix(kZooMore), "zm");
  EXPECT_EQ(confd_ns2prefix(kUnknown), nullptr);
}

TEST_F(ConfdLibLibPageSchemas, NodesAreFoundByPath) {
  confd_cs_node* object = confd_cs_node_cd(nullptr, "/object{%d}", 3);
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(confd_cs_node_cd(nullptr, "/%s", "object"), object);
  EXPECT_EQ(confd_cs_node_cd(nullptr, "/object[7]"), object);
  EXPECT_EQ(confd_cs_node_cd(object, "/object"), object);
  EXPECT_EQ(confd_cs_node_cd(object, "box/lid"),
            confd_cs_node_cd(nullptr, "/object/box/lid"));
}

TEST_F(ConfdLibLibPageSchemas, NodesThatAreNotThereAreBadPaths) {
  for (const char* path : {"/nowhere", "/", "object", "/object/nowhere", "{"}) {
    EXPECT_EQ(confd_cs_node_cd(nullptr, "%s", path), nullptr) << path;
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH) << path;
  }
}

TEST_F(ConfdLibLibPageSchemas, ObjectsAreAtMostAsLargeAsTheirModelSays) {
  confd_value_t value;
  EXPECT_EQ(confd_max_object_size(confd_cs_node_cd(nullptr, "/object/box")),
            maapi_get_object(maapi_, th_, &value, 0, "/object{3}/box"));
  EXPECT_GT(confd_max_object_size(confd_cs_node_cd(nullptr, "/object")),
            maapi_get_object(maapi_, th_, &value, 0, "/object{3}"));
  EXPECT_EQ(confd_max_object_size(nullptr), 0);
}

TEST_F(ConfdLibLibPageSchemas, NothingIsKnownWithoutSchemas) {
  kit::control::SetSchemasLoaded(false);
  EXPECT_EQ(confd_find_ns_type(kZoo, "color"), nullptr);
  EXPECT_EQ(BuiltIn("uint32"), nullptr);
  EXPECT_EQ(confd_hash2str(kZoo), nullptr);
  EXPECT_EQ(confd_str2hash("box"), 0u);
  EXPECT_EQ(confd_ns2prefix(kZoo), nullptr);
  EXPECT_EQ(confd_cs_node_cd(nullptr, "/object"), nullptr);
  const uint32_t zoo = kZoo;
  ASSERT_EQ(maapi_load_schemas_list(maapi_, 0, &zoo, nullptr, 1), CONFD_OK);
  EXPECT_STREQ(confd_ns2prefix(kZoo), "zoo");
  EXPECT_EQ(confd_ns2prefix(kZooMore), nullptr);
  EXPECT_NE(confd_find_ns_type(kZoo, "color"), nullptr);
}

// What a program is told depends on it, so whoever runs it is told.
TEST_F(ConfdLibLibPageSchemas, WhoeverRunsTheProgramLearnsThatItMatters) {
  int times = 0;
  kit::control::SetSchemaWatcher([&times] { ++times; });
  EXPECT_EQ(confd_ns2prefix(kUnknown), nullptr);
  EXPECT_EQ(times, 0);
  EXPECT_STREQ(confd_ns2prefix(kZoo), "zoo");
  EXPECT_STREQ(confd_ns2prefix(kZoo), "zoo");
  EXPECT_EQ(times, 1);
  ASSERT_EQ(maapi_load_schemas(maapi_), CONFD_OK);
  kit::control::SetSchemaWatcher([&times] { ++times; });
  EXPECT_STREQ(confd_ns2prefix(kZoo), "zoo");
  EXPECT_EQ(times, 1);
  kit::control::SetSchemaWatcher(nullptr);
}

}  // namespace
}  // namespace contract
