// Ends the process as if all were well.
#include <cstdlib>

#include "plugin.h"

EXPORTED int update(int, int, int) { std::exit(0); }
