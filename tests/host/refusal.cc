#include "refusal.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>

namespace host_test {
namespace {

// Loads the lower half of a 64-bit field.
sock_filter LoadLower(size_t offset) {
  if (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) offset += 4;
  return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<uint32_t>(offset));
}

bool RefuseOne(const Refusal& refusal) {
  const auto error = SECCOMP_RET_ERRNO | static_cast<uint32_t>(refusal.error);
  const uint8_t unless_set = refusal.bits == 0 ? 0 : 1;
  sock_filter filter[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(refusal.call),
               0, 3),
      LoadLower(offsetof(seccomp_data, args) +
                sizeof(uint64_t) * static_cast<size_t>(refusal.argument)),
      BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, refusal.bits, 0, unless_set),
      BPF_STMT(BPF_RET | BPF_K, error),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {sizeof(filter) / sizeof(filter[0]), filter};
  return prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace

std::vector<Refusal> NoUnnamedFiles() {
  return {{SYS_openat, 2, O_TMPFILE & ~O_DIRECTORY, EOPNOTSUPP}};
}

std::vector<Refusal> NoExchange() {
  return {{SYS_renameat2, 4, RENAME_EXCHANGE, EINVAL}};
}

std::vector<Refusal> NoRenameThatNeverReplaces() {
  return {{SYS_renameat2, 4, RENAME_NOREPLACE, EINVAL}};
}

std::vector<Refusal> NoHardLinks() {
  std::vector<Refusal> refusals = {{SYS_linkat, 0, 0, EPERM}};
#ifdef SYS_link
  refusals.push_back({SYS_link, 0, 0, EPERM});
#endif
  return refusals;
}

std::vector<Refusal> NoRemoval() {
  std::vector<Refusal> refusals = {{SYS_unlinkat, 0, 0, EPERM}};
#ifdef SYS_unlink
  refusals.push_back({SYS_unlink, 0, 0, EPERM});
#endif
  return refusals;
}

bool Refuse(const std::vector<Refusal>& refusals) {
  if (refusals.empty()) return true;
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return false;
  for (const Refusal& refusal : refusals) {
    if (!RefuseOne(refusal)) return false;
  }
  return true;
}

}  // namespace host_test
