// Who may do what with a file.
#ifndef KIT_HOST_PROCESS_FILE_ATTRIBUTES_H_
#define KIT_HOST_PROCESS_FILE_ATTRIBUTES_H_

#include <sys/stat.h>

#include <filesystem>

namespace kit::host {

// Gives `file` the owner, the group, the permissions and the access control
// list of the one at `path`, whose status is `old`. Throws FailureError
// (kOutputFailed).
void CopyAttributes(const std::filesystem::path& path, const struct stat& old,
                    int file);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_FILE_ATTRIBUTES_H_
