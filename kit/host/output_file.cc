#include "kit/host/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "kit/host/failure.h"
#include "kit/host/interrupt.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 0777;
constexpr size_t kMaxStem = 200;  // keeps the temporary name below NAME_MAX

[[noreturn]] void Fail(const fs::path& file, std::string reason,
                       std::string advice) {
  throw FailureError({ExitCode::kOutputFailed, std::move(reason),
                      std::move(advice), file.string()});
}

[[noreturn]] void FailWithErrno(const fs::path& file, const char* what,
                                int error) {
  Fail(file,
       fmt::format("{}: {}", what, std::generic_category().message(error)),
       "choose another file with -o, or make room or permission for this one");
}

mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

// Follows links, so that a link to the file stays one.
fs::path ResolveTarget(const std::string& target) {
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(target, error))) return target;
  fs::path resolved = fs::canonical(target, error);
  if (error) {
    Fail(target, "is a symbolic link that leads nowhere",
         "name another file with -o");
  }
  return resolved;
}

void CheckReplaceable(const std::string& target, const struct stat& existing,
                      bool force, const std::optional<struct stat>& input) {
  if (input && SameFile(existing, *input)) {
    Fail(target, "is the configuration that is read, which is never changed",
         "name another file with -o");
  }
  if (S_ISDIR(existing.st_mode)) {
    Fail(target, "is a folder", "name a file with -o");
  }
  if (!S_ISREG(existing.st_mode)) {
    Fail(target, "is not a regular file",
         "name a file with -o, or use -o - for standard output");
  }
  if (!force) {
    Fail(target, "exists already",
         "give --force to replace it, or name another file with -o");
  }
}

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

// Renames without ever replacing a file; 0 or an errno.
int RenameToNew(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  // Not every file system knows how; a hard link does not replace either.
  if (errno != EINVAL && errno != ENOSYS) return errno;
  if (link(from, to) != 0) return errno;
  return unlink(from) == 0 ? 0 : errno;
}

}  // namespace

std::optional<struct stat> StatFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

OutputFile::OutputFile(FileDescriptor fd, fs::path temporary, fs::path target,
                       bool force, mode_t mode)
    : fd_(std::move(fd)),
      temporary_(std::move(temporary)),
      target_(std::move(target)),
      force_(force),
      mode_(mode) {}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : fd_(std::move(other.fd_)),
      temporary_(std::exchange(other.temporary_, fs::path())),
      target_(std::move(other.target_)),
      force_(other.force_),
      mode_(other.mode_) {}

OutputFile::~OutputFile() {
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  SetInterruptFile("");
}

OutputFile OutputFile::ForFile(const std::string& target, bool force,
                               const std::optional<struct stat>& input) {
  const fs::path resolved = ResolveTarget(target);
  if (!resolved.has_filename()) {
    Fail(target, "is a folder", "name a file with -o");
  }
  mode_t mode = NewFileMode();
  if (const auto existing = StatFile(resolved)) {
    CheckReplaceable(target, *existing, force, input);
    mode = existing->st_mode & kPermissions;
  } else if (errno != ENOENT) {
    FailWithErrno(target, "cannot be written", errno);
  }
  const std::string stem = resolved.filename().string().substr(0, kMaxStem);
  std::string pattern =
      (FolderOf(resolved) / fmt::format(".{}.XXXXXX.tmp", stem)).string();
  const InterruptBlock block;
  FileDescriptor fd(mkostemps(pattern.data(), 4, O_CLOEXEC));
  if (!fd.valid()) {
    FailWithErrno(target, "cannot be created in its folder", errno);
  }
  SetInterruptFile(pattern);
  return OutputFile(std::move(fd), pattern, resolved, force, mode);
}

OutputFile OutputFile::ForStandardOutput() {
  FileDescriptor fd(memfd_create("ospf-upgrade-output", MFD_CLOEXEC));
  if (!fd.valid()) {
    FailWithErrno("standard output", "cannot be buffered", errno);
  }
  return OutputFile(std::move(fd), "", "", true, 0);
}

uint64_t OutputFile::Commit() {
  struct stat status = {};
  if (fstat(fd_.get(), &status) != 0) {
    FailWithErrno(target_, "cannot be written", errno);
  }
  const auto size = static_cast<uint64_t>(status.st_size);
  if (target_.empty()) {
    CopyToStandardOutput(size);
    return size;
  }
  if (fchmod(fd_.get(), mode_) != 0 || fsync(fd_.get()) != 0) {
    FailWithErrno(target_, "cannot be written", errno);
  }
  MoveIntoPlace();
  SyncFolder();
  return size;
}

void OutputFile::MoveIntoPlace() {
  const InterruptBlock block;
  const int error =
      force_ ? (rename(temporary_.c_str(), target_.c_str()) == 0 ? 0 : errno)
             : RenameToNew(temporary_.c_str(), target_.c_str());
  if (error == EEXIST) {
    Fail(target_, "has come into existence during the run",
         "give --force to replace it, or name another file with -o");
  }
  if (error != 0) FailWithErrno(target_, "cannot be put in place", error);
  temporary_.clear();
  SetInterruptFile("");
}

void OutputFile::SyncFolder() const {
  const FileDescriptor folder(
      open(FolderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // A folder that may be written but not read can't be synced; nor can those
  // of file systems that answer EINVAL.
  if (!folder.valid() || fsync(folder.get()) == 0 || errno == EINVAL) return;
  FailWithErrno(target_,
                "was written, but its folder may lose it in a power failure",
                errno);
}

void OutputFile::CopyToStandardOutput(uint64_t size) const {
  std::array<char, 1 << 16> chunk;
  try {
    for (uint64_t done = 0; done < size;) {
      const ssize_t got = pread(fd_.get(), chunk.data(), chunk.size(),
                                static_cast<off_t>(done));
      if (got <= 0) FailWithErrno("standard output", "cannot be read", errno);
      WriteAll(STDOUT_FILENO, {chunk.data(), static_cast<size_t>(got)});
      done += static_cast<uint64_t>(got);
    }
  } catch (const std::system_error& error) {
    FailWithErrno("standard output", "cannot be written", error.code().value());
  }
}

}  // namespace kit::host
