#include "kit/host/process/process_state.h"

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <locale>

namespace kit::host {

ProcessState::ProcessState() {
  for (int signal = 1; signal < NSIG; ++signal) {
    sigaction(signal, nullptr, &actions_[static_cast<size_t>(signal)]);
  }
  pthread_sigmask(SIG_SETMASK, nullptr, &mask_);
  for (size_t i = 0; i < limits_.size(); ++i) {
    getrlimit(static_cast<__rlimit_resource>(i), &limits_[i]);
  }
}

void ProcessState::Restore() const {
  for (int signal = 1; signal < NSIG; ++signal) {
    sigaction(signal, &actions_[static_cast<size_t>(signal)], nullptr);
  }
  pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  for (size_t i = 0; i < limits_.size(); ++i) {
    const auto resource = static_cast<__rlimit_resource>(i);
    rlimit limit = limits_[i];
    if (setrlimit(resource, &limit) == 0) continue;
    rlimit now = {};
    getrlimit(resource, &now);
    limit = {std::min(limit.rlim_cur, now.rlim_max), now.rlim_max};
    setrlimit(resource, &limit);
  }
  std::fesetenv(FE_DFL_ENV);
  std::locale::global(std::locale::classic());
}

}  // namespace kit::host
