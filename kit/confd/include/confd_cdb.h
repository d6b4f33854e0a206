/*
 * Reading the configuration as it stood before the upgrade (CDB).
 *
 * Every call takes a socket with a read session first and a printf-like key
 * path last; all return CONFD_OK on success and CONFD_ERR with confd_errno set
 * on failure unless said otherwise. CDB paths may address a list entry by
 * position, "[n]" from 0.
 * Threads: see confd_lib.h.
 */
#ifndef CONFD_CDB_H_
#define CONFD_CDB_H_

#include <confd_lib.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Number of entries of a list. BADPATH: the model has no such list. */
CONFD_KIT_EXPORT int cdb_num_instances(int sock, const char *fmt, ...);

/* 1 or 0; for a list path without keys 1, for the model has it. */
CONFD_KIT_EXPORT int cdb_exists(int sock, const char *fmt, ...);

/*
 * Scalar reads. NOEXISTS: no value and no default, or no such entry.
 * BADTYPE: the leaf has another type.
 */
CONFD_KIT_EXPORT int cdb_get_u_int32(int sock, uint32_t *rval, const char *fmt,
                                     ...);
CONFD_KIT_EXPORT int cdb_get_int32(int sock, int32_t *rval, const char *fmt,
                                   ...);
CONFD_KIT_EXPORT int cdb_get_enum_value(int sock, int32_t *rval,
                                        const char *fmt, ...);
CONFD_KIT_EXPORT int cdb_get_ipv4(int sock, struct in_addr *rval,
                                  const char *fmt, ...);
CONFD_KIT_EXPORT int cdb_get_ipv4_and_plen(int sock,
                                           struct confd_ipv4_prefix *rval,
                                           const char *fmt, ...);

/* Copies a string with its NUL into n bytes. PROTOUSAGE: it does not fit. */
CONFD_KIT_EXPORT int cdb_get_str(int sock, char *rval, int n, const char *fmt,
                                 ...);

/*
 * Reads nobj entries of a list from position ix on; object i starts at
 * values[i * n] and takes at most n values. Returns the highest number of
 * values that one of the objects really has, which may exceed n.
 * NOEXISTS: ix + nobj passes the end.
 */
CONFD_KIT_EXPORT int cdb_get_objects(int sock, confd_value_t *values, int n,
                                     int ix, int nobj, const char *fmt, ...);

/* Selects the namespace for the paths that follow. NOEXISTS: unknown hash. */
CONFD_KIT_EXPORT int cdb_set_namespace(int sock, int hashed_ns);

#ifdef __cplusplus
}
#endif

#endif /* CONFD_CDB_H_ */
