// A configuration that does not fit the models it was read with.
#ifndef KIT_HOST_PROCESS_MISFIT_H_
#define KIT_HOST_PROCESS_MISFIT_H_

#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/failure.h"

namespace kit::host {

// A release that a configuration may be of instead.
struct KnownRelease {
  control::Release release;
  std::string meaning;  // "use --from intermediate"
  std::string advice;   // what to do then
};

// Says which of the releases it fits, if any, and what is wrong with it as one
// of `own`.
Failure MisfitFailure(const control::InputError& error, const std::string& own,
                      const std::vector<KnownRelease>& releases);

// Of models that can't be used.
Failure ModelFailure(const control::ModelError& error);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_MISFIT_H_
