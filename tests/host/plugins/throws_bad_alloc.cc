// Runs out of memory.
#include <new>

#include "plugin.h"

EXPORTED int update(int, int, int) { throw std::bad_alloc(); }
