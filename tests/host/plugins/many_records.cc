// Logs and prints much, control characters included.
#include <cstdio>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  for (int i = 0; i < 2000; ++i) Log("record %d", i);
  Log("two\nlines and an \x1b[31mescape\xff");
  for (int i = 0; i < 100000; ++i) std::printf("printed line %d\n", i);
  return 0;
}
