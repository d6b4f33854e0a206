#include "kit/host/process/progress.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

#include "kit/host/text.h"

namespace kit::host {

const char* Describe(Phase phase) {
  switch (phase) {
    case Phase::kStarting:
      return "starting";
    case Phase::kReading:
      return "reading the configuration";
    case Phase::kParsing:
      return "parsing the configuration";
    case Phase::kLoading:
      return "loading the plug-in";
    case Phase::kUpdating:
      return "running the plug-in";
    case Phase::kValidating:
      return "validating the result";
    case Phase::kComparing:
      return "comparing the result";
    case Phase::kSaving:
      return "saving the result";
  }
  return "working";
}

bool IsPluginPhase(Phase phase) {
  return phase == Phase::kLoading || phase == Phase::kUpdating;
}

template <size_t kSize>
void Progress::Text<kSize>::Assign(std::string_view text) {
  length =
      static_cast<uint32_t>(Shortened(text, kSize).copy(bytes.data(), kSize));
}

Progress::Count* Progress::CountOf(std::string_view function) {
  const uint32_t known = functions_;
  for (uint32_t i = 0; i < known; ++i) {
    if (counts_[i].function.view() == function) return &counts_[i];
  }
  if (known == kMaxFunctions) return nullptr;
  counts_[known].function.Assign(function);
  functions_ = known + 1;
  return &counts_[known];
}

void Progress::Record(const control::Call& call) {
  const uint32_t next = 1 - last_index_;
  LastCallSlot& slot = last_[next];
  slot.function.Assign(call.function);
  slot.path.Assign(call.path);
  slot.result = call.result;
  slot.error = call.error;
  slot.reason.Assign(call.reason);
  last_index_ = next;
  if (Count* count = CountOf(call.function)) ++count->calls;
  ++calls_;
}

std::map<std::string, uint64_t> Progress::CallsByFunction() const {
  std::map<std::string, uint64_t> calls;
  const uint32_t known = std::min<uint32_t>(functions_, kMaxFunctions);
  for (uint32_t i = 0; i < known; ++i) {
    calls.emplace(counts_[i].function.view(), counts_[i].calls.load());
  }
  return calls;
}

std::optional<std::string> Progress::LastCall() const {
  if (calls_ == 0) return std::nullopt;
  const LastCallSlot& slot = last_[last_index_ % last_.size()];
  control::Call call = {};
  call.function = slot.function.view();
  call.path = slot.path.view();
  call.result = slot.result;
  call.error = slot.error;
  call.reason = slot.reason.view();
  return control::ToString(call);
}

void UnmapProgress::operator()(Progress* progress) const {
  munmap(progress, sizeof(Progress));
}

SharedProgress MakeSharedProgress() {
  void* memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE,
                      MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "mmap");
  }
  // Both processes use the atomics, which takes lock-free ones.
  static_assert(std::atomic<uint64_t>::is_always_lock_free);
  static_assert(std::atomic<uint32_t>::is_always_lock_free);
  return SharedProgress(new (memory) Progress());
}

void MakePrivate(Progress& progress) {
  void* memory = mmap(&progress, sizeof(Progress), PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::system_error(errno, std::generic_category(), "mmap");
  }
  new (memory) Progress();
}

}  // namespace kit::host
