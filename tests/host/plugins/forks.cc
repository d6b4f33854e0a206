// Two processes return from it.
#include <unistd.h>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  Log("once");
  fork();
  return 0;
}
