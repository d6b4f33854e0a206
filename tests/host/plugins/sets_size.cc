// Sets a leaf that had its default.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  confd_value_t size;
  CONFD_SET_UINT8(&size, 5);
  return maapi_set_elem(maapi_sock, thandle, &size, "/demo/item{2}/size");
}
