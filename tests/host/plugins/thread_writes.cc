// A thread that it leaves behind goes on changing the transaction.
#include <unistd.h>

#include "leave_thread.h"
#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  LeaveThread([=] {
    usleep(300'000);
    maapi_delete(maapi_sock, thandle, "/demo/item{1}");
  });
  return 0;
}
