// The model can't see the C headers whose numbers it repeats; here both meet.
#include <confd_lib.h>

#include <cstddef>
#include <type_traits>

#include "kit/confd/model/error.h"
#include "kit/confd/model/schema.h"
#include "kit/confd/model/value_type.h"

namespace kit::api {
namespace {

using store::StoredAs;

// Whether numbers of the C type are what the row says of them.
template <typename Member>
constexpr bool Fits(StoredAs stored_as, size_t bits) {
  if (stored_as != StoredAs::kSigned && stored_as != StoredAs::kUnsigned) {
    return true;
  }
  return std::is_integral_v<Member> && sizeof(Member) * 8 == bits &&
         std::is_signed_v<Member> == (stored_as == StoredAs::kSigned);
}

#define KIT_ROW(row, name, number, stored_as, bits, text, member)       \
  static_assert(name == number, #name " has another number");           \
  static_assert(                                                        \
      Fits<decltype(confd_value_t::member)>(StoredAs::stored_as, bits), \
      #name " has another width or sign");
KIT_VALUE_TYPES(KIT_ROW)
#undef KIT_ROW

#define KIT_ROW(code, name, number, text) \
  static_assert(name == number, #name " has another number");
KIT_ERROR_CODES(KIT_ROW)
#undef KIT_ROW

static_assert(store::kMaxKeys == MAXKEYLEN - 1);

static_assert(sizeof(confd_value_t) == 40);
static_assert(offsetof(confd_value_t, val) == 8);

}  // namespace
}  // namespace kit::api
