// Speaks the host's own protocol, into every descriptor: FORGED lists messages
// of numbers ("4 0 0 0 1, 7"), in which "child" and "self" are processes. Then
// it fails, but for a process of its own, which goes on.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "plugin.h"

namespace {

std::string Number(uint64_t number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

void Send(const std::string& message) {
  static uint64_t messages = 0;
  const std::string packet = Number(++messages) + Number(0) + message;
  for (int fd = 3; fd < 64; ++fd) {
    if (write(fd, packet.data(), packet.size()) < 0) continue;
  }
}

}  // namespace

EXPORTED int update(int, int, int) {
  const pid_t child = fork();
  if (child == 0) {
    for (;;) pause();
  }
  std::istringstream list(std::getenv("FORGED"));
  std::string message;
  while (std::getline(list, message, ',')) {
    std::istringstream fields(message);
    std::string field;
    std::string packed;
    while (fields >> field) {
      packed += Number(field == "child"  ? static_cast<uint64_t>(child)
                       : field == "self" ? static_cast<uint64_t>(getpid())
                                         : std::stoull(field));
    }
    Send(packed);
  }
  std::abort();
}
