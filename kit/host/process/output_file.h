// The upgraded configuration: there as a whole or not at all.
#ifndef KIT_HOST_PROCESS_OUTPUT_FILE_H_
#define KIT_HOST_PROCESS_OUTPUT_FILE_H_

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/publication.h"

namespace kit::host {

// What a name stands for, if anything; errno says why there is nothing.
std::optional<struct stat> StatFile(const std::string& path);

// Whether both are one regular file.
bool SameFile(const struct stat& a, const struct stat& b);

// Where the output collects until Commit puts it in its place. All functions
// throw FailureError (kOutputFailed).
class OutputFile {
 public:
  // Checks that `target` can be written, by creating a file without a name in
  // the same folder, so that nothing stays behind whatever ends the program.
  // Where the file system knows no such files, memory takes the output and a
  // temporary file is created by Commit. An existing target needs `force`, and
  // is never `input`. `option` is the one that named it, for messages.
  static OutputFile ForFile(const std::string& target, bool force,
                            const std::optional<struct stat>& input,
                            const char* option = "-o");
  static OutputFile ForStandardOutput();

  int fd() const { return fd_.get(); }

  // Replaces all that it holds, before Commit.
  void SetContent(std::string_view text) const;

  // Puts it in its place; returns the size in bytes. Until Confirm it is taken
  // back by TakeBack, the destructor and every signal that ends the program.
  uint64_t Commit();
  // Returns what has been left behind, "" when nothing has.
  std::string Confirm();
  // Returns what could not be taken back, "" when all is as it was.
  std::string TakeBack();

 private:
  OutputFile(FileDescriptor fd, const char* option);

  [[noreturn]] void Fail(const char* what, int error) const;
  [[noreturn]] void FailExistsNow() const;
  void Publish(uint64_t size);
  void CopyToTemporary(uint64_t size);
  void PutInPlace();
  void SyncFolder() const;
  void CopyToStandardOutput(uint64_t size) const;

  FileDescriptor fd_;
  bool in_memory_ = false;
  std::unique_ptr<Publication> publication_;  // null: to standard output
  std::filesystem::path target_;
  const char* option_;
  bool force_ = false;
  std::optional<struct stat> input_;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_OUTPUT_FILE_H_
