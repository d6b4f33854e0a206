// Errors of the store, numbered as ConfD numbers them.
#ifndef KIT_CONFD_MODEL_ERROR_H_
#define KIT_CONFD_MODEL_ERROR_H_

#include <stdexcept>
#include <string>

namespace kit::store {

// The numbers are those of CONFD_ERR_* in confd_lib.h.
enum class ErrorCode {
  kNoExists = 1,
  kAlreadyExists = 2,
  kNotWritable = 4,
  kBadType = 5,
  kNotCreatable = 6,
  kNotDeletable = 7,
  kBadPath = 8,
  kNotSet = 12,
  kBadKeyref = 14,
  kInternal = 18,
  kMalloc = 20,
  kProtoUsage = 21,
  kNoSession = 22,
  kOs = 24,
  kMustFailed = 41,
  kUnavailable = 44,
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
