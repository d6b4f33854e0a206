// Releases what it has read.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  confd_value_t label;
  if (maapi_get_elem(maapi_sock, thandle, &label, "/demo/item{1}/label") !=
      CONFD_OK) {
    return CONFD_ERR;
  }
  confd_free_value(&label);
  return CONFD_OK;
}
