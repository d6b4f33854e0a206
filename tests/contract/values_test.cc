// Values: their numbers, layout and accessors.
#include <arpa/inet.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

static_assert(CONFD_OK == 0 && CONFD_ERR == -1 && CONFD_EOF == -2);
static_assert(CONFD_ERR_NOEXISTS == 1 && CONFD_ERR_ALREADY_EXISTS == 2 &&
              CONFD_ERR_NOT_WRITABLE == 4 && CONFD_ERR_BADTYPE == 5 &&
              CONFD_ERR_NOTCREATABLE == 6 && CONFD_ERR_NOTDELETABLE == 7 &&
              CONFD_ERR_BADPATH == 8 && CONFD_ERR_NOTSET == 12 &&
              CONFD_ERR_BAD_KEYREF == 14 && CONFD_ERR_INTERNAL == 18 &&
              CONFD_ERR_MALLOC == 20 && CONFD_ERR_PROTOUSAGE == 21 &&
              CONFD_ERR_NOSESSION == 22 && CONFD_ERR_OS == 24 &&
              CONFD_ERR_MUST_FAILED == 41 && CONFD_ERR_UNAVAILABLE == 44);
static_assert(CONFD_FIND_NEXT == 0 && CONFD_FIND_SAME_OR_NEXT == 1);
static_assert(MAXKEYLEN == 9 && MAXDEPTH == 20);
static_assert(CONFD_TIMEZONE_UNDEF == -111);

TEST(ConfdTypesPageNumbers, AreThoseOfTheBinaryInterface) {
  const std::pair<int, int> numbers[] = {
      {C_NOEXISTS, 1},
      {C_XMLTAG, 2},
      {C_SYMBOL, 3},
      {C_STR, 4},
      {C_BUF, 5},
      {C_INT8, 6},
      {C_INT16, 7},
      {C_INT32, 8},
      {C_INT64, 9},
      {C_UINT8, 10},
      {C_UINT16, 11},
      {C_UINT32, 12},
      {C_UINT64, 13},
      {C_DOUBLE, 14},
      {C_IPV4, 15},
      {C_IPV6, 16},
      {C_BOOL, 17},
      {C_QNAME, 18},
      {C_DATETIME, 19},
      {C_DATE, 20},
      {C_TIME, 23},
      {C_DURATION, 27},
      {C_ENUM_VALUE, 28},
      {C_BIT32, 29},
      {C_BIT64, 30},
      {C_LIST, 31},
      {C_XMLBEGIN, 32},
      {C_XMLEND, 33},
      {C_OBJECTREF, 34},
      {C_UNION, 35},
      {C_PTR, 36},
      {C_CDBBEGIN, 37},
      {C_OID, 38},
      {C_BINARY, 39},
      {C_IPV4PREFIX, 40},
      {C_IPV6PREFIX, 41},
      {C_DEFAULT, 42},
      {C_DECIMAL64, 43},
      {C_IDENTITYREF, 44},
      {C_XMLBEGINDEL, 45},
      {C_DQUAD, 46},
      {C_HEXSTR, 47},
      {C_IPV4_AND_PLEN, 48},
      {C_IPV6_AND_PLEN, 49},
      {C_BITBIG, 50},
      {C_XMLMOVEFIRST, 51},
      {C_XMLMOVEAFTER, 52},
      {C_EMPTY, 53},
      {C_MAXTYPE, 54},
  };
  for (const auto& [tag, number] : numbers) EXPECT_EQ(tag, number);
}

TEST(ConfdTypesPageLayout, IsThatOfTheBinaryInterface) {
  EXPECT_EQ(sizeof(confd_value_t), 40u);
  EXPECT_EQ(offsetof(confd_value_t, type), 0u);
  EXPECT_EQ(sizeof(enum confd_vtype), 4u);
  EXPECT_EQ(offsetof(confd_value_t, val), 8u);
  EXPECT_EQ(sizeof(confd_value_t::val), 32u);
  EXPECT_EQ(alignof(confd_value_t), 8u);
  EXPECT_EQ(sizeof(struct confd_qname), 32u);
  EXPECT_EQ(sizeof(confd_buf_t), 16u);
  EXPECT_EQ(offsetof(confd_buf_t, size), 0u);
  EXPECT_EQ(offsetof(confd_buf_t, ptr), 8u);
  EXPECT_EQ(sizeof(confd_buf_const_t), 16u);
  EXPECT_EQ(sizeof(struct confd_list), 16u);
  EXPECT_EQ(offsetof(struct confd_list, ptr), 8u);
  EXPECT_EQ(sizeof(struct confd_ipv4_prefix), 8u);
  EXPECT_EQ(offsetof(struct confd_ipv4_prefix, len), 4u);
  EXPECT_EQ(sizeof(struct confd_ipv6_prefix), 20u);
  EXPECT_EQ(offsetof(struct confd_ipv6_prefix, len), 16u);
  EXPECT_EQ(sizeof(struct confd_decimal64), 16u);
  EXPECT_EQ(offsetof(struct confd_decimal64, fraction_digits), 8u);
  EXPECT_EQ(sizeof(struct confd_identityref), 8u);
  EXPECT_EQ(sizeof(struct confd_dotted_quad), 4u);
  EXPECT_EQ(sizeof(struct xml_tag), 8u);
  EXPECT_EQ(sizeof(struct confd_datetime), 16u);
  EXPECT_EQ(offsetof(struct confd_datetime, month), 2u);
  EXPECT_EQ(offsetof(struct confd_datetime, micro), 8u);
  EXPECT_EQ(offsetof(struct confd_datetime, timezone), 12u);
  EXPECT_EQ(offsetof(struct confd_datetime, timezone_minutes), 13u);
  EXPECT_EQ(sizeof(struct confd_date), 6u);
  EXPECT_EQ(offsetof(struct confd_date, timezone), 4u);
  EXPECT_EQ(sizeof(struct confd_time), 12u);
  EXPECT_EQ(offsetof(struct confd_time, micro), 4u);
  EXPECT_EQ(offsetof(struct confd_time, timezone), 8u);
  EXPECT_EQ(sizeof(struct confd_duration), 28u);
  EXPECT_EQ(offsetof(struct confd_duration, micros), 24u);
  EXPECT_EQ(sizeof(struct confd_snmp_oid), 516u);
  EXPECT_EQ(offsetof(struct confd_snmp_oid, len), 512u);
  EXPECT_EQ(sizeof(struct confd_vptr), 16u);
  EXPECT_EQ(offsetof(struct confd_vptr, ptr), 8u);
  EXPECT_EQ(sizeof(confd_hkeypath_t), 8u + 20u * 9u * 40u);
  EXPECT_EQ(offsetof(confd_hkeypath_t, v), 8u);
  EXPECT_EQ(sizeof(confd_tag_value_t), 48u);
  EXPECT_EQ(offsetof(confd_tag_value_t, v), 8u);
  EXPECT_EQ(sizeof(confd_attr_value_t), 48u);
  EXPECT_EQ(offsetof(confd_attr_value_t, v), 8u);
  EXPECT_EQ(sizeof(confd_tag_value_attr_t), 64u);
  EXPECT_EQ(offsetof(confd_tag_value_attr_t, attrs), 48u);
  EXPECT_EQ(offsetof(confd_tag_value_attr_t, num_attrs), 56u);
}

TEST(ConfdTypesPageLayout, ArraysHaveAStrideOf40Bytes) {
  confd_value_t values[2];
  EXPECT_EQ(
      reinterpret_cast<char*>(&values[1]) - reinterpret_cast<char*>(&values[0]),
      40);
}

TEST(ConfdTypesPageLayout, MembersHaveTheirTypes) {
  confd_value_t v;
  static_assert(std::is_same_v<decltype(v.val.i8), int8_t>);
  static_assert(std::is_same_v<decltype(v.val.i16), int16_t>);
  static_assert(std::is_same_v<decltype(v.val.i32), int32_t>);
  static_assert(std::is_same_v<decltype(v.val.i64), int64_t>);
  static_assert(std::is_same_v<decltype(v.val.u8), uint8_t>);
  static_assert(std::is_same_v<decltype(v.val.u16), uint16_t>);
  static_assert(std::is_same_v<decltype(v.val.u32), uint32_t>);
  static_assert(std::is_same_v<decltype(v.val.u64), uint64_t>);
  static_assert(std::is_same_v<decltype(v.val.d), double>);
  static_assert(std::is_same_v<decltype(v.val.boolean), int>);
  static_assert(std::is_same_v<decltype(v.val.enumvalue), int32_t>);
  static_assert(std::is_same_v<decltype(v.val.enumhash), uint32_t>);
  static_assert(std::is_same_v<decltype(v.val.symbol), uint32_t>);
  static_assert(std::is_same_v<decltype(v.val.hkp), confd_hkeypath_t*>);
  static_assert(std::is_same_v<decltype(v.val.oidp), struct confd_snmp_oid*>);
  static_assert(std::is_same_v<decltype(v.val.ptr), struct confd_vptr>);
  static_assert(std::is_same_v<decltype(v.val.b32), uint32_t>);
  static_assert(std::is_same_v<decltype(v.val.b64), uint64_t>);
  static_assert(std::is_same_v<decltype(v.val.ip), struct in_addr>);
  static_assert(std::is_same_v<decltype(v.val.ip6), struct in6_addr>);
  static_assert(std::is_same_v<decltype(v.val.s), char*>);
  static_assert(std::is_same_v<decltype(v.val.c_s), const char*>);
  static_assert(
      std::is_same_v<decltype(v.val.c_buf.ptr), const unsigned char*>);
  // The const views lie over the others.
  const char* text = "shared";
  CONFD_SET_STR(&v, text);
  EXPECT_EQ(v.val.s, text);
  CONFD_SET_BUF(&v, text, 6);
  EXPECT_EQ(v.val.buf.ptr, reinterpret_cast<const unsigned char*>(text));
}

TEST(ConfdLibMaapiPageCursorLayout, ShowsKeysAndTheirNumber) {
  maapi_cursor mc = {};
  EXPECT_EQ(sizeof mc.keys, 9u * 40u);
  EXPECT_EQ(offsetof(maapi_cursor, keys), 0u);
  EXPECT_EQ(offsetof(maapi_cursor, n), 360u);
}

// ---- Accessors: what is set is what is got, under the right tag -----------

#define EXPECT_PAIR(NAME, TAG, VALUE)       \
  do {                                      \
    confd_value_t v;                        \
    std::memset(&v, 0xff, sizeof v);        \
    CONFD_SET_##NAME(&v, VALUE);            \
    EXPECT_EQ(v.type, TAG);                 \
    EXPECT_EQ(CONFD_GET_##NAME(&v), VALUE); \
  } while (false)

TEST(ConfdTypesPageMacros, SetAndGetNumbers) {
  EXPECT_PAIR(INT8, C_INT8, -128);
  EXPECT_PAIR(INT16, C_INT16, -32768);
  EXPECT_PAIR(INT32, C_INT32, INT32_MIN);
  EXPECT_PAIR(INT64, C_INT64, INT64_MIN);
  EXPECT_PAIR(UINT8, C_UINT8, 255);
  EXPECT_PAIR(UINT16, C_UINT16, 65535);
  EXPECT_PAIR(UINT32, C_UINT32, UINT32_MAX);
  EXPECT_PAIR(UINT64, C_UINT64, UINT64_MAX);
  EXPECT_PAIR(DOUBLE, C_DOUBLE, -0.5);
  EXPECT_PAIR(BOOL, C_BOOL, 1);
  EXPECT_PAIR(ENUM_VALUE, C_ENUM_VALUE, -7);
  EXPECT_PAIR(BIT32, C_BIT32, 0x80000001u);
  EXPECT_PAIR(BIT64, C_BIT64, uint64_t{1} << 63);
}

TEST(ConfdTypesPageMacros, SetAndGetStrings) {
  const char bytes[] = {'a', '\0', 'b'};
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes);
  confd_value_t v;
  CONFD_SET_STR(&v, bytes);
  EXPECT_EQ(v.type, C_STR);
  EXPECT_EQ(v.val.c_s, bytes);
  CONFD_SET_BUF(&v, bytes, 3);
  EXPECT_EQ(v.type, C_BUF);
  EXPECT_EQ(CONFD_GET_BUFPTR(&v), raw);
  EXPECT_EQ(CONFD_GET_BUFSIZE(&v), 3u);
  CONFD_SET_BINARY(&v, bytes, 3);
  EXPECT_EQ(v.type, C_BINARY);
  EXPECT_EQ(CONFD_GET_BINARY_PTR(&v), raw);
  EXPECT_EQ(CONFD_GET_BINARY_SIZE(&v), 3u);
  CONFD_SET_HEXSTR(&v, bytes, 2);
  EXPECT_EQ(v.type, C_HEXSTR);
  EXPECT_EQ(CONFD_GET_HEXSTR_PTR(&v), raw);
  EXPECT_EQ(CONFD_GET_HEXSTR_SIZE(&v), 2u);
  CONFD_SET_BITBIG(&v, bytes, 1);
  EXPECT_EQ(v.type, C_BITBIG);
  EXPECT_EQ(CONFD_GET_BITBIG_PTR(&v), raw);
  EXPECT_EQ(CONFD_GET_BITBIG_SIZE(&v), 1u);
}

// Structures are compared byte by byte: none of these has padding that counts.
#define EXPECT_STRUCT_PAIR(NAME, TAG, VALUE)                       \
  do {                                                             \
    confd_value_t v;                                               \
    CONFD_SET_##NAME(&v, VALUE);                                   \
    EXPECT_EQ(v.type, TAG);                                        \
    auto got = CONFD_GET_##NAME(&v);                               \
    static_assert(std::is_same_v<decltype(got), decltype(VALUE)>); \
    EXPECT_EQ(std::memcmp(&got, &VALUE, sizeof VALUE), 0);         \
  } while (false)

TEST(ConfdTypesPageMacros, SetAndGetStructures) {
  struct in_addr ip = {};
  ip.s_addr = htonl(0x0a000001);
  EXPECT_STRUCT_PAIR(IPV4, C_IPV4, ip);
  struct in6_addr ip6 = {};
  ip6.s6_addr[15] = 1;
  EXPECT_STRUCT_PAIR(IPV6, C_IPV6, ip6);
  struct confd_ipv4_prefix p4 = {};
  p4.ip = ip;
  p4.len = 24;
  EXPECT_STRUCT_PAIR(IPV4PREFIX, C_IPV4PREFIX, p4);
  EXPECT_STRUCT_PAIR(IPV4_AND_PLEN, C_IPV4_AND_PLEN, p4);
  struct confd_ipv6_prefix p6 = {};
  p6.ip6 = ip6;
  p6.len = 64;
  EXPECT_STRUCT_PAIR(IPV6PREFIX, C_IPV6PREFIX, p6);
  EXPECT_STRUCT_PAIR(IPV6_AND_PLEN, C_IPV6_AND_PLEN, p6);
  struct confd_decimal64 dec = {};
  dec.value = -150;
  dec.fraction_digits = 2;
  EXPECT_STRUCT_PAIR(DECIMAL64, C_DECIMAL64, dec);
  struct confd_identityref id = {7, 9};
  EXPECT_STRUCT_PAIR(IDENTITYREF, C_IDENTITYREF, id);
  struct confd_dotted_quad quad = {{1, 2, 3, 4}};
  EXPECT_STRUCT_PAIR(DQUAD, C_DQUAD, quad);
  struct confd_datetime datetime = {};
  datetime.year = 2026;
  EXPECT_STRUCT_PAIR(DATETIME, C_DATETIME, datetime);
  struct confd_date date = {};
  date.year = 2026;
  EXPECT_STRUCT_PAIR(DATE, C_DATE, date);
  struct confd_time time = {};
  time.hour = 23;
  EXPECT_STRUCT_PAIR(TIME, C_TIME, time);
  struct confd_duration duration = {};
  duration.days = 3;
  EXPECT_STRUCT_PAIR(DURATION, C_DURATION, duration);
}

TEST(ConfdTypesPageMacros, SetAndGetTheRest) {
  confd_value_t v;
  CONFD_SET_NOEXISTS(&v);
  EXPECT_EQ(v.type, C_NOEXISTS);
  CONFD_SET_EMPTY(&v);
  EXPECT_EQ(v.type, C_EMPTY);
  CONFD_SET_XMLTAG(&v, 5, 6);
  EXPECT_EQ(v.type, C_XMLTAG);
  EXPECT_EQ(CONFD_GET_XMLTAG(&v), 5u);
  EXPECT_EQ(CONFD_GET_XMLTAG_NS(&v), 6u);
  confd_value_t items[2];
  CONFD_SET_LIST(&v, items, 2);
  EXPECT_EQ(v.type, C_LIST);
  EXPECT_EQ(CONFD_GET_LIST(&v), items);
  EXPECT_EQ(CONFD_GET_LISTSIZE(&v), 2u);
}

TEST(ConfdTypesPageMacros, SetAndGetPathsAndObjectIdentifiers) {
  confd_hkeypath_t path;
  EXPECT_PAIR(OBJECTREF, C_OBJECTREF, &path);
  struct confd_snmp_oid oid;
  EXPECT_PAIR(OID, C_OID, &oid);
}

TEST(ConfdTypesPageMacros, SetAndGetQualifiedNames) {
  const char text[] = "prefixname";
  const auto* raw = reinterpret_cast<const unsigned char*>(text);
  confd_value_t v;
  CONFD_SET_QNAME(&v, text, 6, text + 6, 4);
  EXPECT_EQ(v.type, C_QNAME);
  EXPECT_EQ(CONFD_GET_QNAME_PREFIX_PTR(&v), raw);
  EXPECT_EQ(CONFD_GET_QNAME_PREFIX_SIZE(&v), 6u);
  EXPECT_EQ(CONFD_GET_QNAME_NAME_PTR(&v), raw + 6);
  EXPECT_EQ(CONFD_GET_QNAME_NAME_SIZE(&v), 4u);
}

TEST(ConfdTypesPageMacros, SetBitsOfLongBitSets) {
  unsigned char mask[9] = {};
  CONFD_BITBIG_SET_BIT(mask, 0);
  CONFD_BITBIG_SET_BIT(mask, 15);
  CONFD_BITBIG_SET_BIT(mask, 9);
  CONFD_BITBIG_SET_BIT(mask, 70);
  const unsigned char expected[9] = {1, 0x82, 0, 0, 0, 0, 0, 0, 0x40};
  EXPECT_EQ(std::memcmp(mask, expected, sizeof mask), 0);
}

// ---- Tagged values ----------------------------------------------------------

#define EXPECT_TAGGED(NAME, ...)                                        \
  do {                                                                  \
    confd_value_t v = {};                                               \
    CONFD_SET_##NAME(&v, __VA_ARGS__);                                  \
    confd_tag_value_t tv = {};                                          \
    tv.tag.ns = 99;                                                     \
    CONFD_SET_TAG_##NAME(&tv, 7u, __VA_ARGS__);                         \
    EXPECT_EQ(CONFD_GET_TAG_TAG(&tv), 7u);                              \
    EXPECT_EQ(tv.tag.ns, 0u);                                           \
    EXPECT_EQ(std::memcmp(CONFD_GET_TAG_VALUE(&tv), &v, sizeof v), 0);  \
    confd_tag_value_attr_t tva = {};                                    \
    confd_attr_value_t attrs[2];                                        \
    CONFD_SET_TAG_ATTR_##NAME(&tva, 7u, __VA_ARGS__, attrs, 2);         \
    EXPECT_EQ(CONFD_GET_TAG_TAG(&tva), 7u);                             \
    EXPECT_EQ(tva.tag.ns, 0u);                                          \
    EXPECT_EQ(std::memcmp(CONFD_GET_TAG_VALUE(&tva), &v, sizeof v), 0); \
    EXPECT_EQ(tva.attrs, attrs);                                        \
    EXPECT_EQ(tva.num_attrs, 2);                                        \
  } while (false)

TEST(ConfdTypesPageTaggedMacros, HaveASetterForEachOfTheValues) {
  EXPECT_TAGGED(INT8, int8_t{-1});
  EXPECT_TAGGED(INT16, int16_t{-1});
  EXPECT_TAGGED(INT32, -1);
  EXPECT_TAGGED(INT64, -1);
  EXPECT_TAGGED(UINT8, uint8_t{1});
  EXPECT_TAGGED(UINT16, uint16_t{1});
  EXPECT_TAGGED(UINT32, 1u);
  EXPECT_TAGGED(UINT64, 1u);
  EXPECT_TAGGED(DOUBLE, 0.5);
  EXPECT_TAGGED(BOOL, 1);
  EXPECT_TAGGED(ENUM_VALUE, 3);
  EXPECT_TAGGED(BIT32, 1u);
  EXPECT_TAGGED(BIT64, 1u);
  // Not on the stack: their padding is compared too.
  static const in_addr ip = {1};
  EXPECT_TAGGED(IPV4, ip);
  static const in6_addr ip6 = {};
  EXPECT_TAGGED(IPV6, ip6);
  static const confd_ipv4_prefix prefix = {{1}, 8};
  EXPECT_TAGGED(IPV4PREFIX, prefix);
  EXPECT_TAGGED(IPV4_AND_PLEN, prefix);
  static const confd_ipv6_prefix prefix6 = {{}, 8};
  EXPECT_TAGGED(IPV6PREFIX, prefix6);
  EXPECT_TAGGED(IPV6_AND_PLEN, prefix6);
  static const confd_datetime datetime = {2026, 1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_TAGGED(DATETIME, datetime);
  static const confd_date date = {2026, 1, 2, 3, 4};
  EXPECT_TAGGED(DATE, date);
  static const confd_time time = {1, 2, 3, 4, 5, 6};
  EXPECT_TAGGED(TIME, time);
  static const confd_duration duration = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_TAGGED(DURATION, duration);
  static const confd_decimal64 decimal = {150, 2};
  EXPECT_TAGGED(DECIMAL64, decimal);
  static const confd_identityref identity = {1, 2};
  EXPECT_TAGGED(IDENTITYREF, identity);
  static const confd_dotted_quad quad = {{1, 2, 3, 4}};
  EXPECT_TAGGED(DQUAD, quad);
  confd_hkeypath_t path;
  EXPECT_TAGGED(OBJECTREF, &path);
  confd_snmp_oid oid;
  EXPECT_TAGGED(OID, &oid);
  EXPECT_TAGGED(STR, "text");
  EXPECT_TAGGED(BUF, "text", 4);
  EXPECT_TAGGED(BINARY, "text", 4);
  EXPECT_TAGGED(HEXSTR, "text", 4);
  EXPECT_TAGGED(BITBIG, "text", 4);
  confd_value_t items[2];
  EXPECT_TAGGED(LIST, items, 2);
  EXPECT_TAGGED(XMLTAG, 8u, 9u);
  EXPECT_TAGGED(QNAME, "p", 1, "name", 4);
}

TEST(ConfdTypesPageTaggedMacros, OfNothingAndOfTypeEmptyHaveNoArgument) {
  confd_tag_value_t tv = {};
  CONFD_SET_TAG_NOEXISTS(&tv, 7);
  EXPECT_EQ(tv.tag.tag, 7u);
  EXPECT_EQ(tv.v.type, C_NOEXISTS);
  CONFD_SET_TAG_EMPTY(&tv, 8);
  EXPECT_EQ(tv.tag.tag, 8u);
  EXPECT_EQ(tv.v.type, C_EMPTY);
  confd_tag_value_attr_t tva = {};
  confd_attr_value_t attr;
  CONFD_SET_TAG_ATTR_NOEXISTS(&tva, 7, &attr, 1);
  EXPECT_EQ(tva.v.type, C_NOEXISTS);
  CONFD_SET_TAG_ATTR_EMPTY(&tva, 7, &attr, 1);
  EXPECT_EQ(tva.v.type, C_EMPTY);
  EXPECT_EQ(tva.num_attrs, 1);
}

TEST(ConfdTypesPageTaggedMacros, OpenAndCloseContainersAndEntries) {
  confd_tag_value_t tv = {};
  CONFD_SET_TAG_XMLBEGIN(&tv, 7, 1001);
  EXPECT_EQ(tv.tag.tag, 7u);
  EXPECT_EQ(tv.tag.ns, 1001u);
  EXPECT_EQ(tv.v.type, C_XMLBEGIN);
  EXPECT_EQ(tv.v.val.xmltag.tag, 7u);
  EXPECT_EQ(tv.v.val.xmltag.ns, 1001u);
  CONFD_SET_TAG_XMLEND(&tv, 8, 1002);
  EXPECT_EQ(tv.tag.tag, 8u);
  EXPECT_EQ(tv.tag.ns, 1002u);
  EXPECT_EQ(tv.v.type, C_XMLEND);
  CONFD_SET_TAG_CDBBEGIN(&tv, 9, 1003, 4);
  EXPECT_EQ(tv.tag.tag, 9u);
  EXPECT_EQ(tv.tag.ns, 1003u);
  EXPECT_EQ(tv.v.type, C_CDBBEGIN);
  EXPECT_EQ(tv.v.val.i32, 4);
  confd_tag_value_attr_t tva = {};
  confd_attr_value_t attr;
  CONFD_SET_TAG_ATTR_XMLBEGIN(&tva, 7, 1001, &attr, 1);
  EXPECT_EQ(tva.v.type, C_XMLBEGIN);
  EXPECT_EQ(tva.tag.ns, 1001u);
  EXPECT_EQ(tva.attrs, &attr);
}

TEST(ConfdTypesPageTaggedMacros, AskForAVariableToBeFilled) {
  confd_tag_value_t tv = {};
  uint32_t variable = 0;
  CONFD_SET_TAG_PTR(&tv, 7, C_UINT32, &variable);
  EXPECT_EQ(tv.tag.tag, 7u);
  EXPECT_EQ(tv.v.type, C_PTR);
  EXPECT_EQ(tv.v.val.ptr.type, C_UINT32);
  EXPECT_EQ(tv.v.val.ptr.ptr, &variable);
  CONFD_SET_TAG_NS(&tv, 1001);
  EXPECT_EQ(tv.tag.ns, 1001u);
}

// ---- Getters assert the tag -------------------------------------------------

using ConfdTypesPageGettersDeathTest = testing::Test;

#define EXPECT_ASSERTS(NAME, TAG)                    \
  EXPECT_DEATH((void)CONFD_GET_##NAME(&cdb_objs[i]), \
               "\\(&cdb_objs\\[i\\]\\)->type == " #TAG "' failed")

TEST(ConfdTypesPageGettersDeathTest, AssertTheTagWithTheCallersText) {
  confd_value_t cdb_objs[2];
  CONFD_SET_NOEXISTS(&cdb_objs[0]);
  CONFD_SET_NOEXISTS(&cdb_objs[1]);
  const int i = 1;
  EXPECT_ASSERTS(XMLTAG, C_XMLTAG);
  EXPECT_ASSERTS(XMLTAG_NS, C_XMLTAG);
  EXPECT_ASSERTS(BUFPTR, C_BUF);
  EXPECT_ASSERTS(BUFSIZE, C_BUF);
  EXPECT_ASSERTS(INT8, C_INT8);
  EXPECT_ASSERTS(INT16, C_INT16);
  EXPECT_ASSERTS(INT32, C_INT32);
  EXPECT_ASSERTS(INT64, C_INT64);
  EXPECT_ASSERTS(UINT8, C_UINT8);
  EXPECT_ASSERTS(UINT16, C_UINT16);
  EXPECT_ASSERTS(UINT32, C_UINT32);
  EXPECT_ASSERTS(UINT64, C_UINT64);
  EXPECT_ASSERTS(DOUBLE, C_DOUBLE);
  EXPECT_ASSERTS(IPV4, C_IPV4);
  EXPECT_ASSERTS(IPV6, C_IPV6);
  EXPECT_ASSERTS(BOOL, C_BOOL);
  EXPECT_ASSERTS(QNAME_PREFIX_PTR, C_QNAME);
  EXPECT_ASSERTS(QNAME_PREFIX_SIZE, C_QNAME);
  EXPECT_ASSERTS(QNAME_NAME_PTR, C_QNAME);
  EXPECT_ASSERTS(QNAME_NAME_SIZE, C_QNAME);
  EXPECT_ASSERTS(OBJECTREF, C_OBJECTREF);
  EXPECT_ASSERTS(OID, C_OID);
  EXPECT_ASSERTS(DATETIME, C_DATETIME);
  EXPECT_ASSERTS(DATE, C_DATE);
  EXPECT_ASSERTS(TIME, C_TIME);
  EXPECT_ASSERTS(DURATION, C_DURATION);
  EXPECT_ASSERTS(ENUM_VALUE, C_ENUM_VALUE);
  EXPECT_ASSERTS(BIT32, C_BIT32);
  EXPECT_ASSERTS(BIT64, C_BIT64);
  EXPECT_ASSERTS(LIST, C_LIST);
  EXPECT_ASSERTS(LISTSIZE, C_LIST);
  EXPECT_ASSERTS(BINARY_PTR, C_BINARY);
  EXPECT_ASSERTS(BINARY_SIZE, C_BINARY);
  EXPECT_ASSERTS(IPV4PREFIX, C_IPV4PREFIX);
  EXPECT_ASSERTS(IPV6PREFIX, C_IPV6PREFIX);
  EXPECT_ASSERTS(DECIMAL64, C_DECIMAL64);
  EXPECT_ASSERTS(IDENTITYREF, C_IDENTITYREF);
  EXPECT_ASSERTS(DQUAD, C_DQUAD);
  EXPECT_ASSERTS(HEXSTR_PTR, C_HEXSTR);
  EXPECT_ASSERTS(HEXSTR_SIZE, C_HEXSTR);
  EXPECT_ASSERTS(IPV4_AND_PLEN, C_IPV4_AND_PLEN);
  EXPECT_ASSERTS(IPV6_AND_PLEN, C_IPV6_AND_PLEN);
  EXPECT_ASSERTS(BITBIG_PTR, C_BITBIG);
  EXPECT_ASSERTS(BITBIG_SIZE, C_BITBIG);
}

// ---- confd_free_value -------------------------------------------------------

confd_value_t OwnedBuf(confd_vtype type) {
  confd_value_t v = {};
  v.type = type;
  v.val.buf.ptr = static_cast<unsigned char*>(std::malloc(3));
  v.val.buf.size = 3;
  return v;
}

// The leak checker watches these.
TEST(ConfdLibLibPageFreeValue, ReleasesWhatAValueOwnsAndNotTheStruct) {
  for (confd_vtype type : {C_BUF, C_BINARY, C_HEXSTR, C_BITBIG}) {
    confd_value_t v = OwnedBuf(type);
    confd_free_value(&v);
    EXPECT_EQ(v.type, type);
    // A second time finds nothing left to release.
    confd_free_value(&v);
  }
}

TEST(ConfdLibLibPageFreeValue, ReleasesListsWithTheirItems) {
  confd_value_t v;
  auto* items =
      static_cast<confd_value_t*>(std::calloc(2, sizeof(confd_value_t)));
  items[0] = OwnedBuf(C_BUF);
  items[1] = Uint8(1);
  CONFD_SET_LIST(&v, items, 2);
  confd_free_value(&v);
  confd_free_value(&v);
}

TEST(ConfdLibLibPageFreeValue, LeavesFixedSizeValuesAndStringsAlone) {
  confd_value_t v = Uint32(7);
  confd_free_value(&v);
  EXPECT_EQ(CONFD_GET_UINT32(&v), 7u);
  v = Str("not the library's");
  confd_free_value(&v);
  EXPECT_STREQ(v.val.c_s, "not the library's");
  v = NoExists();
  confd_free_value(&v);
  EXPECT_EQ(v.type, C_NOEXISTS);
}

TEST(ConfdLibLibPageFreeValue, TakesNullAndNullContents) {
  confd_free_value(nullptr);
  confd_value_t v = {};
  confd_free_value(&v);
  v.type = C_LIST;
  v.val.list.size = 5;
  v.val.list.ptr = nullptr;
  confd_free_value(&v);
}

}  // namespace
}  // namespace contract
