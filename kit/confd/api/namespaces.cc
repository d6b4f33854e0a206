#include <confd_cdb.h>
#include <confd_maapi.h>

#include "kit/confd/api/path_call.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbScope;
using kit::api::DescribeNamespace;
using kit::api::MaapiScope;
using kit::api::RunCall;
using kit::api::SelectNamespace;

extern "C" {

int cdb_set_namespace(int sock, int hashed_ns) {
  return RunCall(
      "cdb_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) { return SelectNamespace(CdbScope(sock), hashed_ns); });
}

int maapi_set_namespace(int sock, int thandle, int hashed_ns) {
  return RunCall(
      "maapi_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) {
        return SelectNamespace(MaapiScope(sock, thandle), hashed_ns);
      });
}

}  // extern "C"
