// A file descriptor with an owner, and whole reads and writes on it.
#ifndef KIT_HOST_PROCESS_FILE_DESCRIPTOR_H_
#define KIT_HOST_PROCESS_FILE_DESCRIPTOR_H_

#include <string_view>
#include <utility>
#include <vector>

namespace kit::host {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FileDescriptor() { Close(); }

  int get() const { return fd_; }
  bool valid() const { return fd_ >= 0; }
  void Close();

 private:
  int fd_ = -1;
};

struct Pipe {
  FileDescriptor read_end;
  FileDescriptor write_end;
};

// Both ends are closed on exec. Throws std::system_error.
Pipe MakePipe();

// Closes all descriptors but the standard ones and these.
void CloseAllBut(std::vector<int> kept);

// All that a file holds, from its beginning. Throws std::system_error.
std::string ReadAll(int fd);

// Writes all of it. Throws std::system_error.
void WriteAll(int fd, std::string_view bytes);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_FILE_DESCRIPTOR_H_
