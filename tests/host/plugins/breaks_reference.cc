// Leaves a reference to an entry that does not exist.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  confd_value_t twin;
  CONFD_SET_UINT32(&twin, 1234);
  return maapi_set_elem(maapi_sock, thandle, &twin, "/demo/item{1}/twin");
}
