/*
 * Where the stand-in's upgrade log goes: for the host that runs an upgrade
 * program, not for the program itself.
 *
 * Each setter replaces what an earlier one set. A program fetches its handle
 * once, so a host chooses before it runs one; the sink may change later.
 *
 * Every function may be called from any thread, but not from a signal handler.
 */
#ifndef ZQCONFD_SINK_H_
#define ZQCONFD_SINK_H_

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ZQCONFD_EXPORT __attribute__((visibility("default")))

/*
 * Receives one record exactly as it was formatted: nothing is added, of any
 * length. The text is NUL-terminated and lives as long as the call. Threads
 * that log at the same time call the sink at the same time.
 */
typedef void (*zqconfd_sink_function)(void *context, const char *text,
                                      size_t length);

/*
 * Stands in for the platform's factory: returns zqconfd_log_handle(), or NULL
 * for no log, or (in C++) throws. Called on the thread that fetches.
 */
typedef void *(*zqconfd_handle_factory)(void *context);

/*
 * Sends the records to sink; with NULL to stderr, a line each, which is also
 * where they go when nothing was set.
 */
ZQCONFD_EXPORT void zqconfd_set_sink(zqconfd_sink_function sink, void *context);

/* From now on the platform has no log: programs get a null handle. */
ZQCONFD_EXPORT void zqconfd_set_no_log(void);

/*
 * From now on every fetch of the handle is the factory's; with NULL there is a
 * log again. The sink stays as it is.
 */
ZQCONFD_EXPORT void zqconfd_set_handle_factory(zqconfd_handle_factory factory,
                                               void *context);

/* The handle of the log; never NULL. */
ZQCONFD_EXPORT void *zqconfd_log_handle(void);

/* How often get_conf_updt_log_handle was called, failures included. */
ZQCONFD_EXPORT size_t zqconfd_handle_fetches(void);

#ifdef __cplusplus
}
#endif

#endif /* ZQCONFD_SINK_H_ */
