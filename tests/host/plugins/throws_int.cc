// Lets an exception out that is no std::exception.
#include "plugin.h"

EXPORTED int update(int, int, int) { throw 5; }
