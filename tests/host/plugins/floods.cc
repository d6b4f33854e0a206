// Logs and prints without an end.
#include <cstdio>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  for (;;) {
    Log("again");
    std::puts("and again");
  }
}
