// A thread that it leaves behind stops the process.
#include <signal.h>
#include <unistd.h>

#include "leave_thread.h"
#include "plugin.h"

EXPORTED int update(int, int, int) {
  LeaveThread([] {
    usleep(300'000);
    raise(SIGSTOP);
  });
  return 0;
}
