/*
 * The platform's upgrade log, as upgrade programs see it.
 *
 * Both functions may be called from any thread, but not from a signal handler.
 */
#ifndef ZQCONFD_LOG_H_
#define ZQCONFD_LOG_H_

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Handle of the upgrade log, or NULL when there is none. */
__attribute__((visibility("default"))) void *get_conf_updt_log_handle(void);

/* Writes one debug record; the result carries nothing. */
__attribute__((visibility("default"))) int zqmw_vlog_debug(void *handle,
                                                           const char *format,
                                                           va_list args);

#ifdef __cplusplus
}
#endif

#endif /* ZQCONFD_LOG_H_ */
