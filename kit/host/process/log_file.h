// The file of --log.
#ifndef KIT_HOST_PROCESS_LOG_FILE_H_
#define KIT_HOST_PROCESS_LOG_FILE_H_

#include <optional>
#include <string>
#include <string_view>

#include "kit/host/failure.h"
#include "kit/host/process/file_descriptor.h"

namespace kit::host {

class LogFile {
 public:
  // force: empties a file that exists, which is refused otherwise. Throws
  // FailureError (kOutputFailed).
  LogFile(const std::string& path, bool force);

  // Writes one line at once, so that it stays whatever happens next. The record
  // is Escaped, so that no record passes for two.
  void Write(std::string_view record);

  // Set once a line could not be written; later ones are dropped.
  const std::optional<Failure>& failure() const { return failure_; }

 private:
  std::string path_;
  FileDescriptor fd_;
  std::optional<Failure> failure_;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_LOG_FILE_H_
