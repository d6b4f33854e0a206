// Lowers the limits of its process, and returns with them.
#include <sys/resource.h>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  const __rlimit_resource resources[] = {RLIMIT_NOFILE, RLIMIT_FSIZE,
                                         RLIMIT_NPROC};
  for (const auto resource : resources) {
    rlimit limit = {};
    getrlimit(resource, &limit);
    limit.rlim_cur = 0;
    setrlimit(resource, &limit);
  }
  return maapi_delete(maapi_sock, thandle, "/demo/item{2}");
}
