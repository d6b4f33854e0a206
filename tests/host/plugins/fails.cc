// Returns -1 after a first change.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  Log("about to fail");
  maapi_delete(maapi_sock, thandle, "/demo/item{1}");
  Log("cannot go on");
  return -1;
}
