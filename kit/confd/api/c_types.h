// The C side of the table of value types.
#ifndef KIT_CONFD_API_C_TYPES_H_
#define KIT_CONFD_API_C_TYPES_H_

#include <confd_lib.h>

#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "kit/confd/model/value_type.h"

namespace kit::api {

template <store::ValueType type>
using TypeConstant = std::integral_constant<store::ValueType, type>;

// The number of a value's type, which a program may have left unset.
inline int TypeNumber(const confd_value_t& value) {
  int number = 0;
  static_assert(sizeof number == sizeof value.type);
  std::memcpy(&number, &value.type, sizeof number);
  return number;
}

// What visit(type, member) gives for the type of a value, as a TypeConstant,
// and the member that the type's row names; otherwise() for a type without a
// row.
template <typename CValue, typename Visit, typename Otherwise>
auto VisitMember(CValue& value, const Visit& visit,
                 const Otherwise& otherwise) {
  switch (TypeNumber(value)) {
#define KIT_ROW(row, name, number, stored_as, bits, text, member) \
  case name:                                                      \
    return visit(TypeConstant<store::ValueType::row>(), value.member);
    KIT_VALUE_TYPES(KIT_ROW)
#undef KIT_ROW
    default:
      return otherwise();
  }
}

// Nothing where the pointer is null, whatever the size says.
inline std::string_view BytesOf(const confd_buf_t& buf) {
  if (buf.ptr == nullptr) return {};
  return {reinterpret_cast<const char*>(buf.ptr), buf.size};
}
inline size_t SizeOf(const confd_list& list) {
  return list.ptr == nullptr ? 0 : list.size;
}

}  // namespace kit::api

#endif  // KIT_CONFD_API_C_TYPES_H_
