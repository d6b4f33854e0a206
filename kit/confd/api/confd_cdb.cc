#include <confd_cdb.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbScope;
using kit::api::Describe;
using kit::api::DescribeNamespace;
using kit::api::NoInput;
using kit::api::ReadLeaf;
using kit::api::RequirePointer;
using kit::api::RunCall;
using kit::api::RunPathCall;
using kit::api::Scope;
using kit::api::SelectNamespace;
using kit::api::ToC;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

template <typename Body,
          typename Input = std::string (*)(const Call&, const Scope&)>
int CdbCall(const char* function, int sock, const char* fmt, va_list args,
            const Body& body, const Input& input = NoInput) {
  return RunPathCall(
      function, [&] { return CdbScope(sock); }, fmt, args, body, input);
}

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

int cdb_get_objects(int sock, confd_value_t* values, int n, int ix, int nobj,
                    const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int result = CdbCall(
      "cdb_get_objects", sock, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        const store::List* list = store::Data::ListOf(target);
        size_t count = scope.data->Count(target);
        if (n < 0 || ix < 0 || nobj < 0) {
          throw Error(ErrorCode::kProtoUsage, "a negative count or position");
        }
        if (static_cast<size_t>(ix) + static_cast<size_t>(nobj) > count) {
          throw Error(ErrorCode::kNoExists,
                      "positions " + std::to_string(ix) + " to " +
                          std::to_string(int64_t{ix} + nobj - 1) +
                          " pass the end of " + std::to_string(count) +
                          " entries");
        }
        if (n > 0 && nobj > 0) RequirePointer(values, "the values");
        auto width = static_cast<size_t>(n);
        size_t most = 0;
        std::vector<size_t> filled;
        std::vector<store::Element> elements;
        for (size_t i = 0; i < static_cast<size_t>(nobj); ++i) {
          elements.clear();
          store::Data::ReadObject(*list->At(static_cast<size_t>(ix) + i),
                                  elements);
          most = std::max(most, elements.size());
          filled.push_back(std::min(width, elements.size()));
          for (size_t k = 0; k < filled.back(); ++k) {
            values[i * width + k] = ToC(elements[k]);
          }
        }
        call.Output(values, width, std::move(filled));
        return static_cast<int>(most);
      },
      [&](const Call&, const Scope&) {
        return "n " + std::to_string(n) + " ix " + std::to_string(ix) +
               " nobj " + std::to_string(nobj);
      });
  va_end(args);
  return result;
}

int cdb_set_namespace(int sock, int hashed_ns) {
  return RunCall(
      "cdb_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) { return SelectNamespace(CdbScope(sock), hashed_ns); });
}

}  // extern "C"
