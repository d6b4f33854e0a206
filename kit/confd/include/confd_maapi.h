/*
 * Reading and writing the upgrade transaction (MAAPI).
 *
 * Every call takes the MAAPI socket and the transaction handle first and a
 * printf-like key path last; all return CONFD_OK on success and CONFD_ERR with
 * confd_errno set on failure unless said otherwise. A path with a position
 * ("[n]") is BADPATH here.
 * Threads: see confd_lib.h.
 */
#ifndef CONFD_MAAPI_H_
#define CONFD_MAAPI_H_

#include <confd_lib.h>

#ifdef __cplusplus
extern "C" {
#endif

enum confd_find_next_type { CONFD_FIND_NEXT = 0, CONFD_FIND_SAME_OR_NEXT = 1 };

/*
 * Walks the entries of one list. Programs read keys[0 .. n-1]; the library owns
 * the keys, and n is 0 once there is no further entry. After a successful
 * maapi_init_cursor n is the number of keys that the list has.
 */
struct maapi_cursor {
  confd_value_t keys[MAXKEYLEN];
  int n;
  /* Private. */
  int sock;
  int thandle;
  void *impl;
};

/* 1 or 0; for a list path without keys 1, for the model has it. */
CONFD_KIT_EXPORT int maapi_exists(int sock, int thandle, const char *fmt, ...);

/* ALREADY_EXISTS: the entry is there. NOEXISTS: a parent entry is missing. */
CONFD_KIT_EXPORT int maapi_create(int sock, int thandle, const char *fmt, ...);

/* Deletes a list entry or an optional leaf. NOEXISTS: it is absent. */
CONFD_KIT_EXPORT int maapi_delete(int sock, int thandle, const char *fmt, ...);

/* The value belongs to the caller: confd_free_value releases it. */
CONFD_KIT_EXPORT int maapi_get_elem(int sock, int thandle, confd_value_t *v,
                                    const char *fmt, ...);
CONFD_KIT_EXPORT int maapi_get_u_int32_elem(int sock, int thandle,
                                            uint32_t *rval, const char *fmt,
                                            ...);

/*
 * Reads one entry. Returns the number of values that the entry needs; only the
 * first n are stored.
 */
CONFD_KIT_EXPORT int maapi_get_object(int sock, int thandle,
                                      confd_value_t *values, int n,
                                      const char *fmt, ...);

/* BADTYPE: not the leaf's type. NOEXISTS: the entry is missing. */
CONFD_KIT_EXPORT int maapi_set_elem(int sock, int thandle, confd_value_t *v,
                                    const char *fmt, ...);

/*
 * Writes one entry. With the path of a list the keys are taken from the values;
 * with the path of an entry the keys among the values are ignored. Creates what
 * is missing; a C_NOEXISTS value deletes that leaf.
 */
CONFD_KIT_EXPORT int maapi_set_object(int sock, int thandle,
                                      const confd_value_t *values, int n,
                                      const char *fmt, ...);

/* Selects the namespace for the paths that follow. NOEXISTS: unknown hash. */
CONFD_KIT_EXPORT int maapi_set_namespace(int sock, int thandle, int hashed_ns);

/* Places a cursor before the first entry of a list. */
CONFD_KIT_EXPORT int maapi_init_cursor(int sock, int thandle,
                                       struct maapi_cursor *mc, const char *fmt,
                                       ...);
/* Moves to the next entry. */
CONFD_KIT_EXPORT int maapi_get_next(struct maapi_cursor *mc);
/*
 * Moves to the first entry after the given keys, or at them with
 * CONFD_FIND_SAME_OR_NEXT. Fewer keys than the list has count as standing
 * before every entry that begins with them.
 */
CONFD_KIT_EXPORT int maapi_find_next(struct maapi_cursor *mc,
                                     enum confd_find_next_type type,
                                     confd_value_t *inkeys, int n_inkeys);
CONFD_KIT_EXPORT void maapi_destroy_cursor(struct maapi_cursor *mc);

#ifdef __cplusplus
}
#endif

#endif /* CONFD_MAAPI_H_ */
