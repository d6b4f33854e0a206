// What confd_lib_lib(3) says of copies and comparisons of values.
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/contract/c_api.h"

namespace contract {
namespace {

confd_value_t Bytes(confd_vtype type, const char* bytes, unsigned size) {
  confd_value_t v = {};
  v.type = type;
  v.val.c_buf = {size, reinterpret_cast<const unsigned char*>(bytes)};
  return v;
}

// One of each kind of memory: what a copy has to own.
struct OwnedValues {
  confd_snmp_oid oid = {{1, 3, 6}, 3};
  confd_value_t items[3];
  confd_hkeypath_t path = {};
  confd_value_t values[9];

  OwnedValues() {
    items[0] = Str("one");
    items[1] = Bytes(C_BUF, "two", 3);
    items[2] = Uint8(3);
    path.len = 2;
    path.v[0][0] = Uint32(7);
    path.v[0][1] = Str("key");
    path.v[0][2] = NoExists();
    CONFD_SET_XMLTAG(&path.v[1][0], 9, 1001);
    values[0] = Str("text");
    values[1] = Bytes(C_BUF, "a\0b", 3);
    values[2] = Bytes(C_BINARY, "\0\1", 2);
    values[3] = Bytes(C_HEXSTR, "\0\2", 2);
    values[4] = Bytes(C_BITBIG, "\0\4", 2);
    CONFD_SET_QNAME(&values[5], "p", 1, "name", 4);
    CONFD_SET_OID(&values[6], &oid);
    CONFD_SET_LIST(&values[7], items, 3);
    CONFD_SET_OBJECTREF(&values[8], &path);
  }
};

const void* PointerIn(const confd_value_t& v) {
  switch (v.type) {
    case C_STR:
      return v.val.s;
    case C_LIST:
      return v.val.list.ptr;
    case C_OID:
      return v.val.oidp;
    case C_OBJECTREF:
      return v.val.hkp;
    case C_QNAME:
      return v.val.qname.name.ptr;
    default:
      return v.val.buf.ptr;
  }
}

// The leak checker watches all of these.
TEST(ConfdLibLibPage, CopiesAreDeepStringsIncluded) {
  const OwnedValues owned;
  for (const confd_value_t& value : owned.values) {
    confd_value_t* copy = confd_value_dup(&value);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(confd_val_eq(copy, &value), 1) << Show(value);
    EXPECT_NE(PointerIn(*copy), PointerIn(value)) << value.type;
    confd_free_dup_value(copy);
    confd_value_t to = {};
    ASSERT_EQ(confd_value_dup_to(&value, &to), &to);
    EXPECT_EQ(confd_val_eq(&to, &value), 1) << value.type;
    EXPECT_NE(PointerIn(to), PointerIn(value)) << value.type;
    confd_free_dup_to_value(&to);
  }
}

TEST(ConfdLibLibPage, CopiesOfStringsHaveANulBehindThem) {
  const confd_value_t text = Bytes(C_BUF, "textual", 4);
  confd_value_t* copy = confd_value_dup(&text);
  EXPECT_EQ(CONFD_GET_BUFSIZE(copy), 4u);
  EXPECT_STREQ(reinterpret_cast<char*>(CONFD_GET_BUFPTR(copy)), "text");
  confd_free_dup_value(copy);
}

TEST(ConfdLibLibPage, ValuesWithoutMemoryAreCopiedToo) {
  for (const confd_value_t& value :
       {Uint8(1), Ipv4("1.2.3.4"), NoExists(), Enum(-2)}) {
    confd_value_t* copy = confd_value_dup(&value);
    EXPECT_EQ(Show(*copy), Show(value));
    confd_free_dup_value(copy);
  }
}

TEST(ConfdLibLibPage, FreeValueReleasesAllThatReadsAllocate) {
  const OwnedValues owned;
  for (const confd_value_t& value : owned.values) {
    if (value.type == C_STR || value.type == C_LIST) continue;
    if (value.type == C_OBJECTREF) continue;
    confd_value_t to;
    ASSERT_NE(confd_value_dup_to(&value, &to), nullptr);
    confd_free_value(&to);
    EXPECT_EQ(PointerIn(to), nullptr) << value.type;
  }
}

TEST(ConfdLibLibPage, FreeValueReleasesPathsWithTheirKeys) {
  confd_hkeypath_t path = {};
  path.len = 1;
  path.v[0][0] = Bytes(C_BUF, "key", 3);
  path.v[0][1] = NoExists();
  confd_value_t value;
  CONFD_SET_OBJECTREF(&value, &path);
  confd_value_t copy;
  ASSERT_NE(confd_value_dup_to(&value, &copy), nullptr);
  confd_free_value(&copy);
}

TEST(ConfdLibLibPage, PathsAreCopiedWholeOrFromTheirTop) {
  const OwnedValues owned;
  confd_hkeypath_t* whole = confd_hkeypath_dup(&owned.path);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(whole->len, 2);
  EXPECT_STREQ(whole->v[0][1].val.c_s, "key");
  EXPECT_NE(whole->v[0][1].val.c_s, owned.path.v[0][1].val.c_s);
  EXPECT_EQ(whole->v[0][2].type, C_NOEXISTS);
  EXPECT_EQ(CONFD_GET_XMLTAG(&whole->v[1][0]), 9u);
  confd_free_hkeypath(whole);
  confd_hkeypath_t* first = confd_hkeypath_dup_len(&owned.path, 1);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->len, 1);
  // The last element is still the first of the array.
  EXPECT_EQ(CONFD_GET_XMLTAG(&first->v[0][0]), 9u);
  confd_free_hkeypath(first);
}

TEST(ConfdLibLibPage, PathsHaveNoMoreElementsThanTheyHave) {
  const OwnedValues owned;
  EXPECT_EQ(confd_hkeypath_dup_len(&owned.path, 3), nullptr);
  EXPECT_EQ(confd_hkeypath_dup_len(&owned.path, -1), nullptr);
  confd_hkeypath_t* none = confd_hkeypath_dup_len(&owned.path, 0);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->len, 0);
  confd_free_hkeypath(none);
}

TEST(ConfdLibLibPage, NothingIsReleasedOfNothing) {
  confd_free_dup_value(nullptr);
  confd_free_dup_to_value(nullptr);
  confd_free_hkeypath(nullptr);
}

int Equal(const confd_value_t& a, const confd_value_t& b) {
  const int there = confd_val_eq(&a, &b);
  EXPECT_EQ(confd_val_eq(&b, &a), there);
  return there;
}

TEST(ConfdLibLibPage, ValuesAreEqualByTypeAndContent) {
  EXPECT_GT(Equal(Uint8(1), Uint8(1)), 0);
  EXPECT_EQ(Equal(Uint8(1), Uint8(2)), 0);
  EXPECT_EQ(Equal(Uint8(1), Uint16(1)), 0);
  EXPECT_GT(Equal(Str("a"), Str("a")), 0);
  EXPECT_EQ(Equal(Str("a"), Str("b")), 0);
  EXPECT_GT(Equal(Bytes(C_BUF, "a\0b", 3), Bytes(C_BUF, "a\0b", 3)), 0);
  EXPECT_EQ(Equal(Bytes(C_BUF, "a\0b", 3), Bytes(C_BUF, "a\0c", 3)), 0);
  EXPECT_EQ(Equal(Bytes(C_BUF, "ab", 2), Bytes(C_BUF, "abc", 3)), 0);
  EXPECT_EQ(Equal(Bytes(C_BUF, "ab", 2), Bytes(C_BINARY, "ab", 2)), 0);
  // Nobody says that these are: a program may not count on it.
  EXPECT_EQ(Equal(Str("a"), Bytes(C_BUF, "a", 1)), 0);
  EXPECT_GT(Equal(NoExists(), NoExists()), 0);
  confd_value_t tag;
  confd_value_t other;
  CONFD_SET_XMLTAG(&tag, 1, 2);
  CONFD_SET_XMLTAG(&other, 1, 2);
  EXPECT_GT(Equal(tag, other), 0);
  CONFD_SET_XMLTAG(&other, 1, 3);
  EXPECT_EQ(Equal(tag, other), 0);
  CONFD_SET_XMLTAG(&other, 3, 2);
  EXPECT_EQ(Equal(tag, other), 0);
}

TEST(ConfdLibLibPage, ListsAndPathsAreEqualItemByItem) {
  OwnedValues a;
  OwnedValues b;
  EXPECT_GT(Equal(a.values[7], b.values[7]), 0);
  EXPECT_GT(Equal(a.values[8], b.values[8]), 0);
  b.items[2] = Uint8(4);
  EXPECT_EQ(Equal(a.values[7], b.values[7]), 0);
  b.values[7].val.list.size = 2;
  EXPECT_EQ(Equal(a.values[7], b.values[7]), 0);
  b.path.v[0][1] = Str("other");
  EXPECT_EQ(Equal(a.values[8], b.values[8]), 0);
  OwnedValues c;
  c.path.len = 1;
  EXPECT_EQ(Equal(a.values[8], c.values[8]), 0);
}

int Sign(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

TEST(ConfdLibLibPage, StringsAreComparedWithValuesAsStrcmpDoes) {
  const confd_value_t buf = Bytes(C_BUF, "mmm", 2);
  const confd_value_t str = Str("mm");
  for (const char* text : {"", "m", "mm", "mmm", "a", "z", "\xc3"}) {
    const int expected = Sign(std::strcmp(text, "mm"));
    EXPECT_EQ(Sign(confd_svcmp(text, &buf)), expected) << text;
    EXPECT_EQ(Sign(confd_svcmp(text, &str)), expected) << text;
  }
}

TEST(ConfdLibLibPage, TagsOfTaggedArraysAreEqualByContent) {
  confd_tag_value_t a;
  confd_tag_value_t b;
  const auto equal = [&] { return Equal(a.v, b.v); };
  CONFD_SET_TAG_XMLBEGIN(&a, 1, 2);
  CONFD_SET_TAG_XMLBEGIN(&b, 1, 2);
  EXPECT_GT(equal(), 0);
  CONFD_SET_TAG_XMLBEGIN(&b, 1, 3);
  EXPECT_EQ(equal(), 0);
  CONFD_SET_TAG_XMLEND(&b, 1, 2);
  EXPECT_EQ(equal(), 0);
  CONFD_SET_TAG_XMLEND(&a, 1, 2);
  EXPECT_GT(equal(), 0);
  a.v.type = b.v.type = C_XMLBEGINDEL;
  EXPECT_GT(equal(), 0);
  CONFD_SET_TAG_CDBBEGIN(&a, 1, 2, 7);
  CONFD_SET_TAG_CDBBEGIN(&b, 1, 2, 7);
  EXPECT_GT(equal(), 0);
  CONFD_SET_TAG_CDBBEGIN(&b, 1, 2, 8);
  EXPECT_EQ(equal(), 0);
  CONFD_SET_TAG_PTR(&a, 1, C_UINT8, &a);
  CONFD_SET_TAG_PTR(&b, 1, C_UINT8, &a);
  EXPECT_GT(equal(), 0);
  CONFD_SET_TAG_PTR(&b, 1, C_UINT8, &b);
  EXPECT_EQ(equal(), 0);
  CONFD_SET_TAG_PTR(&b, 1, C_INT8, &a);
  EXPECT_EQ(equal(), 0);
  a.v.type = b.v.type = C_XMLMOVEFIRST;
  EXPECT_GT(equal(), 0);
}

// ---- What a program should not give ----------------------------------------

TEST(ConfdLibLibPage, NothingIsNeitherCopiedNorEqual) {
  confd_value_t value = Uint8(1);
  EXPECT_EQ(confd_value_dup(nullptr), nullptr);
  EXPECT_EQ(confd_value_dup_to(nullptr, &value), nullptr);
  EXPECT_EQ(confd_value_dup_to(&value, nullptr), nullptr);
  EXPECT_EQ(confd_hkeypath_dup(nullptr), nullptr);
  EXPECT_EQ(confd_hkeypath_dup_len(nullptr, 0), nullptr);
  EXPECT_EQ(confd_val_eq(&value, nullptr), 0);
  EXPECT_EQ(confd_val_eq(nullptr, &value), 0);
  EXPECT_EQ(confd_val_eq(nullptr, nullptr), 0);
  const confd_value_t null_string = Str(nullptr);
  EXPECT_GT(confd_svcmp("a", nullptr), 0);
  EXPECT_GT(confd_svcmp("a", &null_string), 0);
  EXPECT_EQ(confd_svcmp(nullptr, &null_string), 0);
  EXPECT_EQ(Equal(null_string, null_string), 0);
}

TEST(ConfdLibLibPage, PathsOfAnImpossibleLengthAreNotCopied) {
  OwnedValues owned;
  confd_value_t reference;
  CONFD_SET_OBJECTREF(&reference, &owned.path);
  for (const int length : {-1, MAXDEPTH + 1, 1 << 30}) {
    owned.path.len = length;
    EXPECT_EQ(confd_hkeypath_dup(&owned.path), nullptr) << length;
    EXPECT_EQ(confd_value_dup(&reference), nullptr) << length;
    EXPECT_EQ(Equal(reference, reference), 0) << length;
  }
}

// As an array holds where a call has left the rest of it alone.
confd_value_t OfNumber(int number) {
  confd_value_t value;
  std::memset(&value, 0x5a, sizeof value);
  std::memcpy(&value.type, &number, sizeof value.type);
  return value;
}

TEST(ConfdLibLibPage, ValuesOfNoTypeHaveNoContent) {
  for (const int number : {-1, 0, 21, 54, 200, 256 + C_BUF, 1 << 30}) {
    confd_value_t value = OfNumber(number);
    confd_value_t* copy = confd_value_dup(&value);
    ASSERT_NE(copy, nullptr) << number;
    EXPECT_EQ(Equal(value, *copy), 0) << number;
    confd_free_dup_value(copy);
    EXPECT_GT(confd_svcmp("a", &value), 0) << number;
    confd_free_value(&value);
    char text[16];
    confd_pp_value(text, sizeof text, &value);
    EXPECT_STREQ(text, "C_?") << number;
  }
}

}  // namespace
}  // namespace contract
