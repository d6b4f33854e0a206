// Stops its own process.
#include <signal.h>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  raise(SIGSTOP);
  return 0;
}
