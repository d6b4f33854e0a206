#include "kit/confd/model/value.h"

#include <algorithm>

namespace kit::store {
namespace {

bool IsSigned(ValueType type) {
  switch (type) {
    case ValueType::kInt8:
    case ValueType::kInt16:
    case ValueType::kInt32:
    case ValueType::kInt64:
    case ValueType::kEnum:
    case ValueType::kDecimal64:
      return true;
    default:
      return false;
  }
}

template <typename T>
int CompareNumbers(T a, T b) {
  if (a < b) return -1;
  return a > b ? 1 : 0;
}

}  // namespace

const char* TypeName(ValueType type) {
  switch (type) {
    case ValueType::kNoExists:
      return "C_NOEXISTS";
    case ValueType::kXmlTag:
      return "C_XMLTAG";
    case ValueType::kBuf:
      return "C_BUF";
    case ValueType::kInt8:
      return "C_INT8";
    case ValueType::kInt16:
      return "C_INT16";
    case ValueType::kInt32:
      return "C_INT32";
    case ValueType::kInt64:
      return "C_INT64";
    case ValueType::kUint8:
      return "C_UINT8";
    case ValueType::kUint16:
      return "C_UINT16";
    case ValueType::kUint32:
      return "C_UINT32";
    case ValueType::kUint64:
      return "C_UINT64";
    case ValueType::kIpv4:
      return "C_IPV4";
    case ValueType::kIpv6:
      return "C_IPV6";
    case ValueType::kBool:
      return "C_BOOL";
    case ValueType::kDatetime:
      return "C_DATETIME";
    case ValueType::kEnum:
      return "C_ENUM_VALUE";
    case ValueType::kBit32:
      return "C_BIT32";
    case ValueType::kBit64:
      return "C_BIT64";
    case ValueType::kList:
      return "C_LIST";
    case ValueType::kObjectRef:
      return "C_OBJECTREF";
    case ValueType::kBinary:
      return "C_BINARY";
    case ValueType::kIpv4Prefix:
      return "C_IPV4PREFIX";
    case ValueType::kIpv6Prefix:
      return "C_IPV6PREFIX";
    case ValueType::kDecimal64:
      return "C_DECIMAL64";
    case ValueType::kIdentityref:
      return "C_IDENTITYREF";
    case ValueType::kDquad:
      return "C_DQUAD";
    case ValueType::kHexstr:
      return "C_HEXSTR";
    case ValueType::kIpv4AndPlen:
      return "C_IPV4_AND_PLEN";
    case ValueType::kIpv6AndPlen:
      return "C_IPV6_AND_PLEN";
    case ValueType::kBitbig:
      return "C_BITBIG";
    case ValueType::kEmpty:
      return "C_EMPTY";
  }
  return "C_?";
}

Value Value::Number(ValueType type, uint64_t bits, uint8_t length) {
  Value value;
  value.type_ = type;
  value.bits_ = bits;
  value.length_ = length;
  return value;
}

Value Value::Text(ValueType type, std::string_view text, uint8_t length,
                  uint64_t bits) {
  Value value = Number(type, bits, length);
  value.text_ = std::make_shared<const std::string>(text);
  return value;
}

const std::string& Value::text() const {
  static const std::string empty;
  return text_ ? *text_ : empty;
}

int Compare(const Value& a, const Value& b) {
  if (a.type() != b.type()) {
    return CompareNumbers(static_cast<int>(a.type()),
                          static_cast<int>(b.type()));
  }
  if (int text = a.text().compare(b.text())) return text;
  int bits = IsSigned(a.type())
                 ? CompareNumbers(a.signed_bits(), b.signed_bits())
                 : CompareNumbers(a.bits(), b.bits());
  return bits != 0 ? bits : CompareNumbers(a.length(), b.length());
}

int Compare(KeyView a, KeyView b) {
  for (size_t i = 0; i < std::min(a.size, b.size); ++i) {
    if (int order = Compare(a.data[i], b.data[i])) return order;
  }
  return CompareNumbers(a.size, b.size);
}

}  // namespace kit::store
