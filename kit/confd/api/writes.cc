// Writing one node of the transaction, and moving entries.
#include <confd_maapi.h>

#include <string>
#include <vector>

#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::Describe;
using kit::api::ElementFromC;
using kit::api::FromC;
using kit::api::MaapiCall;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::Transaction;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

// No number but NOTMOVABLE is listed for keys that can't be any.
std::vector<store::Value> KeysFromC(const confd_value_t* keys, int n,
                                    const store::Target& target) {
  if (n < 0) {
    throw Error(ErrorCode::kProtoUsage,
                std::to_string(n) + " is no number of keys");
  }
  if (n > MAXKEYLEN) {
    throw Error(ErrorCode::kNotMovable,
                "no list has " + std::to_string(n) + " keys");
  }
  if (n > 0) RequirePointer(keys, "the keys");
  std::vector<store::Value> values;
  for (int i = 0; i < n; ++i) {
    try {
      values.push_back(FromC(keys[i], target.schema));
    } catch (const Error& error) {
      throw Error(ErrorCode::kNotMovable, error.what());
    }
  }
  return values;
}

std::string DescribeKeys(const confd_value_t* keys, int n) {
  const bool readable = keys != nullptr && n > 0 && n <= MAXKEYLEN;
  return "n " + std::to_string(n) + " " +
         Describe(keys, readable ? static_cast<size_t>(n) : 0);
}

store::Data::Where WhereOf(enum maapi_move_where where) {
  switch (where) {
    case MAAPI_MOVE_FIRST:
      return store::Data::Where::kFirst;
    case MAAPI_MOVE_BEFORE:
      return store::Data::Where::kBefore;
    case MAAPI_MOVE_AFTER:
      return store::Data::Where::kAfter;
    case MAAPI_MOVE_LAST:
      return store::Data::Where::kLast;
  }
  throw Error(ErrorCode::kProtoUsage,
              std::to_string(where) + " is no way to move an entry");
}

}  // namespace

extern "C" {

int maapi_vcreate(int sock, int thandle, const char* fmt, va_list args) {
  return MaapiCall("maapi_create", sock, thandle, fmt, args,
                   [](Call& call, Scope& scope, const store::Target& target) {
                     const auto refusal = Transaction(scope).TryCreate(target);
                     return refusal ? call.Fail(*refusal) : CONFD_OK;
                   });
}
KIT_TWIN(maapi_create, maapi_vcreate, (int sock, int thandle), (sock, thandle))

int maapi_vdelete(int sock, int thandle, const char* fmt, va_list args) {
  return MaapiCall("maapi_delete", sock, thandle, fmt, args,
                   [](Call& call, Scope& scope, const store::Target& target) {
                     const auto refusal = Transaction(scope).TryDelete(target);
                     return refusal ? call.Fail(*refusal) : CONFD_OK;
                   });
}
KIT_TWIN(maapi_delete, maapi_vdelete, (int sock, int thandle), (sock, thandle))

int maapi_vset_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                    va_list args) {
  return MaapiCall(
      "maapi_set_elem", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        RequirePointer(v, "the value");
        Transaction(scope).Set(target, ElementFromC(*v, target.schema));
        return CONFD_OK;
      },
      [&](const Call&, const Scope&) {
        return v == nullptr ? std::string("NULL") : Describe(*v);
      });
}
KIT_TWIN(maapi_set_elem, maapi_vset_elem,
         (int sock, int thandle, confd_value_t* v), (sock, thandle, v))

int maapi_vset_elem2(int sock, int thandle, const char* strval, const char* fmt,
                     va_list args) {
  return MaapiCall(
      "maapi_set_elem2", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        RequirePointer(strval, "the value");
        Transaction(scope).SetText(target, strval);
        return CONFD_OK;
      },
      [&](const Call&, const Scope&) {
        return strval == nullptr ? std::string("NULL")
                                 : "\"" + std::string(strval) + "\"";
      });
}
KIT_TWIN(maapi_set_elem2, maapi_vset_elem2,
         (int sock, int thandle, const char* strval), (sock, thandle, strval))

int maapi_vmove(int sock, int thandle, confd_value_t* tokey, int n,
                const char* fmt, va_list args) {
  return MaapiCall(
      "maapi_move", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        Transaction(scope).Move(target, KeysFromC(tokey, n, target));
        return CONFD_OK;
      },
      [&](const Call&, const Scope&) { return DescribeKeys(tokey, n); });
}
KIT_TWIN(maapi_move, maapi_vmove,
         (int sock, int thandle, confd_value_t* tokey, int n),
         (sock, thandle, tokey, n))

int maapi_vmove_ordered(int sock, int thandle, enum maapi_move_where where,
                        confd_value_t* tokey, int n, const char* fmt,
                        va_list args) {
  return MaapiCall(
      "maapi_move_ordered", sock, thandle, fmt, args,
      [&](Call&, Scope& scope, const store::Target& target) {
        Transaction(scope).MoveWithin(target, WhereOf(where),
                                      KeysFromC(tokey, n, target));
        return CONFD_OK;
      },
      [&](const Call&, const Scope&) {
        return "where " + std::to_string(where) + " " + DescribeKeys(tokey, n);
      });
}
KIT_TWIN(maapi_move_ordered, maapi_vmove_ordered,
         (int sock, int thandle, enum maapi_move_where where,
          confd_value_t* tokey, int n),
         (sock, thandle, where, tokey, n))

}  // extern "C"
