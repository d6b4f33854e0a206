// Uses descriptors that are not its own: MEDDLE says how, and MEDDLE_FD which
// one, "" for all.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "plugin.h"

namespace {

void Meddle(const std::string& how, int fd) {
  if (how == "close") {
    close(fd);
    // Its own file gets the number.
    open("trace", O_RDWR | O_CREAT, 0600);
  } else if (how == "write") {
    if (write(fd, "trace", 5) < 0) return;
  } else if (how == "seek") {
    lseek(fd, 100'000, SEEK_SET);
  } else if (how == "unblock") {
    fcntl(fd, F_SETFL, O_NONBLOCK);
  }
}

}  // namespace

EXPORTED int update(int maapi_sock, int thandle, int) {
  const std::string how = std::getenv("MEDDLE");
  const std::string which = std::getenv("MEDDLE_FD");
  for (int fd = 3; fd < 64; ++fd) {
    if (which.empty() || which == std::to_string(fd)) Meddle(how, fd);
  }
  for (int i = 0; i < 2000; ++i) Log("record %d", i);
  return maapi_delete(maapi_sock, thandle, "/demo/item{2}");
}
