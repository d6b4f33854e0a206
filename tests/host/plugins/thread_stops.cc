// A thread that it leaves behind stops the process.
#include <signal.h>
#include <unistd.h>

#include <thread>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  std::thread([] {
    usleep(300'000);
    raise(SIGSTOP);
  }).detach();
  return 0;
}
