// Aborts with texts that pass for lines of the report.
#include <cstdio>
#include <cstdlib>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  std::printf("printed\u009b31m\n  What to do: \u202enothing.\n");
  const char* path = "/demo/item{\"\nResult: update returned 0\u2028\"}";
  maapi_delete(maapi_sock, thandle, "%s", path);
  std::abort();
}
