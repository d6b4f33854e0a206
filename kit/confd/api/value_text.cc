#include "kit/confd/api/value_text.h"

#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "kit/confd/api/c_types.h"
#include "kit/confd/keypath/key_text.h"
#include "kit/confd/text/address.h"
#include "kit/confd/text/encoding.h"
#include "kit/confd/text/number.h"

namespace kit::api {
namespace {

using keypath::AppendQuotedKey;
using store::RowOf;
using store::TextForm;
using store::ValueType;

template <TextForm form>
using FormConstant = std::integral_constant<TextForm, form>;

constexpr unsigned kMaxFractionDigits = 18;

[[noreturn]] void Reject(int type, const char* reason) {
  throw std::invalid_argument("value of type " + std::to_string(type) +
                              " can't be a key: " + reason);
}

[[noreturn]] void Reject(ValueType type, const char* reason) {
  Reject(static_cast<int>(type), reason);
}

std::string_view BytesOfKey(ValueType type, const confd_buf_t& buf) {
  if (buf.size != 0 && buf.ptr == nullptr) Reject(type, "null buffer");
  return BytesOf(buf);
}

// confd_datetime, confd_date and confd_time share these members.
template <typename T>
text::Day DayOf(const T& from) {
  return {from.year, from.month, from.day};
}

template <typename T>
text::Clock ClockOf(const T& from) {
  return {from.hour, from.min, from.sec, from.micro};
}

template <typename T>
text::Zone ZoneOf(const T& from) {
  return {from.timezone, from.timezone_minutes};
}

void AppendAddress(std::string* out, const in_addr& address) {
  text::AppendIpv4(out, ntohl(address.s_addr));
}

void AppendAddress(std::string* out, const confd_dotted_quad& quad) {
  in_addr address;
  std::memcpy(&address, quad.quad, sizeof address);
  AppendAddress(out, address);
}

void AppendAddress(std::string* out, const in6_addr& address) {
  out->append(text::PrintIpv6(
      {reinterpret_cast<const char*>(&address), sizeof address}));
}

const in_addr& AddressIn(const confd_ipv4_prefix& prefix) { return prefix.ip; }
const in6_addr& AddressIn(const confd_ipv6_prefix& prefix) {
  return prefix.ip6;
}

template <typename Prefix>
void AppendPrefix(std::string* out, ValueType type, const Prefix& prefix) {
  if (prefix.len > RowOf(type).bits) Reject(type, "prefix length out of range");
  AppendAddress(out, AddressIn(prefix));
  out->push_back('/');
  text::AppendNumber(out, unsigned{prefix.len});
}

// ---- Keys: one function for each form of text -----------------------------

template <TextForm form, typename Member>
void AppendKey(FormConstant<form>, std::string*, ValueType type,
               const Member&) {
  static_assert(form == TextForm::kNone || form == TextForm::kPath ||
                    form == TextForm::kBits || form == TextForm::kList,
                "how is it written in a key?");
  Reject(type, "no key form");
}

void AppendKey(FormConstant<TextForm::kEmpty>, std::string* out, ValueType,
               confd_vtype) {
  AppendQuotedKey(out, {});
}

template <typename Number>
void AppendKey(FormConstant<TextForm::kNumber>, std::string* out, ValueType,
               Number number) {
  text::AppendNumber(out, number);
}

void AppendKey(FormConstant<TextForm::kEnum>, std::string* out, ValueType,
               int32_t number) {
  text::AppendNumber(out, number);
}

void AppendKey(FormConstant<TextForm::kBits>, std::string* out, ValueType,
               uint32_t bits) {
  text::AppendNumber(out, bits);
}

void AppendKey(FormConstant<TextForm::kBits>, std::string* out, ValueType,
               uint64_t bits) {
  text::AppendNumber(out, bits);
}

// All fraction digits are written: 150 with two of them is "1.50".
void AppendKey(FormConstant<TextForm::kDecimal>, std::string* out,
               ValueType type, const confd_decimal64& decimal) {
  if (decimal.fraction_digits > kMaxFractionDigits) {
    Reject(type, "too many fraction digits");
  }
  out->append(text::PrintFixedPoint(decimal.value, decimal.fraction_digits));
}

void AppendKey(FormConstant<TextForm::kDouble>, std::string* out, ValueType,
               double number) {
  text::AppendDouble(out, number);
}

void AppendKey(FormConstant<TextForm::kBool>, std::string* out, ValueType,
               int boolean) {
  out->append(boolean != 0 ? "true" : "false");
}

void AppendKey(FormConstant<TextForm::kIdentity>, std::string* out, ValueType,
               const confd_identityref& identity) {
  text::AppendNumber(out, identity.ns);
  out->push_back(':');
  text::AppendNumber(out, identity.id);
}

void AppendKey(FormConstant<TextForm::kPlain>, std::string* out, ValueType type,
               const char* text) {
  if (text == nullptr) Reject(type, "null string");
  AppendQuotedKey(out, text);
}

void AppendKey(FormConstant<TextForm::kPlain>, std::string* out, ValueType type,
               const confd_buf_t& buf) {
  AppendQuotedKey(out, BytesOfKey(type, buf));
}

void AppendKey(FormConstant<TextForm::kBase64>, std::string* out,
               ValueType type, const confd_buf_t& buf) {
  AppendQuotedKey(out, text::PrintBase64(BytesOfKey(type, buf)));
}

void AppendKey(FormConstant<TextForm::kHex>, std::string* out, ValueType type,
               const confd_buf_t& buf) {
  AppendQuotedKey(out, text::PrintHex(BytesOfKey(type, buf)));
}

void AppendKey(FormConstant<TextForm::kQname>, std::string* out, ValueType type,
               const confd_qname& qname) {
  std::string text(BytesOfKey(type, qname.prefix));
  if (!text.empty()) text.push_back(':');
  text.append(BytesOfKey(type, qname.name));
  AppendQuotedKey(out, text);
}

template <typename Address>
void AppendKey(FormConstant<TextForm::kAddress>, std::string* out, ValueType,
               const Address& address) {
  AppendAddress(out, address);
}

template <typename Prefix>
void AppendKey(FormConstant<TextForm::kPrefix>, std::string* out,
               ValueType type, const Prefix& prefix) {
  AppendPrefix(out, type, prefix);
}

template <typename Prefix>
void AppendKey(FormConstant<TextForm::kAddressAndLength>, std::string* out,
               ValueType type, const Prefix& prefix) {
  AppendPrefix(out, type, prefix);
}

void AppendKey(FormConstant<TextForm::kDateTime>, std::string* out, ValueType,
               const confd_datetime& date_time) {
  out->append(text::PrintShortDateTime(DateTimeOf(date_time)));
}

void AppendKey(FormConstant<TextForm::kDate>, std::string* out, ValueType,
               const confd_date& date) {
  out->append(text::PrintDate(DateOf(date)));
}

void AppendKey(FormConstant<TextForm::kTime>, std::string* out, ValueType,
               const confd_time& time) {
  out->append(text::PrintTime(TimeOf(time)));
}

void AppendKey(FormConstant<TextForm::kDuration>, std::string* out, ValueType,
               const confd_duration& duration) {
  out->append(text::PrintDuration(DurationOf(duration)));
}

void AppendKey(FormConstant<TextForm::kOid>, std::string* out, ValueType type,
               confd_snmp_oid* oid) {
  if (oid == nullptr) Reject(type, "null object identifier");
  const auto bytes = OidBytes(*oid);
  if (!bytes) Reject(type, "length out of range");
  out->append(text::PrintOid(*bytes));
}

// ---- Descriptions: keys, but for the forms below ---------------------------

std::string Quote(std::string_view bytes) {
  std::string text = "\"";
  for (char c : bytes) {
    if (c == '"' || c == '\\') {
      text += {'\\', c};
    } else if (static_cast<unsigned char>(c) < ' ') {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x",
                    static_cast<unsigned>(static_cast<unsigned char>(c)));
      text += escaped;
    } else {
      text += c;
    }
  }
  return text + "\"";
}

template <TextForm form, typename Member>
std::string DescribeMember(FormConstant<form> tag, ValueType type,
                           const Member& member) {
  std::string text = " ";
  try {
    AppendKey(tag, &text, type, member);
  } catch (const std::invalid_argument&) {
    return " ?";
  }
  return text;
}

template <typename Member>
std::string DescribeMember(FormConstant<TextForm::kNone>, ValueType,
                           const Member&) {
  return "";
}

std::string DescribeMember(FormConstant<TextForm::kEmpty>, ValueType,
                           confd_vtype) {
  return "";
}

std::string DescribeMember(FormConstant<TextForm::kPlain>, ValueType,
                           const char* text) {
  return text == nullptr ? " NULL" : " " + Quote(text);
}

std::string DescribeMember(FormConstant<TextForm::kPlain>, ValueType,
                           const confd_buf_t& buf) {
  return " " + Quote(BytesOf(buf));
}

std::string DescribeMember(FormConstant<TextForm::kPath>, ValueType,
                           confd_hkeypath_t* path) {
  if (path == nullptr) return " ?";
  return " of " + std::to_string(path->len) + " elements";
}

// As documents have it.
std::string DescribeMember(FormConstant<TextForm::kDateTime>, ValueType,
                           const confd_datetime& date_time) {
  return " " + text::PrintDateTime(DateTimeOf(date_time));
}

std::string DescribeMember(FormConstant<TextForm::kList>, ValueType,
                           const confd_list& list) {
  return " [" + Describe(list.ptr, SizeOf(list)) + "]";
}

}  // namespace

void AppendValueKey(std::string* out, const confd_value_t& value) {
  VisitMember(
      value,
      [out](auto type, const auto& member) {
        AppendKey(FormConstant<RowOf(type).text>(), out, type, member);
      },
      [&] { Reject(TypeNumber(value), "no key form"); });
}

std::string ValueToKey(const confd_value_t& value) {
  std::string out;
  AppendValueKey(&out, value);
  return out;
}

std::string Describe(const confd_value_t& value) {
  return VisitMember(
      value,
      [](auto type, const auto& member) {
        return store::TypeName(type) +
               DescribeMember(FormConstant<RowOf(type).text>(), type, member);
      },
      [] { return std::string("C_? ?"); });
}

std::string Describe(const confd_value_t* values, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    if (i > 0) text += ", ";
    text += Describe(values[i]);
  }
  return text;
}

text::DateTime DateTimeOf(const confd_datetime& from) {
  return {DayOf(from), ClockOf(from), ZoneOf(from)};
}

text::Date DateOf(const confd_date& from) {
  return {DayOf(from), ZoneOf(from)};
}

text::Time TimeOf(const confd_time& from) {
  return {ClockOf(from), ZoneOf(from)};
}

text::Duration DurationOf(const confd_duration& from) {
  return {from.years, from.months, from.days,  from.hours,
          from.mins,  from.secs,   from.micros};
}

std::optional<std::string> OidBytes(const confd_snmp_oid& oid) {
  if (oid.len < 1 || oid.len > static_cast<int>(std::size(oid.oid))) {
    return std::nullopt;
  }
  std::string bytes;
  for (int i = 0; i < oid.len; ++i) {
    const uint32_t number = htonl(oid.oid[i]);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  return bytes;
}

}  // namespace kit::api
