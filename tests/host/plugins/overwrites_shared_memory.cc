// Overwrites the memory that the process shares with others.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "plugin.h"

EXPORTED int update(int maapi_sock, int thandle, int) {
  maapi_exists(maapi_sock, thandle, "/demo/item{1}");
  std::FILE* maps = std::fopen("/proc/self/maps", "r");
  char line[1024];
  while (std::fgets(line, sizeof(line), maps) != nullptr) {
    uintptr_t begin = 0;
    uintptr_t end = 0;
    char mode[5] = "";
    if (std::sscanf(line, "%lx-%lx %4s", &begin, &end, mode) == 3 &&
        std::strcmp(mode, "rw-s") == 0) {
      std::memset(reinterpret_cast<void*>(begin), 0xff, end - begin);
    }
  }
  std::fclose(maps);
  return 0;
}
