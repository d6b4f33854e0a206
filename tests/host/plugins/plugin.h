// What the plug-ins of these tests share.
#ifndef TESTS_HOST_PLUGINS_PLUGIN_H_
#define TESTS_HOST_PLUGINS_PLUGIN_H_

#include <confd_lib.h>
//
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <stdarg.h>
#include <zqconfd_log.h>

#define EXPORTED extern "C" __attribute__((visibility("default")))

__attribute__((format(printf, 1, 2))) inline void Log(const char* format, ...) {
  va_list args;
  va_start(args, format);
  zqmw_vlog_debug(get_conf_updt_log_handle(), format, args);
  va_end(args);
}

#endif  // TESTS_HOST_PLUGINS_PLUGIN_H_
