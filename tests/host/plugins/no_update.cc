// Lacks the entry point.
#include "plugin.h"

EXPORTED int upgrade(int, int, int) { return 0; }
