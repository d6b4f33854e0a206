// Succeeds without doing anything.
#include "plugin.h"

EXPORTED int update(int, int, int) { return 0; }
