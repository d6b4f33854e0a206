// Leaves an entry without its mandatory leaf, and a dangling reference.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  maapi_create(maapi_sock, thandle, "/demo/item{99}");
  confd_value_t twin;
  CONFD_SET_UINT32(&twin, 1234);
  maapi_set_elem(maapi_sock, thandle, &twin, "/demo/item{1}/twin");
  return 0;
}
