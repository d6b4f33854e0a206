// The upgraded configuration: there as a whole or not at all.
#ifndef KIT_HOST_OUTPUT_FILE_H_
#define KIT_HOST_OUTPUT_FILE_H_

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "kit/host/file_descriptor.h"

namespace kit::host {

// What a name stands for, if anything; errno says why there is nothing.
std::optional<struct stat> StatFile(const std::string& path);

// Whether both are one regular file.
bool SameFile(const struct stat& a, const struct stat& b);

// Where the output collects until Commit puts it in its place. All functions
// throw FailureError (kOutputFailed).
class OutputFile {
 public:
  // Checks that `target` can be written, by creating a temporary file in the
  // same folder. An existing target needs `force`, and is never `input`.
  static OutputFile ForFile(const std::string& target, bool force,
                            const std::optional<struct stat>& input);
  static OutputFile ForStandardOutput();
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&&) = delete;
  // Removes what was not committed.
  ~OutputFile();

  int fd() const { return fd_.get(); }

  // Returns the size in bytes.
  uint64_t Commit();

 private:
  OutputFile(FileDescriptor fd, std::filesystem::path temporary,
             std::filesystem::path target, bool force, mode_t mode);

  void MoveIntoPlace();
  void SyncFolder() const;
  void CopyToStandardOutput(uint64_t size) const;

  FileDescriptor fd_;
  std::filesystem::path temporary_;  // "" once there is none
  std::filesystem::path target_;     // "" is standard output
  bool force_;
  mode_t mode_;
};

}  // namespace kit::host

#endif  // KIT_HOST_OUTPUT_FILE_H_
