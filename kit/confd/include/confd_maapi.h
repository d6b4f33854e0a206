/*
 * Reading and writing the upgrade transaction (MAAPI).
 *
 * Every call takes the MAAPI socket and the transaction handle first and, where
 * it has one, a printf-like key path last; all return CONFD_OK on success and
 * CONFD_ERR with confd_errno set on failure unless said otherwise. A path with
 * a position ("[n]") is BADPATH here.
 * Threads: see confd_lib.h.
 */
#ifndef CONFD_MAAPI_H_
#define CONFD_MAAPI_H_

#include <confd_lib.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Declares a call with a key path, and its twin with a v that takes the
 * arguments of the format as a va_list:
 *
 *   int maapi_create(int sock, int thandle, const char *fmt, ...);
 *   int maapi_vcreate(int sock, int thandle, const char *fmt, va_list args);
 */
#define CONFD_KIT_MAAPI(name, ...)                                      \
  CONFD_KIT_EXPORT int maapi_##name(__VA_ARGS__, const char *fmt, ...); \
  CONFD_KIT_EXPORT int maapi_v##name(__VA_ARGS__, const char *fmt, va_list args)

/* ---- Paths -------------------------------------------------------------- */

/* Selects the namespace for the paths that follow. NOEXISTS: unknown hash. */
CONFD_KIT_EXPORT int maapi_set_namespace(int sock, int thandle, int hashed_ns);

/* As cdb_cd and its kin. */
CONFD_KIT_MAAPI(cd, int sock, int thandle);
CONFD_KIT_MAAPI(pushd, int sock, int thandle);
CONFD_KIT_EXPORT int maapi_popd(int sock, int thandle);
CONFD_KIT_EXPORT int maapi_getcwd(int sock, int thandle, size_t strsz,
                                  char *curdir);
CONFD_KIT_EXPORT int maapi_getcwd_kpath(int sock, int thandle,
                                        confd_hkeypath_t **kp);
/* *strsz becomes the length of the path, whether that fits or not. */
CONFD_KIT_EXPORT int maapi_getcwd2(int sock, int thandle, size_t *strsz,
                                   char *curdir);

/* ---- Reading ------------------------------------------------------------ */

/* Entries are read in bulk: no change here. */
#define MAAPI_FLAG_HINT_BULK 1
/* C_DEFAULT where a leaf has no value and its default holds. */
#define MAAPI_FLAG_NO_DEFAULTS 2
/* C_NOEXISTS for state nodes in arrays, and nothing for what is below them. */
#define MAAPI_FLAG_CONFIG_ONLY 4

/* How the transaction is read from now on; PROTOUSAGE: an unknown flag. */
CONFD_KIT_EXPORT int maapi_set_flags(int sock, int thandle, int flags);

/* 1 or 0; for a list path without keys 1, for the model has it. */
CONFD_KIT_MAAPI(exists, int sock, int thandle);

/* Entries of a list or values of a leaf-list. BADPATH: the model has none. */
CONFD_KIT_MAAPI(num_instances, int sock, int thandle);

/* As cdb_get_case. */
CONFD_KIT_MAAPI(get_case, int sock, int thandle, const char *choice,
                confd_value_t *rcase);

/* One leaf, as cdb_get and its kin. */
CONFD_KIT_MAAPI(get_elem, int sock, int thandle, confd_value_t *v);
CONFD_KIT_MAAPI(get_int8_elem, int sock, int thandle, int8_t *rval);
CONFD_KIT_MAAPI(get_int16_elem, int sock, int thandle, int16_t *rval);
CONFD_KIT_MAAPI(get_int32_elem, int sock, int thandle, int32_t *rval);
CONFD_KIT_MAAPI(get_int64_elem, int sock, int thandle, int64_t *rval);
CONFD_KIT_MAAPI(get_u_int8_elem, int sock, int thandle, uint8_t *rval);
CONFD_KIT_MAAPI(get_u_int16_elem, int sock, int thandle, uint16_t *rval);
CONFD_KIT_MAAPI(get_u_int32_elem, int sock, int thandle, uint32_t *rval);
CONFD_KIT_MAAPI(get_u_int64_elem, int sock, int thandle, uint64_t *rval);
CONFD_KIT_MAAPI(get_bool_elem, int sock, int thandle, int *rval);
CONFD_KIT_MAAPI(get_double_elem, int sock, int thandle, double *rval);
CONFD_KIT_MAAPI(get_enum_value_elem, int sock, int thandle, int32_t *rval);
CONFD_KIT_MAAPI(get_bit32_elem, int sock, int thandle, uint32_t *rval);
CONFD_KIT_MAAPI(get_bit64_elem, int sock, int thandle, uint64_t *rval);
CONFD_KIT_MAAPI(get_ipv4_elem, int sock, int thandle, struct in_addr *rval);
CONFD_KIT_MAAPI(get_ipv6_elem, int sock, int thandle, struct in6_addr *rval);
CONFD_KIT_MAAPI(get_dquad_elem, int sock, int thandle,
                struct confd_dotted_quad *rval);
CONFD_KIT_MAAPI(get_ipv4prefix_elem, int sock, int thandle,
                struct confd_ipv4_prefix *rval);
CONFD_KIT_MAAPI(get_ipv6prefix_elem, int sock, int thandle,
                struct confd_ipv6_prefix *rval);
CONFD_KIT_MAAPI(get_ipv4_and_plen_elem, int sock, int thandle,
                struct confd_ipv4_prefix *rval);
CONFD_KIT_MAAPI(get_ipv6_and_plen_elem, int sock, int thandle,
                struct confd_ipv6_prefix *rval);
CONFD_KIT_MAAPI(get_datetime_elem, int sock, int thandle,
                struct confd_datetime *rval);
CONFD_KIT_MAAPI(get_date_elem, int sock, int thandle, struct confd_date *rval);
CONFD_KIT_MAAPI(get_time_elem, int sock, int thandle, struct confd_time *rval);
CONFD_KIT_MAAPI(get_duration_elem, int sock, int thandle,
                struct confd_duration *rval);
CONFD_KIT_MAAPI(get_decimal64_elem, int sock, int thandle,
                struct confd_decimal64 *rval);
CONFD_KIT_MAAPI(get_identityref_elem, int sock, int thandle,
                struct confd_identityref *rval);
CONFD_KIT_MAAPI(get_objectref_elem, int sock, int thandle,
                confd_hkeypath_t **rval);
CONFD_KIT_MAAPI(get_oid_elem, int sock, int thandle,
                struct confd_snmp_oid **rval);
CONFD_KIT_MAAPI(get_buf_elem, int sock, int thandle, unsigned char **rval,
                int *bufsiz);
CONFD_KIT_MAAPI(get_binary_elem, int sock, int thandle, unsigned char **rval,
                int *bufsiz);
CONFD_KIT_MAAPI(get_hexstr_elem, int sock, int thandle, unsigned char **rval,
                int *bufsiz);
CONFD_KIT_MAAPI(get_bitbig_elem, int sock, int thandle, unsigned char **rval,
                int *bufsiz);
CONFD_KIT_MAAPI(get_qname_elem, int sock, int thandle, unsigned char **prefix,
                int *prefixsz, unsigned char **name, int *namesz);
CONFD_KIT_MAAPI(get_list_elem, int sock, int thandle, confd_value_t **values,
                int *n);
/* Copies a string with its NUL into n bytes. PROTOUSAGE: it does not fit. */
CONFD_KIT_MAAPI(get_str_elem, int sock, int thandle, char *rval, int n);

/*
 * Reads an entry or container. Returns the number of values that it has; only
 * the first n are stored. NOEXISTS: it is not there.
 */
CONFD_KIT_MAAPI(get_object, int sock, int thandle, confd_value_t *values,
                int n);

/* As cdb_get_values, without positions. */
CONFD_KIT_MAAPI(get_values, int sock, int thandle, confd_tag_value_t *values,
                int n);

/* ---- Writing ------------------------------------------------------------ */

/*
 * Creates a list entry, presence container or empty leaf. ALREADY_EXISTS: it
 * is there. NOEXISTS: a parent is missing.
 */
CONFD_KIT_MAAPI(create, int sock, int thandle);

/* Deletes what can be created, or an optional leaf. NOEXISTS: it is absent. */
CONFD_KIT_MAAPI(delete, int sock, int thandle);

/* BADTYPE: not the leaf's type. NOEXISTS: a parent is missing. */
CONFD_KIT_MAAPI(set_elem, int sock, int thandle, confd_value_t *v);
/* The same with the value's text. */
CONFD_KIT_MAAPI(set_elem2, int sock, int thandle, const char *strval);

/*
 * Writes an entry or container. With the path of a list the keys are taken
 * from the values; with the path of an entry the keys among the values are
 * ignored. Creates what is missing; a C_NOEXISTS value deletes that leaf.
 */
CONFD_KIT_MAAPI(set_object, int sock, int thandle, const confd_value_t *values,
                int n);

/*
 * Writes single nodes as cdb_get_values reads them, and creates what is
 * missing. C_NOEXISTS deletes a leaf or presence container; C_XMLBEGINDEL, the
 * keys and C_XMLEND delete an entry.
 */
CONFD_KIT_MAAPI(set_values, int sock, int thandle,
                const confd_tag_value_t *values, int n);

/*
 * Gives an entry other keys. ALREADY_EXISTS: an entry has them. NOTMOVABLE:
 * they can't be keys of the list.
 */
CONFD_KIT_MAAPI(move, int sock, int thandle, confd_value_t *tokey, int n);

enum maapi_move_where {
  MAAPI_MOVE_FIRST = 1,
  MAAPI_MOVE_BEFORE = 2,
  MAAPI_MOVE_AFTER = 3,
  MAAPI_MOVE_LAST = 4
};

/*
 * Moves an entry of a list that the user orders: to the front, to the end, or
 * next to the entry with the n keys. NOTMOVABLE: the list has another order.
 */
CONFD_KIT_MAAPI(move_ordered, int sock, int thandle,
                enum maapi_move_where where, confd_value_t *tokey, int n);

/* ---- Walking over a list ------------------------------------------------ */

enum confd_find_next_type { CONFD_FIND_NEXT = 0, CONFD_FIND_SAME_OR_NEXT = 1 };

/*
 * Walks the entries of one list. Programs read keys[0 .. n-1]; the library owns
 * the keys, and n is 0 once there is no further entry. After a successful
 * maapi_init_cursor n is the number of keys that the list has, and the other
 * public members are NULL.
 */
struct maapi_cursor {
  confd_value_t keys[MAXKEYLEN];
  int n;
  /*
   * To be set before the first step, and to live as long as the walk: the name
   * of a secondary index of the list, by which the entries come then, and an
   * XPath expression that is true for those that are wanted. NOEXISTS: no such
   * index. XPATH: no expression.
   */
  char *secondary_index;
  char *xpath_expr;
  /* Private. */
  int sock;
  int thandle;
  void *impl;
};

/* Loads the schemas of all namespaces into the process; see confd_lib.h. */
CONFD_KIT_EXPORT int maapi_load_schemas(int sock);
/*
 * Loads those of the namespaces given. NOEXISTS: unknown hash. PROTOUSAGE:
 * flags other than 0, which this library knows none of; nsflags may be NULL.
 */
CONFD_KIT_EXPORT int maapi_load_schemas_list(int sock, int flags,
                                             const uint32_t *nshash,
                                             const int *nsflags, int num_ns);

/* Places a cursor before the first entry of a list. */
CONFD_KIT_MAAPI(init_cursor, int sock, int thandle, struct maapi_cursor *mc);
/* Moves to the next entry. */
CONFD_KIT_EXPORT int maapi_get_next(struct maapi_cursor *mc);
/*
 * Moves to the first entry after the given keys, or at them with
 * CONFD_FIND_SAME_OR_NEXT. Fewer keys than the list has count as standing
 * before every entry that begins with them. With a secondary index they are
 * the values of its leaves; an expression has no effect on where it moves.
 */
CONFD_KIT_EXPORT int maapi_find_next(struct maapi_cursor *mc,
                                     enum confd_find_next_type type,
                                     confd_value_t *inkeys, int n_inkeys);
/*
 * Reads the entries behind the cursor, at most *nobj, and moves it to the last
 * of them; object i starts at values[i * n] and takes at most n values. Returns
 * the highest number of values that one of them has. Where fewer are left,
 * *nobj becomes their number and mc->n 0.
 */
CONFD_KIT_EXPORT int maapi_get_objects(struct maapi_cursor *mc,
                                       confd_value_t *values, int n, int *nobj);
CONFD_KIT_EXPORT void maapi_destroy_cursor(struct maapi_cursor *mc);

#ifdef __cplusplus
}
#endif

#endif /* CONFD_MAAPI_H_ */
