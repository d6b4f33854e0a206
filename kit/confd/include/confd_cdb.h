/*
 * Reading the configuration as it stood before the upgrade (CDB).
 *
 * Every call takes a socket with a read session first and, where it has one, a
 * printf-like key path last; all return CONFD_OK on success and CONFD_ERR with
 * confd_errno set on failure unless said otherwise. CDB paths may address a
 * list entry by position, "[n]" from 0.
 * Threads: see confd_lib.h.
 */
#ifndef CONFD_CDB_H_
#define CONFD_CDB_H_

#include <confd_lib.h>

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Declares a call with a key path, and its twin with a v that takes the
 * arguments of the format as a va_list:
 *
 *   int cdb_get(int sock, confd_value_t *v, const char *fmt, ...);
 *   int cdb_vget(int sock, confd_value_t *v, const char *fmt, va_list args);
 */
#define CONFD_KIT_CDB(name, ...)                                      \
  CONFD_KIT_EXPORT int cdb_##name(__VA_ARGS__, const char *fmt, ...); \
  CONFD_KIT_EXPORT int cdb_v##name(__VA_ARGS__, const char *fmt, va_list args)

/* ---- Paths -------------------------------------------------------------- */

/* Selects the namespace for the paths that follow. NOEXISTS: unknown hash. */
CONFD_KIT_EXPORT int cdb_set_namespace(int sock, int hashed_ns);

/*
 * Relative paths begin at the current position, which is the root until it is
 * moved to a container or an entry; these need not exist. BADPATH: another
 * node. popd goes back to where the last pushd left. NOSTACK: there was none.
 */
CONFD_KIT_CDB(cd, int sock);
CONFD_KIT_CDB(pushd, int sock);
CONFD_KIT_EXPORT int cdb_popd(int sock);

/* The current position; at most strsz - 1 characters of it and a NUL. */
CONFD_KIT_EXPORT int cdb_getcwd(int sock, size_t strsz, char *curdir);
/* The same as a path of its own, which confd_free_hkeypath releases. */
CONFD_KIT_EXPORT int cdb_getcwd_kpath(int sock, confd_hkeypath_t **kp);

/* ---- What there is ------------------------------------------------------ */

/* 1 or 0; for a list path without keys 1, for the model has it. */
CONFD_KIT_CDB(exists, int sock);

/* Entries of a list or values of a leaf-list. BADPATH: the model has none. */
CONFD_KIT_CDB(num_instances, int sock);

/* Position of an entry, from 0. BADPATH: there is no such entry. */
CONFD_KIT_CDB(index, int sock);

/*
 * Position of the first entry behind the given keys, which need not exist; -1
 * past the end. "*" may stand for the last keys; such keys stand before every
 * entry that begins with the others. UNAVAILABLE: the user orders the list.
 */
CONFD_KIT_CDB(next_index, int sock);

/* 1 where a leaf has no value and its default holds, 0 where it has one. */
CONFD_KIT_CDB(is_default, int sock);

/*
 * *rcase becomes a C_XMLTAG that names the case of a choice which the path's
 * container or entry has; for a choice in a case "choice/case/choice".
 * NOEXISTS: none is chosen, and none is the default.
 */
CONFD_KIT_CDB(get_case, int sock, const char *choice, confd_value_t *rcase);

/* ---- One leaf ----------------------------------------------------------- */

/*
 * NOEXISTS: no value and no default, or no such entry. BADPATH: no leaf.
 * BADTYPE: the value has another type than the call reads.
 *
 * What is pointed to belongs to the caller: confd_free_value releases what
 * cdb_get read and each item of a list, confd_free_hkeypath a path, and free()
 * what else a typed call gave.
 */
CONFD_KIT_CDB(get, int sock, confd_value_t *v);
CONFD_KIT_CDB(get_int8, int sock, int8_t *rval);
CONFD_KIT_CDB(get_int16, int sock, int16_t *rval);
CONFD_KIT_CDB(get_int32, int sock, int32_t *rval);
CONFD_KIT_CDB(get_int64, int sock, int64_t *rval);
CONFD_KIT_CDB(get_u_int8, int sock, uint8_t *rval);
CONFD_KIT_CDB(get_u_int16, int sock, uint16_t *rval);
CONFD_KIT_CDB(get_u_int32, int sock, uint32_t *rval);
CONFD_KIT_CDB(get_u_int64, int sock, uint64_t *rval);
CONFD_KIT_CDB(get_bool, int sock, int *rval);
CONFD_KIT_CDB(get_double, int sock, double *rval);
CONFD_KIT_CDB(get_enum_value, int sock, int32_t *rval);
CONFD_KIT_CDB(get_bit32, int sock, uint32_t *rval);
CONFD_KIT_CDB(get_bit64, int sock, uint64_t *rval);
CONFD_KIT_CDB(get_ipv4, int sock, struct in_addr *rval);
CONFD_KIT_CDB(get_ipv6, int sock, struct in6_addr *rval);
CONFD_KIT_CDB(get_dquad, int sock, struct confd_dotted_quad *rval);
CONFD_KIT_CDB(get_ipv4prefix, int sock, struct confd_ipv4_prefix *rval);
CONFD_KIT_CDB(get_ipv6prefix, int sock, struct confd_ipv6_prefix *rval);
CONFD_KIT_CDB(get_ipv4_and_plen, int sock, struct confd_ipv4_prefix *rval);
CONFD_KIT_CDB(get_ipv6_and_plen, int sock, struct confd_ipv6_prefix *rval);
CONFD_KIT_CDB(get_datetime, int sock, struct confd_datetime *rval);
CONFD_KIT_CDB(get_date, int sock, struct confd_date *rval);
CONFD_KIT_CDB(get_time, int sock, struct confd_time *rval);
CONFD_KIT_CDB(get_duration, int sock, struct confd_duration *rval);
CONFD_KIT_CDB(get_decimal64, int sock, struct confd_decimal64 *rval);
CONFD_KIT_CDB(get_identityref, int sock, struct confd_identityref *rval);
CONFD_KIT_CDB(get_objectref, int sock, confd_hkeypath_t **rval);
CONFD_KIT_CDB(get_oid, int sock, struct confd_snmp_oid **rval);
CONFD_KIT_CDB(get_buf, int sock, unsigned char **rval, int *bufsiz);
CONFD_KIT_CDB(get_binary, int sock, unsigned char **rval, int *bufsiz);
CONFD_KIT_CDB(get_hexstr, int sock, unsigned char **rval, int *bufsiz);
CONFD_KIT_CDB(get_bitbig, int sock, unsigned char **rval, int *bufsiz);
CONFD_KIT_CDB(get_qname, int sock, unsigned char **prefix, int *prefixsz,
              unsigned char **name, int *namesz);
CONFD_KIT_CDB(get_list, int sock, confd_value_t **values, int *n);
/* Copies a string with its NUL into n bytes. PROTOUSAGE: it does not fit. */
CONFD_KIT_CDB(get_str, int sock, char *rval, int n);
/* The same without a NUL; *n becomes the string's length. */
CONFD_KIT_CDB(get_buf2, int sock, unsigned char *rval, int *n);

/* ---- Entries and containers --------------------------------------------- */

/*
 * Reads an entry or container. Returns the number of values that it has; only
 * the first n are stored. BADPATH: it is not there.
 */
CONFD_KIT_CDB(get_object, int sock, confd_value_t *values, int n);

/*
 * Reads nobj entries of a list from position ix on; object i starts at
 * values[i * n] and takes at most n values. Returns the highest number of
 * values that one of the objects really has, which may exceed n.
 * NOEXISTS: ix + nobj passes the end.
 */
CONFD_KIT_CDB(get_objects, int sock, confd_value_t *values, int n, int ix,
              int nobj);

/*
 * Reads single nodes of an entry or container, at any depth: containers and
 * entries open with C_XMLBEGIN and close with C_XMLEND, an entry's keys come
 * first. C_NOEXISTS asks for a value in its place, C_PTR for one in a variable:
 * that which confd_value_t has for the type. C_CDBBEGIN opens an entry by its
 * position. NOEXISTS: a missing entry. BADPATH: no such node, or state data.
 */
CONFD_KIT_CDB(get_values, int sock, confd_tag_value_t *values, int n);

#ifdef __cplusplus
}
#endif

#endif /* CONFD_CDB_H_ */
