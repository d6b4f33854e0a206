// Returns what no plug-in returns.
#include "plugin.h"

EXPORTED int update(int, int, int) { return 7; }
