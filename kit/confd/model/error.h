// Errors of the store, numbered as ConfD numbers them.
#ifndef KIT_CONFD_MODEL_ERROR_H_
#define KIT_CONFD_MODEL_ERROR_H_

#include <stdexcept>
#include <string>

namespace kit::store {

// The names and numbers are those of confd_lib.h.
// clang-format off
#define KIT_ERROR_CODES(ROW)                          \
  ROW(kNoExists,      CONFD_ERR_NOEXISTS,          1) \
  ROW(kAlreadyExists, CONFD_ERR_ALREADY_EXISTS,    2) \
  ROW(kNotWritable,   CONFD_ERR_NOT_WRITABLE,      4) \
  ROW(kBadType,       CONFD_ERR_BADTYPE,           5) \
  ROW(kNotCreatable,  CONFD_ERR_NOTCREATABLE,      6) \
  ROW(kNotDeletable,  CONFD_ERR_NOTDELETABLE,      7) \
  ROW(kBadPath,       CONFD_ERR_BADPATH,           8) \
  ROW(kNotSet,        CONFD_ERR_NOTSET,           12) \
  ROW(kBadKeyref,     CONFD_ERR_BAD_KEYREF,       14) \
  ROW(kInternal,      CONFD_ERR_INTERNAL,         18) \
  ROW(kMalloc,        CONFD_ERR_MALLOC,           20) \
  ROW(kProtoUsage,    CONFD_ERR_PROTOUSAGE,       21) \
  ROW(kNoSession,     CONFD_ERR_NOSESSION,        22) \
  ROW(kOs,            CONFD_ERR_OS,               24) \
  ROW(kMustFailed,    CONFD_ERR_MUST_FAILED,      41) \
  ROW(kUnavailable,   CONFD_ERR_UNAVAILABLE,      44)
// clang-format on

enum class ErrorCode {
#define KIT_ROW(code, name, number) code = number,
  KIT_ERROR_CODES(KIT_ROW)
#undef KIT_ROW
};

class Error : public std::runtime_error {
 public:
  Error(ErrorCode code, const std::string& reason)
      : std::runtime_error(reason), code_(code) {}
  ErrorCode code() const { return code_; }

 private:
  ErrorCode code_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_ERROR_H_
