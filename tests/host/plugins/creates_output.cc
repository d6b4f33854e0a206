// Somebody else creates the output file while the plug-in runs.
#include <cstdio>
#include <cstdlib>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  std::FILE* file = std::fopen(std::getenv("RACING_FILE"), "w");
  std::fputs("somebody else's", file);
  std::fclose(file);
  return 0;
}
