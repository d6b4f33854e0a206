// Makes one call after the other and never returns.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  for (;;) maapi_exists(maapi_sock, thandle, "/demo/item{1}");
}
