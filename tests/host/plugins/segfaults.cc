// Writes where there is no memory.
#include <cstdio>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  maapi_delete(maapi_sock, thandle, "/demo/item{77}");
  std::printf("no newline at the end");
  std::fflush(stdout);
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
  return 0;
}
