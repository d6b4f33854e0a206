#include <confd_maapi.h>

#include <string>

#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::Describe;
using kit::api::ElementFromC;
using kit::api::MaapiCall;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::Transaction;

extern "C" {

int maapi_create(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_create", sock, thandle, fmt, args,
                [](Call& call, Scope& scope, const store::Target& target) {
                  const auto refusal = Transaction(scope).TryCreate(target);
                  return refusal ? call.Fail(*refusal) : CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_delete(int sock, int thandle, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_delete", sock, thandle, fmt, args,
                [](Call& call, Scope& scope, const store::Target& target) {
                  const auto refusal = Transaction(scope).TryDelete(target);
                  return refusal ? call.Fail(*refusal) : CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_set_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                   ...) {
  va_list args;
  va_start(args, fmt);
  int result = MaapiCall(
      "maapi_set_elem", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        RequirePointer(v, "the value");
        Transaction(scope).Set(target, ElementFromC(*v));
        return CONFD_OK;
      },
      [&](const Call&, const Scope&) {
        return v == nullptr ? std::string("NULL") : Describe(*v);
      });
  va_end(args);
  return result;
}

}  // extern "C"
