// The worker and all that it started: a plug-in's processes may leave its
// process group, its session and their parents, but not this program's care.
#ifndef KIT_HOST_PROCESS_DESCENDANTS_H_
#define KIT_HOST_PROCESS_DESCENDANTS_H_

#include <sys/types.h>

#include <cstddef>

namespace kit::host {

// From now on processes whose parents end become children of this program.
// Those that are its children already are none of a run's: a shell that started
// them may have become this program. Throws std::system_error.
void AdoptDescendants();

// Kills the worker and all other children of the run, but `spared` (0 for
// none). Returns how many of them there are, those that only wait to be reaped
// included; their own children are adopted by then, so to be called again until
// there are none. Safe in a signal handler.
size_t KillDescendants(pid_t worker, pid_t spared);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_DESCENDANTS_H_
