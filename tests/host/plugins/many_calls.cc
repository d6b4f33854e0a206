// Makes more calls than fit into a pipe.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  for (int i = 0; i < 20000; ++i) {
    maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  }
  return 0;
}
