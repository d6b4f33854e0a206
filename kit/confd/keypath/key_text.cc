#include "kit/confd/keypath/key_text.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "kit/confd/keypath/keypath.h"

namespace kit::keypath {
namespace {

constexpr unsigned kMaxFractionDigits = 18;
constexpr int kMaxTimezoneHours = 14;

[[noreturn]] void Reject(const confd_value_t& value, const char* reason) {
  throw std::invalid_argument("value of type " + std::to_string(value.type) +
                              " can't be a key: " + reason);
}

// printf for the short, fixed forms below.
template <typename... Args>
void AppendPrintf(std::string* out, const char* fmt, Args... args) {
  char buf[128];
  const int length = std::snprintf(buf, sizeof(buf), fmt, args...);
  out->append(buf, static_cast<size_t>(length));
}

std::string_view BufView(const confd_value_t& value, const confd_buf_t& buf) {
  if (buf.size == 0) return {};
  if (buf.ptr == nullptr) Reject(value, "null buffer");
  return {reinterpret_cast<const char*>(buf.ptr), buf.size};
}

void AppendIpv6(std::string* out, const in6_addr& address) {
  char buf[INET6_ADDRSTRLEN];
  out->append(inet_ntop(AF_INET6, &address, buf, sizeof(buf)));
}

void AppendPrefixLength(std::string* out, const confd_value_t& value,
                        unsigned length, unsigned max) {
  if (length > max) Reject(value, "prefix length out of range");
  out->push_back('/');
  AppendDecimal(out, length);
}

void AppendDouble(std::string* out, double number) {
  char buf[64];
  const auto end =
      std::to_chars(buf, buf + sizeof(buf), number, std::chars_format::general)
          .ptr;
  out->append(buf, end);
}

// All fraction digits are written: 150 with two of them is "1.50".
void AppendDecimal64(std::string* out, const confd_value_t& value) {
  const confd_decimal64& decimal = value.val.d64;
  const size_t fraction = decimal.fraction_digits;
  if (fraction > kMaxFractionDigits) Reject(value, "too many fraction digits");
  const auto bits = static_cast<uint64_t>(decimal.value);
  // Negating as unsigned is defined for the lowest number too.
  std::string digits = std::to_string(decimal.value < 0 ? 0 - bits : bits);
  if (digits.size() <= fraction) {
    digits.insert(0, fraction + 1 - digits.size(), '0');
  }
  if (fraction > 0) digits.insert(digits.size() - fraction, 1, '.');
  if (decimal.value < 0) out->push_back('-');
  out->append(digits);
}

void AppendDay(std::string* out, int year, unsigned month, unsigned day) {
  AppendPrintf(out, "%04d-%02u-%02u", year, month, day);
}

void AppendClock(std::string* out, unsigned hour, unsigned min, unsigned sec,
                 uint32_t micro) {
  AppendPrintf(out, "%02u:%02u:%02u", hour, min, sec);
  if (micro != 0) AppendPrintf(out, ".%06" PRIu32, micro);
}

// Hours no place on earth has stand for "no time zone".
void AppendTimezone(std::string* out, int hours, int minutes) {
  if (std::abs(hours) > kMaxTimezoneHours) return;
  if (hours == 0 && minutes == 0) {
    out->push_back('Z');
    return;
  }
  AppendPrintf(out, "%c%02d:%02d", hours < 0 || minutes < 0 ? '-' : '+',
               std::abs(hours), std::abs(minutes));
}

void AppendDuration(std::string* out, const confd_duration& duration) {
  const auto part = [out](uint32_t amount, char unit) {
    if (amount == 0) return;
    AppendDecimal(out, amount);
    out->push_back(unit);
  };
  out->push_back('P');
  const size_t begin = out->size();
  part(duration.years, 'Y');
  part(duration.months, 'M');
  part(duration.days, 'D');
  const bool seconds = duration.secs != 0 || duration.micros != 0;
  if (duration.hours != 0 || duration.mins != 0 || seconds) {
    out->push_back('T');
    part(duration.hours, 'H');
    part(duration.mins, 'M');
    if (seconds) AppendDecimal(out, duration.secs);
    if (duration.micros != 0) AppendPrintf(out, ".%06" PRIu32, duration.micros);
    if (seconds) out->push_back('S');
  }
  if (out->size() == begin) out->append("T0S");
}

void AppendQname(std::string* out, const confd_value_t& value) {
  std::string text(BufView(value, value.val.qname.prefix));
  if (!text.empty()) text.push_back(':');
  text.append(BufView(value, value.val.qname.name));
  AppendQuotedKey(out, text);
}

}  // namespace

std::string Base64(std::string_view bytes) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t present = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t j = 0; j < 3; ++j) {
      group <<= 8;
      if (j < present) group |= static_cast<unsigned char>(bytes[i + j]);
    }
    for (size_t j = 0; j < 4; ++j) {
      out.push_back(j <= present ? kAlphabet[(group >> (18 - 6 * j)) & 63]
                                 : '=');
    }
  }
  return out;
}

std::string HexString(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  out.reserve(bytes.size() * 3);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!out.empty()) out.push_back(':');
    out.push_back(kDigits[byte >> 4]);
    out.push_back(kDigits[byte & 15]);
  }
  return out;
}

void AppendQuotedKey(std::string* out, std::string_view key) {
  if (!key.empty() && std::all_of(key.begin(), key.end(), IsPlainKeyChar)) {
    out->append(key);
    return;
  }
  out->push_back('"');
  for (const char c : key) {
    switch (c) {
      case '\n':
        out->append("\\n");
        break;
      case '\t':
        out->append("\\t");
        break;
      case '"':
      case '\\':
        out->push_back('\\');
        [[fallthrough]];
      default:
        out->push_back(c);
    }
  }
  out->push_back('"');
}

void AppendDottedQuad(std::string* out, const void* bytes) {
  const auto* quad = static_cast<const unsigned char*>(bytes);
  for (int i = 0; i < 4; ++i) {
    if (i > 0) out->push_back('.');
    AppendDecimal(out, static_cast<unsigned>(quad[i]));
  }
}

void AppendValueKey(std::string* out, const confd_value_t& value) {
  const auto& val = value.val;
  switch (value.type) {
    case C_STR:
      if (val.c_s == nullptr) Reject(value, "null string");
      return AppendQuotedKey(out, val.c_s);
    case C_BUF:
      return AppendQuotedKey(out, BufView(value, val.buf));
    case C_INT8:
      return AppendDecimal(out, static_cast<int>(val.i8));
    case C_INT16:
      return AppendDecimal(out, val.i16);
    case C_INT32:
      return AppendDecimal(out, val.i32);
    case C_INT64:
      return AppendDecimal(out, val.i64);
    case C_UINT8:
      return AppendDecimal(out, static_cast<unsigned>(val.u8));
    case C_UINT16:
      return AppendDecimal(out, val.u16);
    case C_UINT32:
      return AppendDecimal(out, val.u32);
    case C_UINT64:
      return AppendDecimal(out, val.u64);
    case C_DOUBLE:
      return AppendDouble(out, val.d);
    case C_IPV4:
      return AppendDottedQuad(out, &val.ip);
    case C_IPV6:
      return AppendIpv6(out, val.ip6);
    case C_BOOL:
      out->append(val.boolean != 0 ? "true" : "false");
      return;
    case C_QNAME:
      return AppendQname(out, value);
    case C_DATETIME:
      AppendDay(out, val.datetime.year, val.datetime.month, val.datetime.day);
      out->push_back('T');
      AppendClock(out, val.datetime.hour, val.datetime.min, val.datetime.sec,
                  val.datetime.micro);
      return AppendTimezone(out, val.datetime.timezone,
                            val.datetime.timezone_minutes);
    case C_DATE:
      AppendDay(out, val.date.year, val.date.month, val.date.day);
      return AppendTimezone(out, val.date.timezone, val.date.timezone_minutes);
    case C_TIME:
      AppendClock(out, val.time.hour, val.time.min, val.time.sec,
                  val.time.micro);
      return AppendTimezone(out, val.time.timezone, val.time.timezone_minutes);
    case C_DURATION:
      return AppendDuration(out, val.duration);
    case C_ENUM_VALUE:
      return AppendDecimal(out, val.enumvalue);
    case C_BIT32:
      return AppendDecimal(out, val.b32);
    case C_BIT64:
      return AppendDecimal(out, val.b64);
    case C_BINARY:
      return AppendQuotedKey(out, Base64(BufView(value, val.buf)));
    case C_HEXSTR:
      return AppendQuotedKey(out, HexString(BufView(value, val.buf)));
    case C_IPV4PREFIX:
    case C_IPV4_AND_PLEN:
      AppendDottedQuad(out, &val.ipv4prefix.ip);
      return AppendPrefixLength(out, value, val.ipv4prefix.len, 32);
    case C_IPV6PREFIX:
    case C_IPV6_AND_PLEN:
      AppendIpv6(out, val.ipv6prefix.ip6);
      return AppendPrefixLength(out, value, val.ipv6prefix.len, 128);
    case C_DECIMAL64:
      return AppendDecimal64(out, value);
    case C_IDENTITYREF:
      AppendDecimal(out, val.idref.ns);
      out->push_back(':');
      return AppendDecimal(out, val.idref.id);
    case C_DQUAD:
      return AppendDottedQuad(out, val.dquad.quad);
    case C_EMPTY:
      return AppendQuotedKey(out, {});
    default:
      Reject(value, "no key form");
  }
}

std::string QuoteKey(std::string_view key) {
  std::string out;
  out.reserve(key.size() + 2);
  AppendQuotedKey(&out, key);
  return out;
}

std::string ValueToKey(const confd_value_t& value) {
  std::string out;
  AppendValueKey(&out, value);
  return out;
}

}  // namespace kit::keypath
