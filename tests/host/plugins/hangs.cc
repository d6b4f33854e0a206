// Never returns, and has a process of its own that never ends either.
#include <unistd.h>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  const pid_t helper = fork();
  if (helper != 0) Log("started %d", static_cast<int>(helper));
  for (;;) pause();
}
