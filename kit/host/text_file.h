// Small files of text that come with a run: rules, tables.
#ifndef KIT_HOST_TEXT_FILE_H_
#define KIT_HOST_TEXT_FILE_H_

#include <stdexcept>
#include <string>

namespace kit::host {

// Such a file can't be read: what() says why, without its name.
class TextFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// All that it holds, at most 16 MiB: a device may go on for ever. Throws
// TextFileError.
std::string ReadTextFile(const std::string& path);

}  // namespace kit::host

#endif  // KIT_HOST_TEXT_FILE_H_
