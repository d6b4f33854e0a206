// Computes without an end.
#include "plugin.h"

EXPORTED int update(int, int, int) {
  for (volatile unsigned i = 0;;) i = i + 1;
}
