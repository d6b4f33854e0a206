#include "kit/confd/api/values.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "kit/confd/text/date.h"

namespace kit::api {
namespace {

using store::Element;
using store::Error;
using store::ErrorCode;
using store::NewElement;
using store::Value;
using store::ValueType;

static_assert(sizeof(confd_value_t) == 40);
static_assert(offsetof(confd_value_t, val) == 8);

constexpr confd_vtype Tag(ValueType type) {
  return static_cast<confd_vtype>(type);
}
static_assert(Tag(ValueType::kNoExists) == C_NOEXISTS);
static_assert(Tag(ValueType::kXmlTag) == C_XMLTAG);
static_assert(Tag(ValueType::kBuf) == C_BUF);
static_assert(Tag(ValueType::kInt8) == C_INT8);
static_assert(Tag(ValueType::kInt16) == C_INT16);
static_assert(Tag(ValueType::kInt32) == C_INT32);
static_assert(Tag(ValueType::kInt64) == C_INT64);
static_assert(Tag(ValueType::kUint8) == C_UINT8);
static_assert(Tag(ValueType::kUint16) == C_UINT16);
static_assert(Tag(ValueType::kUint32) == C_UINT32);
static_assert(Tag(ValueType::kUint64) == C_UINT64);
static_assert(Tag(ValueType::kIpv4) == C_IPV4);
static_assert(Tag(ValueType::kIpv6) == C_IPV6);
static_assert(Tag(ValueType::kBool) == C_BOOL);
static_assert(Tag(ValueType::kDatetime) == C_DATETIME);
static_assert(Tag(ValueType::kEnum) == C_ENUM_VALUE);
static_assert(Tag(ValueType::kBit32) == C_BIT32);
static_assert(Tag(ValueType::kBit64) == C_BIT64);
static_assert(Tag(ValueType::kList) == C_LIST);
static_assert(Tag(ValueType::kObjectRef) == C_OBJECTREF);
static_assert(Tag(ValueType::kBinary) == C_BINARY);
static_assert(Tag(ValueType::kIpv4Prefix) == C_IPV4PREFIX);
static_assert(Tag(ValueType::kIpv6Prefix) == C_IPV6PREFIX);
static_assert(Tag(ValueType::kDecimal64) == C_DECIMAL64);
static_assert(Tag(ValueType::kIdentityref) == C_IDENTITYREF);
static_assert(Tag(ValueType::kDquad) == C_DQUAD);
static_assert(Tag(ValueType::kHexstr) == C_HEXSTR);
static_assert(Tag(ValueType::kIpv4AndPlen) == C_IPV4_AND_PLEN);
static_assert(Tag(ValueType::kIpv6AndPlen) == C_IPV6_AND_PLEN);
static_assert(Tag(ValueType::kBitbig) == C_BITBIG);
static_assert(Tag(ValueType::kEmpty) == C_EMPTY);

static_assert(static_cast<int>(ErrorCode::kNoExists) == CONFD_ERR_NOEXISTS);
static_assert(static_cast<int>(ErrorCode::kAlreadyExists) ==
              CONFD_ERR_ALREADY_EXISTS);
static_assert(static_cast<int>(ErrorCode::kNotWritable) ==
              CONFD_ERR_NOT_WRITABLE);
static_assert(static_cast<int>(ErrorCode::kBadType) == CONFD_ERR_BADTYPE);
static_assert(static_cast<int>(ErrorCode::kNotCreatable) ==
              CONFD_ERR_NOTCREATABLE);
static_assert(static_cast<int>(ErrorCode::kNotDeletable) ==
              CONFD_ERR_NOTDELETABLE);
static_assert(static_cast<int>(ErrorCode::kBadPath) == CONFD_ERR_BADPATH);
static_assert(static_cast<int>(ErrorCode::kNotSet) == CONFD_ERR_NOTSET);
static_assert(static_cast<int>(ErrorCode::kBadKeyref) == CONFD_ERR_BAD_KEYREF);
static_assert(static_cast<int>(ErrorCode::kInternal) == CONFD_ERR_INTERNAL);
static_assert(static_cast<int>(ErrorCode::kMalloc) == CONFD_ERR_MALLOC);
static_assert(static_cast<int>(ErrorCode::kProtoUsage) == CONFD_ERR_PROTOUSAGE);
static_assert(static_cast<int>(ErrorCode::kNoSession) == CONFD_ERR_NOSESSION);
static_assert(static_cast<int>(ErrorCode::kOs) == CONFD_ERR_OS);
static_assert(static_cast<int>(ErrorCode::kMustFailed) ==
              CONFD_ERR_MUST_FAILED);
static_assert(static_cast<int>(ErrorCode::kUnavailable) ==
              CONFD_ERR_UNAVAILABLE);

// A malloc'ed copy with a NUL behind it.
confd_buf_t CopyBytes(std::string_view bytes) {
  auto* copy = static_cast<unsigned char*>(std::malloc(bytes.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, bytes.data(), bytes.size());
  copy[bytes.size()] = '\0';
  return {static_cast<unsigned int>(bytes.size()), copy};
}

std::string_view BytesOf(const confd_value_t& value) {
  if (value.val.c_buf.ptr == nullptr) return {};
  return {reinterpret_cast<const char*>(value.val.c_buf.ptr),
          value.val.c_buf.size};
}

unsigned int ListSize(const confd_value_t& value) {
  return value.val.list.ptr == nullptr ? 0 : value.val.list.size;
}

[[noreturn]] void FailForNull(const char* type) {
  throw Error(ErrorCode::kBadType,
              std::string("a ") + type + " value has a NULL pointer");
}

in_addr ToInAddr(uint64_t host_order) {
  in_addr address;
  address.s_addr = htonl(static_cast<uint32_t>(host_order));
  return address;
}

in6_addr ToIn6Addr(const std::string& bytes) {
  in6_addr address{};
  std::memcpy(&address, bytes.data(), std::min(bytes.size(), sizeof address));
  return address;
}

std::string BytesOf(const in6_addr& address) {
  return {reinterpret_cast<const char*>(&address), sizeof address};
}

confd_datetime ToC(const text::DateTime& from) {
  confd_datetime to{};
  to.year = static_cast<int16_t>(from.day.year);
  to.month = static_cast<uint8_t>(from.day.month);
  to.day = static_cast<uint8_t>(from.day.day);
  to.hour = static_cast<uint8_t>(from.clock.hour);
  to.min = static_cast<uint8_t>(from.clock.minute);
  to.sec = static_cast<uint8_t>(from.clock.second);
  to.micro = from.clock.micros;
  to.timezone = static_cast<int8_t>(from.zone.hours);
  to.timezone_minutes = static_cast<int8_t>(from.zone.minutes);
  return to;
}

}  // namespace

uint32_t TagOf(const store::SchemaNode& node) {
  return store::NameHash(node.name);
}

confd_value_t ToC(const Value& value) {
  confd_value_t c{};
  c.type = Tag(value.type());
  switch (value.type()) {
    case ValueType::kInt8:
      c.val.i8 = static_cast<int8_t>(value.bits());
      break;
    case ValueType::kInt16:
      c.val.i16 = static_cast<int16_t>(value.bits());
      break;
    case ValueType::kInt32:
      c.val.i32 = static_cast<int32_t>(value.bits());
      break;
    case ValueType::kInt64:
      c.val.i64 = value.signed_bits();
      break;
    case ValueType::kUint8:
      c.val.u8 = static_cast<uint8_t>(value.bits());
      break;
    case ValueType::kUint16:
      c.val.u16 = static_cast<uint16_t>(value.bits());
      break;
    case ValueType::kUint32:
      c.val.u32 = static_cast<uint32_t>(value.bits());
      break;
    case ValueType::kUint64:
      c.val.u64 = value.bits();
      break;
    case ValueType::kBool:
      c.val.boolean = value.bits() != 0 ? 1 : 0;
      break;
    case ValueType::kEnum:
      c.val.enumvalue = static_cast<int32_t>(value.signed_bits());
      break;
    case ValueType::kBit32:
      c.val.b32 = static_cast<uint32_t>(value.bits());
      break;
    case ValueType::kBit64:
      c.val.b64 = value.bits();
      break;
    case ValueType::kIpv4:
      c.val.ip = ToInAddr(value.bits());
      break;
    case ValueType::kDquad: {
      in_addr bytes = ToInAddr(value.bits());
      std::memcpy(c.val.dquad.quad, &bytes, sizeof c.val.dquad.quad);
      break;
    }
    case ValueType::kIpv4Prefix:
    case ValueType::kIpv4AndPlen:
      c.val.ipv4prefix.ip = ToInAddr(value.bits());
      c.val.ipv4prefix.len = value.length();
      break;
    case ValueType::kIpv6:
      c.val.ip6 = ToIn6Addr(value.text());
      break;
    case ValueType::kIpv6Prefix:
    case ValueType::kIpv6AndPlen:
      c.val.ipv6prefix.ip6 = ToIn6Addr(value.text());
      c.val.ipv6prefix.len = value.length();
      break;
    case ValueType::kDecimal64:
      c.val.d64.value = value.signed_bits();
      c.val.d64.fraction_digits = value.length();
      break;
    case ValueType::kIdentityref:
      c.val.idref.ns = static_cast<uint32_t>(value.bits() >> 32);
      c.val.idref.id = static_cast<uint32_t>(value.bits());
      break;
    case ValueType::kDatetime:
      c.val.datetime = ToC(text::ParseDateTime(value.text()));
      break;
    case ValueType::kBuf:
    case ValueType::kBinary:
    case ValueType::kHexstr:
    case ValueType::kBitbig:
    case ValueType::kObjectRef:
      c.val.buf = CopyBytes(value.text());
      break;
    case ValueType::kEmpty:
    case ValueType::kNoExists:
      break;
    default:
      throw Error(ErrorCode::kUnavailable,
                  std::string(store::TypeName(value.type())) +
                      " values are not carried by this library");
  }
  return c;
}

confd_value_t ToC(const Element& element) {
  confd_value_t c{};
  c.type = C_NOEXISTS;
  if (element.value != nullptr) return ToC(*element.value);
  if (element.container != nullptr) {
    c.type = C_XMLTAG;
    c.val.xmltag = {TagOf(*element.container), element.container->module->hash};
  } else if (element.items != nullptr) {
    size_t count = element.items->size();
    auto* items = static_cast<confd_value_t*>(
        std::calloc(count + 1, sizeof(confd_value_t)));
    if (items == nullptr) throw std::bad_alloc();
    c.type = C_LIST;
    c.val.list = {0, items};
    try {
      for (const Value& item : *element.items) {
        items[c.val.list.size] = ToC(item);
        ++c.val.list.size;
      }
    } catch (...) {
      Release(c);
      throw;
    }
  }
  return c;
}

void Release(confd_value_t& value) {
  switch (value.type) {
    case C_BUF:
    case C_BINARY:
    case C_HEXSTR:
    case C_BITBIG:
    case C_OBJECTREF:
      std::free(value.val.buf.ptr);
      value.val.buf = {0, nullptr};
      break;
    case C_QNAME:
      std::free(value.val.qname.prefix.ptr);
      std::free(value.val.qname.name.ptr);
      value.val.qname = {};
      break;
    case C_LIST:
      for (unsigned int i = 0; i < ListSize(value); ++i) {
        Release(value.val.list.ptr[i]);
      }
      std::free(value.val.list.ptr);
      value.val.list = {0, nullptr};
      break;
    default:
      break;
  }
}

Value FromC(const confd_value_t& value) {
  auto type = static_cast<ValueType>(value.type);
  switch (value.type) {
    case C_INT8:
      return Value::Number(type, static_cast<uint64_t>(int64_t{value.val.i8}));
    case C_INT16:
      return Value::Number(type, static_cast<uint64_t>(int64_t{value.val.i16}));
    case C_INT32:
      return Value::Number(type, static_cast<uint64_t>(int64_t{value.val.i32}));
    case C_INT64:
      return Value::Number(type, static_cast<uint64_t>(value.val.i64));
    case C_UINT8:
      return Value::Number(type, value.val.u8);
    case C_UINT16:
      return Value::Number(type, value.val.u16);
    case C_UINT32:
      return Value::Number(type, value.val.u32);
    case C_UINT64:
      return Value::Number(type, value.val.u64);
    case C_BOOL:
      return Value::Number(type, value.val.boolean != 0);
    case C_ENUM_VALUE:
      return Value::Number(type,
                           static_cast<uint64_t>(int64_t{value.val.enumvalue}));
    case C_BIT32:
      return Value::Number(type, value.val.b32);
    case C_BIT64:
      return Value::Number(type, value.val.b64);
    case C_IPV4:
      return Value::Number(type, ntohl(value.val.ip.s_addr));
    case C_DQUAD: {
      uint32_t bytes;
      std::memcpy(&bytes, value.val.dquad.quad, sizeof bytes);
      return Value::Number(type, ntohl(bytes));
    }
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      return Value::Number(type, ntohl(value.val.ipv4prefix.ip.s_addr),
                           value.val.ipv4prefix.len);
    case C_IPV6:
      return Value::Text(type, BytesOf(value.val.ip6));
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      return Value::Text(type, BytesOf(value.val.ipv6prefix.ip6),
                         value.val.ipv6prefix.len);
    case C_DECIMAL64:
      return Value::Number(type, static_cast<uint64_t>(value.val.d64.value),
                           value.val.d64.fraction_digits);
    case C_IDENTITYREF:
      return Value::Text(
          type, "", 0, uint64_t{value.val.idref.ns} << 32 | value.val.idref.id);
    case C_DATETIME:
      return Value::Text(type,
                         text::PrintDateTime(DateTimeOf(value.val.datetime)));
    case C_STR:
      if (value.val.c_s == nullptr) FailForNull("C_STR");
      return Value::Text(ValueType::kBuf, value.val.c_s);
    case C_BUF:
    case C_BINARY:
    case C_HEXSTR:
    case C_BITBIG:
    case C_OBJECTREF:
      if (value.val.c_buf.ptr == nullptr && value.val.c_buf.size != 0) {
        FailForNull(store::TypeName(type));
      }
      return Value::Text(type, BytesOf(value));
    case C_EMPTY:
      return Value::Number(type, 0);
    default:
      break;
  }
  throw Error(ErrorCode::kBadType, "a value of type number " +
                                       std::to_string(value.type) +
                                       " can't be written");
}

NewElement ElementFromC(const confd_value_t& value) {
  NewElement element;
  if (value.type == C_XMLTAG) {
    element.is_container = true;
  } else if (value.type == C_LIST) {
    element.items.emplace();
    if (ListSize(value) != value.val.list.size) FailForNull("C_LIST");
    for (unsigned int i = 0; i < value.val.list.size; ++i) {
      element.items->push_back(FromC(value.val.list.ptr[i]));
    }
  } else if (value.type != C_NOEXISTS) {
    element.value = FromC(value);
  }
  return element;
}

}  // namespace kit::api
