/* The headers and calls as a program in C99 meets them. */
#undef NDEBUG
#include <confd_cdb.h>
#include <confd_lib.h>
#include <confd_maapi.h>
#include <stdio.h>
#include <string.h>

/* The first failed condition as text, NULL for none. */
const char *ExerciseCApi(int cdb_sock, int maapi_sock, int thandle);

#define TEXT_OF(line) #line
#define LINE_TEXT(line) TEXT_OF(line)
#define CHECK(condition)                                  \
  do {                                                    \
    if (!(condition)) {                                   \
      return "line " LINE_TEXT(__LINE__) ": " #condition; \
    }                                                     \
  } while (0)

static int Format(char *buf, int size, const char *fmt, ...) {
  va_list ap;
  int length;
  va_start(ap, fmt);
  length = confd_vformat_keypath(buf, size, fmt, ap);
  va_end(ap);
  return length;
}

static const char *ExerciseReads(int cdb_sock) {
  uint32_t u32 = 0;
  int32_t i32 = 0;
  char text[16];
  struct in_addr ip;
  struct confd_ipv4_prefix prefix;
  confd_value_t values[13];
  int i;

  CHECK(cdb_set_namespace(cdb_sock, 1001) == CONFD_OK);
  CHECK(cdb_num_instances(cdb_sock, "/object") == 1);
  CHECK(cdb_exists(cdb_sock, "/object{%d}", 1) == 1);
  CHECK(cdb_get_u_int32(cdb_sock, &u32, "/object[%d]/id", 0) == CONFD_OK);
  CHECK(u32 == 1);
  CHECK(cdb_get_int32(cdb_sock, &i32, "/values/i32") == CONFD_OK);
  CHECK(i32 == -3);
  CHECK(cdb_get_enum_value(cdb_sock, &i32, "/values/enum") == CONFD_OK);
  CHECK(i32 == 3);
  CHECK(cdb_get_str(cdb_sock, text, (int)sizeof text, "/values/str") ==
        CONFD_OK);
  CHECK(strcmp(text, "text") == 0);
  CHECK(cdb_get_ipv4(cdb_sock, &ip, "/values/ip4") == CONFD_OK);
  CHECK(memcmp(&ip, "\x0a\0\0\x01", 4) == 0);
  CHECK(cdb_get_ipv4_and_plen(cdb_sock, &prefix, "/values/ip4-plen") ==
        CONFD_OK);
  CHECK(prefix.len == 24);
  CHECK(cdb_get_objects(cdb_sock, values, 13, 0, 1, "/object") == 13);
  CHECK(CONFD_GET_UINT32(&values[0]) == 1);
  for (i = 0; i < 13; i++) confd_free_value(&values[i]);
  CHECK(cdb_get_u_int32(cdb_sock, &u32, "/object{9}/id") == CONFD_ERR);
  CHECK(confd_errno == CONFD_ERR_NOEXISTS);
  CHECK(strlen(confd_lasterr()) > 0);
  return NULL;
}

static const char *ExerciseWrites(int sock, int th) {
  confd_value_t value;
  confd_value_t values[3];
  uint32_t u32 = 0;

  CHECK(maapi_set_namespace(sock, th, 1001) == CONFD_OK);
  CHECK(maapi_create(sock, th, "/object{%u}", 2u) == CONFD_OK);
  CHECK(maapi_exists(sock, th, "/object{2}") == 1);
  CONFD_SET_UINT8(&value, 9);
  CHECK(maapi_set_elem(sock, th, &value, "/object{2}/size") == CONFD_OK);
  CHECK(maapi_get_elem(sock, th, &value, "/object{2}/size") == CONFD_OK);
  CHECK(CONFD_GET_UINT8(&value) == 9);
  CHECK(maapi_get_u_int32_elem(sock, th, &u32, "/object{2}/id") == CONFD_OK);
  CHECK(u32 == 2);
  CONFD_SET_UINT32(&values[0], 3);
  CONFD_SET_STR(&values[1], "three");
  CONFD_SET_NOEXISTS(&values[2]);
  CHECK(maapi_set_object(sock, th, values, 3, "/object") == CONFD_OK);
  CHECK(maapi_get_object(sock, th, values, 2, "/object{%x}", &values[0]) == 13);
  CHECK(CONFD_GET_BUFSIZE(&values[1]) == 5);
  confd_free_value(&values[1]);
  CHECK(maapi_delete(sock, th, "/object{3}") == CONFD_OK);
  return NULL;
}

static const char *ExerciseCursor(int sock, int th) {
  struct maapi_cursor mc;
  confd_value_t key;
  int entries = 0;

  CHECK(maapi_init_cursor(sock, th, &mc, "/object") == CONFD_OK);
  while (mc.n != 0) {
    CHECK(maapi_get_next(&mc) == CONFD_OK);
    if (mc.n != 0) entries++;
  }
  CHECK(entries == 2);
  CONFD_SET_UINT32(&key, 1);
  CHECK(maapi_find_next(&mc, CONFD_FIND_NEXT, &key, 1) == CONFD_OK);
  CHECK(mc.n == 1);
  CHECK(CONFD_GET_UINT32(&mc.keys[0]) == 2);
  maapi_destroy_cursor(&mc);
  return NULL;
}

static const char *ExerciseCopies(void) {
  confd_value_t value;
  confd_value_t other;
  confd_value_t *copy;
  confd_hkeypath_t path;
  confd_hkeypath_t *path_copy;

  CONFD_SET_STR(&value, "text");
  copy = confd_value_dup(&value);
  CHECK(copy != NULL);
  CHECK(confd_val_eq(copy, &value) > 0);
  CHECK(confd_svcmp("text", copy) == 0);
  confd_free_dup_value(copy);
  CHECK(confd_value_dup_to(&value, &other) == &other);
  confd_free_dup_to_value(&other);
  path.len = 1;
  CONFD_SET_XMLTAG(&path.v[0][0], 1, 1001);
  path_copy = confd_hkeypath_dup(&path);
  CHECK(path_copy != NULL && path_copy->len == 1);
  confd_free_hkeypath(path_copy);
  path_copy = confd_hkeypath_dup_len(&path, 0);
  CHECK(path_copy != NULL && path_copy->len == 0);
  confd_free_hkeypath(path_copy);
  CHECK(strlen(confd_strerror(CONFD_ERR_NOEXISTS)) > 0);
  return NULL;
}

static const char *ExerciseTaggedValues(void) {
  confd_tag_value_t tv[3];
  confd_tag_value_attr_t tva;
  confd_attr_value_t attr;

  CONFD_SET_TAG_XMLBEGIN(&tv[0], 1, 1001);
  CONFD_SET_TAG_UINT8(&tv[1], 2, 9);
  CONFD_SET_TAG_NS(&tv[1], 1001);
  CONFD_SET_TAG_XMLEND(&tv[2], 1, 1001);
  CHECK(tv[0].v.type == C_XMLBEGIN);
  CHECK(CONFD_GET_TAG_TAG(&tv[1]) == 2);
  CHECK(CONFD_GET_UINT8(CONFD_GET_TAG_VALUE(&tv[1])) == 9);
  CHECK(tv[2].tag.ns == 1001);
  attr.attr = CONFD_ATTR_ANNOTATION;
  CONFD_SET_STR(&attr.v, "why");
  CONFD_SET_TAG_ATTR_UINT8(&tva, 2, 9, &attr, 1);
  CHECK(CONFD_GET_UINT8(CONFD_GET_TAG_VALUE(&tva)) == 9);
  CHECK(tva.num_attrs == 1 && tva.attrs[0].attr == 0x80000001u);
  return NULL;
}

const char *ExerciseCApi(int cdb_sock, int maapi_sock, int thandle) {
  const char *failure;
  char path[32];
  confd_value_t keys[2];

  CONFD_SET_UINT32(&keys[0], 7);
  CONFD_SET_STR(&keys[1], "a b");
  CHECK(Format(path, (int)sizeof path, "/a{%*x}/%s", 2, keys, "c") == 13);
  CHECK(strcmp(path, "/a{7 \"a b\"}/c") == 0);
  failure = ExerciseTaggedValues();
  if (failure == NULL) failure = ExerciseCopies();
  if (failure == NULL) failure = ExerciseReads(cdb_sock);
  if (failure == NULL) failure = ExerciseWrites(maapi_sock, thandle);
  if (failure == NULL) failure = ExerciseCursor(maapi_sock, thandle);
  return failure;
}
