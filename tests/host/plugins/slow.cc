// Takes a while.
#include <unistd.h>

#include "plugin.h"

EXPORTED int update(int, int, int cdb_sock) {
  cdb_num_instances(cdb_sock, "/demo/item");
  sleep(2);
  return 0;
}
