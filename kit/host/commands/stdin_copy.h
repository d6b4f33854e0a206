// Standard input for commands that read it more than once.
#ifndef KIT_HOST_COMMANDS_STDIN_COPY_H_
#define KIT_HOST_COMMANDS_STDIN_COPY_H_

#include <cstdint>

namespace kit::host {

class StdinCopy {
 public:
  // Puts what there is to read, all of it, in the place of standard input.
  // Throws FailureError (kBadInput) where it can't be read, std::system_error.
  explicit StdinCopy(uint64_t max_mib);

  // To the beginning.
  void Rewind() const;
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_STDIN_COPY_H_
