#include "kit/confd/model/value.h"

#include <algorithm>

namespace kit::store {
namespace {

template <typename T>
int CompareNumbers(T a, T b) {
  if (a < b) return -1;
  return a > b ? 1 : 0;
}

}  // namespace

Value Value::Text(ValueType type, std::string_view text, uint8_t length,
                  uint64_t bits) {
  Value value = Number(type, bits, length);
  value.text_ = text;
  return value;
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
