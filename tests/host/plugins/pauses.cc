// Never returns.
#include <unistd.h>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  Log("started");
  for (;;) pause();
}
