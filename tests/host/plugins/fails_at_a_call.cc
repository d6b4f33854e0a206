// Returns -1 because of a call that fails, the second of three.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  Log("about to fail");
  maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  const int deleted = maapi_delete(maapi_sock, thandle, "/demo/item{77}");
  maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  return deleted == CONFD_OK ? 0 : -1;
}
