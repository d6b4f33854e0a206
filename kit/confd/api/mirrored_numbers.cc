// The model can't see the C headers whose numbers it repeats; here both meet.
#include <confd_lib.h>

#include <cstddef>
#include <type_traits>

#include "kit/confd/model/error.h"
#include "kit/confd/model/value_type.h"

namespace kit::api {
namespace {

using store::ErrorCode;
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

static_assert(static_cast<int>(ErrorCode::kNoExists) == CONFD_ERR_NOEXISTS);
static_assert(static_cast<int>(ErrorCode::kAlreadyExists) ==
              CONFD_ERR_ALREADY_EXISTS);
static_assert(static_cast<int>(ErrorCode::kNotWritable) ==
              CONFD_ERR_NOT_WRITABLE);
static_assert(static_cast<int>(ErrorCode::kBadType) == CONFD_ERR_BADTYPE);
static_assert(static_cast<int>(ErrorCode::kNotCreatable) ==
              CONFD_ERR_NOTCREATABLE);
static_assert(static_cast<int>(ErrorCode::kNotDeletable) ==
              CONFD_ERR_NOTDELETABLE);
static_assert(static_cast<int>(ErrorCode::kBadPath) == CONFD_ERR_BADPATH);
static_assert(static_cast<int>(ErrorCode::kNotSet) == CONFD_ERR_NOTSET);
static_assert(static_cast<int>(ErrorCode::kBadKeyref) == CONFD_ERR_BAD_KEYREF);
static_assert(static_cast<int>(ErrorCode::kInternal) == CONFD_ERR_INTERNAL);
static_assert(static_cast<int>(ErrorCode::kMalloc) == CONFD_ERR_MALLOC);
static_assert(static_cast<int>(ErrorCode::kProtoUsage) == CONFD_ERR_PROTOUSAGE);
static_assert(static_cast<int>(ErrorCode::kNoSession) == CONFD_ERR_NOSESSION);
static_assert(static_cast<int>(ErrorCode::kOs) == CONFD_ERR_OS);
static_assert(static_cast<int>(ErrorCode::kMustFailed) ==
              CONFD_ERR_MUST_FAILED);
static_assert(static_cast<int>(ErrorCode::kUnavailable) ==
              CONFD_ERR_UNAVAILABLE);

static_assert(sizeof(confd_value_t) == 40);
static_assert(offsetof(confd_value_t, val) == 8);

}  // namespace
}  // namespace kit::api
