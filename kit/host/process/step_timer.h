// The time that one step of a run takes.
#ifndef KIT_HOST_PROCESS_STEP_TIMER_H_
#define KIT_HOST_PROCESS_STEP_TIMER_H_

#include <algorithm>
#include <chrono>

namespace kit::host {

// Counts the time between its ticks, but none in which this program was held up
// itself: stopped at the terminal, or waiting for somebody who reads what it
// prints.
class StepTimer {
 public:
  using Clock = std::chrono::steady_clock;

  // limit_s: 0 is no limit.
  explicit StepTimer(double limit_s)
      : limited_(limit_s > 0),
        limit_(std::chrono::duration_cast<Clock::duration>(
            std::chrono::duration<double>(limit_s))) {}

  void Start() {
    spent_ = Clock::duration::zero();
    last_ = Clock::now();
  }
  // To be called several times a second.
  void Tick() {
    const Clock::time_point now = Clock::now();
    spent_ += std::min<Clock::duration>(now - last_, kMaxBetweenTicks);
    last_ = now;
  }
  // Runs what may have to wait for a reader.
  template <typename Function>
  void RunUncounted(const Function& function) {
    Tick();
    function();
    last_ = Clock::now();
  }
  Clock::duration spent() const { return spent_; }
  bool IsOver() const { return limited_ && spent_ >= limit_; }
  // At most `most`.
  std::chrono::milliseconds Left(std::chrono::milliseconds most) const {
    if (!limited_) return most;
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(limit_ - spent_);
    return std::clamp(left, std::chrono::milliseconds(0), most);
  }

 private:
  static constexpr std::chrono::seconds kMaxBetweenTicks{1};

  bool limited_;
  Clock::duration limit_;
  Clock::duration spent_{};
  Clock::time_point last_ = Clock::now();
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_STEP_TIMER_H_
