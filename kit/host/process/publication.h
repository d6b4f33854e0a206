// The steps in which a file comes to its name. They can be taken back until the
// last one, by the handler of a signal too.
#ifndef KIT_HOST_PROCESS_PUBLICATION_H_
#define KIT_HOST_PROCESS_PUBLICATION_H_

#include <sys/types.h>

#include <climits>
#include <filesystem>
#include <functional>

#include "kit/host/process/file_descriptor.h"

namespace kit::host {

std::filesystem::path FolderOf(const std::filesystem::path& file);

// Functions that return an int return 0 or an errno.
class Publication {
 public:
  explicit Publication(std::filesystem::path target);
  // Takes back what is not confirmed.
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

  // Like Add, but in place of what has that name, which is kept until Confirm
  // under another one; not every file system knows how.
  int Replace(const FileDescriptor& file);

  // The name under which the replaced file is kept, or "".
  const char* kept() const { return kept_; }

  // Final whatever it returns: that tells if the kept file is gone.
  int Confirm();

  // Leaves all as it was before the first step. False if that is not possible;
  // something that has been put in the new file's place meanwhile stays there,
  // and what was replaced stays kept.
  bool TakeBack();

 private:
  using Name = char[PATH_MAX];  // "": none

  static void CleanUp();
  int TakeName(Name& name, const std::function<int(const char* name)>& make);
  int Remember(const FileDescriptor& file);
  bool IsNewFile(const char* name) const;
  bool TakeTargetBack();

  // Read by the handler of a signal; changed while signals are blocked.
  Publication* next_ = nullptr;
  std::filesystem::path target_;
  Name temporary_ = "";
  Name kept_ = "";
  bool published_ = false;
  bool old_is_lost_ = false;
  bool over_ = false;  // confirmed or taken back
  dev_t device_ = 0;   // of the new file
  ino_t inode_ = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_PUBLICATION_H_
