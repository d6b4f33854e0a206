// Leaves a process behind that writes into every descriptor it inherited, and
// into the output once it is there.
#include <fcntl.h>
#include <unistd.h>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  if (fork() != 0) return 0;
  setsid();
  if (fork() != 0) _exit(0);
  for (;;) {
    const int out = open("out.xml", O_WRONLY | O_APPEND);
    for (int fd = 3; fd < 64; ++fd) {
      if (write(fd, "later", 5) < 0) continue;
    }
    close(out);
    usleep(100);
  }
}
