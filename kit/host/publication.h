// The steps in which a file comes to its name, with nothing left behind when a
// signal ends the program between them.
#ifndef KIT_HOST_PUBLICATION_H_
#define KIT_HOST_PUBLICATION_H_

#include <sys/types.h>

#include <climits>
#include <filesystem>
#include <functional>

#include "kit/host/file_descriptor.h"

namespace kit::host {

std::filesystem::path FolderOf(const std::filesystem::path& file);

// All functions that return an int return 0 or an errno. There is one
// publication at a time.
class Publication {
 public:
  explicit Publication(std::filesystem::path target);
  // Removes a temporary name.
  ~Publication();
  Publication(const Publication&) = delete;
  Publication& operator=(const Publication&) = delete;

  // Creates a file in the target's folder that has no name yet; not every file
  // system knows how.
  FileDescriptor CreateUnnamed(mode_t mode) const;

  // Creates a file in the target's folder under a temporary name.
  int CreateTemporary(mode_t mode, FileDescriptor* file);
  void RemoveTemporary();

  // Gives the target's name to the file, which is unnamed or has the temporary
  // name. Never replaces another file: EEXIST.
  int Add(const FileDescriptor& file);

  // Like Add, but in place of whatever has that name.
  int Replace(const FileDescriptor& file);

 private:
  // Calls `make` with new names until one of them is not taken.
  int TakeTemporaryName(const std::function<int(const char* name)>& make);

  std::filesystem::path target_;
  char temporary_[PATH_MAX] = "";  // for the handler of a signal; "": none
};

}  // namespace kit::host

#endif  // KIT_HOST_PUBLICATION_H_
