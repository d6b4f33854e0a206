#include <confd_cdb.h>
#include <confd_maapi.h>

#include "kit/confd/api/path_call.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbCall;
using kit::api::MaapiCall;
using kit::api::Scope;

extern "C" {

int cdb_num_instances(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = CdbCall("cdb_num_instances", sock, fmt, args,
                       [](Call&, Scope& scope, const store::Target& target) {
                         return static_cast<int>(scope.data->Count(target));
                       });
  va_end(args);
  return result;
}

int cdb_exists(int sock, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = CdbCall("cdb_exists", sock, fmt, args,
                       [](Call&, Scope& scope, const store::Target& target) {
                         return scope.data->Exists(target) ? 1 : 0;
                       });
  va_end(args);
  return result;
}

int maapi_exists(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall("maapi_exists", sock, thandle, fmt, args,
                         [](Call&, Scope& scope, const store::Target& target) {
                           return scope.data->Exists(target) ? 1 : 0;
                         });
  va_end(args);
  return result;
}

}  // extern "C"
