#include "kit/confd/api/plain_text.h"

#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/value_type.h"
#include "kit/confd/text/encoding.h"
#include "kit/confd/text/number.h"

namespace kit::api {
namespace {

using store::TextForm;
using store::ValueType;

constexpr uint8_t kMaxFractionDigits = 18;

std::string InAngles(const char* what, std::string_view text) {
  return std::string(what) + "<" + std::string(text) + ">";
}

std::string HexDigits(std::string_view bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

// A number whose bytes come from the lowest to the highest, without leading
// zeros.
std::string HexNumber(std::string_view bytes) {
  const std::string digits =
      HexDigits(std::string(bytes.rbegin(), bytes.rend()));
  const size_t first = digits.find_first_not_of('0');
  return first == std::string::npos ? "0" : digits.substr(first);
}

std::string HexNumber(uint64_t number) {
  std::string bytes;
  for (; number != 0; number >>= 8) bytes += static_cast<char>(number & 0xff);
  return HexNumber(bytes);
}

std::string BitsText(const confd_value_t& value) {
  switch (TypeNumber(value)) {
    case C_BIT32:
      return HexNumber(value.val.b32);
    case C_BIT64:
      return HexNumber(value.val.b64);
    default:
      return HexNumber(BytesOf(value.val.buf));
  }
}

std::string StringText(const confd_value_t& value) {
  if (TypeNumber(value) != C_STR) return std::string(BytesOf(value.val.buf));
  return value.val.c_s == nullptr ? "(null)" : value.val.c_s;
}

std::string QnameText(const confd_qname& qname) {
  const std::string_view prefix = BytesOf(qname.prefix);
  return std::string(prefix) + (prefix.empty() ? "" : ":") +
         std::string(BytesOf(qname.name));
}

std::string ListText(const confd_list& list) {
  std::string text = "[";
  for (size_t i = 0; i < SizeOf(list); ++i) {
    if (i > 0) text += ' ';
    text += PlainText(list.ptr[i]);
  }
  return text + "]";
}

bool HasFractionDigits(const confd_decimal64& decimal) {
  return decimal.fraction_digits >= 1 &&
         decimal.fraction_digits <= kMaxFractionDigits;
}

std::string DecimalText(const confd_decimal64& decimal) {
  return HasFractionDigits(decimal)
             ? text::PrintDecimal64(decimal.value, decimal.fraction_digits)
             : InAngles("invalid64", std::to_string(decimal.value));
}

const store::TypeRow& RowOf(const confd_value_t& value) {
  const auto number = static_cast<unsigned>(TypeNumber(value));
  return number < store::kTypeRows.size() ? store::kTypeRows[number]
                                          : store::kTypeRows.front();
}

}  // namespace

std::string PlainText(const confd_value_t& value) {
  if (TypeNumber(value) == C_XMLTAG) {
    return InAngles("tag", std::to_string(value.val.xmltag.tag));
  }
  const store::TypeRow& row = RowOf(value);
  switch (row.text) {
    case TextForm::kNone:
      return row.name;
    case TextForm::kEmpty:
      return "";
    case TextForm::kEnum:
      return InAngles("enum", std::to_string(value.val.enumvalue));
    case TextForm::kBits:
      return InAngles("bits", BitsText(value));
    case TextForm::kIdentity:
      return InAngles("idref", std::to_string(value.val.idref.id));
    case TextForm::kBase64:
      return HexDigits(BytesOf(value.val.buf));
    case TextForm::kHex:
      return text::PrintHex(BytesOf(value.val.buf));
    case TextForm::kPlain:
      return StringText(value);
    case TextForm::kQname:
      return QnameText(value.val.qname);
    case TextForm::kList:
      return ListText(value.val.list);
    case TextForm::kDecimal:
      return DecimalText(value.val.d64);
    default:
      break;
  }
  try {
    return ValueToKey(value);
  } catch (const std::invalid_argument&) {
    return row.name;
  }
}

bool DependsOnModel(const confd_value_t& value) {
  switch (RowOf(value).text) {
    case TextForm::kEnum:
    case TextForm::kBits:
    case TextForm::kIdentity:
    case TextForm::kBase64:
      return true;
    case TextForm::kDecimal:
      return !HasFractionDigits(value.val.d64);
    default:
      return false;
  }
}

}  // namespace kit::api
