#include "kit/host/process/log_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

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

FileDescriptor Open(const std::string& path, int flags) {
  return FileDescriptor(open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, 0666));
}

bool IsRegular(const FileDescriptor& file) {
  struct stat status = {};
  return fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

// Terminals and pipes can be written to without losing anything.
FileDescriptor OpenNew(const std::string& path) {
  FileDescriptor file = Open(path, O_CREAT | O_EXCL);
  if (file.valid() || errno != EEXIST) return file;
  file = Open(path, 0);
  if (file.valid() && IsRegular(file)) {
    throw FailureError(
        {ExitCode::kOutputFailed, "exists already",
         "give --force to replace it, or name another file with --log", path});
  }
  return file;
}

}  // namespace

LogFile::LogFile(const std::string& path, bool force)
    : path_(path), fd_(force ? Open(path, O_CREAT | O_TRUNC) : OpenNew(path)) {
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
