#include <confd_cdb.h>
#include <confd_maapi.h>

#include <cstring>
#include <optional>
#include <string>

#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbCall;
using kit::api::Describe;
using kit::api::MaapiCall;
using kit::api::ReadLeaf;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::ToC;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

// Reads a leaf of one type into *rval; `member` takes it out of the union.
template <typename T, typename Member>
int GetScalar(const char* function, int sock, T* rval, store::ValueType type,
              const char* fmt, va_list args, const Member& member) {
  return CdbCall(function, sock, fmt, args,
                 [&](Call& call, Scope& scope, const store::Target& target) {
                   RequirePointer(rval, "the result");
                   const auto leaf = ReadLeaf(call, scope, target, type);
                   if (!leaf) return CONFD_ERR;
                   const confd_value_t value = ToC(*leaf);
                   if (call.wants_values()) call.OutputText(Describe(value));
                   *rval = member(value);
                   return CONFD_OK;
                 });
}

}  // namespace

extern "C" {

int cdb_get_u_int32(int sock, uint32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      GetScalar("cdb_get_u_int32", sock, rval, store::ValueType::kUint32, fmt,
                args, [](const confd_value_t& value) { return value.val.u32; });
  va_end(args);
  return result;
}

int cdb_get_int32(int sock, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      GetScalar("cdb_get_int32", sock, rval, store::ValueType::kInt32, fmt,
                args, [](const confd_value_t& value) { return value.val.i32; });
  va_end(args);
  return result;
}

int cdb_get_enum_value(int sock, int32_t* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = GetScalar(
      "cdb_get_enum_value", sock, rval, store::ValueType::kEnum, fmt, args,
      [](const confd_value_t& value) { return value.val.enumvalue; });
  va_end(args);
  return result;
}

int cdb_get_ipv4(int sock, struct in_addr* rval, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      GetScalar("cdb_get_ipv4", sock, rval, store::ValueType::kIpv4, fmt, args,
                [](const confd_value_t& value) { return value.val.ip; });
  va_end(args);
  return result;
}

int cdb_get_ipv4_and_plen(int sock, struct confd_ipv4_prefix* rval,
                          const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = GetScalar(
      "cdb_get_ipv4_and_plen", sock, rval, store::ValueType::kIpv4AndPlen, fmt,
      args, [](const confd_value_t& value) { return value.val.ipv4prefix; });
  va_end(args);
  return result;
}

int cdb_get_str(int sock, char* rval, int n, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = CdbCall(
      "cdb_get_str", sock, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        RequirePointer(rval, "the buffer");
        const auto value =
            ReadLeaf(call, scope, target, store::ValueType::kBuf);
        if (!value) return CONFD_ERR;
        const std::string& text = value->text();
        if (n < 0 || text.size() >= static_cast<size_t>(n)) {
          throw Error(ErrorCode::kProtoUsage,
                      "its " + std::to_string(text.size()) +
                          " bytes and the NUL do not fit into a buffer of " +
                          std::to_string(n));
        }
        std::memcpy(rval, text.c_str(), text.size() + 1);
        if (call.wants_values()) call.OutputText("\"" + text + "\"");
        return CONFD_OK;
      });
  va_end(args);
  return result;
}

int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                   ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_get_elem", sock, thandle, fmt, args,
                [&](Call& call, Scope& scope, const store::Target& target) {
                  RequirePointer(v, "the value");
                  std::optional<store::Refusal> refusal;
                  const auto element = scope.data->TryGet(target, refusal);
                  if (refusal) return call.Fail(*refusal);
                  *v = ToC(element);
                  call.Output(v, 1);
                  return CONFD_OK;
                });
  va_end(args);
  return result;
}

int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval,
                           const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result =
      MaapiCall("maapi_get_u_int32_elem", sock, thandle, fmt, args,
                [&](Call& call, Scope& scope, const store::Target& target) {
                  RequirePointer(rval, "the result");
                  const auto leaf =
                      ReadLeaf(call, scope, target, store::ValueType::kUint32);
                  if (!leaf) return CONFD_ERR;
                  const confd_value_t value = ToC(*leaf);
                  if (call.wants_values()) call.OutputText(Describe(value));
                  *rval = value.val.u32;
                  return CONFD_OK;
                });
  va_end(args);
  return result;
}

}  // extern "C"
