// Meets a false assertion.
#undef NDEBUG
#include <cassert>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  Log("before the assertion");
  const int exists = maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  assert(exists == 42);
  return 0;
}
