// Reading one leaf or leaf-list: as a value, and as a variable of its type.
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
using kit::api::Release;
using kit::api::RequirePointer;
using kit::api::Scope;
using kit::api::ToC;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

using ValueUnion = decltype(confd_value_t::val);

[[noreturn]] void FailForType(const char* has, const char* wanted) {
  throw Error(ErrorCode::kBadType, std::string("it holds a ") + has +
                                       " where a " + wanted + " is read");
}

// What a leaf or leaf-list holds; nothing, and the call's failure, without a
// value.
std::optional<store::Element> Read(Call& call, const Scope& scope,
                                   const store::Target& target) {
  std::optional<store::Refusal> refusal;
  const store::Element element =
      scope.data->TryGet(target, scope.reads, refusal);
  if (!refusal) return element;
  call.Fail(*refusal);
  return std::nullopt;
}

// The value of a leaf of this type; nothing, and the call's failure, without
// one.
std::optional<store::Value> ReadLeaf(Call& call, const Scope& scope,
                                     const store::Target& target,
                                     store::ValueType type) {
  const auto element = Read(call, scope, target);
  if (!element) return std::nullopt;
  if (element->by_default) FailForType("C_DEFAULT", store::TypeName(type));
  if (element->schema->kind != store::NodeKind::kLeaf) {
    FailForType("C_LIST", store::TypeName(type));
  }
  const store::Value value = element->value();
  if (value.type() != type) {
    FailForType(store::TypeName(value.type()), store::TypeName(type));
  }
  return value;
}

// The bodies of the calls, for both families.

auto ReadValue(confd_value_t* v) {
  return [v](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(v, "the value");
    const auto element = Read(call, scope, target);
    if (!element) return CONFD_ERR;
    *v = ToC(*element);
    call.Output(v, 1);
    return CONFD_OK;
  };
}

// A value that becomes the program's: `take(value)` hands it out.
template <typename Take>
int HandOut(Call& call, const Scope& scope, const store::Target& target,
            store::ValueType type, const Take& take) {
  const auto leaf = ReadLeaf(call, scope, target, type);
  if (!leaf) return CONFD_ERR;
  const confd_value_t value = ToC(*leaf, target.schema);
  if (call.wants_values()) call.OutputText(Describe(value));
  take(value.val);
  return CONFD_OK;
}

template <typename T>
auto ReadMember(T* rval, store::ValueType type, T ValueUnion::*member) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(rval, "the result");
    return HandOut(call, scope, target, type,
                   [&](const ValueUnion& val) { *rval = val.*member; });
  };
}

auto ReadBytes(unsigned char** rval, int* size, store::ValueType type) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(rval, "the result");
    RequirePointer(size, "the size");
    return HandOut(call, scope, target, type, [&](const ValueUnion& val) {
      kit::api::NoteOwned(-1);  // free() takes it, of which nobody is told
      *rval = val.buf.ptr;
      *size = static_cast<int>(val.buf.size);
    });
  };
}

auto ReadQname(unsigned char** prefix, int* prefixsz, unsigned char** name,
               int* namesz) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    for (const void* pointer :
         {static_cast<const void*>(prefix), static_cast<const void*>(prefixsz),
          static_cast<const void*>(name), static_cast<const void*>(namesz)}) {
      RequirePointer(pointer, "a result");
    }
    return HandOut(call, scope, target, store::ValueType::kQname,
                   [&](const ValueUnion& val) {
                     *prefix = val.qname.prefix.ptr;
                     *prefixsz = static_cast<int>(val.qname.prefix.size);
                     *name = val.qname.name.ptr;
                     *namesz = static_cast<int>(val.qname.name.size);
                   });
  };
}

auto ReadList(confd_value_t** values, int* n) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(values, "the values");
    RequirePointer(n, "their number");
    const auto element = Read(call, scope, target);
    if (!element) return CONFD_ERR;
    if (element->by_default) FailForType("C_DEFAULT", "C_LIST");
    if (element->schema->kind != store::NodeKind::kLeafList) {
      FailForType(store::TypeName(element->value().type()), "C_LIST");
    }
    const confd_value_t list = ToC(*element);
    if (call.wants_values()) call.OutputText(Describe(list));
    *values = list.val.list.ptr;
    *n = static_cast<int>(list.val.list.size);
    return CONFD_OK;
  };
}

[[noreturn]] void FailForSize(size_t size, const char* what, int room) {
  throw Error(ErrorCode::kProtoUsage, "its " + std::to_string(size) + what +
                                          " into a buffer of " +
                                          std::to_string(room));
}

auto ReadString(char* rval, int n) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(rval, "the buffer");
    const auto value = ReadLeaf(call, scope, target, store::ValueType::kBuf);
    if (!value) return CONFD_ERR;
    const std::string& text = value->text();
    if (n < 0 || text.size() >= static_cast<size_t>(n)) {
      FailForSize(text.size(), " bytes and the NUL do not fit", n);
    }
    std::memcpy(rval, text.c_str(), text.size() + 1);
    if (call.wants_values()) call.OutputText("\"" + text + "\"");
    return CONFD_OK;
  };
}

auto ReadIntoBuffer(unsigned char* rval, int* n) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(rval, "the buffer");
    RequirePointer(n, "its size");
    const auto value = ReadLeaf(call, scope, target, store::ValueType::kBuf);
    if (!value) return CONFD_ERR;
    const std::string& text = value->text();
    if (*n < 0 || text.size() > static_cast<size_t>(*n)) {
      FailForSize(text.size(), " bytes do not fit", *n);
    }
    std::memcpy(rval, text.data(), text.size());
    *n = static_cast<int>(text.size());
    if (call.wants_values()) call.OutputText("\"" + text + "\"");
    return CONFD_OK;
  };
}

}  // namespace

extern "C" {

int cdb_vget(int sock, confd_value_t* v, const char* fmt, va_list args) {
  return CdbCall("cdb_get", sock, fmt, args, ReadValue(v));
}
KIT_TWIN(cdb_get, cdb_vget, (int sock, confd_value_t* v), (sock, v))

int maapi_vget_elem(int sock, int thandle, confd_value_t* v, const char* fmt,
                    va_list args) {
  return MaapiCall("maapi_get_elem", sock, thandle, fmt, args, ReadValue(v));
}
KIT_TWIN(maapi_get_elem, maapi_vget_elem,
         (int sock, int thandle, confd_value_t* v), (sock, thandle, v))

// A typed getter in both families, each with its twin.
#define KIT_GETTER(x, parameters, arguments, body)                             \
  int cdb_vget_##x(int sock, KIT_OPEN parameters, const char* fmt,             \
                   va_list args) {                                             \
    return CdbCall("cdb_get_" #x, sock, fmt, args, body);                      \
  }                                                                            \
  KIT_TWIN(cdb_get_##x, cdb_vget_##x, (int sock, KIT_OPEN parameters),         \
           (sock, KIT_OPEN arguments))                                         \
  int maapi_vget_##x##_elem(int sock, int thandle, KIT_OPEN parameters,        \
                            const char* fmt, va_list args) {                   \
    return MaapiCall("maapi_get_" #x "_elem", sock, thandle, fmt, args, body); \
  }                                                                            \
  KIT_TWIN(maapi_get_##x##_elem, maapi_vget_##x##_elem,                        \
           (int sock, int thandle, KIT_OPEN parameters),                       \
           (sock, thandle, KIT_OPEN arguments))

#define KIT_MEMBER_GETTER(x, type, value_type, member) \
  KIT_GETTER(                                          \
      x, (type * rval), (rval),                        \
      ReadMember(rval, store::ValueType::value_type, &ValueUnion::member))
// clang-format off
KIT_MEMBER_GETTER(int8,          int8_t,                    kInt8,         i8)
KIT_MEMBER_GETTER(int16,         int16_t,                   kInt16,        i16)
KIT_MEMBER_GETTER(int32,         int32_t,                   kInt32,        i32)
KIT_MEMBER_GETTER(int64,         int64_t,                   kInt64,        i64)
KIT_MEMBER_GETTER(u_int8,        uint8_t,                   kUint8,        u8)
KIT_MEMBER_GETTER(u_int16,       uint16_t,                  kUint16,       u16)
KIT_MEMBER_GETTER(u_int32,       uint32_t,                  kUint32,       u32)
KIT_MEMBER_GETTER(u_int64,       uint64_t,                  kUint64,       u64)
KIT_MEMBER_GETTER(bool,          int,                       kBool,         boolean)
KIT_MEMBER_GETTER(double,        double,                    kDouble,       d)
KIT_MEMBER_GETTER(enum_value,    int32_t,                   kEnum,         enumvalue)
KIT_MEMBER_GETTER(bit32,         uint32_t,                  kBit32,        b32)
KIT_MEMBER_GETTER(bit64,         uint64_t,                  kBit64,        b64)
KIT_MEMBER_GETTER(ipv4,          struct in_addr,            kIpv4,         ip)
KIT_MEMBER_GETTER(ipv6,          struct in6_addr,           kIpv6,         ip6)
KIT_MEMBER_GETTER(dquad,         struct confd_dotted_quad,  kDquad,        dquad)
KIT_MEMBER_GETTER(ipv4prefix,    struct confd_ipv4_prefix,  kIpv4Prefix,   ipv4prefix)
KIT_MEMBER_GETTER(ipv6prefix,    struct confd_ipv6_prefix,  kIpv6Prefix,   ipv6prefix)
KIT_MEMBER_GETTER(ipv4_and_plen, struct confd_ipv4_prefix,  kIpv4AndPlen,  ipv4prefix)
KIT_MEMBER_GETTER(ipv6_and_plen, struct confd_ipv6_prefix,  kIpv6AndPlen,  ipv6prefix)
KIT_MEMBER_GETTER(datetime,      struct confd_datetime,     kDatetime,     datetime)
KIT_MEMBER_GETTER(date,          struct confd_date,         kDate,         date)
KIT_MEMBER_GETTER(time,          struct confd_time,         kTime,         time)
KIT_MEMBER_GETTER(duration,      struct confd_duration,     kDuration,     duration)
KIT_MEMBER_GETTER(decimal64,     struct confd_decimal64,    kDecimal64,    d64)
KIT_MEMBER_GETTER(identityref,   struct confd_identityref,  kIdentityref,  idref)
KIT_MEMBER_GETTER(oid,           struct confd_snmp_oid*,    kOid,          oidp)
KIT_MEMBER_GETTER(objectref,     confd_hkeypath_t*,         kObjectRef,    hkp)
// clang-format on
#undef KIT_MEMBER_GETTER

#define KIT_BYTES_GETTER(x, value_type)                              \
  KIT_GETTER(x, (unsigned char** rval, int* bufsiz), (rval, bufsiz), \
             ReadBytes(rval, bufsiz, store::ValueType::value_type))
KIT_BYTES_GETTER(buf, kBuf)
KIT_BYTES_GETTER(binary, kBinary)
KIT_BYTES_GETTER(hexstr, kHexstr)
KIT_BYTES_GETTER(bitbig, kBitbig)
#undef KIT_BYTES_GETTER

KIT_GETTER(qname,
           (unsigned char** prefix, int* prefixsz, unsigned char** name,
            int* namesz),
           (prefix, prefixsz, name, namesz),
           ReadQname(prefix, prefixsz, name, namesz))
KIT_GETTER(list, (confd_value_t * *values, int* n), (values, n),
           ReadList(values, n))
KIT_GETTER(str, (char* rval, int n), (rval, n), ReadString(rval, n))
#undef KIT_GETTER

int cdb_vget_buf2(int sock, unsigned char* rval, int* n, const char* fmt,
                  va_list args) {
  return CdbCall("cdb_get_buf2", sock, fmt, args, ReadIntoBuffer(rval, n));
}
KIT_TWIN(cdb_get_buf2, cdb_vget_buf2, (int sock, unsigned char* rval, int* n),
         (sock, rval, n))

}  // extern "C"
