#include "kit/host/process/publication.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <utility>

#include "kit/host/process/interrupt.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMaxStem = 200;  // keeps a temporary name below NAME_MAX
constexpr int kMaxAttempts = 100;

int ErrorOf(int result) { return result == 0 ? 0 : errno; }

// Whether a file system that does not know how to do something says so.
bool IsUnknown(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

std::string LinkToDescriptor(int fd) {
  return fmt::format("/proc/self/fd/{}", fd);
}

int Exchange(const char* one, const char* other) {
  return ErrorOf(renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE));
}

// Renames without ever replacing a file.
int RenameToNew(const char* from, const char* to) {
  const int error =
      ErrorOf(renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE));
  // A hard link does not replace either.
  if (!IsUnknown(error)) return error;
  if (link(from, to) != 0) return errno;
  unlink(from);  // should it stay, the file has two names, which is no failure
  return 0;
}

// Gives a file a name that no other has.
int Link(const FileDescriptor& file, const char* name) {
  return ErrorOf(linkat(AT_FDCWD, LinkToDescriptor(file.get()).c_str(),
                        AT_FDCWD, name, AT_SYMLINK_FOLLOW));
}

void Remove(char* name) {
  if (name[0] != '\0') unlink(name);
  name[0] = '\0';
}

// Those that are under way; changed while signals are blocked.
Publication* first = nullptr;

}  // namespace

fs::path FolderOf(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

Publication::Publication(fs::path target) : target_(std::move(target)) {
  const InterruptBlock block;
  next_ = std::exchange(first, this);
  SetInterruptCleanUp(CleanUp);
}

Publication::~Publication() {
  TakeBack();
  const InterruptBlock block;
  Publication** link = &first;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  if (first == nullptr) SetInterruptCleanUp(nullptr);
}

void Publication::CleanUp() {
  for (Publication* one = first; one != nullptr; one = one->next_) {
    one->TakeBack();
  }
}

FileDescriptor Publication::CreateUnnamed(mode_t mode) const {
  FileDescriptor file(
      open(FolderOf(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
  // Without this link the file could not get a name.
  const bool can_be_named =
      file.valid() && access(LinkToDescriptor(file.get()).c_str(), F_OK) == 0;
  return can_be_named ? std::move(file) : FileDescriptor();
}

int Publication::TakeName(Name& name,
                          const std::function<int(const char* name)>& make) {
  const std::string stem = target_.filename().string().substr(0, kMaxStem);
  std::random_device random;
  int error = EEXIST;
  for (int i = 0; i < kMaxAttempts && error == EEXIST; ++i) {
    const std::string candidate =
        FolderOf(target_) / fmt::format(".{}.{:08x}.tmp", stem, random());
    if (candidate.size() >= sizeof(name)) return ENAMETOOLONG;
    const InterruptBlock block;
    error = make(candidate.c_str());
    if (error == 0) std::memcpy(name, candidate.c_str(), candidate.size() + 1);
  }
  return error;
}

int Publication::CreateTemporary(mode_t mode, FileDescriptor* file) {
  return TakeName(temporary_, [mode, file](const char* name) {
    *file =
        FileDescriptor(open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    return file->valid() ? 0 : errno;
  });
}

void Publication::RemoveTemporary() {
  const InterruptBlock block;
  Remove(temporary_);
}

int Publication::Remember(const FileDescriptor& file) {
  struct stat status = {};
  if (fstat(file.get(), &status) != 0) return errno;
  device_ = status.st_dev;
  inode_ = status.st_ino;
  return 0;
}

int Publication::Add(const FileDescriptor& file) {
  const InterruptBlock block;
  int error = Remember(file);
  if (error != 0) return error;
  error = temporary_[0] == '\0' ? Link(file, target_.c_str())
                                : RenameToNew(temporary_, target_.c_str());
  if (error == 0) {
    temporary_[0] = '\0';
    published_ = true;
  }
  return error;
}

int Publication::Replace(const FileDescriptor& file) {
  const InterruptBlock block;
  int error = Remember(file);
  if (error == 0 && temporary_[0] == '\0') {
    error = TakeName(temporary_,
                     [&file](const char* name) { return Link(file, name); });
  }
  if (error != 0) return error;
  error = Exchange(temporary_, target_.c_str());
  if (error == 0) {
    std::memcpy(kept_, temporary_, sizeof(kept_));
  } else if (IsUnknown(error)) {
    old_is_lost_ = TakeName(kept_, [this](const char* name) {
                     return ErrorOf(link(target_.c_str(), name));
                   }) != 0;
    error = ErrorOf(rename(temporary_, target_.c_str()));
  }
  if (error == 0) {
    temporary_[0] = '\0';
    published_ = true;
  }
  return error;
}

int Publication::Confirm() {
  const InterruptBlock block;
  over_ = true;
  const int error = kept_[0] == '\0' ? 0 : ErrorOf(unlink(kept_));
  if (error == 0) kept_[0] = '\0';
  return error;
}

// From here on only what is safe in the handler of a signal.

bool Publication::IsNewFile(const char* name) const {
  struct stat now = {};
  return lstat(name, &now) == 0 && now.st_dev == device_ &&
         now.st_ino == inode_;
}

bool Publication::TakeTargetBack() {
  const char* target = target_.c_str();
  struct stat now = {};
  const bool is_gone = lstat(target, &now) != 0;
  if (is_gone && errno != ENOENT) return false;
  if (!is_gone && !IsNewFile(target)) return kept_[0] == '\0';
  if (old_is_lost_) return false;
  if (kept_[0] == '\0') return is_gone || unlink(target) == 0;
  if (Exchange(kept_, target) == 0) return IsNewFile(kept_);
  if (rename(kept_, target) != 0) return false;
  kept_[0] = '\0';
  return true;
}

bool Publication::TakeBack() {
  const InterruptBlock block;
  if (over_) return true;
  over_ = true;
  const bool done = !published_ || TakeTargetBack();
  Remove(temporary_);
  if (done) Remove(kept_);  // or else it is all that there is of what was there
  return done;
}

}  // namespace kit::host
