// Needs a function that no library has.
#include "plugin.h"

extern "C" int maapi_from_another_release(int maapi_sock);

EXPORTED int update(int maapi_sock, int, int) {
  return maapi_from_another_release(maapi_sock);
}
