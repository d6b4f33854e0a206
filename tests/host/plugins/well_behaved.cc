// Creates one entry, changes one, deletes one and logs two records.
#include <cstring>

#include "plugin.h"

namespace {

int SetLabel(int maapi_sock, int thandle, unsigned int id, const char* label) {
  confd_value_t value;
  CONFD_SET_STR(&value, label);
  return maapi_set_elem(maapi_sock, thandle, &value, "/demo/item{%u}/label",
                        id);
}

}  // namespace

EXPORTED int update(int maapi_sock, int thandle, int cdb_sock) {
  Log("%d items", cdb_num_instances(cdb_sock, "/demo/item"));
  if (maapi_create(maapi_sock, thandle, "/demo/item{9}") != CONFD_OK ||
      SetLabel(maapi_sock, thandle, 9, "nine") != CONFD_OK ||
      SetLabel(maapi_sock, thandle, 1, "uno") != CONFD_OK ||
      maapi_delete(maapi_sock, thandle, "/demo/item{2}") != CONFD_OK) {
    Log("failed: %s", confd_lasterr());
    return -1;
  }
  Log("done\n");
  return 0;
}
