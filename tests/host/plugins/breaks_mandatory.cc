// Leaves an entry without its mandatory leaf.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  return maapi_create(maapi_sock, thandle, "/demo/item{99}");
}
