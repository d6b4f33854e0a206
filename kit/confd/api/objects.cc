// Whole entries and containers as arrays of values.
#include <confd_cdb.h>
#include <confd_maapi.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"

namespace store = kit::store;
namespace keypath = kit::keypath;
using kit::api::Call;
using kit::api::CdbCall;
using kit::api::Describe;
using kit::api::ElementFromC;
using kit::api::MaapiCall;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::ToC;
using kit::api::Transaction;
using kit::api::TypeNumber;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

size_t RequireCount(int n) {
  if (n < 0) {
    throw Error(ErrorCode::kProtoUsage,
                std::to_string(n) + " is no number of values");
  }
  return static_cast<size_t>(n);
}

int ReadObject(Call& call, const Scope& scope, const store::Target& target,
               confd_value_t* values, int n) {
  const size_t room = RequireCount(n);
  if (room > 0) RequirePointer(values, "the values");
  const std::vector<store::Element> elements =
      scope.data->GetObject(target, scope.reads);
  const size_t count = std::min(room, elements.size());
  for (size_t i = 0; i < count; ++i) values[i] = ToC(elements[i]);
  call.Output(values, count);
  return static_cast<int>(elements.size());
}

auto DescribeRoom(int n) {
  return [n](const Call&, const Scope&) { return "n " + std::to_string(n); };
}

// How many values of an array of n that a program gives may be looked at: no
// more than the path's entries take.
size_t ReadableValues(const Call& call, const Scope& scope,
                      const confd_value_t* values, int n) {
  if (values == nullptr || n < 0) return 0;
  try {
    store::Target target = scope.data->Find(call.AbsolutePath(), scope.rules);
    auto count = static_cast<size_t>(n);
    store::Data::RequireObjectSize(target, count);
    return count;
  } catch (const Error&) {
    // The call itself will say what is wrong with the path.
    return 0;
  } catch (const keypath::SyntaxError&) {
    return 0;
  }
}

}  // namespace

extern "C" {

int cdb_vget_object(int sock, confd_value_t* values, int n, const char* fmt,
                    va_list args) {
  return CdbCall(
      "cdb_get_object", sock, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        // No number but this one is listed for the call.
        if (!scope.data->Exists(target)) {
          throw Error(ErrorCode::kBadPath, "it does not exist");
        }
        return ReadObject(call, scope, target, values, n);
      },
      DescribeRoom(n));
}
KIT_TWIN(cdb_get_object, cdb_vget_object,
         (int sock, confd_value_t* values, int n), (sock, values, n))

int maapi_vget_object(int sock, int thandle, confd_value_t* values, int n,
                      const char* fmt, va_list args) {
  return MaapiCall(
      "maapi_get_object", sock, thandle, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        return ReadObject(call, scope, target, values, n);
      },
      DescribeRoom(n));
}
KIT_TWIN(maapi_get_object, maapi_vget_object,
         (int sock, int thandle, confd_value_t* values, int n),
         (sock, thandle, values, n))

int cdb_vget_objects(int sock, confd_value_t* values, int n, int ix, int nobj,
                     const char* fmt, va_list args) {
  return CdbCall(
      "cdb_get_objects", sock, fmt, args,
      [&](Call& call, Scope& scope, const store::Target& target) {
        const store::List* list = store::Data::ListOf(target);
        const size_t count = list == nullptr ? 0 : list->size();
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
                                  scope.reads, elements);
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
}
KIT_TWIN(cdb_get_objects, cdb_vget_objects,
         (int sock, confd_value_t* values, int n, int ix, int nobj),
         (sock, values, n, ix, nobj))

int maapi_vset_object(int sock, int thandle, const confd_value_t* values, int n,
                      const char* fmt, va_list args) {
  return MaapiCall(
      "maapi_set_object", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        const size_t count = RequireCount(n);
        if (n > 0) RequirePointer(values, "the values");
        // Before the values are looked at: there may be fewer than it says.
        store::Data::RequireObjectSize(target, count);
        // The gate lets in one call at a time.
        static auto& elements = *new std::vector<store::NewElement>();
        elements.resize(count);
        for (size_t i = 0; i < count; ++i) {
          ElementFromC(values[i], target.schema, elements[i]);
        }
        Transaction(scope).SetObject(target, elements);
        return CONFD_OK;
      },
      [&](const Call& call, const Scope& scope) {
        return "n " + std::to_string(n) + " " +
               Describe(values, ReadableValues(call, scope, values, n));
      });
}
KIT_TWIN(maapi_set_object, maapi_vset_object,
         (int sock, int thandle, const confd_value_t* values, int n),
         (sock, thandle, values, n))

}  // extern "C"
