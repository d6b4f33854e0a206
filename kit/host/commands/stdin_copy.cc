#include "kit/host/commands/stdin_copy.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <vector>

#include "kit/host/failure.h"
#include "kit/host/process/file_descriptor.h"

namespace kit::host {
namespace {

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

StdinCopy::StdinCopy(uint64_t max_mib) {
  const FileDescriptor memory(memfd_create("ospf-upgrade-input", MFD_CLOEXEC));
  if (!memory.valid()) ThrowErrno("memfd_create");
  std::vector<char> chunk(size_t{1} << 16);
  // A little more than the limit, for what reads it to see that it is over.
  uint64_t left = (max_mib << 20) + chunk.size();
  while (left >= chunk.size()) {
    const ssize_t got = read(STDIN_FILENO, chunk.data(), chunk.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      throw FailureError(
          {ExitCode::kBadInput,
           "cannot be read: " + std::generic_category().message(errno),
           "name a file with the configuration, XML or JSON",
           "standard input"});
    }
    if (got == 0) break;
    WriteAll(memory.get(), {chunk.data(), static_cast<size_t>(got)});
    left -= static_cast<uint64_t>(got);
  }
  if (dup2(memory.get(), STDIN_FILENO) < 0) ThrowErrno("dup2");
  Rewind();
}

void StdinCopy::Rewind() const {
  if (lseek(STDIN_FILENO, 0, SEEK_SET) != 0) ThrowErrno("lseek");
}

}  // namespace kit::host
