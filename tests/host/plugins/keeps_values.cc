// Reads values in several ways and keeps two that it should release.
#include <cstdlib>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int cdb_sock) {
  confd_value_t kept;
  confd_value_t number;
  confd_value_t released;
  confd_value_t object[8];
  unsigned char* text = nullptr;
  int size = 0;
  if (maapi_get_elem(maapi_sock, thandle, &kept, "/demo/item{1}/label") !=
          CONFD_OK ||
      maapi_get_elem(maapi_sock, thandle, &number, "/demo/item{1}/size") !=
          CONFD_OK ||
      cdb_get(cdb_sock, &released, "/demo/item{2}/label") != CONFD_OK ||
      cdb_get_buf(cdb_sock, &text, &size, "/demo/item{2}/label") != CONFD_OK ||
      maapi_get_object(maapi_sock, thandle, object, 8, "/demo/item{2}") < 0) {
    return -1;
  }
  confd_value_t* const copy = confd_value_dup(&kept);
  confd_free_dup_value(copy);
  confd_free_value(&released);
  std::free(text);
  return 0;
}
