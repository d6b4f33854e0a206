// Logs a text that passes for a line of the report.
#include "plugin.h"

EXPORTED int update(int, int, int) {
  Log("%s", "a\u202e\u009b31m\u2028\U000e0041\nWritten: here\x1b[2J\\n\xff\n");
  return 0;
}
