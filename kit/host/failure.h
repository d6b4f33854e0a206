// Why a run failed, in the terms of the user who has to act on it.
#ifndef KIT_HOST_FAILURE_H_
#define KIT_HOST_FAILURE_H_

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "kit/host/exit_code.h"

namespace kit::host {

struct Failure {
  ExitCode code = ExitCode::kInternal;
  std::string reason;     // one line
  std::string advice;     // what to do about it, "" when there is nothing
  std::string file = {};  // where, as far as it is known
  uint64_t line = 0;      // from 1, 0 when unknown
  std::string path = {};  // of the node at fault
  std::vector<std::string> details = {};  // lines that follow the reason
};

class FailureError : public std::exception {
 public:
  explicit FailureError(Failure failure) : failure_(std::move(failure)) {}
  const Failure& failure() const { return failure_; }
  const char* what() const noexcept override { return failure_.reason.c_str(); }

 private:
  Failure failure_;
};

// For an exception that nobody expected; `where` is "" or " while ...".
Failure UnexpectedFailure(const std::exception& error,
                          const std::string& where);

}  // namespace kit::host

#endif  // KIT_HOST_FAILURE_H_
