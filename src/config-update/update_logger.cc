#include "config_update/update_logger.h"

#include <zqconfd_log.h>

#include <cstdarg>

namespace config_update {

UpdateLogger::UpdateLogger() { handle_ = get_conf_updt_log_handle(); }

UpdateLogger& UpdateLogger::instance() {
  static UpdateLogger instance;
  return instance;
}

void UpdateLogger::Log(const char* format, ...) {
  void* const handle = instance().handle_;
  if (handle == nullptr) {
    return;
  }
  va_list args;
  va_start(args, format);
  zqmw_vlog_debug(handle, format, args);
  va_end(args);
}

}  // namespace config_update
