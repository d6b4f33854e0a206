#include "kit/confd/model/value.h"

#include <algorithm>
#include <cstring>

namespace kit::store {
namespace {

template <typename T>
int CompareNumbers(T a, T b) {
  if (a < b) return -1;
  return a > b ? 1 : 0;
}

constexpr uint64_t kSignBit = uint64_t{1} << 63;

// Where values of the type stand among those of other types.
int RankOf(ValueType type) {
  constexpr int kBehindAllTypes = 256;
  switch (type) {
    case ValueType::kBuf:
      return kBehindAllTypes;
    case ValueType::kDuration:
      return kBehindAllTypes + 1;
    case ValueType::kInt32:
    case ValueType::kUint8:
    case ValueType::kUint16:
      return kBehindAllTypes + 2;
    default:
      return static_cast<int>(type);
  }
}

int CompareTypes(const Value& a, const Value& b) {
  const int rank = CompareNumbers(RankOf(a.type()), RankOf(b.type()));
  if (rank != 0) return rank;
  const int number = CompareNumbers(a.signed_bits(), b.signed_bits());
  if (number != 0) return number;
  return CompareNumbers(static_cast<int>(a.type()), static_cast<int>(b.type()));
}

}  // namespace

Value Value::Double(ValueType type, double number) {
  if (number == 0) number = 0;  // there are two of them
  uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return Number(type, (bits & kSignBit) != 0 ? ~bits : bits | kSignBit);
}

double Value::as_double() const {
  const uint64_t bits = (bits_ & kSignBit) != 0 ? bits_ & ~kSignBit : ~bits_;
  double number = 0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

Value Value::Text(ValueType type, std::string_view text, uint8_t length,
                  uint64_t bits) {
  Value value = Number(type, bits, length);
  value.text_ = text;
  return value;
}

int Compare(const Value& a, const Value& b) {
  if (a.type() != b.type()) return CompareTypes(a, b);
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
