// Scalar reads, counts and existence, in CDB and in the transaction.
#include <arpa/inet.h>

#include <cstring>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

// One leaf of each type.
constexpr char kValues[] =
    "<values>"
    "<i8>-128</i8><i16>-32768</i16><i32>-2147483648</i32>"
    "<i64>-9223372036854775808</i64>"
    "<u8>255</u8><u16>65535</u16><u32>4294967295</u32>"
    "<u64>18446744073709551615</u64>"
    "<bool>true</bool><str>text</str><enum>dark-blue</enum>"
    "<bits32>read admin</bits32><bits64>low high</bits64>"
    "<bitbig>first far</bitbig>"
    "<dec>-1.5</dec><bin>AAEC</bin><flag/><kin>zoo:fish</kin>"
    "<ip4>10.0.0.1</ip4><ip4-bare>10.0.0.2</ip4-bare><ip6>2001:db8::1</ip6>"
    "<ip4-prefix>10.1.0.0/16</ip4-prefix>"
    "<ip6-prefix>2001:db8::/32</ip6-prefix>"
    "<ip4-plen>10.1.2.3/24</ip4-plen><ip6-plen>2001:db8::1/64</ip6-plen>"
    "<quad>1.2.3.4</quad><hex>0a:ff</hex><when>2026-02-03T04:05:06Z</when>"
    "<gate>10.0.0.3</gate><local-gate>10.9.9.9</local-gate>"
    "<mixed>10.0.0.4</mixed><number-or-text>17</number-or-text>"
    "<ref>10.0.0.1</ref><ref-to-ref>10.0.0.1</ref-to-ref>"
    "<ref-or-word>1.2.3.4</ref-or-word>"
    "<where>/zoo:values/zoo:i8</where>"
    "<numbers>3</numbers><numbers>-1</numbers>"
    "<gates>10.0.0.8</gates><gates>10.0.0.7</gates>"
    "</values>";

class ConfdLibPagesReads : public CApiTest {
 protected:
  void SetUp() override {
    OpenZoo(
        std::string(kValues) +
        "<object><id>5</id></object><object><id>2</id>"
        "<part><n>1</n></part><part><n>2</n></part></object>"
        "<annex><door>10.0.0.5</door><side-door>10.0.0.6</side-door></annex>"
        "<shed><shelf><n>1</n></shelf></shed>"
        "<measured><home>10.0.0.7</home></measured>");
  }
};

struct TypeCase {
  const char* leaf;
  const char* value;
};

TEST_F(ConfdLibPagesReads, EachTypeOfTheModelsHasItsTag) {
  const TypeCase cases[] = {
      {"i8", "C_INT8 -128"},
      {"i16", "C_INT16 -32768"},
      {"i32", "C_INT32 -2147483648"},
      {"i64", "C_INT64 -9223372036854775808"},
      {"u8", "C_UINT8 255"},
      {"u16", "C_UINT16 65535"},
      {"u32", "C_UINT32 4294967295"},
      {"u64", "C_UINT64 18446744073709551615"},
      {"bool", "C_BOOL true"},
      {"str", "C_BUF text"},
      {"enum", "C_ENUM_VALUE -2"},
      {"bits32", "C_BIT32 2147483649"},
      {"bits64", "C_BIT64 9223372036854775809"},
      {"bitbig", "C_BITBIG of 9 bytes"},
      {"dec", "C_DECIMAL64 -1.50"},
      {"bin", "C_BINARY 000102"},
      {"flag", "BADTYPE"},  // it has none
      {"kin", "C_IDENTITYREF"},
      {"ip4", "C_IPV4 10.0.0.1"},
      {"ip4-bare", "C_IPV4 10.0.0.2"},
      {"ip6", "C_IPV6 2001:db8::1"},
      {"ip4-prefix", "C_IPV4PREFIX 10.1.0.0/16"},
      {"ip6-prefix", "C_IPV6PREFIX 2001:db8::/32"},
      {"ip4-plen", "C_IPV4_AND_PLEN 10.1.2.3/24"},
      {"ip6-plen", "C_IPV6_AND_PLEN 2001:db8::1/64"},
      {"quad", "C_DQUAD 1.2.3.4"},
      {"hex", "C_HEXSTR 0a:ff"},
      {"when", "C_DATETIME 2026-02-03T04:05:06Z"},
      {"where", "C_OBJECTREF of 2 elements"},
      // A typedef of a well-known one, plain and narrowed.
      {"gate", "C_IPV4 10.0.0.3"},
      {"local-gate", "C_IPV4 10.9.9.9"},
      // The member of a union that a value is of, unions in unions included.
      {"mixed", "C_IPV4 10.0.0.4"},
      {"number-or-text", "C_UINT16 17"},
      // Leafrefs have their target's type.
      {"ref", "C_IPV4 10.0.0.1"},
      {"ref-to-ref", "C_IPV4 10.0.0.1"},
      {"ref-or-word", "C_DQUAD 1.2.3.4"},
      {"numbers", "C_LIST [C_INT16 3, C_INT16 -1]"},
      {"gates", "C_LIST [C_IPV4 10.0.0.8, C_IPV4 10.0.0.7]"},
      {"names", "C_LIST [C_BUF one, C_BUF two]"},
      {"small", "C_UINT8 5"},
      // A typedef's default.
      {"share", "C_UINT8 50"},
  };
  for (const auto& [leaf, value] : cases) {
    EXPECT_EQ(Get(std::string("/values/") + leaf), value) << leaf;
  }
}

TEST_F(ConfdLibPagesReads, TypedefsAreFoundInSubmodulesAndGroupings) {
  EXPECT_EQ(Get("/annex/door"), "C_IPV4 10.0.0.5");
  EXPECT_EQ(Get("/annex/side-door"), "C_IPV4 10.0.0.6");
  EXPECT_EQ(Get("/measured/home"), "C_IPV4 10.0.0.7");
  EXPECT_EQ(Get("/measured/weight"), "C_UINT32 250");
}

TEST_F(ConfdLibPagesReads, ReceivedStringsAreNulTerminatedAndTheCallers) {
  confd_value_t value;
  ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "/values/str"), CONFD_OK);
  ASSERT_EQ(CONFD_GET_BUFSIZE(&value), 4u);
  EXPECT_STREQ(reinterpret_cast<char*>(CONFD_GET_BUFPTR(&value)), "text");
  // Not the store's own memory.
  CONFD_GET_BUFPTR(&value)[0] = 'X';
  EXPECT_EQ(Get("/values/str"), "C_BUF text");
  confd_free_value(&value);
}

TEST_F(ConfdLibPagesReads, AddressesAreInNetworkByteOrder) {
  struct in_addr ip;
  ASSERT_EQ(cdb_get_ipv4(cdb_, &ip, "/values/ip4"), CONFD_OK);
  EXPECT_EQ(ip.s_addr, htonl(0x0a000001));
  struct confd_ipv4_prefix prefix;
  ASSERT_EQ(cdb_get_ipv4_and_plen(cdb_, &prefix, "/values/ip4-plen"), CONFD_OK);
  EXPECT_EQ(prefix.ip.s_addr, htonl(0x0a010203));
  EXPECT_EQ(prefix.len, 24);
}

TEST_F(ConfdLibPagesReads, ScalarCallsReadTheirType) {
  uint32_t u32 = 0;
  ASSERT_EQ(cdb_get_u_int32(cdb_, &u32, "/values/u32"), CONFD_OK);
  EXPECT_EQ(u32, 4294967295u);
  ASSERT_EQ(maapi_get_u_int32_elem(maapi_, th_, &u32, "/object{5}/id"),
            CONFD_OK);
  EXPECT_EQ(u32, 5u);
  int32_t i32 = 0;
  ASSERT_EQ(cdb_get_int32(cdb_, &i32, "/values/i32"), CONFD_OK);
  EXPECT_EQ(i32, INT32_MIN);
  ASSERT_EQ(cdb_get_enum_value(cdb_, &i32, "/values/enum"), CONFD_OK);
  EXPECT_EQ(i32, -2);
  // A union's value of that type.
  struct in_addr ip;
  ASSERT_EQ(cdb_get_ipv4(cdb_, &ip, "/values/mixed"), CONFD_OK);
}

TEST_F(ConfdLibPagesReads, ScalarCallsRejectOtherTypes) {
  uint32_t u32 = 77;
  int32_t i32 = 77;
  char text[64] = "before";
  struct in_addr ip;
  struct confd_ipv4_prefix prefix;
  for (const char* path : {"/values/i32", "/values/u8", "/values/u64",
                           "/values/str", "/values/numbers", "/values/ip4"}) {
    EXPECT_EQ(Outcome(cdb_get_u_int32(cdb_, &u32, "%s", path)), "BADTYPE")
        << path;
    EXPECT_EQ(Outcome(maapi_get_u_int32_elem(maapi_, th_, &u32, "%s", path)),
              "BADTYPE")
        << path;
  }
  EXPECT_EQ(Outcome(cdb_get_int32(cdb_, &i32, "/values/u32")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_int32(cdb_, &i32, "/values/enum")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_enum_value(cdb_, &i32, "/values/i32")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_str(cdb_, text, 64, "/values/enum")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_ipv4(cdb_, &ip, "/values/quad")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_ipv4(cdb_, &ip, "/values/ip4-plen")), "BADTYPE");
  EXPECT_EQ(Outcome(cdb_get_ipv4_and_plen(cdb_, &prefix, "/values/ip4-prefix")),
            "BADTYPE");
  // What the caller had stays.
  EXPECT_EQ(u32, 77u);
  EXPECT_EQ(i32, 77);
  EXPECT_STREQ(text, "before");
}

TEST_F(ConfdLibPagesReads, LeavesWithoutAValueOrDefaultDoNotExist) {
  uint32_t u32 = 0;
  int32_t i32 = 0;
  char text[8];
  EXPECT_EQ(Get("/object{5}/last"), "NOEXISTS");
  EXPECT_EQ(Get("/object{5}/tags"), "NOEXISTS");
  EXPECT_EQ(Get("/object{9}/size"), "NOEXISTS");
  EXPECT_EQ(Get("/object{5}/extra/level"), "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_get_u_int32(cdb_, &u32, "/object{9}/id")), "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_get_int32(cdb_, &i32, "/object{5}/last")), "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_get_str(cdb_, text, 8, "/object{5}/zoo:name")),
            "NOEXISTS");
}

TEST_F(ConfdLibPagesReads, NodesWithoutAValueAreBadPaths) {
  for (const char* path : {"/values", "/object{5}", "/object", "/shed", "/"}) {
    EXPECT_EQ(Get(path), "BADPATH") << path;
  }
}

TEST_F(ConfdLibPagesReads, NodesThatTheModelLacksAreBadPaths) {
  uint32_t u32 = 0;
  for (const char* path : {"/nothing", "/values/nothing", "/values/i8/below",
                           "/object{5}/part/n"}) {
    EXPECT_EQ(Get(path), "BADPATH") << path;
    EXPECT_EQ(Outcome(cdb_get_u_int32(cdb_, &u32, "%s", path)), "BADPATH");
    EXPECT_EQ(Outcome(cdb_exists(cdb_, "%s", path)), "BADPATH");
    EXPECT_EQ(Outcome(cdb_num_instances(cdb_, "%s", path)), "BADPATH");
  }
}

TEST_F(ConfdLibPagesReads, StringsAreCopiedWithTheirNulWhenTheyFit) {
  char text[8];
  std::memset(text, '#', sizeof text);
  ASSERT_EQ(cdb_get_str(cdb_, text, 5, "/values/str"), CONFD_OK);
  EXPECT_EQ(std::string(text, 6), std::string("text\0#", 6));
}

TEST_F(ConfdLibPagesReads, StringsThatDoNotFitAreProtocolMisuse) {
  char text[8] = "before";
  for (int n : {4, 1, 0}) {
    EXPECT_EQ(Outcome(cdb_get_str(cdb_, text, n, "/values/str")), "PROTOUSAGE");
    EXPECT_STREQ(text, "before");
  }
}

TEST_F(ConfdLibPagesReads, NumInstancesCountsEntries) {
  EXPECT_EQ(Count("/object"), 2);
  EXPECT_EQ(Count("/object{2}/part"), 2);
  EXPECT_EQ(Count("/object{5}/part"), 0);
  EXPECT_EQ(Count("/object[0]/part"), 2);
  EXPECT_EQ(Count("/strict"), 0);
  EXPECT_EQ(Count("/shed/shelf"), 1);
}

TEST_F(ConfdLibPagesReads, NumInstancesOfWhatIsNoListIsABadPath) {
  for (const char* path :
       {"/object{2}", "/values", "/values/i8", "/", "/nothing"}) {
    EXPECT_EQ(Count(path), CONFD_ERR) << path;
    EXPECT_EQ(confd_errno, CONFD_ERR_BADPATH) << path;
  }
}

TEST_F(ConfdLibPagesReads, ExistsTellsOfEntriesLeavesAndContainers) {
  const std::pair<const char*, int> cases[] = {
      {"/object{2}", 1},
      {"/object{3}", 0},
      {"/object{2}/part{2}", 1},
      {"/object{3}/part{2}", 0},
      {"/object{2}/id", 1},
      {"/object{2}/last", 0},
      {"/object{2}/size", 1},  // by default
      {"/object{3}/size", 0},
      {"/values/numbers", 1},
      {"/object{2}/tags", 0},
      {"/values", 1},
      {"/object{2}/box", 1},
      {"/object{3}/box", 0},
      {"/shed", 1},
      {"/object{2}/extra", 0},
      {"/object{2}/extra/level", 0},
      {"/", 1},
      // A list without keys: whether the model has it.
      {"/object", 1},
      {"/strict", 1},
  };
  for (const auto& [path, exists] : cases) {
    EXPECT_EQ(cdb_exists(cdb_, "%s", path), exists) << path;
    EXPECT_EQ(Exists(path), exists) << path;
  }
}

// ---- Defaults in choices
// ------------------------------------------------------

TEST_F(ConfdLibPagesReads, DefaultsHoldInTheDefaultCaseUntilAnotherIsChosen) {
  EXPECT_EQ(Get("/pick/speed"), "C_UINT8 10");
  EXPECT_EQ(Get("/pick/delay"), "NOEXISTS");
  EXPECT_EQ(Get("/pick/pauses/length"), "NOEXISTS");
  ASSERT_EQ(Set("/pick/delay", Uint8(1)), "ok");
  EXPECT_EQ(Get("/pick/speed"), "NOEXISTS");
  EXPECT_EQ(Get("/pick/pauses/length"), "C_UINT8 4");
  ASSERT_EQ(Delete("/pick/delay"), "ok");
  EXPECT_EQ(Get("/pick/speed"), "C_UINT8 10");
}

TEST_F(ConfdLibPagesReads, WritingOneCaseEmptiesTheOthers) {
  ASSERT_EQ(Set("/pick/gear", Uint8(2)), "ok");
  ASSERT_EQ(Set("/pick/pauses/length", Uint8(9)), "ok");
  EXPECT_EQ(Get("/pick/gear"), "NOEXISTS");
  ASSERT_EQ(Create("/pick/stop{1}"), "ok");
  EXPECT_EQ(Get("/pick/pauses/length"), "C_UINT8 9");
  ASSERT_EQ(Set("/pick/left", Uint8(1)), "ok");
  EXPECT_EQ(Exists("/pick/stop{1}"), 0);
  EXPECT_EQ(Get("/pick/pauses/length"), "NOEXISTS");
  ASSERT_EQ(Set("/pick/outer", Uint8(1)), "ok");
  EXPECT_EQ(Get("/pick/left"), "C_UINT8 1");
  ASSERT_EQ(Set("/pick/right", Uint8(1)), "ok");
  EXPECT_EQ(Get("/pick/left"), "NOEXISTS");
  EXPECT_EQ(Get("/pick/outer"), "C_UINT8 1");
}

// ---- Orders
// -------------------------------------------------------------------

struct OrderCase {
  const char* list;
  std::vector<std::string> keys;  // in the list's order
};

TEST_F(ConfdLibPagesReads, SystemOrderedListsAreInTheNaturalOrderOfTheirKeys) {
  const OrderCase cases[] = {
      {"by-int", {"-2147483648", "-10", "-9", "0", "2", "10", "2147483647"}},
      {"by-uint64",
       {"0", "9", "10", "9223372036854775808", "18446744073709551615"}},
      // By bytes: upper case first, a prefix first, UTF-8 last.
      {"by-string", {"A", "B", "a", "a b", "aa", "b", "z", "\xc3\xa4"}},
      // By number: dark-blue is -2, green 1, red 3.
      {"by-enum", {"dark-blue", "green", "red"}},
      {"by-bool", {"false", "true"}},
      {"by-dec", {"-10.0", "-9.5", "0.05", "0.5", "10.0"}},
      {"by-ip4", {"1.0.0.10", "1.0.0.9", "9.0.0.0", "10.0.0.1", "192.0.2.1"}},
      {"by-ip6", {"::1", "9::", "10::", "2001:db8::1", "fe80::1"}},
      {"by-plen", {"9.0.0.1/32", "10.0.0.1/8", "10.0.0.1/24", "10.0.0.2/8"}},
      {"by-prefix", {"9.0.0.0/8", "10.0.0.0/8", "10.0.0.0/24"}},
      {"by-ref", {"9.0.0.1", "10.0.0.1"}},
  };
  for (OrderCase one : cases) {
    if (std::string(one.list) == "by-ip4") {
      std::swap(one.keys[0], one.keys[1]);  // 9 stands before 10
    }
    std::string path = std::string("/lists/") + one.list;
    // Backwards, so that the order of creation is none of them.
    for (auto key = one.keys.rbegin(); key != one.keys.rend(); ++key) {
      ASSERT_EQ(Create(path + "{\"" + *key + "\"}"), "ok")
          << path << " " << *key << ": " << confd_lasterr();
    }
    std::vector<std::string> walked;
    maapi_cursor mc = {};
    ASSERT_EQ(maapi_init_cursor(maapi_, th_, &mc, "%s", path.c_str()),
              CONFD_OK);
    size_t at = 0;
    while (maapi_get_next(&mc) == CONFD_OK && mc.n > 0) {
      ASSERT_LT(at, one.keys.size());
      confd_value_t value;
      ASSERT_EQ(maapi_get_elem(maapi_, th_, &value, "%s{\"%s\"}/k",
                               path.c_str(), one.keys[at].c_str()),
                CONFD_OK);
      EXPECT_EQ(Show(mc.keys[0]), Show(value)) << path << " place " << at;
      confd_free_value(&value);
      ++at;
    }
    EXPECT_EQ(at, one.keys.size()) << path;
    maapi_destroy_cursor(&mc);
  }
}

TEST_F(ConfdLibPagesReads, SeveralKeysAreOrderedFirstKeyFirst) {
  for (const char* entry : {"{2 red}", "{1 red}", "{10 green}", "{1 green}"}) {
    ASSERT_EQ(Create(std::string("/lists/pair") + entry), "ok");
  }
  EXPECT_EQ(Walk("/lists/pair"),
            (std::vector<std::string>{"1 1", "1 3", "2 3", "10 1"}));
}

TEST_F(ConfdLibPagesReads, UserOrderedListsKeepTheOrderOfCreation) {
  for (const char* entry : {"{5}", "{1}", "{9}", "{3}"}) {
    ASSERT_EQ(Create(std::string("/lists/queue") + entry), "ok");
  }
  EXPECT_EQ(Walk("/lists/queue"),
            (std::vector<std::string>{"5", "1", "9", "3"}));
  ASSERT_EQ(Delete("/lists/queue{1}"), "ok");
  ASSERT_EQ(Create("/lists/queue{1}"), "ok");
  EXPECT_EQ(Walk("/lists/queue"),
            (std::vector<std::string>{"5", "9", "3", "1"}));
}

TEST_F(ConfdLibPagesReads, PositionsFollowTheUsersOrder) {
  OpenZoo(
      "<lists><queue><n>9</n></queue><queue><n>1</n></queue>"
      "<queue><n>5</n></queue></lists>");
  confd_value_t values[3];
  ASSERT_EQ(cdb_get_objects(cdb_, values, 1, 0, 3, "/lists/queue"), 1);
  EXPECT_EQ(Show(values, 3), "C_UINT8 9, C_UINT8 1, C_UINT8 5");
  EXPECT_EQ(cdb_exists(cdb_, "/lists/queue[2]"), 1);
}

}  // namespace
}  // namespace contract
