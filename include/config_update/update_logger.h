#ifndef CONFIG_UPDATE_UPDATE_LOGGER_H_
#define CONFIG_UPDATE_UPDATE_LOGGER_H_

#include "config_update/export.h"

namespace config_update {

// The one way of every message into the platform's upgrade log.
class UpdateLogger {
 public:
  UpdateLogger(const UpdateLogger&) = delete;
  UpdateLogger& operator=(const UpdateLogger&) = delete;

  // Fetches the log handle on the first call of the process. When the platform
  // throws then, so does this, and the next call tries again.
  CONFIG_UPDATE_EXPORT static UpdateLogger& instance();

  // Logs one record, as printf would print it and with nothing added; does
  // nothing when the platform had no log at the first call.
  CONFIG_UPDATE_EXPORT static void Log(const char* format, ...)
      __attribute__((format(printf, 1, 2)));

 private:
  UpdateLogger();

  void* handle_ = nullptr;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_UPDATE_LOGGER_H_
