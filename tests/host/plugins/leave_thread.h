// For plug-ins that leave a thread behind.
#ifndef TESTS_HOST_PLUGINS_LEAVE_THREAD_H_
#define TESTS_HOST_PLUGINS_LEAVE_THREAD_H_

#include <sched.h>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

// Returns once the thread runs: while it comes into being it holds locks of the
// address sanitizer, which a process that is forked then would wait for for
// ever.
template <typename Work>
void LeaveThread(Work work) {
  const auto runs = std::make_shared<std::atomic<bool>>(false);
  std::thread([runs, work = std::move(work)] {
    *runs = true;
    work();
  }).detach();
  while (!*runs) sched_yield();
}

#endif  // TESTS_HOST_PLUGINS_LEAVE_THREAD_H_
