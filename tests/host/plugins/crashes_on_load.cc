// Does not survive its own initialisation.
#include <cstdlib>

#include "plugin.h"

namespace {
__attribute__((constructor)) void Initialise() { std::abort(); }
}  // namespace

EXPORTED int update(int, int, int) { return 0; }
