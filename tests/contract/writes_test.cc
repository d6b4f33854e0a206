// Creating, deleting and setting in the transaction, and what stays as it is.
#include <arpa/inet.h>

#include <cstring>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

class ConfdLibMaapiPageWrites : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        "<object><id>1</id><size>3</size><last>-1</last><tags>x</tags>"
        "<part><n>1</n></part><extra><note>hm</note></extra></object>"
        "<strict><id>1</id><needed>2</needed></strict>");
  }
};

// ---- create
// -------------------------------------------------------------------

TEST_F(ConfdLibMaapiPageWrites, CreateMakesEntriesWithTheirKeysAndDefaults) {
  ASSERT_EQ(Create("/object{2}"), "ok");
  EXPECT_EQ(Exists("/object{2}"), 1);
  EXPECT_EQ(Get("/object{2}/id"), "C_UINT32 2");
  EXPECT_EQ(Get("/object{2}/size"), "C_UINT8 7");
  EXPECT_EQ(Get("/object{2}/last"), "NOEXISTS");
  ASSERT_EQ(Create("/object{2}/part{4}"), "ok");
  EXPECT_EQ(Get("/object{2}/part{4}/n"), "C_UINT8 4");
}

TEST_F(ConfdLibMaapiPageWrites, CreateOfWhatIsThereAlreadyExists) {
  EXPECT_EQ(Create("/object{1}"), "ALREADY_EXISTS");
  EXPECT_EQ(Create("/object{1}/part{1}"), "ALREADY_EXISTS");
  EXPECT_EQ(Create("/object{1}/extra"), "ALREADY_EXISTS");
  EXPECT_EQ(Get("/object{1}/size"), "C_UINT8 3");
}

TEST_F(ConfdLibMaapiPageWrites, CreateBelowAMissingEntryDoesNotExist) {
  EXPECT_EQ(Create("/object{9}/part{1}"), "NOEXISTS");
  EXPECT_EQ(Exists("/object{9}"), 0);
  EXPECT_EQ(Create("/shed/shelf{1}"), "NOEXISTS");
  EXPECT_EQ(Exists("/shed"), 0);
}

TEST_F(ConfdLibMaapiPageWrites,
       CreateOfNodesThatAreSetOrAlwaysThereIsNotPossible) {
  for (const char* path : {"/values", "/values/u8", "/object", "/object{1}/box",
                           "/", "/values/numbers", "/object{1}/tags"}) {
    EXPECT_EQ(Create(path), "NOTCREATABLE") << path;
  }
}

TEST_F(ConfdLibMaapiPageWrites, CreateMakesPresenceContainersAndEmptyLeaves) {
  ASSERT_EQ(Create("/shed"), "ok");
  EXPECT_EQ(Exists("/shed"), 1);
  ASSERT_EQ(Create("/shed/shelf{1}"), "ok");
  EXPECT_EQ(Exists("/values/flag"), 0);
  ASSERT_EQ(Create("/values/flag"), "ok");
  EXPECT_EQ(Exists("/values/flag"), 1);
  EXPECT_EQ(Create("/values/flag"), "ALREADY_EXISTS");
}

// ---- delete
// -------------------------------------------------------------------

TEST_F(ConfdLibMaapiPageWrites, DeleteRemovesEntriesWithAllTheyHold) {
  ASSERT_EQ(Delete("/object{1}"), "ok");
  EXPECT_EQ(Exists("/object{1}"), 0);
  ASSERT_EQ(Create("/object{1}"), "ok");
  EXPECT_EQ(Exists("/object{1}/part{1}"), 0);
  EXPECT_EQ(Get("/object{1}/size"), "C_UINT8 7");
}

TEST_F(ConfdLibMaapiPageWrites,
       DeleteRemovesOptionalLeavesAndPresenceContainers) {
  ASSERT_EQ(Delete("/object{1}/last"), "ok");
  EXPECT_EQ(Get("/object{1}/last"), "NOEXISTS");
  // The default is back.
  ASSERT_EQ(Delete("/object{1}/size"), "ok");
  EXPECT_EQ(Get("/object{1}/size"), "C_UINT8 7");
  ASSERT_EQ(Delete("/object{1}/tags"), "ok");
  EXPECT_EQ(Get("/object{1}/tags"), "NOEXISTS");
  ASSERT_EQ(Delete("/object{1}/extra"), "ok");
  EXPECT_EQ(Exists("/object{1}/extra/note"), 0);
}

TEST_F(ConfdLibMaapiPageWrites, DeleteOfWhatIsAbsentDoesNotExist) {
  for (const char* path :
       {"/object{9}", "/object{9}/last", "/object{1}/part{9}", "/shed",
        "/shed/tool", "/values/u8", "/object{9}/part{1}"}) {
    EXPECT_EQ(Delete(path), "NOEXISTS") << path;
  }
  ASSERT_EQ(Delete("/object{1}/last"), "ok");
  EXPECT_EQ(Delete("/object{1}/last"), "NOEXISTS");
}

TEST_F(ConfdLibMaapiPageWrites,
       DeleteOfKeysMandatoryLeavesAndContainersIsNotPossible) {
  for (const char* path : {"/object{1}/id", "/strict{1}/needed", "/values",
                           "/object{1}/box", "/object", "/"}) {
    EXPECT_EQ(Delete(path), "NOTDELETABLE") << path;
  }
  EXPECT_EQ(Get("/strict{1}/needed"), "C_UINT8 2");
}

// ---- set
// ----------------------------------------------------------------------

TEST_F(ConfdLibMaapiPageWrites, SetReplacesTheValue) {
  EXPECT_EQ(Set("/object{1}/size", Uint8(9)), "ok");
  EXPECT_EQ(Get("/object{1}/size"), "C_UINT8 9");
  EXPECT_EQ(Set("/object{1}/zoo:name", Str("given")), "ok");
  EXPECT_EQ(Get("/object{1}/zoo:name"), "C_BUF given");
  EXPECT_EQ(Set("/object{1}/zoo:name", Buf("sized")), "ok");
  EXPECT_EQ(Get("/object{1}/zoo:name"), "C_BUF sized");
}

TEST_F(ConfdLibMaapiPageWrites, SetTakesEachTypeThatItReads) {
  OpenZoo(
      "<values><i8>-1</i8><i16>-2</i16><i32>-3</i32><i64>-4</i64><u8>1</u8>"
      "<u16>2</u16><u32>3</u32><u64>4</u64><bool>false</bool><str>s</str>"
      "<enum>red</enum><bits32>write</bits32><bits64>high</bits64>"
      "<bitbig>far</bitbig><dec>2.25</dec><bin>AA==</bin><flag/>"
      "<kin>zm:parrot</kin><ip4>1.2.3.4</ip4><ip6>::2</ip6>"
      "<ip4-prefix>1.0.0.0/8</ip4-prefix><ip6-prefix>1::/16</ip6-prefix>"
      "<ip4-plen>1.2.3.4/8</ip4-plen><ip6-plen>1::2/16</ip6-plen>"
      "<quad>4.3.2.1</quad><hex>01</hex><when>2020-01-01T00:00:00Z</when>"
      "<mixed>none</mixed><ref>9.9.9.9</ref><where>/zoo:values/zoo:i8</where>"
      "<numbers>8</numbers><numbers>7</numbers></values>");
  for (const char* leaf :
       {"i8",         "i16",      "i32",      "i64",    "u8",
        "u16",        "u32",      "u64",      "bool",   "str",
        "enum",       "bits32",   "bits64",   "bitbig", "dec",
        "bin",        "kin",      "ip4",      "ip6",    "ip4-prefix",
        "ip6-prefix", "ip4-plen", "ip6-plen", "quad",   "hex",
        "when",       "mixed",    "ref",      "where",  "numbers"}) {
    const std::string path = std::string("/values/") + leaf;
    confd_value_t value;
    ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "%s", path.c_str()), CONFD_OK)
        << leaf;
    const std::string text = Show(value);
    ASSERT_EQ(Delete(path), "ok") << leaf;
    EXPECT_EQ(Set(path, value), "ok") << leaf << ": " << confd_lasterr();
    EXPECT_EQ(Get(path), text);
    confd_free_value(&value);
  }
}

TEST_F(ConfdLibMaapiPageWrites, SetOfAnotherTypeIsABadType) {
  EXPECT_EQ(Set("/object{1}/size", Uint32(1)), "BADTYPE");
  EXPECT_EQ(Set("/object{1}/size", Str("1")), "BADTYPE");
  EXPECT_EQ(Set("/object{1}/size", NoExists()), "BADTYPE");
  EXPECT_EQ(Set("/values/numbers", Uint8(1)), "BADTYPE");
  EXPECT_EQ(Set("/values/quad", Ipv4("1.2.3.4")), "BADTYPE");
  EXPECT_EQ(Set("/values/mixed", Uint8(1)), "BADTYPE");
  EXPECT_EQ(Set("/values/ref", Str("1.2.3.4")), "BADTYPE");
  confd_value_t items[] = {Uint8(1)};
  confd_value_t list;
  CONFD_SET_LIST(&list, items, 1);
  EXPECT_EQ(Set("/values/numbers", list), "BADTYPE");
  EXPECT_EQ(Set("/values/u8", list), "BADTYPE");
  CONFD_SET_LIST(&items[0], items, 0);
  EXPECT_EQ(Set("/values/numbers", list), "BADTYPE");
  EXPECT_EQ(Get("/object{1}/size"), "C_UINT8 3");
}

TEST_F(ConfdLibMaapiPageWrites, SetOutOfTheTypesLimitsIsABadType) {
  EXPECT_EQ(Set("/values/small", Uint8(11)), "BADTYPE");
  EXPECT_EQ(Set("/values/small", Uint8(20)), "ok");
  EXPECT_EQ(Set("/values/short", Str("a")), "BADTYPE");
  EXPECT_EQ(Set("/values/short", Str("ab")), "ok");
  EXPECT_EQ(Set("/values/code", Str("AB")), "BADTYPE");
  EXPECT_EQ(Set("/values/code", Str("AB1")), "ok");
  EXPECT_EQ(Set("/values/enum", Enum(2)), "BADTYPE");
  EXPECT_EQ(Set("/values/enum", Enum(1)), "ok");
  EXPECT_EQ(Set("/values/local-gate", Ipv4("192.0.2.1")), "BADTYPE");
  EXPECT_EQ(Set("/values/local-gate", Ipv4("10.0.0.1")), "ok");
  confd_value_t v;
  CONFD_SET_BIT32(&v, 4);
  EXPECT_EQ(Set("/values/bits32", v), "BADTYPE");
  struct confd_decimal64 dec = {15, 1};
  CONFD_SET_DECIMAL64(&v, dec);
  EXPECT_EQ(Set("/values/dec", v), "BADTYPE");
  struct confd_identityref kin = {1, 1};
  CONFD_SET_IDENTITYREF(&v, kin);
  EXPECT_EQ(Set("/values/kin", v), "BADTYPE");
  struct confd_ipv4_prefix plen = {};
  plen.len = 33;
  CONFD_SET_IPV4_AND_PLEN(&v, plen);
  EXPECT_EQ(Set("/values/ip4-plen", v), "BADTYPE");
  CONFD_SET_BITBIG(&v, "\x02", 1);
  EXPECT_EQ(Set("/values/bitbig", v), "BADTYPE");
}

TEST_F(ConfdLibMaapiPageWrites, SetOfWhatIsNoTextIsABadType) {
  for (const std::string& bytes :
       {std::string("nul\0inside", 10), std::string("\x01"),
        std::string("\xff"), std::string("\xc3"), std::string("\xed\xa0\x80"),
        std::string("\xef\xbf\xbf"), std::string("\xc0\x80")}) {
    EXPECT_EQ(Set("/values/str", Buf(bytes)), "BADTYPE");
    confd_value_t key = Buf(bytes);
    EXPECT_EQ(Outcome(maapi_create(maapi_, th_, "/lists/by-string{%x}", &key)),
              "BADPATH");
  }
  EXPECT_EQ(Set("/values/str", Buf("tab\tline\nend \xc3\xa4\xf0\x9f\x90\x98")),
            "ok");
}

// Whatever the type, and by whichever way they come.
TEST_F(ConfdLibMaapiPageWrites, BytesThatAreNoTextDoNotGetIn) {
  // With a value of the type before the NUL.
  const std::pair<const char*, std::string> keys[] = {
      {"/object", "1"},          {"/lists/by-string", "a"},
      {"/lists/by-enum", "red"}, {"/lists/by-ip4", "10.0.0.1"},
      {"/lists/by-ip6", "::1"},  {"/lists/by-plen", "10.0.0.1/8"},
      {"/lists/by-kin", "fish"}, {"/lists/by-bits", "read"},
      {"/lists/by-ref", "::1"},  {"/lists/by-mixed", "10.0.0.1"},
      {"/lists/by-dec", "1.0"},  {"/lists/by-prefix", "10.0.0.0/8"}};
  for (const auto& [list, start] : keys) {
    for (const std::string& end :
         {std::string(1, '\0'), start + '\0' + start}) {
      const std::string text = start + end;
      confd_value_t key = Buf(text);
      EXPECT_EQ(Outcome(maapi_create(maapi_, th_, "%s{%x}", list, &key)),
                "BADPATH")
          << list;
      EXPECT_EQ(cdb_exists(cdb_, "%s{%x}", list, &key), CONFD_ERR) << list;
      struct maapi_cursor cursor;
      ASSERT_EQ(maapi_init_cursor(maapi_, th_, &cursor, "%s", list), CONFD_OK);
      EXPECT_EQ(Outcome(maapi_find_next(&cursor, CONFD_FIND_NEXT, &key, 1)),
                "BADPATH")
          << list;
      maapi_destroy_cursor(&cursor);
    }
  }
  const std::string nul("AB1\0inside", 10);
  confd_hkeypath_t nowhere = {};
  confd_value_t reference;
  CONFD_SET_OBJECTREF(&reference, &nowhere);
  const std::string fine = "fine";
  confd_value_t items[] = {Buf(fine), Buf(nul)};
  confd_value_t values;
  CONFD_SET_LIST(&values, items, 2);
  for (const char* leaf :
       {"str", "short", "code", "gate", "number-or-text", "mixed", "names",
        "gates", "where", "ref-or-word", "when"}) {
    const std::string path = "/values/" + std::string(leaf);
    EXPECT_EQ(Set(path, Buf(nul)), "BADTYPE") << leaf;
    EXPECT_EQ(Set(path, reference), "BADTYPE") << leaf;
    EXPECT_EQ(Set(path, values), "BADTYPE") << leaf;
  }
  confd_value_t object[] = {Uint32(7), Buf(nul)};
  EXPECT_EQ(Outcome(maapi_set_object(maapi_, th_, object, 2, "/object")),
            "BADTYPE");
  EXPECT_TRUE(database_->Validate().empty());
}

TEST_F(ConfdLibMaapiPageWrites, PrefixesLoseTheirHostBitsAndAddressesKeepThem) {
  struct confd_ipv4_prefix prefix = {};
  inet_pton(AF_INET, "10.1.2.3", &prefix.ip);
  prefix.len = 24;
  confd_value_t v;
  CONFD_SET_IPV4PREFIX(&v, prefix);
  EXPECT_EQ(Set("/values/ip4-prefix", v), "ok");
  EXPECT_EQ(Get("/values/ip4-prefix"), "C_IPV4PREFIX 10.1.2.0/24");
  // Whoever defines the typedef.
  EXPECT_EQ(Set("/values/own-prefix", v), "ok");
  EXPECT_EQ(Get("/values/own-prefix"), "C_IPV4PREFIX 10.1.2.0/24");
  prefix.len = 33;
  CONFD_SET_IPV4PREFIX(&v, prefix);
  EXPECT_EQ(Set("/values/own-prefix", v), "BADTYPE");
  struct confd_ipv6_prefix prefix6 = {};
  inet_pton(AF_INET6, "2001:db8:ffff::1", &prefix6.ip6);
  prefix6.len = 33;
  CONFD_SET_IPV6PREFIX(&v, prefix6);
  EXPECT_EQ(Set("/values/own-prefix6", v), "ok");
  EXPECT_EQ(Get("/values/own-prefix6"), "C_IPV6PREFIX 2001:db8:8000::/33");
  prefix.len = 24;
  CONFD_SET_IPV4_AND_PLEN(&v, prefix);
  EXPECT_EQ(Set("/values/ip4-plen", v), "ok");
  EXPECT_EQ(Get("/values/ip4-plen"), "C_IPV4_AND_PLEN 10.1.2.3/24");
}

TEST_F(ConfdLibMaapiPageWrites, SetInAMissingEntryDoesNotExist) {
  EXPECT_EQ(Set("/object{9}/size", Uint8(1)), "NOEXISTS");
  EXPECT_EQ(Set("/object{9}/part{1}/note", Str("x")), "NOEXISTS");
  EXPECT_EQ(Set("/shed/tool", Str("x")), "NOEXISTS");
  EXPECT_EQ(Exists("/object{9}"), 0);
}

TEST_F(ConfdLibMaapiPageWrites, SetOfKeysAndOfWhatIsNoLeafIsNotPossible) {
  EXPECT_EQ(Set("/object{1}/id", Uint32(1)), "NOT_WRITABLE");
  EXPECT_EQ(Set("/object{1}", Uint32(1)), "NOT_WRITABLE");
  EXPECT_EQ(Set("/object", Uint32(1)), "NOT_WRITABLE");
  EXPECT_EQ(Set("/values", Uint32(1)), "NOT_WRITABLE");
}

TEST_F(ConfdLibMaapiPageWrites, SetOfALeafListReplacesItsItems) {
  confd_value_t items[] = {Str("b"), Str("a")};
  confd_value_t list;
  CONFD_SET_LIST(&list, items, 2);
  EXPECT_EQ(Set("/object{1}/tags", list), "ok");
  EXPECT_EQ(Get("/object{1}/tags"), "C_LIST [C_BUF b, C_BUF a]");
}

// ---- CDB beside the transaction
// -----------------------------------------------

TEST_F(ConfdLibMaapiPageWrites, CdbKeepsShowingTheOldData) {
  ASSERT_EQ(Delete("/object{1}"), "ok");
  ASSERT_EQ(Create("/object{5}"), "ok");
  ASSERT_EQ(Create("/object{6}"), "ok");
  ASSERT_EQ(Set("/strict{1}/needed", Uint8(99)), "ok");
  EXPECT_EQ(Count("/object"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/object{1}/part{1}"), 1);
  EXPECT_EQ(cdb_exists(cdb_, "/object{5}"), 0);
  confd_value_t values[3];
  ASSERT_EQ(cdb_get_objects(cdb_, values, 3, 0, 1, "/strict"), 3);
  EXPECT_EQ(Show(values, 3), "C_UINT8 1, C_UINT8 2, C_NOEXISTS");
}

}  // namespace
}  // namespace contract
