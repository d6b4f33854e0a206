#include "kit/confd/session/call_hooks.h"

#include <utility>

namespace kit::store {

CallHooks& CallHooks::Instance() {
  // Never destroyed, so that calls at a process's end still find it.
  static auto& instance = *new CallHooks();
  return instance;
}

void CallHooks::SetObserver(std::optional<CallObserver> observer) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  observer_ = std::move(observer);
  observed_ = observer_.has_value();
  wants_values_ = observer_ && observer_->wants_values;
  calls_ = 0;
}

void CallHooks::SetFaults(std::vector<FaultRule> faults) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  faults_ = std::move(faults);
  has_faults_ = !faults_.empty();
}

std::optional<FaultRule> CallHooks::Fault(std::string_view function,
                                          std::string_view path) {
  if (!has_faults_) return std::nullopt;
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const FaultRule* met = nullptr;
  for (FaultRule& fault : faults_) {
    bool fits = (fault.function.empty() || fault.function == function) &&
                (fault.path.empty() || fault.path == path);
    if (!fits) continue;
    ++fault.seen;
    bool now = fault.occurrence == 0 || fault.seen == fault.occurrence;
    if (now && met == nullptr) met = &fault;
  }
  if (met == nullptr) return std::nullopt;
  return *met;
}

void CallHooks::Report(CallRecord record) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  record.number = ++calls_;
  if (observer_) observer_->on_call(record);
}

}  // namespace kit::store
