#include "kit/host/publication.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <utility>

#include "kit/host/interrupt.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxStem = 200;  // keeps a temporary name below NAME_MAX
constexpr int kMaxAttempts = 100;

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

std::string LinkToDescriptor(int fd) {
  return fmt::format("/proc/self/fd/{}", fd);
}

// Renames without ever replacing a file.
int RenameToNew(const char* from, const char* to) {
  const int error =
      ErrorOf(renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE));
  // Not every file system knows how; a hard link does not replace either.
  if (error != EINVAL && error != ENOSYS) return error;
  if (link(from, to) != 0) return errno;
  return ErrorOf(unlink(from));
}

// Gives a file a name that no other has.
int Link(const FileDescriptor& file, const char* name) {
  return ErrorOf(linkat(AT_FDCWD, LinkToDescriptor(file.get()).c_str(),
                        AT_FDCWD, name, AT_SYMLINK_FOLLOW));
}

// For the handler of a signal; changed while signals are blocked.
const char* unfinished = nullptr;

void RemoveUnfinished() {
  if (unfinished != nullptr && unfinished[0] != '\0') unlink(unfinished);
}

}  // namespace

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

Publication::Publication(fs::path target) : target_(std::move(target)) {
  const InterruptBlock block;
  unfinished = temporary_;
  SetInterruptCleanUp(RemoveUnfinished);
}

Publication::~Publication() {
  RemoveTemporary();
  const InterruptBlock block;
  SetInterruptCleanUp(nullptr);
  unfinished = nullptr;
}

FileDescriptor Publication::CreateUnnamed(mode_t mode) const {
  FileDescriptor file(
      open(FolderOf(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
  // Without this link the file could not get a name.
  const bool can_be_named =
      file.valid() && access(LinkToDescriptor(file.get()).c_str(), F_OK) == 0;
  return can_be_named ? std::move(file) : FileDescriptor();
}

int Publication::TakeTemporaryName(
    const std::function<int(const char* name)>& make) {
  const std::string stem = target_.filename().string().substr(0, kMaxStem);
  std::random_device random;
  int error = EEXIST;
  for (int i = 0; i < kMaxAttempts && error == EEXIST; ++i) {
    const std::string name =
        FolderOf(target_) / fmt::format(".{}.{:08x}.tmp", stem, random());
    if (name.size() >= sizeof(temporary_)) return ENAMETOOLONG;
    const InterruptBlock block;
    error = make(name.c_str());
    if (error == 0) std::memcpy(temporary_, name.c_str(), name.size() + 1);
  }
  return error;
}

int Publication::CreateTemporary(mode_t mode, FileDescriptor* file) {
  return TakeTemporaryName([mode, file](const char* name) {
    *file =
        FileDescriptor(open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    return file->valid() ? 0 : errno;
  });
}

void Publication::RemoveTemporary() {
  const InterruptBlock block;
  RemoveUnfinished();
  temporary_[0] = '\0';
}

int Publication::Add(const FileDescriptor& file) {
  const InterruptBlock block;
  if (temporary_[0] == '\0') return Link(file, target_.c_str());
  const int error = RenameToNew(temporary_, target_.c_str());
  if (error == 0) temporary_[0] = '\0';
  return error;
}

int Publication::Replace(const FileDescriptor& file) {
  const InterruptBlock block;
  if (temporary_[0] == '\0') {
    const int error = TakeTemporaryName(
        [&file](const char* name) { return Link(file, name); });
    if (error != 0) return error;
  }
  const int error = ErrorOf(rename(temporary_, target_.c_str()));
  if (error == 0) temporary_[0] = '\0';
  return error;
}

}  // namespace kit::host
