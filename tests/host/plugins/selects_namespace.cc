// Succeeds if the hash 0x1234 is known on both sides.
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int cdb_sock) {
  return cdb_set_namespace(cdb_sock, 0x1234) == CONFD_OK &&
                 maapi_set_namespace(maapi_sock, thandle, 0x1234) == CONFD_OK
             ? 0
             : -1;
}
