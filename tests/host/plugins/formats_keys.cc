// Formats a key that is an enumeration. Where it gets the name "on", or for
// "unnamed ..." where it does not, it behaves well; otherwise as the label of
// item 1 says.
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "plugin.h"

namespace {

int SetLabel(int maapi_sock, int thandle, const char* label) {
  confd_value_t value;
  CONFD_SET_STR(&value, label);
  return maapi_set_elem(maapi_sock, thandle, &value, "/demo/item{1}/label");
}

void* Pause(void*) {
  for (;;) pause();
}

int Misbehave(const char* how, int maapi_sock, int thandle) {
  if (std::strcmp(how, "fails") == 0) return -1;
  if (std::strcmp(how, "aborts") == 0) abort();
  if (std::strcmp(how, "throws") == 0) throw std::runtime_error("thrown");
  if (std::strcmp(how, "exits") == 0) exit(0);
  if (std::strcmp(how, "killed") == 0) raise(SIGKILL);
  if (std::strcmp(how, "hangs") == 0) Pause(nullptr);
  if (std::strcmp(how, "breaks") == 0) {
    return maapi_create(maapi_sock, thandle, "/demo/item{77}");
  }
  if (std::strcmp(how, "differs") == 0) {
    return SetLabel(maapi_sock, thandle, "another");
  }
  return 0;
}

}  // namespace

EXPORTED int update(int maapi_sock, int thandle, int cdb_sock) {
  char label[32];
  if (cdb_get_str(cdb_sock, label, sizeof label, "/demo/item{1}/label") !=
      CONFD_OK) {
    return -1;
  }
  const char* how = label;
  const bool wants_name = std::strncmp(how, "unnamed ", 8) != 0;
  if (!wants_name) how += 8;
  pthread_t thread;
  if (std::strcmp(how, "starts thread") == 0) {
    pthread_create(&thread, nullptr, Pause, nullptr);
  }
  if (std::strcmp(how, "loads") == 0) maapi_load_schemas(maapi_sock);
  printf("before;");
  confd_value_t on;
  CONFD_SET_ENUM_VALUE(&on, 1);
  char path[64];
  for (int i = 0; i < 3; ++i) {
    confd_format_keypath(path, sizeof path, "/demo/mode{%x}", &on);
  }
  const bool has_name = std::strcmp(path, "/demo/mode{on}") == 0;
  printf("after\n");
  Log("formatted a key");
  if (has_name == wants_name) return 0;
  return Misbehave(how, maapi_sock, thandle);
}
