#include "kit/host/failure.h"

#include <cerrno>
#include <new>
#include <system_error>

namespace kit::host {
namespace {

bool IsExhaustion(const std::exception& error) {
  const auto* system = dynamic_cast<const std::system_error*>(&error);
  if (system == nullptr) return false;
  const int code = system->code().value();
  return code == EMFILE || code == ENFILE || code == EAGAIN || code == ENOMEM;
}

}  // namespace

Failure UnexpectedFailure(const std::exception& error,
                          const std::string& where) {
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
    return {ExitCode::kInternal, "out of memory" + where,
            "free memory, or raise its limit, and run again"};
  }
  if (IsExhaustion(error)) {
    return {
        ExitCode::kInternal,
        "the machine ran out of something" + where + ": " + error.what(),
        "free processes or open files, or raise their limits, and run again"};
  }
  return {ExitCode::kInternal, "internal error" + where + ": " + error.what(),
          "report this together with the command line"};
}

}  // namespace kit::host
