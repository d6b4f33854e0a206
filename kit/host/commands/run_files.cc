#include "kit/host/commands/run_files.h"

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "kit/host/exit_code.h"
#include "kit/host/failure.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

// Whether what is printed goes to that file, which would not outlive its
// replacement.
bool IsPrintedTo(const std::string& path) {
  const auto file = StatFile(path);
  if (!file) return false;
  for (const int fd : {STDOUT_FILENO, STDERR_FILENO}) {
    struct stat printed = {};
    if (fstat(fd, &printed) == 0 && SameFile(*file, printed)) return true;
  }
  return false;
}

[[noreturn]] void FailLog(const std::string& log, const char* reason) {
  throw FailureError(
      {ExitCode::kOutputFailed, reason, "name another file with --log", log});
}

// Whether two names, of files that need not exist, are of the same file.
bool SameName(const std::string& name, const std::string& other) {
  std::error_code error;
  const fs::path path = fs::weakly_canonical(name, error);
  if (error) return name == other;
  const fs::path other_path = fs::weakly_canonical(other, error);
  return error ? name == other : path == other_path;
}

}  // namespace

std::optional<struct stat> StatInput(const RunOptions& options) {
  if (options.config != "-") return StatFile(options.config);
  struct stat status = {};
  if (fstat(STDIN_FILENO, &status) != 0) return std::nullopt;
  return status;
}

std::optional<OutputFile> PrepareOutput(
    const RunOptions& options, const std::optional<struct stat>& input) {
  if (!options.output) return std::nullopt;
  if (*options.output == "-") return OutputFile::ForStandardOutput();
  if (IsPrintedTo(*options.output)) {
    throw FailureError({ExitCode::kOutputFailed,
                        "is the file that the report goes to",
                        "name another file, or use -o - for standard output",
                        *options.output});
  }
  return OutputFile::ForFile(*options.output, options.force, input);
}

OutputFile PreparePage(const RunOptions& options,
                       const std::optional<struct stat>& input) {
  const std::string& page = *options.page;
  const auto fail = [&page](const char* reason) {
    throw FailureError({ExitCode::kOutputFailed, reason,
                        "name another file with --report", page});
  };
  if (IsPrintedTo(page)) fail("is the file that the report in words goes to");
  if (options.output && *options.output != "-" &&
      SameName(page, *options.output)) {
    fail("cannot be both the page and the output");
  }
  if (options.log && SameName(page, *options.log)) {
    fail("cannot be both the page and the log");
  }
  return OutputFile::ForFile(page, options.force, input, "--report");
}

std::optional<LogFile> OpenLog(const RunOptions& options,
                               const std::optional<struct stat>& input) {
  if (!options.log) return std::nullopt;
  const auto existing = StatFile(*options.log);
  if (existing && input && SameFile(*existing, *input)) {
    FailLog(*options.log,
            "is the configuration that is read, which is never changed");
  }
  if (IsPrintedTo(*options.log)) {
    FailLog(*options.log, "is the file that the report goes to");
  }
  if (options.output && *options.output != "-" &&
      SameName(*options.log, *options.output)) {
    FailLog(*options.log, "cannot be both the log and the output");
  }
  return std::optional<LogFile>(std::in_place, *options.log, options.force);
}

}  // namespace kit::host
