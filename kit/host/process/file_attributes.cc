#include "kit/host/process/file_attributes.h"

#include <fmt/format.h>
#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "kit/host/failure.h"

namespace kit::host {
namespace {

constexpr mode_t kPermissions = 0777;
constexpr char kAccessList[] = "system.posix_acl_access";

[[noreturn]] void Fail(const std::filesystem::path& path,
                       const std::string& what, int error) {
  throw FailureError({ExitCode::kOutputFailed,
                      fmt::format("its {} cannot be kept: {}", what,
                                  std::generic_category().message(error)),
                      "name another file with -o, or remove this one first",
                      path.string()});
}

bool IsAbsence(int error) { return error == ENODATA || error == EOPNOTSUPP; }

// 0 or an errno.
int CopyAccessList(const std::filesystem::path& path, int file) {
  std::string list(XATTR_SIZE_MAX, '\0');
  const ssize_t size =
      getxattr(path.c_str(), kAccessList, list.data(), list.size());
  if (size >= 0) {
    return fsetxattr(file, kAccessList, list.data(), static_cast<size_t>(size),
                     0) == 0
               ? 0
               : errno;
  }
  if (!IsAbsence(errno)) return errno;
  // The folder may have given it one.
  if (fremovexattr(file, kAccessList) == 0 || IsAbsence(errno)) return 0;
  return errno;
}

}  // namespace

void CopyAttributes(const std::filesystem::path& path, const struct stat& old,
                    int file) {
  struct stat now = {};
  if (fstat(file, &now) != 0) Fail(path, "permissions", errno);
  const bool same_owner = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
  if (!same_owner && fchown(file, old.st_uid, old.st_gid) != 0) {
    Fail(path, fmt::format("owner and group ({}:{})", old.st_uid, old.st_gid),
         errno);
  }
  const mode_t mode = old.st_mode & kPermissions;
  if ((now.st_mode & kPermissions) != mode && fchmod(file, mode) != 0) {
    Fail(path, "permissions", errno);
  }
  const int error = CopyAccessList(path, file);
  if (error != 0) Fail(path, "access control list", error);
}

}  // namespace kit::host
