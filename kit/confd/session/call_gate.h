// Lets the calls of the C API through one at a time, and none once it is
// closed.
#ifndef KIT_CONFD_SESSION_CALL_GATE_H_
#define KIT_CONFD_SESSION_CALL_GATE_H_

#include <atomic>
#include <mutex>

namespace kit::store {

// The process's one gate.
class CallGate {
 public:
  static CallGate& Instance();

  // Waits until no call is under way. From then on calls of this thread, also
  // in a process forked from it, are refused; those of other threads wait.
  void Close();

 private:
  friend class Passage;

  std::mutex mutex_;
  std::atomic<const void*> holder_{nullptr};  // the thread inside
  bool closed_ = false;                       // by the holder
};

// One call's way through the gate: waits until it is free, and frees it again.
class Passage {
 public:
  enum class Admission {
    kGranted,
    kNested,  // this thread is in a call already, which it can't wait for
    kClosed,
  };

  Passage();
  ~Passage();
  Passage(const Passage&) = delete;
  Passage& operator=(const Passage&) = delete;

  Admission admission() const { return admission_; }

 private:
  Admission admission_ = Admission::kGranted;
};

}  // namespace kit::store

#endif  // KIT_CONFD_SESSION_CALL_GATE_H_
