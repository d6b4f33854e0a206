#include "kit/host/log_file.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <system_error>

#include "kit/host/text.h"

namespace kit::host {
namespace {

Failure LogFailure(const std::string& path, const std::string& reason) {
  return {ExitCode::kOutputFailed, "the log cannot be written: " + reason,
          "choose another file with --log, or make room or permission for "
          "this one",
          path};
}

}  // namespace

LogFile::LogFile(const std::string& path)
    : path_(path),
      fd_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
  if (!fd_.valid()) {
    throw FailureError(
        LogFailure(path, std::generic_category().message(errno)));
  }
}

void LogFile::Write(std::string_view record) {
  if (failure_) return;
  try {
    WriteAll(fd_.get(), Escaped(WithoutLastNewline(record)) + "\n");
  } catch (const std::system_error& error) {
    failure_ = LogFailure(path_, error.code().message());
  }
}

}  // namespace kit::host
