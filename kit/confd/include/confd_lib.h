/*
 * Value types, error codes and key-path helpers of the ConfD client library.
 *
 * Include this header before confd_cdb.h and confd_maapi.h. Layouts are those
 * of 64-bit Linux and are part of the binary interface.
 *
 * Threads: every call may be made from any thread; calls are carried out one
 * after another. confd_errno and confd_lasterr are each thread's own. A cursor,
 * and memory that a call fills, are for one thread at a time. No call may be
 * made from a signal handler: one that interrupts another call of its thread is
 * PROTOUSAGE.
 */
#ifndef CONFD_LIB_H_
#define CONFD_LIB_H_

#include <assert.h>
#include <netinet/in.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define CONFD_KIT_EXPORT __attribute__((visibility("default")))
#else
#define CONFD_KIT_EXPORT
#endif

/* ---- Results and errors ------------------------------------------------ */

#define CONFD_OK 0
#define CONFD_ERR (-1)
/* The daemon closed the socket. */
#define CONFD_EOF (-2)

#define CONFD_ERR_NOEXISTS 1
#define CONFD_ERR_ALREADY_EXISTS 2
#define CONFD_ERR_ACCESS_DENIED 3
#define CONFD_ERR_NOT_WRITABLE 4
#define CONFD_ERR_BADTYPE 5
#define CONFD_ERR_NOTCREATABLE 6
#define CONFD_ERR_NOTDELETABLE 7
#define CONFD_ERR_BADPATH 8
#define CONFD_ERR_NOSTACK 9
#define CONFD_ERR_LOCKED 10
#define CONFD_ERR_INUSE 11
#define CONFD_ERR_NOTSET 12
#define CONFD_ERR_NON_UNIQUE 13
#define CONFD_ERR_BAD_KEYREF 14
#define CONFD_ERR_TOO_FEW_ELEMS 15
#define CONFD_ERR_TOO_MANY_ELEMS 16
#define CONFD_ERR_BADSTATE 17
#define CONFD_ERR_INTERNAL 18
#define CONFD_ERR_EXTERNAL 19
#define CONFD_ERR_MALLOC 20
#define CONFD_ERR_PROTOUSAGE 21
#define CONFD_ERR_NOSESSION 22
#define CONFD_ERR_TOOMANYTRANS 23
#define CONFD_ERR_OS 24
#define CONFD_ERR_HA_CONNECT 25
#define CONFD_ERR_HA_CLOSED 26
#define CONFD_ERR_HA_BADFXS 27
#define CONFD_ERR_HA_BADTOKEN 28
#define CONFD_ERR_HA_BADNAME 29
#define CONFD_ERR_HA_BIND 30
#define CONFD_ERR_HA_NOTICK 31
#define CONFD_ERR_VALIDATION_WARNING 32
#define CONFD_ERR_SUBAGENT_DOWN 33
#define CONFD_ERR_LIB_NOT_INITIALIZED 34
#define CONFD_ERR_TOO_MANY_SESSIONS 35
#define CONFD_ERR_BAD_CONFIG 36
#define CONFD_ERR_RESOURCE_DENIED 37
#define CONFD_ERR_INCONSISTENT_VALUE 38
#define CONFD_ERR_APPLICATION_INTERNAL 39
#define CONFD_ERR_UNSET_CHOICE 40
#define CONFD_ERR_MUST_FAILED 41
#define CONFD_ERR_MISSING_INSTANCE 42
#define CONFD_ERR_INVALID_INSTANCE 43
#define CONFD_ERR_UNAVAILABLE 44
#define CONFD_ERR_EOF 45
#define CONFD_ERR_NOTMOVABLE 46
#define CONFD_ERR_HA_WITH_UPGRADE 47
#define CONFD_ERR_TIMEOUT 48
#define CONFD_ERR_ABORTED 49
#define CONFD_ERR_XPATH 50
#define CONFD_ERR_NOT_IMPLEMENTED 51
#define CONFD_ERR_HA_BADVSN 52
#define CONFD_ERR_POLICY_FAILED 53
#define CONFD_ERR_POLICY_COMPILATION_FAILED 54
#define CONFD_ERR_POLICY_EVALUATION_FAILED 55
#define NCS_ERR_CONNECTION_REFUSED 56
#define CONFD_ERR_START_FAILED 57
#define CONFD_ERR_DATA_MISSING 58
#define CONFD_ERR_CLI_CMD 59
#define CONFD_ERR_UPGRADE_IN_PROGRESS 60
#define CONFD_ERR_NOTRANS 61
#define NCS_ERR_SERVICE_CONFLICT 62
#define NCS_ERR_CONNECTION_TIMEOUT 63
#define NCS_ERR_CONNECTION_CLOSED 64
#define NCS_ERR_DEVICE 65
#define NCS_ERR_TEMPLATE 66
#define CONFD_ERR_NO_MOUNT_ID 67
#define CONFD_ERR_STALE_INSTANCE 68
#define CONFD_ERR_HA_BADCONFIG 69
#define CONFD_ERR_TRANSACTION_CONFLICT 70
#define CONFD_ERR_HA_ABORT 71
#define CONFD_ERR_BAD_PAYLOAD 72
#define CONFD_ERR_CHECKSUM_MISMATCH 73

/* Address of this thread's error number; never fails. */
CONFD_KIT_EXPORT int *confd_errno_location(void);
#define confd_errno (*confd_errno_location())

/*
 * Text of this thread's last error, "" before the first one. It stays as it is
 * until the next failing call and is owned by the library.
 */
CONFD_KIT_EXPORT char *confd_lasterr(void);

/* What an error number means; owned by the library, for any number a text. */
CONFD_KIT_EXPORT char *confd_strerror(int code);

/* ---- Values ------------------------------------------------------------ */

/* The most elements of a path, and the most keys of a list, each plus 1. */
#define MAXDEPTH 20
#define MAXKEYLEN 9

struct xml_tag {
  uint32_t tag;
  uint32_t ns;
};

enum confd_vtype {
  C_NOEXISTS = 1,
  C_XMLTAG = 2,
  C_SYMBOL = 3,
  C_STR = 4,
  C_BUF = 5,
  C_INT8 = 6,
  C_INT16 = 7,
  C_INT32 = 8,
  C_INT64 = 9,
  C_UINT8 = 10,
  C_UINT16 = 11,
  C_UINT32 = 12,
  C_UINT64 = 13,
  C_DOUBLE = 14,
  C_IPV4 = 15,
  C_IPV6 = 16,
  C_BOOL = 17,
  C_QNAME = 18,
  C_DATETIME = 19,
  C_DATE = 20,
  C_TIME = 23,
  C_DURATION = 27,
  C_ENUM_VALUE = 28,
  C_BIT32 = 29,
  C_BIT64 = 30,
  C_LIST = 31,
  C_XMLBEGIN = 32,
  C_XMLEND = 33,
  C_OBJECTREF = 34,
  C_UNION = 35,
  C_PTR = 36,
  C_CDBBEGIN = 37,
  C_OID = 38,
  C_BINARY = 39,
  C_IPV4PREFIX = 40,
  C_IPV6PREFIX = 41,
  C_DEFAULT = 42,
  C_DECIMAL64 = 43,
  C_IDENTITYREF = 44,
  C_XMLBEGINDEL = 45,
  C_DQUAD = 46,
  C_HEXSTR = 47,
  C_IPV4_AND_PLEN = 48,
  C_IPV6_AND_PLEN = 49,
  C_BITBIG = 50,
  C_XMLMOVEFIRST = 51,
  C_XMLMOVEAFTER = 52,
  C_EMPTY = 53,
  C_MAXTYPE
};

typedef struct confd_buf {
  unsigned int size;
  unsigned char *ptr;
} confd_buf_t;

typedef struct confd_buf_const {
  unsigned int size;
  const unsigned char *ptr;
} confd_buf_const_t;

struct confd_qname {
  confd_buf_t prefix;
  confd_buf_t name;
};

/*
 * Dates and times are never converted: the fields are those of the text, with
 * its offset. Hours other than 0 give the sign of the offset and the minutes
 * are not negative (-05:30 is -5, 30); with 0 hours the minutes carry it. Both
 * 0 is "Z", CONFD_TIMEZONE_UNDEF for the hours is "-00:00".
 */
#define CONFD_TIMEZONE_UNDEF (-111)

struct confd_datetime {
  int16_t year;
  uint8_t month;
  uint8_t day;
  uint8_t hour;
  uint8_t min;
  uint8_t sec;
  uint32_t micro;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_date {
  int16_t year;
  uint8_t month;
  uint8_t day;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_time {
  uint8_t hour;
  uint8_t min;
  uint8_t sec;
  uint32_t micro;
  int8_t timezone;
  int8_t timezone_minutes;
};

struct confd_duration {
  uint32_t years;
  uint32_t months;
  uint32_t days;
  uint32_t hours;
  uint32_t mins;
  uint32_t secs;
  uint32_t micros;
};

struct confd_value;
struct confd_hkeypath;

struct confd_list {
  unsigned int size;
  struct confd_value *ptr;
};

struct confd_ipv4_prefix {
  struct in_addr ip; /* network byte order */
  uint8_t len;       /* bits */
};

struct confd_ipv6_prefix {
  struct in6_addr ip6;
  uint8_t len; /* bits */
};

struct confd_decimal64 {
  int64_t value;
  uint8_t fraction_digits;
};

struct confd_identityref {
  uint32_t ns;
  uint32_t id;
};

struct confd_dotted_quad {
  unsigned char quad[4];
};

struct confd_snmp_oid {
  uint32_t oid[128];
  int len; /* of them in use */
};

/* Where a value that is asked for goes: a variable of the type's C type. */
struct confd_vptr {
  enum confd_vtype type;
  void *ptr;
};

typedef struct confd_value {
  enum confd_vtype type;
  union {
    struct xml_tag xmltag;
    uint32_t symbol;
    char *s;
    const char *c_s;
    confd_buf_t buf;
    confd_buf_const_t c_buf;
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    uint64_t u64;
    double d;
    struct in_addr ip;
    struct in6_addr ip6;
    int boolean;
    struct confd_qname qname;
    struct confd_datetime datetime;
    struct confd_date date;
    struct confd_time time;
    struct confd_duration duration;
    int32_t enumvalue;
    uint32_t enumhash; /* old name */
    uint32_t b32;
    uint64_t b64;
    struct confd_list list;
    struct confd_hkeypath *hkp;
    struct confd_vptr ptr;
    struct confd_snmp_oid *oidp;
    struct confd_ipv4_prefix ipv4prefix;
    struct confd_ipv6_prefix ipv6prefix;
    struct confd_decimal64 d64;
    struct confd_identityref idref;
    struct confd_dotted_quad dquad;
  } val;
} confd_value_t;

/*
 * A path backwards: v[0] is its last element, v[len - 1] the top. A node is one
 * element (C_XMLTAG in v[i][0]), the keys of an entry are one more, with
 * C_NOEXISTS behind the last.
 */
typedef struct confd_hkeypath {
  int len;
  confd_value_t v[MAXDEPTH][MAXKEYLEN];
} confd_hkeypath_t;

/* Elements of the arrays that name what they hold. */
typedef struct confd_tag_value {
  struct xml_tag tag;
  confd_value_t v;
} confd_tag_value_t;

typedef struct confd_attr_value {
  uint32_t attr;
  confd_value_t v;
} confd_attr_value_t;

typedef struct confd_tag_value_attr {
  struct xml_tag tag;
  confd_value_t v;
  confd_attr_value_t *attrs;
  int num_attrs;
} confd_tag_value_attr_t;

#define CONFD_ATTR_INACTIVE 0u
#define CONFD_ATTR_TAGS 0x80000000u
#define CONFD_ATTR_ANNOTATION 0x80000001u
#define CONFD_ATTR_REFCOUNT 0x80000002u
#define CONFD_ATTR_BACKPOINTER 0x80000003u
#define CONFD_ATTR_WHEN 0x80000004u
#define CONFD_ATTR_ORIGINAL_VALUE 0x80000005u
#define CONFD_ATTR_ORIGIN 0x80000007u
#define CONFD_ATTR_OUT_OF_BAND 0x80000010u

/*
 * Releases what a value owns (buffers, lists) with free(); does nothing for
 * fixed-size values and C_STR. The struct itself stays.
 */
CONFD_KIT_EXPORT void confd_free_value(confd_value_t *v);

/*
 * Copies that own all that they point to, the text of a C_STR included. NULL:
 * there is no memory. The first is released with confd_free_dup_value, what the
 * second made of newv with confd_free_dup_to_value.
 */
CONFD_KIT_EXPORT confd_value_t *confd_value_dup(const confd_value_t *v);
CONFD_KIT_EXPORT confd_value_t *confd_value_dup_to(const confd_value_t *v,
                                                   confd_value_t *newv);
CONFD_KIT_EXPORT void confd_free_dup_value(confd_value_t *v);
CONFD_KIT_EXPORT void confd_free_dup_to_value(confd_value_t *v);

/* Copies of a path, whole or its first len elements from the top. */
CONFD_KIT_EXPORT confd_hkeypath_t *confd_hkeypath_dup(
    const confd_hkeypath_t *src);
CONFD_KIT_EXPORT confd_hkeypath_t *confd_hkeypath_dup_len(
    const confd_hkeypath_t *src, int len);
/* Releases a path with its keys. */
CONFD_KIT_EXPORT void confd_free_hkeypath(confd_hkeypath_t *hkp);

/* Positive for values of the same type and content, else 0. */
CONFD_KIT_EXPORT int confd_val_eq(const confd_value_t *v1,
                                  const confd_value_t *v2);
/* As strcmp, with a C_BUF or C_STR; another value counts as "". */
CONFD_KIT_EXPORT int confd_svcmp(const char *s, const confd_value_t *v);

/* ---- Schemas ------------------------------------------------------------ */

/*
 * Loads the schemas of all namespaces into the process: only then can texts
 * name enumerations, bits, identities and nodes. maapi_load_schemas does so
 * over a socket that is there. OS: nobody listens at the address.
 */
struct sockaddr;
CONFD_KIT_EXPORT int confd_load_schemas(const struct sockaddr *srv, int srv_sz);

/*
 * Parts of loaded schemas, which die with the next loading. What is unknown, or
 * whose schema is not loaded, is NULL, or 0 where a number is asked for.
 */
struct confd_type;
struct confd_cs_node;

/*
 * The name of a node, a case or an identity, or a namespace, and the number
 * that it has in values.
 */
CONFD_KIT_EXPORT char *confd_hash2str(uint32_t hash);
CONFD_KIT_EXPORT uint32_t confd_str2hash(const char *str);
CONFD_KIT_EXPORT char *confd_ns2prefix(uint32_t ns);

/*
 * A typedef of a namespace; with nshash 0 a built-in type that needs nothing
 * said besides its name.
 */
CONFD_KIT_EXPORT struct confd_type *confd_find_ns_type(uint32_t nshash,
                                                       const char *name);
/*
 * The node that a path leads to, from start if it is relative; keys and
 * positions do not count. BADPATH.
 */
CONFD_KIT_EXPORT struct confd_cs_node *confd_cs_node_cd(
    const struct confd_cs_node *start, const char *fmt, ...);
/* The most elements that its value array can have. */
CONFD_KIT_EXPORT int confd_max_object_size(struct confd_cs_node *object);
/* 0: not a decimal64. */
CONFD_KIT_EXPORT int confd_get_decimal64_fraction_digits(
    struct confd_type *type);

/* ---- Text --------------------------------------------------------------- */

/*
 * Formatters write at most bufsiz bytes, the terminating NUL among them, to buf
 * (which may be NULL when bufsiz is 0). They return the length that was needed
 * without the NUL: bufsiz or more means cut. They never return a negative
 * number.
 */

/*
 * Formats a key path. Directives: %d int, %u unsigned int, %s char *, %ip4
 * struct in_addr *, %ip6 struct in6_addr *, %x confd_value_t *, %*x int and
 * that many values, printed blank-separated; at the beginning %h
 * confd_hkeypath_t *, %*h int and so many elements of that path from the top.
 * Others stand as they are.
 *
 * In an absolute path and with loaded schemas %x prints enumerations, bits and
 * identities by name, otherwise as confd_pp_value does; keys that need quotes
 * get them.
 */
CONFD_KIT_EXPORT int confd_format_keypath(char *buf, int bufsiz,
                                          const char *fmt, ...);
CONFD_KIT_EXPORT int confd_vformat_keypath(char *buf, int bufsiz,
                                           const char *fmt, va_list ap);

/*
 * Prints a value as far as its tag tells: "enum<3>", "bits<5>", bytes in
 * hexadecimal; identities and nodes by name if schemas are loaded.
 */
CONFD_KIT_EXPORT int confd_pp_value(char *buf, int bufsiz,
                                    const confd_value_t *v);

/* Print a path, or its first len elements; needs schemas for its names. */
CONFD_KIT_EXPORT int confd_pp_kpath(char *buf, int bufsiz,
                                    const confd_hkeypath_t *hkeypath);
CONFD_KIT_EXPORT int confd_pp_kpath_len(char *buf, int bufsiz,
                                        const confd_hkeypath_t *hkeypath,
                                        int len);

/*
 * Between a value and its text, as a type has it. CONFD_ERR: not of the type.
 * confd_val2str is a formatter otherwise; what confd_str2val allocates is
 * released with confd_free_value.
 */
CONFD_KIT_EXPORT int confd_val2str(struct confd_type *type,
                                   const confd_value_t *val, char *buf,
                                   int bufsiz);
CONFD_KIT_EXPORT int confd_str2val(struct confd_type *type, const char *str,
                                   confd_value_t *val);
/* The name of an enumeration's value, which the library owns, else NULL. */
CONFD_KIT_EXPORT char *confd_val2str_ptr(struct confd_type *type,
                                         const confd_value_t *val);

/* ---- Accessors --------------------------------------------------------- */

/*
 * The getters assert the tag, so that a wrong one never goes unnoticed. A
 * program that wants something else done defines CONFD_ASSERT before it
 * includes this header; NDEBUG, defined there too, switches the standard form
 * off.
 */
#ifndef CONFD_ASSERT
#define CONFD_ASSERT(E) assert(E)
#endif

#define CONFD_KIT_SET(v, tag, member, x) \
  do {                                   \
    (v)->type = (tag);                   \
    (v)->val.member = (x);               \
  } while (0)

#define CONFD_KIT_SET_BYTES(v, tag, p, n)            \
  do {                                               \
    (v)->type = (tag);                               \
    (v)->val.c_buf.ptr = (const unsigned char *)(p); \
    (v)->val.c_buf.size = (unsigned int)(n);         \
  } while (0)

#define CONFD_SET_NOEXISTS(v) ((v)->type = C_NOEXISTS)
#define CONFD_SET_EMPTY(v) ((v)->type = C_EMPTY)

#define CONFD_SET_XMLTAG(v, t, n) \
  do {                            \
    (v)->type = C_XMLTAG;         \
    (v)->val.xmltag.tag = (t);    \
    (v)->val.xmltag.ns = (n);     \
  } while (0)
#define CONFD_GET_XMLTAG(v) \
  (CONFD_ASSERT((v)->type == C_XMLTAG), (v)->val.xmltag.tag)
#define CONFD_GET_XMLTAG_NS(v) \
  (CONFD_ASSERT((v)->type == C_XMLTAG), (v)->val.xmltag.ns)

#define CONFD_SET_STR(v, x) CONFD_KIT_SET(v, C_STR, c_s, x)

#define CONFD_SET_BUF(v, p, n) CONFD_KIT_SET_BYTES(v, C_BUF, p, n)
#define CONFD_GET_BUFPTR(v) (CONFD_ASSERT((v)->type == C_BUF), (v)->val.buf.ptr)
#define CONFD_GET_BUFSIZE(v) \
  (CONFD_ASSERT((v)->type == C_BUF), (v)->val.buf.size)

#define CONFD_SET_BINARY(v, p, n) CONFD_KIT_SET_BYTES(v, C_BINARY, p, n)
#define CONFD_GET_BINARY_PTR(v) \
  (CONFD_ASSERT((v)->type == C_BINARY), (v)->val.buf.ptr)
#define CONFD_GET_BINARY_SIZE(v) \
  (CONFD_ASSERT((v)->type == C_BINARY), (v)->val.buf.size)

#define CONFD_SET_HEXSTR(v, p, n) CONFD_KIT_SET_BYTES(v, C_HEXSTR, p, n)
#define CONFD_GET_HEXSTR_PTR(v) \
  (CONFD_ASSERT((v)->type == C_HEXSTR), (v)->val.buf.ptr)
#define CONFD_GET_HEXSTR_SIZE(v) \
  (CONFD_ASSERT((v)->type == C_HEXSTR), (v)->val.buf.size)

#define CONFD_SET_BITBIG(v, p, n) CONFD_KIT_SET_BYTES(v, C_BITBIG, p, n)
#define CONFD_GET_BITBIG_PTR(v) \
  (CONFD_ASSERT((v)->type == C_BITBIG), (v)->val.buf.ptr)
#define CONFD_GET_BITBIG_SIZE(v) \
  (CONFD_ASSERT((v)->type == C_BITBIG), (v)->val.buf.size)
/* In an array of unsigned char. */
#define CONFD_BITBIG_SET_BIT(mask, position) \
  ((mask)[(position) / 8] =                  \
       (unsigned char)((mask)[(position) / 8] | 1u << (position) % 8))

#define CONFD_SET_INT8(v, x) CONFD_KIT_SET(v, C_INT8, i8, x)
#define CONFD_GET_INT8(v) (CONFD_ASSERT((v)->type == C_INT8), (v)->val.i8)
#define CONFD_SET_INT16(v, x) CONFD_KIT_SET(v, C_INT16, i16, x)
#define CONFD_GET_INT16(v) (CONFD_ASSERT((v)->type == C_INT16), (v)->val.i16)
#define CONFD_SET_INT32(v, x) CONFD_KIT_SET(v, C_INT32, i32, x)
#define CONFD_GET_INT32(v) (CONFD_ASSERT((v)->type == C_INT32), (v)->val.i32)
#define CONFD_SET_INT64(v, x) CONFD_KIT_SET(v, C_INT64, i64, x)
#define CONFD_GET_INT64(v) (CONFD_ASSERT((v)->type == C_INT64), (v)->val.i64)
#define CONFD_SET_UINT8(v, x) CONFD_KIT_SET(v, C_UINT8, u8, x)
#define CONFD_GET_UINT8(v) (CONFD_ASSERT((v)->type == C_UINT8), (v)->val.u8)
#define CONFD_SET_UINT16(v, x) CONFD_KIT_SET(v, C_UINT16, u16, x)
#define CONFD_GET_UINT16(v) (CONFD_ASSERT((v)->type == C_UINT16), (v)->val.u16)
#define CONFD_SET_UINT32(v, x) CONFD_KIT_SET(v, C_UINT32, u32, x)
#define CONFD_GET_UINT32(v) (CONFD_ASSERT((v)->type == C_UINT32), (v)->val.u32)
#define CONFD_SET_UINT64(v, x) CONFD_KIT_SET(v, C_UINT64, u64, x)
#define CONFD_GET_UINT64(v) (CONFD_ASSERT((v)->type == C_UINT64), (v)->val.u64)
#define CONFD_SET_DOUBLE(v, x) CONFD_KIT_SET(v, C_DOUBLE, d, x)
#define CONFD_GET_DOUBLE(v) (CONFD_ASSERT((v)->type == C_DOUBLE), (v)->val.d)
#define CONFD_SET_BOOL(v, x) CONFD_KIT_SET(v, C_BOOL, boolean, x)
#define CONFD_GET_BOOL(v) (CONFD_ASSERT((v)->type == C_BOOL), (v)->val.boolean)
#define CONFD_SET_ENUM_VALUE(v, x) CONFD_KIT_SET(v, C_ENUM_VALUE, enumvalue, x)
#define CONFD_GET_ENUM_VALUE(v) \
  (CONFD_ASSERT((v)->type == C_ENUM_VALUE), (v)->val.enumvalue)
#define CONFD_SET_BIT32(v, x) CONFD_KIT_SET(v, C_BIT32, b32, x)
#define CONFD_GET_BIT32(v) (CONFD_ASSERT((v)->type == C_BIT32), (v)->val.b32)
#define CONFD_SET_BIT64(v, x) CONFD_KIT_SET(v, C_BIT64, b64, x)
#define CONFD_GET_BIT64(v) (CONFD_ASSERT((v)->type == C_BIT64), (v)->val.b64)
#define CONFD_SET_IPV4(v, x) CONFD_KIT_SET(v, C_IPV4, ip, x)
#define CONFD_GET_IPV4(v) (CONFD_ASSERT((v)->type == C_IPV4), (v)->val.ip)
#define CONFD_SET_IPV6(v, x) CONFD_KIT_SET(v, C_IPV6, ip6, x)
#define CONFD_GET_IPV6(v) (CONFD_ASSERT((v)->type == C_IPV6), (v)->val.ip6)
#define CONFD_SET_IPV4PREFIX(v, x) CONFD_KIT_SET(v, C_IPV4PREFIX, ipv4prefix, x)
#define CONFD_GET_IPV4PREFIX(v) \
  (CONFD_ASSERT((v)->type == C_IPV4PREFIX), (v)->val.ipv4prefix)
#define CONFD_SET_IPV6PREFIX(v, x) CONFD_KIT_SET(v, C_IPV6PREFIX, ipv6prefix, x)
#define CONFD_GET_IPV6PREFIX(v) \
  (CONFD_ASSERT((v)->type == C_IPV6PREFIX), (v)->val.ipv6prefix)
#define CONFD_SET_IPV4_AND_PLEN(v, x) \
  CONFD_KIT_SET(v, C_IPV4_AND_PLEN, ipv4prefix, x)
#define CONFD_GET_IPV4_AND_PLEN(v) \
  (CONFD_ASSERT((v)->type == C_IPV4_AND_PLEN), (v)->val.ipv4prefix)
#define CONFD_SET_IPV6_AND_PLEN(v, x) \
  CONFD_KIT_SET(v, C_IPV6_AND_PLEN, ipv6prefix, x)
#define CONFD_GET_IPV6_AND_PLEN(v) \
  (CONFD_ASSERT((v)->type == C_IPV6_AND_PLEN), (v)->val.ipv6prefix)
#define CONFD_SET_DATETIME(v, x) CONFD_KIT_SET(v, C_DATETIME, datetime, x)
#define CONFD_GET_DATETIME(v) \
  (CONFD_ASSERT((v)->type == C_DATETIME), (v)->val.datetime)
#define CONFD_SET_DATE(v, x) CONFD_KIT_SET(v, C_DATE, date, x)
#define CONFD_GET_DATE(v) (CONFD_ASSERT((v)->type == C_DATE), (v)->val.date)
#define CONFD_SET_TIME(v, x) CONFD_KIT_SET(v, C_TIME, time, x)
#define CONFD_GET_TIME(v) (CONFD_ASSERT((v)->type == C_TIME), (v)->val.time)
#define CONFD_SET_DURATION(v, x) CONFD_KIT_SET(v, C_DURATION, duration, x)
#define CONFD_GET_DURATION(v) \
  (CONFD_ASSERT((v)->type == C_DURATION), (v)->val.duration)
#define CONFD_SET_DECIMAL64(v, x) CONFD_KIT_SET(v, C_DECIMAL64, d64, x)
#define CONFD_GET_DECIMAL64(v) \
  (CONFD_ASSERT((v)->type == C_DECIMAL64), (v)->val.d64)
#define CONFD_SET_IDENTITYREF(v, x) CONFD_KIT_SET(v, C_IDENTITYREF, idref, x)
#define CONFD_GET_IDENTITYREF(v) \
  (CONFD_ASSERT((v)->type == C_IDENTITYREF), (v)->val.idref)
#define CONFD_SET_DQUAD(v, x) CONFD_KIT_SET(v, C_DQUAD, dquad, x)
#define CONFD_GET_DQUAD(v) (CONFD_ASSERT((v)->type == C_DQUAD), (v)->val.dquad)
#define CONFD_SET_OBJECTREF(v, x) CONFD_KIT_SET(v, C_OBJECTREF, hkp, x)
#define CONFD_GET_OBJECTREF(v) \
  (CONFD_ASSERT((v)->type == C_OBJECTREF), (v)->val.hkp)
#define CONFD_SET_OID(v, x) CONFD_KIT_SET(v, C_OID, oidp, x)
#define CONFD_GET_OID(v) (CONFD_ASSERT((v)->type == C_OID), (v)->val.oidp)

#define CONFD_SET_LIST(v, p, n)             \
  do {                                      \
    (v)->type = C_LIST;                     \
    (v)->val.list.ptr = (p);                \
    (v)->val.list.size = (unsigned int)(n); \
  } while (0)
#define CONFD_GET_LIST(v) (CONFD_ASSERT((v)->type == C_LIST), (v)->val.list.ptr)
#define CONFD_GET_LISTSIZE(v) \
  (CONFD_ASSERT((v)->type == C_LIST), (v)->val.list.size)

#define CONFD_SET_QNAME(v, p, pn, l, ln)              \
  do {                                                \
    (v)->type = C_QNAME;                              \
    (v)->val.qname.prefix.ptr = (unsigned char *)(p); \
    (v)->val.qname.prefix.size = (unsigned int)(pn);  \
    (v)->val.qname.name.ptr = (unsigned char *)(l);   \
    (v)->val.qname.name.size = (unsigned int)(ln);    \
  } while (0)
#define CONFD_GET_QNAME_PREFIX_PTR(v) \
  (CONFD_ASSERT((v)->type == C_QNAME), (v)->val.qname.prefix.ptr)
#define CONFD_GET_QNAME_PREFIX_SIZE(v) \
  (CONFD_ASSERT((v)->type == C_QNAME), (v)->val.qname.prefix.size)
#define CONFD_GET_QNAME_NAME_PTR(v) \
  (CONFD_ASSERT((v)->type == C_QNAME), (v)->val.qname.name.ptr)
#define CONFD_GET_QNAME_NAME_SIZE(v) \
  (CONFD_ASSERT((v)->type == C_QNAME), (v)->val.qname.name.size)

/* ---- Tagged values ----------------------------------------------------- */

/*
 * CONFD_SET_TAG_X(tv, tag, ...) for each CONFD_SET_X(v, ...), in the current
 * namespace, which is 0; CONFD_SET_TAG_NS selects another. With attributes
 * CONFD_SET_TAG_ATTR_X(tva, tag, ..., attrs, num_attrs).
 */
#define CONFD_KIT_SET_TAG(tv, t, n, set_value) \
  do {                                         \
    (tv)->tag.tag = (t);                       \
    (tv)->tag.ns = (n);                        \
    set_value;                                 \
  } while (0)

#define CONFD_SET_TAG_NS(tv, n) ((tv)->tag.ns = (n))
#define CONFD_GET_TAG_TAG(tv) ((tv)->tag.tag)
#define CONFD_GET_TAG_VALUE(tv) (&(tv)->v)

#define CONFD_KIT_SET_TAG_ATTR(tv, a, na, set_tag) \
  do {                                             \
    set_tag;                                       \
    (tv)->attrs = (a);                             \
    (tv)->num_attrs = (int)(na);                   \
  } while (0)

#define CONFD_KIT_SET_BRACKET(tv, kind, t, n)                   \
  CONFD_KIT_SET_TAG(tv, t, n, CONFD_SET_XMLTAG(&(tv)->v, t, n); \
                    (tv)->v.type = kind)

#define CONFD_SET_TAG_NOEXISTS(tv, t) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_NOEXISTS(&(tv)->v))
#define CONFD_SET_TAG_EMPTY(tv, t) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_EMPTY(&(tv)->v))
#define CONFD_SET_TAG_INT8(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_INT8(&(tv)->v, x))
#define CONFD_SET_TAG_INT16(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_INT16(&(tv)->v, x))
#define CONFD_SET_TAG_INT32(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_INT32(&(tv)->v, x))
#define CONFD_SET_TAG_INT64(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_INT64(&(tv)->v, x))
#define CONFD_SET_TAG_UINT8(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_UINT8(&(tv)->v, x))
#define CONFD_SET_TAG_UINT16(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_UINT16(&(tv)->v, x))
#define CONFD_SET_TAG_UINT32(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_UINT32(&(tv)->v, x))
#define CONFD_SET_TAG_UINT64(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_UINT64(&(tv)->v, x))
#define CONFD_SET_TAG_DOUBLE(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DOUBLE(&(tv)->v, x))
#define CONFD_SET_TAG_BOOL(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BOOL(&(tv)->v, x))
#define CONFD_SET_TAG_ENUM_VALUE(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_ENUM_VALUE(&(tv)->v, x))
#define CONFD_SET_TAG_BIT32(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BIT32(&(tv)->v, x))
#define CONFD_SET_TAG_BIT64(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BIT64(&(tv)->v, x))
#define CONFD_SET_TAG_IPV4(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV4(&(tv)->v, x))
#define CONFD_SET_TAG_IPV6(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV6(&(tv)->v, x))
#define CONFD_SET_TAG_IPV4PREFIX(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV4PREFIX(&(tv)->v, x))
#define CONFD_SET_TAG_IPV6PREFIX(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV6PREFIX(&(tv)->v, x))
#define CONFD_SET_TAG_IPV4_AND_PLEN(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV4_AND_PLEN(&(tv)->v, x))
#define CONFD_SET_TAG_IPV6_AND_PLEN(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IPV6_AND_PLEN(&(tv)->v, x))
#define CONFD_SET_TAG_DATETIME(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DATETIME(&(tv)->v, x))
#define CONFD_SET_TAG_DATE(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DATE(&(tv)->v, x))
#define CONFD_SET_TAG_TIME(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_TIME(&(tv)->v, x))
#define CONFD_SET_TAG_DURATION(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DURATION(&(tv)->v, x))
#define CONFD_SET_TAG_DECIMAL64(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DECIMAL64(&(tv)->v, x))
#define CONFD_SET_TAG_IDENTITYREF(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_IDENTITYREF(&(tv)->v, x))
#define CONFD_SET_TAG_DQUAD(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_DQUAD(&(tv)->v, x))
#define CONFD_SET_TAG_OBJECTREF(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_OBJECTREF(&(tv)->v, x))
#define CONFD_SET_TAG_OID(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_OID(&(tv)->v, x))
#define CONFD_SET_TAG_STR(tv, t, x) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_STR(&(tv)->v, x))
#define CONFD_SET_TAG_BUF(tv, t, p, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BUF(&(tv)->v, p, n))
#define CONFD_SET_TAG_BINARY(tv, t, p, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BINARY(&(tv)->v, p, n))
#define CONFD_SET_TAG_HEXSTR(tv, t, p, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_HEXSTR(&(tv)->v, p, n))
#define CONFD_SET_TAG_BITBIG(tv, t, p, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_BITBIG(&(tv)->v, p, n))
#define CONFD_SET_TAG_LIST(tv, t, p, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_LIST(&(tv)->v, p, n))
#define CONFD_SET_TAG_XMLTAG(tv, t, x, n) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_XMLTAG(&(tv)->v, x, n))
#define CONFD_SET_TAG_QNAME(tv, t, p, pn, l, ln) \
  CONFD_KIT_SET_TAG(tv, t, 0, CONFD_SET_QNAME(&(tv)->v, p, pn, l, ln))

#define CONFD_SET_TAG_XMLBEGIN(tv, t, n) \
  CONFD_KIT_SET_BRACKET(tv, C_XMLBEGIN, t, n)
#define CONFD_SET_TAG_XMLEND(tv, t, n) CONFD_KIT_SET_BRACKET(tv, C_XMLEND, t, n)
/* The position stands where an int32_t does. */
#define CONFD_SET_TAG_CDBBEGIN(tv, t, n, position) \
  CONFD_KIT_SET_TAG(tv, t, n,                      \
                    CONFD_KIT_SET(&(tv)->v, C_CDBBEGIN, i32, position))
#define CONFD_SET_TAG_PTR(tv, t, expected, p)          \
  CONFD_KIT_SET_TAG(tv, t, 0, (tv)->v.type = C_PTR;    \
                    (tv)->v.val.ptr.type = (expected); \
                    (tv)->v.val.ptr.ptr = (p))

#define CONFD_SET_TAG_ATTR_NOEXISTS(tv, t, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_NOEXISTS(tv, t))
#define CONFD_SET_TAG_ATTR_EMPTY(tv, t, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_EMPTY(tv, t))
#define CONFD_SET_TAG_ATTR_INT8(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_INT8(tv, t, x))
#define CONFD_SET_TAG_ATTR_INT16(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_INT16(tv, t, x))
#define CONFD_SET_TAG_ATTR_INT32(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_INT32(tv, t, x))
#define CONFD_SET_TAG_ATTR_INT64(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_INT64(tv, t, x))
#define CONFD_SET_TAG_ATTR_UINT8(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_UINT8(tv, t, x))
#define CONFD_SET_TAG_ATTR_UINT16(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_UINT16(tv, t, x))
#define CONFD_SET_TAG_ATTR_UINT32(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_UINT32(tv, t, x))
#define CONFD_SET_TAG_ATTR_UINT64(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_UINT64(tv, t, x))
#define CONFD_SET_TAG_ATTR_DOUBLE(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DOUBLE(tv, t, x))
#define CONFD_SET_TAG_ATTR_BOOL(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BOOL(tv, t, x))
#define CONFD_SET_TAG_ATTR_ENUM_VALUE(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_ENUM_VALUE(tv, t, x))
#define CONFD_SET_TAG_ATTR_BIT32(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BIT32(tv, t, x))
#define CONFD_SET_TAG_ATTR_BIT64(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BIT64(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV4(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV4(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV6(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV6(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV4PREFIX(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV4PREFIX(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV6PREFIX(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV6PREFIX(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV4_AND_PLEN(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV4_AND_PLEN(tv, t, x))
#define CONFD_SET_TAG_ATTR_IPV6_AND_PLEN(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IPV6_AND_PLEN(tv, t, x))
#define CONFD_SET_TAG_ATTR_DATETIME(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DATETIME(tv, t, x))
#define CONFD_SET_TAG_ATTR_DATE(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DATE(tv, t, x))
#define CONFD_SET_TAG_ATTR_TIME(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_TIME(tv, t, x))
#define CONFD_SET_TAG_ATTR_DURATION(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DURATION(tv, t, x))
#define CONFD_SET_TAG_ATTR_DECIMAL64(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DECIMAL64(tv, t, x))
#define CONFD_SET_TAG_ATTR_IDENTITYREF(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_IDENTITYREF(tv, t, x))
#define CONFD_SET_TAG_ATTR_DQUAD(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_DQUAD(tv, t, x))
#define CONFD_SET_TAG_ATTR_OBJECTREF(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_OBJECTREF(tv, t, x))
#define CONFD_SET_TAG_ATTR_OID(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_OID(tv, t, x))
#define CONFD_SET_TAG_ATTR_STR(tv, t, x, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_STR(tv, t, x))
#define CONFD_SET_TAG_ATTR_BUF(tv, t, p, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BUF(tv, t, p, n))
#define CONFD_SET_TAG_ATTR_BINARY(tv, t, p, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BINARY(tv, t, p, n))
#define CONFD_SET_TAG_ATTR_HEXSTR(tv, t, p, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_HEXSTR(tv, t, p, n))
#define CONFD_SET_TAG_ATTR_BITBIG(tv, t, p, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_BITBIG(tv, t, p, n))
#define CONFD_SET_TAG_ATTR_LIST(tv, t, p, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_LIST(tv, t, p, n))
#define CONFD_SET_TAG_ATTR_XMLTAG(tv, t, x, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_XMLTAG(tv, t, x, n))
#define CONFD_SET_TAG_ATTR_QNAME(tv, t, p, pn, l, ln, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_QNAME(tv, t, p, pn, l, ln))
#define CONFD_SET_TAG_ATTR_XMLBEGIN(tv, t, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_XMLBEGIN(tv, t, n))
#define CONFD_SET_TAG_ATTR_XMLEND(tv, t, n, a, na) \
  CONFD_KIT_SET_TAG_ATTR(tv, a, na, CONFD_SET_TAG_XMLEND(tv, t, n))

#ifdef __cplusplus
}
#endif

#endif /* CONFD_LIB_H_ */
