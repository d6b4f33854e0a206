#include <confd_lib.h>

#include "kit/confd/api/call.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::Release;
using kit::api::RunCall;

extern "C" {

void confd_free_value(confd_value_t* v) {
  if (v == nullptr) return;
  Release(*v);
  // Programs release millions of values; only a close observer is told.
  if (!store::CallHooks::Instance().wants_values()) return;
  RunCall(
      "confd_free_value", [](Call&) {}, [](Call&) { return CONFD_OK; });
}

}  // extern "C"
