#include "kit/confd/session/call_gate.h"

namespace kit::store {
namespace {

// An address that no other thread of the process has.
const void* ThisThread() {
  thread_local const char mark = 0;
  return &mark;
}

// A thread asks only whether the holder is itself, which nobody else writes;
// all else the mutex orders.
constexpr std::memory_order kOwn = std::memory_order_relaxed;

}  // namespace

CallGate& CallGate::Instance() {
  // Never destroyed, so that calls at a process's end still find it.
  static auto& instance = *new CallGate();
  return instance;
}

void CallGate::Close() {
  // A call that the program left by a jump out of a signal handler still
  // holds it.
  if (holder_.load(kOwn) != ThisThread()) {
    mutex_.lock();
    holder_.store(ThisThread(), kOwn);
  }
  closed_ = true;
}

Passage::Passage() {
  CallGate& gate = CallGate::Instance();
  if (gate.holder_.load(kOwn) == ThisThread()) {
    admission_ = gate.closed_ ? Admission::kClosed : Admission::kNested;
    return;
  }
  gate.mutex_.lock();
  gate.holder_.store(ThisThread(), kOwn);
}

Passage::~Passage() {
  if (admission_ != Admission::kGranted) return;
  CallGate& gate = CallGate::Instance();
  gate.holder_.store(nullptr, kOwn);
  gate.mutex_.unlock();
}

}  // namespace kit::store
