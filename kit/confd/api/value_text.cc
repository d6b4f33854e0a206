#include "kit/confd/api/value_text.h"

#include <arpa/inet.h>

#include <cstring>
#include <stdexcept>

#include "kit/confd/keypath/key_text.h"
#include "kit/confd/text/address.h"
#include "kit/confd/text/date.h"
#include "kit/confd/text/encoding.h"
#include "kit/confd/text/number.h"

namespace kit::api {
namespace {

using keypath::AppendQuotedKey;

constexpr unsigned kMaxFractionDigits = 18;

[[noreturn]] void Reject(const confd_value_t& value, const char* reason) {
  throw std::invalid_argument("value of type " + std::to_string(value.type) +
                              " can't be a key: " + reason);
}

std::string_view BufView(const confd_value_t& value, const confd_buf_t& buf) {
  if (buf.size == 0) return {};
  if (buf.ptr == nullptr) Reject(value, "null buffer");
  return {reinterpret_cast<const char*>(buf.ptr), buf.size};
}

void AppendIpv4(std::string* out, const in_addr& address) {
  text::AppendIpv4(out, ntohl(address.s_addr));
}

void AppendDquad(std::string* out, const confd_dotted_quad& quad) {
  in_addr address;
  std::memcpy(&address, quad.quad, sizeof address);
  AppendIpv4(out, address);
}

void AppendIpv6(std::string* out, const in6_addr& address) {
  out->append(text::PrintIpv6(
      {reinterpret_cast<const char*>(&address), sizeof address}));
}

void AppendPrefixLength(std::string* out, const confd_value_t& value,
                        unsigned length, unsigned max) {
  if (length > max) Reject(value, "prefix length out of range");
  out->push_back('/');
  text::AppendNumber(out, length);
}

void AppendDecimal64(std::string* out, const confd_value_t& value) {
  const confd_decimal64& decimal = value.val.d64;
  if (decimal.fraction_digits > kMaxFractionDigits) {
    Reject(value, "too many fraction digits");
  }
  out->append(text::PrintFixedPoint(decimal.value, decimal.fraction_digits));
}

// confd_datetime, confd_date and confd_time share these members.
template <typename T>
void AppendDay(std::string* out, const T& date) {
  text::AppendDay(out, {date.year, date.month, date.day});
}

template <typename T>
void AppendClock(std::string* out, const T& time) {
  text::AppendClock(out, {time.hour, time.min, time.sec, time.micro});
}

template <typename T>
void AppendZone(std::string* out, const T& time) {
  text::AppendShortZone(out, {time.timezone, time.timezone_minutes});
}

void AppendQname(std::string* out, const confd_value_t& value) {
  std::string text(BufView(value, value.val.qname.prefix));
  if (!text.empty()) text.push_back(':');
  text.append(BufView(value, value.val.qname.name));
  AppendQuotedKey(out, text);
}

}  // namespace

void AppendValueKey(std::string* out, const confd_value_t& value) {
  const auto& val = value.val;
  switch (value.type) {
    case C_STR:
      if (val.c_s == nullptr) Reject(value, "null string");
      return AppendQuotedKey(out, val.c_s);
    case C_BUF:
      return AppendQuotedKey(out, BufView(value, val.buf));
    case C_INT8:
      return text::AppendNumber(out, static_cast<int>(val.i8));
    case C_INT16:
      return text::AppendNumber(out, val.i16);
    case C_INT32:
      return text::AppendNumber(out, val.i32);
    case C_INT64:
      return text::AppendNumber(out, val.i64);
    case C_UINT8:
      return text::AppendNumber(out, static_cast<unsigned>(val.u8));
    case C_UINT16:
      return text::AppendNumber(out, val.u16);
    case C_UINT32:
      return text::AppendNumber(out, val.u32);
    case C_UINT64:
      return text::AppendNumber(out, val.u64);
    case C_DOUBLE:
      return text::AppendDouble(out, val.d);
    case C_IPV4:
      return AppendIpv4(out, val.ip);
    case C_IPV6:
      return AppendIpv6(out, val.ip6);
    case C_BOOL:
      out->append(val.boolean != 0 ? "true" : "false");
      return;
    case C_QNAME:
      return AppendQname(out, value);
    case C_DATETIME:
      AppendDay(out, val.datetime);
      out->push_back('T');
      AppendClock(out, val.datetime);
      return AppendZone(out, val.datetime);
    case C_DATE:
      AppendDay(out, val.date);
      return AppendZone(out, val.date);
    case C_TIME:
      AppendClock(out, val.time);
      return AppendZone(out, val.time);
    case C_DURATION: {
      const confd_duration& all = val.duration;
      return text::AppendDuration(
          out, {all.years, all.months, all.days, all.hours, all.mins, all.secs,
                all.micros});
    }
    case C_ENUM_VALUE:
      return text::AppendNumber(out, val.enumvalue);
    case C_BIT32:
      return text::AppendNumber(out, val.b32);
    case C_BIT64:
      return text::AppendNumber(out, val.b64);
    case C_BINARY:
      return AppendQuotedKey(out, text::PrintBase64(BufView(value, val.buf)));
    case C_HEXSTR:
      return AppendQuotedKey(out, text::PrintHex(BufView(value, val.buf)));
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      AppendIpv4(out, val.ipv4prefix.ip);
      return AppendPrefixLength(out, value, val.ipv4prefix.len, 32);
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      AppendIpv6(out, val.ipv6prefix.ip6);
      return AppendPrefixLength(out, value, val.ipv6prefix.len, 128);
    case C_DECIMAL64:
      return AppendDecimal64(out, value);
    case C_IDENTITYREF:
      text::AppendNumber(out, val.idref.ns);
      out->push_back(':');
      return text::AppendNumber(out, val.idref.id);
    case C_DQUAD:
      return AppendDquad(out, val.dquad);
    case C_EMPTY:
      return AppendQuotedKey(out, {});
    default:
      Reject(value, "no key form");
  }
}

std::string ValueToKey(const confd_value_t& value) {
  std::string out;
  AppendValueKey(&out, value);
  return out;
}

}  // namespace kit::api
