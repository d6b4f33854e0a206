// Values as a program has them: what these calls do needs neither a session nor
// the models, and nobody is told of it.
#include <confd_lib.h>

#include <cstdlib>

#include "kit/confd/api/values.h"

extern "C" {

void confd_free_hkeypath(confd_hkeypath_t* hkp) {
  if (hkp == nullptr) return;
  for (int i = 0; i < hkp->len; ++i) {
    for (confd_value_t& value : hkp->v[i]) kit::api::Release(value);
  }
  std::free(hkp);
}

}  // extern "C"
