// Lets an exception out.
#include <stdexcept>

#include "plugin.h"

EXPORTED int update(int, int, int) { throw std::out_of_range("no such pass"); }
