#include "kit/confd/api/values.h"

#include <arpa/inet.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/object_ref.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "kit/confd/text/date.h"

namespace kit::api {
namespace {

using store::Element;
using store::Error;
using store::ErrorCode;
using store::NewElement;
using store::RowOf;
using store::StoredAs;
using store::Value;
using store::ValueType;

// See OwnedTexts.
std::atomic<int64_t> owned_texts{0};

// A malloc'ed copy with a NUL behind it.
confd_buf_t CopyBytes(std::string_view bytes) {
  auto* copy = static_cast<unsigned char*>(std::malloc(bytes.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, bytes.data(), bytes.size());
  copy[bytes.size()] = '\0';
  return {static_cast<unsigned int>(bytes.size()), copy};
}

[[noreturn]] void FailForNull(const char* type) {
  throw Error(ErrorCode::kBadType,
              std::string("a ") + type + " value has a NULL pointer");
}

[[noreturn]] void RejectType(int number) {
  throw Error(
      ErrorCode::kBadType,
      "a value of type number " + std::to_string(number) + " can't be written");
}

template <typename T>
void PutDay(const text::Day& from, T& to) {
  to.year = static_cast<int16_t>(from.year);
  to.month = static_cast<uint8_t>(from.month);
  to.day = static_cast<uint8_t>(from.day);
}

template <typename T>
void PutClock(const text::Clock& from, T& to) {
  to.hour = static_cast<uint8_t>(from.hour);
  to.min = static_cast<uint8_t>(from.minute);
  to.sec = static_cast<uint8_t>(from.second);
  to.micro = from.micros;
}

template <typename T>
void PutZone(const text::Zone& from, T& to) {
  to.timezone = static_cast<int8_t>(from.hours);
  to.timezone_minutes = static_cast<int8_t>(from.minutes);
}

// How C members carry values that are stored in some way: Put fills a member,
// Take makes a value of one.
template <StoredAs stored_as>
struct Carrier;

template <>
struct Carrier<StoredAs::kNothing> {
  template <typename Member>
  static void Put(const Value& value, Member&) {
    throw Error(ErrorCode::kUnavailable,
                std::string(store::TypeName(value.type())) +
                    " values are not carried by this library");
  }
  template <typename Member>
  static Value Take(ValueType type, const Member&) {
    RejectType(static_cast<int>(type));
  }
};

template <>
struct Carrier<StoredAs::kEmpty> {
  template <typename Member>
  static void Put(const Value&, Member&) {}
  template <typename Member>
  static Value Take(ValueType type, const Member&) {
    return Value::Number(type, 0);
  }
};

// What fits a signed or unsigned member needs no more than a change of width.
template <>
struct Carrier<StoredAs::kSigned> {
  template <typename Member>
  static void Put(const Value& value, Member& member) {
    member = static_cast<Member>(value.signed_bits());
  }
  template <typename Member>
  static Value Take(ValueType type, Member member) {
    return Value::Number(type, static_cast<uint64_t>(int64_t{member}));
  }
};

template <>
struct Carrier<StoredAs::kUnsigned> {
  template <typename Member>
  static void Put(const Value& value, Member& member) {
    member = static_cast<Member>(value.bits());
  }
  template <typename Member>
  static Value Take(ValueType type, Member member) {
    return Value::Number(type, member);
  }
};

template <>
struct Carrier<StoredAs::kBool> {
  static void Put(const Value& value, int& member) {
    member = value.bits() != 0 ? 1 : 0;
  }
  static Value Take(ValueType type, int member) {
    return Value::Number(type, member != 0 ? 1 : 0);
  }
};

template <>
struct Carrier<StoredAs::kDecimal> {
  static void Put(const Value& value, confd_decimal64& member) {
    member.value = value.signed_bits();
    member.fraction_digits = value.length();
  }
  static Value Take(ValueType type, const confd_decimal64& member) {
    return Value::Number(type, static_cast<uint64_t>(member.value),
                         member.fraction_digits);
  }
};

template <>
struct Carrier<StoredAs::kIpv4> {
  static void Put(const Value& value, in_addr& member) {
    member.s_addr = htonl(static_cast<uint32_t>(value.bits()));
  }
  static Value Take(ValueType type, const in_addr& member) {
    return Value::Number(type, ntohl(member.s_addr));
  }
  static void Put(const Value& value, confd_dotted_quad& member) {
    in_addr address;
    Put(value, address);
    std::memcpy(member.quad, &address, sizeof member.quad);
  }
  static Value Take(ValueType type, const confd_dotted_quad& member) {
    in_addr address;
    std::memcpy(&address, member.quad, sizeof address);
    return Take(type, address);
  }
};

template <>
struct Carrier<StoredAs::kIpv4Prefix> {
  static void Put(const Value& value, confd_ipv4_prefix& member) {
    Carrier<StoredAs::kIpv4>::Put(value, member.ip);
    member.len = value.length();
  }
  static Value Take(ValueType type, const confd_ipv4_prefix& member) {
    return Value::Number(type, ntohl(member.ip.s_addr), member.len);
  }
};

template <>
struct Carrier<StoredAs::kIpv6> {
  static void Put(const Value& value, in6_addr& member) {
    const std::string_view bytes = value.text();
    std::memcpy(&member, bytes.data(), std::min(bytes.size(), sizeof member));
  }
  static Value Take(ValueType type, const in6_addr& member,
                    uint8_t length = 0) {
    return Value::Text(
        type, {reinterpret_cast<const char*>(&member), sizeof member}, length);
  }
};

template <>
struct Carrier<StoredAs::kIpv6Prefix> {
  static void Put(const Value& value, confd_ipv6_prefix& member) {
    Carrier<StoredAs::kIpv6>::Put(value, member.ip6);
    member.len = value.length();
  }
  static Value Take(ValueType type, const confd_ipv6_prefix& member) {
    return Carrier<StoredAs::kIpv6>::Take(type, member.ip6, member.len);
  }
};

template <>
struct Carrier<StoredAs::kBytes> {
  // Instance identifiers take a model to read.
  static void Put(const Value&, confd_hkeypath*&) {
    throw Error(ErrorCode::kUnavailable, "a path can't be given here");
  }
  static Value Take(ValueType type, const confd_hkeypath*) {
    RejectType(static_cast<int>(type));
  }
  static void Put(const Value& value, confd_buf_t& member) {
    member = CopyBytes(value.text());
    NoteOwned(1);
  }
  static Value Take(ValueType type, const confd_buf_t& member) {
    if (member.ptr == nullptr && member.size != 0) {
      FailForNull(store::TypeName(type));
    }
    return Value::Text(type, BytesOf(member));
  }
};

template <>
struct Carrier<StoredAs::kDouble> {
  static void Put(const Value& value, double& member) {
    member = value.as_double();
  }
  static Value Take(ValueType type, double member) {
    return Value::Double(type, member);
  }
};

// The texts of values are well formed.
template <>
struct Carrier<StoredAs::kDate> {
  static void Put(const Value& value, confd_datetime& member) {
    const auto parsed = text::ParseDateTime(value.text());
    PutDay(parsed->day, member);
    PutClock(parsed->clock, member);
    PutZone(parsed->zone, member);
  }
  static void Put(const Value& value, confd_date& member) {
    const auto parsed = text::ParseDate(value.text());
    PutDay(parsed->day, member);
    PutZone(parsed->zone, member);
  }
  static void Put(const Value& value, confd_time& member) {
    const auto parsed = text::ParseTime(value.text());
    PutClock(parsed->clock, member);
    PutZone(parsed->zone, member);
  }
  static void Put(const Value& value, confd_duration& member) {
    const auto parsed = text::ParseDuration(value.text());
    member = {parsed->years,   parsed->months,  parsed->days,  parsed->hours,
              parsed->minutes, parsed->seconds, parsed->micros};
  }
  static Value Take(ValueType type, const confd_datetime& member) {
    return Value::Text(type, text::PrintDateTime(DateTimeOf(member)));
  }
  static Value Take(ValueType type, const confd_date& member) {
    return Value::Text(type, text::PrintDate(DateOf(member)));
  }
  static Value Take(ValueType type, const confd_time& member) {
    return Value::Text(type, text::PrintTime(TimeOf(member)));
  }
  static Value Take(ValueType type, const confd_duration& member) {
    return Value::Text(type, text::PrintDuration(DurationOf(member)));
  }
};

template <>
struct Carrier<StoredAs::kQname> {
  static void Put(const Value& value, confd_qname& member) {
    const std::string_view text = value.text();
    const size_t colon = text.find(':');
    member.prefix = {};
    if (colon != std::string_view::npos) {
      member.prefix = CopyBytes(text.substr(0, colon));
    }
    try {
      member.name = CopyBytes(text.substr(colon + 1));
    } catch (...) {
      std::free(member.prefix.ptr);
      throw;
    }
  }
  static Value Take(ValueType type, const confd_qname& member) {
    const auto& [prefix, name] = member;
    if (name.ptr == nullptr || (prefix.ptr == nullptr && prefix.size != 0)) {
      FailForNull(store::TypeName(type));
    }
    std::string text(BytesOf(prefix));
    if (!text.empty()) text.push_back(':');
    return Value::Text(type, text.append(BytesOf(name)));
  }
};

template <>
struct Carrier<StoredAs::kOid> {
  static void Put(const Value& value, confd_snmp_oid*& member) {
    member = static_cast<confd_snmp_oid*>(std::calloc(1, sizeof *member));
    if (member == nullptr) throw std::bad_alloc();
    const std::string& bytes = value.text();
    member->len = static_cast<int>(bytes.size() / sizeof member->oid[0]);
    std::memcpy(member->oid, bytes.data(), bytes.size());
    for (int i = 0; i < member->len; ++i) {
      member->oid[i] = ntohl(member->oid[i]);
    }
  }
  static Value Take(ValueType type, const confd_snmp_oid* member) {
    if (member == nullptr) FailForNull(store::TypeName(type));
    const auto bytes = OidBytes(*member);
    if (!bytes) {
      throw Error(ErrorCode::kBadType, "an object identifier of " +
                                           std::to_string(member->len) +
                                           " numbers");
    }
    return Value::Text(type, *bytes);
  }
};

template <>
struct Carrier<StoredAs::kIdentity> {
  static void Put(const Value& value, confd_identityref& member) {
    member.ns = static_cast<uint32_t>(value.bits() >> 32);
    member.id = static_cast<uint32_t>(value.bits());
  }
  static Value Take(ValueType type, const confd_identityref& member) {
    return Value::Text(type, "", 0, uint64_t{member.ns} << 32 | member.id);
  }
};

template <typename Member>
void ReleaseMember(Member&) {}

void ReleaseMember(confd_buf_t& member) {
  if (member.ptr != nullptr) NoteOwned(-1);
  std::free(member.ptr);
  member = {};
}

void ReleaseMember(confd_qname& member) {
  std::free(member.prefix.ptr);
  std::free(member.name.ptr);
  member = {};
}

void ReleaseMember(confd_hkeypath*& member) {
  confd_free_hkeypath(member);
  member = nullptr;
}

void ReleaseMember(confd_snmp_oid*& member) {
  std::free(member);
  member = nullptr;
}

void ReleaseMember(confd_list& member) {
  for (size_t i = 0; i < SizeOf(member); ++i) Release(member.ptr[i]);
  std::free(member.ptr);
  member = {};
}

}  // namespace

void NoteOwned(int64_t texts) {
  owned_texts.fetch_add(texts, std::memory_order_relaxed);
}

uint64_t OwnedTexts() {
  // A program may release what it has made by itself.
  return static_cast<uint64_t>(
      std::max<int64_t>(0, owned_texts.load(std::memory_order_relaxed)));
}

uint32_t TagOf(const store::SchemaNode& node) {
  return store::NameHash(node.name);
}

confd_value_t ToC(const Value& value, const store::SchemaNode* place) {
  confd_value_t c{};
  c.type = static_cast<confd_vtype>(value.type());
  if (!value.exists()) return c;
  if (value.type() == ValueType::kObjectRef && place != nullptr) {
    c.val.hkp = PathOfReference(value.text(), *place);
    return c;
  }
  VisitMember(
      c,
      [&](auto type, auto& member) {
        Carrier<RowOf(type).stored_as>::Put(value, member);
      },
      [] {});
  return c;
}

confd_value_t ToC(const Element& element) {
  confd_value_t c{};
  c.type = C_NOEXISTS;
  if (!element.exists()) return c;
  if (element.by_default) {
    c.type = C_DEFAULT;
    return c;
  }
  const bool is_flag = element.schema->is_flag;
  if (element.schema->kind == store::NodeKind::kLeaf && !is_flag) {
    return ToC(element.value(), element.schema);
  }
  if (is_flag || element.schema->IsContainer()) {
    c.type = C_XMLTAG;
    c.val.xmltag = {TagOf(*element.schema), element.schema->module->hash};
    return c;
  }
  const std::vector<Value> values = element.items();
  auto* items = static_cast<confd_value_t*>(
      std::calloc(values.size() + 1, sizeof(confd_value_t)));
  if (items == nullptr) throw std::bad_alloc();
  c.type = C_LIST;
  c.val.list = {0, items};
  try {
    for (const Value& item : values) {
      items[c.val.list.size] = ToC(item, element.schema);
      ++c.val.list.size;
    }
  } catch (...) {
    Release(c);
    throw;
  }
  return c;
}

void Release(confd_value_t& value) {
  VisitMember(
      value, [](auto, auto& member) { ReleaseMember(member); }, [] {});
}

Value FromC(const confd_value_t& value, const store::SchemaNode* place) {
  // Another way to give a C_BUF, and no type that a leaf has.
  if (TypeNumber(value) == C_STR) {
    if (value.val.c_s == nullptr) FailForNull("C_STR");
    return Value::Text(ValueType::kBuf, value.val.c_s);
  }
  if (TypeNumber(value) == C_OBJECTREF && place != nullptr) {
    if (value.val.hkp == nullptr) FailForNull("C_OBJECTREF");
    return Value::Text(ValueType::kObjectRef,
                       ReferenceOfPath(*value.val.hkp, *place));
  }
  return VisitMember(
      value,
      [](auto type, const auto& member) {
        return Carrier<RowOf(type).stored_as>::Take(type, member);
      },
      [&]() -> Value { RejectType(TypeNumber(value)); });
}

NewElement ElementFromC(const confd_value_t& value,
                        const store::SchemaNode* place) {
  NewElement element;
  ElementFromC(value, place, element);
  return element;
}

void ElementFromC(const confd_value_t& value, const store::SchemaNode* place,
                  NewElement& element) {
  const int type = TypeNumber(value);
  const bool is_single =
      type != C_XMLTAG && type != C_LIST && type != C_NOEXISTS;
  element.is_present = type == C_XMLTAG;
  element.items.reset();
  if (is_single) {
    element.value = FromC(value, place);
    return;
  }
  element.value.reset();
  if (type != C_LIST) return;
  element.items.emplace();
  if (SizeOf(value.val.list) != value.val.list.size) FailForNull("C_LIST");
  for (unsigned int i = 0; i < value.val.list.size; ++i) {
    element.items->push_back(FromC(value.val.list.ptr[i], place));
  }
}

}  // namespace kit::api
