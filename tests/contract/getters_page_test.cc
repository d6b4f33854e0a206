// The calls that read one leaf into a variable of its type, in both families.
#include <arpa/inet.h>

#include <cstring>
#include <functional>

#include "tests/contract/pages.h"

namespace contract {
namespace {

constexpr char kValues[] =
    "<values><i8>-8</i8><i16>-16</i16><i32>-32</i32><i64>-64</i64>"
    "<u8>8</u8><u16>16</u16><u32>32</u32><u64>64</u64><bool>true</bool>"
    "<str>text</str><enum>dark-blue</enum><bits32>read admin</bits32>"
    "<bits64>low high</bits64><bitbig>first far</bitbig><dec>-1.5</dec>"
    "<bin>AAEC</bin><kin>zoo:fish</kin><ip4>10.0.0.1</ip4>"
    "<ip6>2001:db8::1</ip6><ip4-prefix>10.1.0.0/16</ip4-prefix>"
    "<ip6-prefix>2001:db8::/32</ip6-prefix><ip4-plen>10.1.2.3/24</ip4-plen>"
    "<ip6-plen>2001:db8::1/64</ip6-plen><quad>1.2.3.4</quad><hex>0a:ff</hex>"
    "<when>2026-02-03T04:05:06Z</when>"
    "<numbers>3</numbers><numbers>-1</numbers></values>";

// Reads /values/`leaf` by all four calls of a getter; each time `expected` has
// to hold of `value`. No other leaf than one of the type is read.
#define CHECK_GETTER(x, type, leaf, expected)                                  \
  do {                                                                         \
    SCOPED_TRACE(#x);                                                          \
    const std::vector<std::function<int(type*, const char*)>> calls = {        \
        [&](type* value, const char* name) {                                   \
          return cdb_get_##x(cdb_, value, "/values/%s", name);                 \
        },                                                                     \
        [&](type* value, const char* name) {                                   \
          return ByList(                                                       \
              [&](const char* fmt, va_list args) {                             \
                return cdb_vget_##x(cdb_, value, fmt, args);                   \
              },                                                               \
              "/values/%s", name);                                             \
        },                                                                     \
        [&](type* value, const char* name) {                                   \
          return maapi_get_##x##_elem(maapi_, th_, value, "/values/%s", name); \
        },                                                                     \
        [&](type* value, const char* name) {                                   \
          return ByList(                                                       \
              [&](const char* fmt, va_list args) {                             \
                return maapi_vget_##x##_elem(maapi_, th_, value, fmt, args);   \
              },                                                               \
              "/values/%s", name);                                             \
        }};                                                                    \
    for (const auto& call : calls) {                                           \
      type value = {};                                                         \
      EXPECT_EQ(Outcome(call(&value, leaf)), "ok");                            \
      EXPECT_TRUE(expected);                                                   \
      EXPECT_EQ(Outcome(call(&value, "small")),                                \
                std::strcmp(#x, "u_int8") == 0 ? "ok" : "BADTYPE");            \
      EXPECT_EQ(Outcome(call(&value, "numbers")), "BADTYPE");                  \
      EXPECT_EQ(Outcome(call(&value, "code")), "NOEXISTS");                    \
      EXPECT_EQ(Outcome(call(&value, "none")), "BADPATH");                     \
      EXPECT_EQ(Outcome(call(nullptr, leaf)), "PROTOUSAGE");                   \
    }                                                                          \
  } while (0)

bool IsAddress6(const in6_addr& address, const char* text) {
  in6_addr expected;
  return inet_pton(AF_INET6, text, &expected) == 1 &&
         std::memcmp(&address, &expected, sizeof expected) == 0;
}

class ConfdLibCdbAndMaapiPageGetters : public ConfdLibCdbPage {
 protected:
  void SetUp() override { OpenZoo(kValues); }
};

// The two pages say the same of them.
TEST_F(ConfdLibCdbAndMaapiPageGetters, IntegersHaveOneForEachWidth) {
  CHECK_GETTER(int8, int8_t, "i8", value == -8);
  CHECK_GETTER(int16, int16_t, "i16", value == -16);
  CHECK_GETTER(int32, int32_t, "i32", value == -32);
  CHECK_GETTER(int64, int64_t, "i64", value == -64);
  CHECK_GETTER(u_int8, uint8_t, "u8", value == 8);
  CHECK_GETTER(u_int16, uint16_t, "u16", value == 16);
  CHECK_GETTER(u_int32, uint32_t, "u32", value == 32);
  CHECK_GETTER(u_int64, uint64_t, "u64", value == 64);
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, BooleansEnumerationsAndBitsAreNumbers) {
  CHECK_GETTER(bool, int, "bool", value == 1);
  CHECK_GETTER(enum_value, int32_t, "enum", value == -2);
  CHECK_GETTER(bit32, uint32_t, "bits32", value == 0x80000001);
  CHECK_GETTER(bit64, uint64_t, "bits64", value == 0x8000000000000001);
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, AddressesAreInNetworkByteOrder) {
  CHECK_GETTER(ipv4, in_addr, "ip4", value.s_addr == htonl(0x0a000001));
  CHECK_GETTER(ipv6, in6_addr, "ip6", IsAddress6(value, "2001:db8::1"));
  CHECK_GETTER(dquad, confd_dotted_quad, "quad",
               std::memcmp(value.quad, "\1\2\3\4", 4) == 0);
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, PrefixesHaveAddressAndLength) {
  CHECK_GETTER(ipv4prefix, confd_ipv4_prefix, "ip4-prefix",
               value.len == 16 && value.ip.s_addr == htonl(0x0a010000));
  CHECK_GETTER(ipv6prefix, confd_ipv6_prefix, "ip6-prefix",
               value.len == 32 && IsAddress6(value.ip6, "2001:db8::"));
  CHECK_GETTER(ipv4_and_plen, confd_ipv4_prefix, "ip4-plen",
               value.len == 24 && value.ip.s_addr == htonl(0x0a010203));
  CHECK_GETTER(ipv6_and_plen, confd_ipv6_prefix, "ip6-plen",
               value.len == 64 && IsAddress6(value.ip6, "2001:db8::1"));
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, DatesDecimalsAndIdentitiesAreStructs) {
  CHECK_GETTER(datetime, confd_datetime, "when",
               value.year == 2026 && value.month == 2 && value.sec == 6);
  CHECK_GETTER(decimal64, confd_decimal64, "dec",
               value.value == -150 && value.fraction_digits == 2);
  confd_value_t fish;
  ASSERT_EQ(cdb_get(cdb_, &fish, "/values/kin"), CONFD_OK);
  const confd_identityref expected = CONFD_GET_IDENTITYREF(&fish);
  CHECK_GETTER(identityref, confd_identityref, "kin",
               value.ns == expected.ns && value.id == expected.id);
}

// Reads a value by both calls of a getter, and another type's leaf.
#define CHECK_NAMED(x, type, path, expected)                                   \
  do {                                                                         \
    SCOPED_TRACE(#x);                                                          \
    type value = {};                                                           \
    EXPECT_EQ(Outcome(cdb_get_##x(cdb_, &value, path)), "ok");                 \
    EXPECT_TRUE(expected);                                                     \
    value = {};                                                                \
    EXPECT_EQ(Outcome(maapi_get_##x##_elem(maapi_, th_, &value, path)), "ok"); \
    EXPECT_TRUE(expected);                                                     \
    EXPECT_EQ(Outcome(cdb_get_##x(cdb_, &value, "/named/timeticks")),          \
              "BADTYPE");                                                      \
  } while (0)

TEST_F(ConfdLibCdbAndMaapiPageGetters, NamedTypesHaveTheirOwn) {
  Open(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<dates xmlns=\"urn:test:types\"><date>2026-02-03Z</date>"
      "<time>04:05:06Z</time><duration>P1DT2H</duration></dates>"
      "<named xmlns=\"urn:test:types\"><timeticks>1</timeticks>"
      "<float>1.5</float></named></config>",
      "types", "types");
  CHECK_NAMED(double, double, "/named/float", value == 1.5);
  CHECK_NAMED(date, confd_date, "/dates/date",
              value.year == 2026 && value.month == 2 && value.day == 3);
  CHECK_NAMED(time, confd_time, "/dates/time",
              value.hour == 4 && value.min == 5 && value.sec == 6);
  CHECK_NAMED(duration, confd_duration, "/dates/duration",
              value.days == 1 && value.hours == 2);
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, ObjectIdentifiersAreTheCallersToFree) {
  Open(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<named xmlns=\"urn:test:types\"><timeticks>1</timeticks>"
      "<object-identifier>1.3.6</object-identifier></named></config>",
      "types", "types");
  confd_snmp_oid* oid = nullptr;
  ASSERT_EQ(cdb_get_oid(cdb_, &oid, "/named/object-identifier"), CONFD_OK);
  EXPECT_EQ(oid->len, 3);
  EXPECT_EQ(oid->oid[2], 6u);
  free(oid);
  ASSERT_EQ(maapi_get_oid_elem(maapi_, th_, &oid, "/named/object-identifier"),
            CONFD_OK);
  EXPECT_EQ(oid->len, 3);
  free(oid);
  EXPECT_EQ(Outcome(cdb_get_oid(cdb_, &oid, "/named/timeticks")), "BADTYPE");
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, InstanceIdentifiersArePathsToFree) {
  OpenZoo("<values><i8>1</i8><where>/zoo:values/zoo:i8</where></values>");
  confd_hkeypath_t* path = nullptr;
  ASSERT_EQ(cdb_get_objectref(cdb_, &path, "/values/where"), CONFD_OK);
  EXPECT_EQ(path->len, 2);
  confd_free_hkeypath(path);
  ASSERT_EQ(maapi_get_objectref_elem(maapi_, th_, &path, "/values/where"),
            CONFD_OK);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&path->v[1][0]), 1001u);
  confd_free_hkeypath(path);
  EXPECT_EQ(Outcome(cdb_get_objectref(cdb_, &path, "/values/i8")), "BADTYPE");
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, QualifiedNamesHaveTwoParts) {
  Open(
      "<config xmlns=\"http://tail-f.com/ns/config/1.0\">"
      "<named xmlns=\"urn:test:types\"><timeticks>1</timeticks>"
      "<qname>p:n</qname></named></config>",
      "types", "types");
  unsigned char* prefix = nullptr;
  unsigned char* name = nullptr;
  int prefixsz = 0;
  int namesz = 0;
  ASSERT_EQ(
      cdb_get_qname(cdb_, &prefix, &prefixsz, &name, &namesz, "/named/qname"),
      CONFD_OK);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(prefix), prefixsz), "p");
  EXPECT_EQ(std::string(reinterpret_cast<char*>(name), namesz), "n");
  free(prefix);
  free(name);
  ASSERT_EQ(maapi_set_elem2(maapi_, th_, "alone", "/named/qname"), CONFD_OK);
  ASSERT_EQ(maapi_get_qname_elem(maapi_, th_, &prefix, &prefixsz, &name,
                                 &namesz, "/named/qname"),
            CONFD_OK);
  // Without a prefix.
  EXPECT_EQ(prefix, nullptr);
  EXPECT_EQ(prefixsz, 0);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(name), namesz), "alone");
  free(name);
  EXPECT_EQ(Outcome(cdb_get_qname(cdb_, &prefix, &prefixsz, &name, &namesz,
                                  "/named/timeticks")),
            "BADTYPE");
}

#define CHECK_BYTES(x, leaf, bytes)                                         \
  do {                                                                      \
    SCOPED_TRACE(#x);                                                       \
    unsigned char* value = nullptr;                                         \
    int size = 0;                                                           \
    ASSERT_EQ(cdb_get_##x(cdb_, &value, &size, "/values/" leaf), CONFD_OK); \
    EXPECT_EQ(std::string(reinterpret_cast<char*>(value), size), bytes);    \
    EXPECT_EQ(value[size], 0);                                              \
    free(value);                                                            \
    ASSERT_EQ(                                                              \
        maapi_get_##x##_elem(maapi_, th_, &value, &size, "/values/" leaf),  \
        CONFD_OK);                                                          \
    EXPECT_EQ(std::string(reinterpret_cast<char*>(value), size), bytes);    \
    free(value);                                                            \
    EXPECT_EQ(Outcome(cdb_get_##x(cdb_, &value, &size, "/values/u8")),      \
              "BADTYPE");                                                   \
    EXPECT_EQ(Outcome(cdb_get_##x(cdb_, &value, nullptr, "/values/" leaf)), \
              "PROTOUSAGE");                                                \
  } while (0)

TEST_F(ConfdLibCdbAndMaapiPageGetters, BytesAreTheCallersToFree) {
  using std::string_literals::operator""s;
  CHECK_BYTES(buf, "str", "text"s);
  CHECK_BYTES(binary, "bin", "\0\1\2"s);
  CHECK_BYTES(hexstr, "hex", "\x0a\xff"s);
  CHECK_BYTES(bitbig, "bitbig", "\1\0\0\0\0\0\0\0\x40"s);
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, ListsAreTheCallersToFree) {
  confd_value_t* values = nullptr;
  int n = 0;
  ASSERT_EQ(cdb_get_list(cdb_, &values, &n, "/values/numbers"), CONFD_OK);
  EXPECT_EQ(Show(values, n), "C_INT16 3, C_INT16 -1");
  free(values);
  ASSERT_EQ(maapi_get_list_elem(maapi_, th_, &values, &n, "/values/names"),
            CONFD_OK);
  EXPECT_EQ(Show(values, n), "C_BUF one, C_BUF two");
  for (int i = 0; i < n; ++i) confd_free_value(&values[i]);
  free(values);
  EXPECT_EQ(Outcome(cdb_get_list(cdb_, &values, &n, "/values/gates")),
            "NOEXISTS");
  EXPECT_EQ(Outcome(cdb_get_list(cdb_, &values, &n, "/values/u8")), "BADTYPE");
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, StringsAreCopiedWithTheirNul) {
  char text[8];
  std::memset(text, '#', sizeof text);
  ASSERT_EQ(maapi_get_str_elem(maapi_, th_, text, 5, "/values/str"), CONFD_OK);
  EXPECT_EQ(std::string(text, 6), std::string("text\0#", 6));
  EXPECT_EQ(Outcome(maapi_get_str_elem(maapi_, th_, text, 4, "/values/str")),
            "PROTOUSAGE");
  EXPECT_EQ(Outcome(maapi_get_str_elem(maapi_, th_, text, 8, "/values/u8")),
            "BADTYPE");
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, Buf2CopiesWhatFitsAndTellsItsLength) {
  unsigned char bytes[8];
  std::memset(bytes, '#', sizeof bytes);
  int n = 4;
  ASSERT_EQ(cdb_get_buf2(cdb_, bytes, &n, "/values/str"), CONFD_OK);
  EXPECT_EQ(n, 4);
  EXPECT_EQ(std::memcmp(bytes, "text#", 5), 0);
  n = 8;
  ASSERT_EQ(ByList(
                [&](const char* fmt, va_list args) {
                  return cdb_vget_buf2(cdb_, bytes, &n, fmt, args);
                },
                "/values/%s", "str"),
            CONFD_OK);
  EXPECT_EQ(n, 4);
  n = 3;
  EXPECT_EQ(Outcome(cdb_get_buf2(cdb_, bytes, &n, "/values/str")),
            "PROTOUSAGE");
}

TEST_F(ConfdLibCdbAndMaapiPageGetters, ReadDefaultsUnlessTheyAreToldApart) {
  uint8_t small = 0;
  ASSERT_EQ(maapi_get_u_int8_elem(maapi_, th_, &small, "/values/small"),
            CONFD_OK);
  EXPECT_EQ(small, 5);
  ASSERT_EQ(maapi_set_flags(maapi_, th_, MAAPI_FLAG_NO_DEFAULTS), CONFD_OK);
  EXPECT_EQ(
      Outcome(maapi_get_u_int8_elem(maapi_, th_, &small, "/values/small")),
      "BADTYPE");
  EXPECT_EQ(Get("/values/u8"), "C_UINT8 8");
}

}  // namespace
}  // namespace contract
