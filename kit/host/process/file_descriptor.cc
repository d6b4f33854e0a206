#include "kit/host/process/file_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace kit::host {

void FileDescriptor::Close() {
  if (fd_ >= 0) close(std::exchange(fd_, -1));
}

Pipe MakePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe2");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

void CloseAllBut(std::vector<int> kept) {
  std::sort(kept.begin(), kept.end());
  auto first = static_cast<unsigned>(STDERR_FILENO) + 1;
  for (const int fd : kept) {
    const auto next = static_cast<unsigned>(fd);
    if (next > first) close_range(first, next - 1, 0);
    first = std::max(first, next + 1);
  }
  close_range(first, ~0U, 0);
}

std::string ReadAll(int fd) {
  std::string text;
  std::array<char, 1 << 16> chunk;
  for (;;) {
    const ssize_t got =
        pread(fd, chunk.data(), chunk.size(), static_cast<off_t>(text.size()));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      throw std::system_error(errno, std::generic_category(), "pread");
    }
    if (got == 0) return text;
    text.append(chunk.data(), static_cast<size_t>(got));
  }
}

void WriteAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(fd, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "write");
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace kit::host
