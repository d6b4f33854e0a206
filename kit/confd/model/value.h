// One typed value of a leaf.
#ifndef KIT_CONFD_MODEL_VALUE_H_
#define KIT_CONFD_MODEL_VALUE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "kit/confd/model/value_type.h"

namespace kit::store {

// Which members count depends on the type; Compare and == look at all of them.
class Value {
 public:
  Value() = default;
  ~Value() = default;
  // Most values have no text: a string takes its time to copy even if empty.
  Value(const Value& other)
      : type_(other.type_), length_(other.length_), bits_(other.bits_) {
    if (!other.text_.empty()) text_ = other.text_;
  }
  Value(Value&& other) noexcept
      : type_(other.type_), length_(other.length_), bits_(other.bits_) {
    if (!other.text_.empty()) text_ = std::move(other.text_);
  }
  Value& operator=(const Value& other) {
    if (!text_.empty() || !other.text_.empty()) text_ = other.text_;
    CopyNumbers(other);
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    if (!text_.empty() || !other.text_.empty()) text_ = std::move(other.text_);
    CopyNumbers(other);
    return *this;
  }

  // Integers in two's complement, booleans, enumerations, bit sets, decimal64
  // (with its fraction digits in `length`), IPv4 addresses and dotted quads in
  // host byte order (with the prefix length in bits in `length`).
  static Value Number(ValueType type, uint64_t bits, uint8_t length = 0) {
    Value value;
    value.type_ = type;
    value.bits_ = bits;
    value.length_ = length;
    return value;
  }

  // A double, with `bits` that order as doubles do.
  static Value Double(ValueType type, double number);

  // Strings and binary data as they are, IPv6 addresses as their 16 bytes,
  // date and time as text, identities as "module:name" with namespace hash and
  // name hash in the upper and lower half of `bits`.
  static Value Text(ValueType type, std::string_view text, uint8_t length = 0,
                    uint64_t bits = 0);

  ValueType type() const { return type_; }
  bool exists() const { return type_ != ValueType::kNoExists; }
  uint64_t bits() const { return bits_; }
  int64_t signed_bits() const { return static_cast<int64_t>(bits_); }
  double as_double() const;
  uint8_t length() const { return length_; }
  const std::string& text() const { return text_; }

 private:
  void CopyNumbers(const Value& other) {
    type_ = other.type_;
    length_ = other.length_;
    bits_ = other.bits_;
  }

  ValueType type_ = ValueType::kNoExists;
  uint8_t length_ = 0;
  uint64_t bits_ = 0;
  std::string text_;
};

// The natural order of the type, as negative, zero or positive: numbers by
// value, addresses and strings by their bytes, enumerations by number. Values
// of different types, which a union may have, are ordered by type, but that
// strings, durations and the common integers come last, the latter mixed.
int Compare(const Value& a, const Value& b);

inline bool operator==(const Value& a, const Value& b) {
  return Compare(a, b) == 0;
}
inline bool operator!=(const Value& a, const Value& b) { return !(a == b); }

// The keys of an entry, or the first of them.
struct KeyView {
  const Value* data;
  size_t size;
};

// Lexicographic; a prefix stands before everything that begins with it.
int Compare(KeyView a, KeyView b);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_VALUE_H_
