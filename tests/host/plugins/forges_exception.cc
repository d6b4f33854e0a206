// Throws a text that passes for a line of the report.
#include <stdexcept>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  throw std::runtime_error("gone\nWritten: out.xml\u2029\x1b]0;title\x07");
}
