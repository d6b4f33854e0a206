// For tests of passes that leave what they read to the process when they fail.
#ifndef TESTS_UNIT_CONFIG_UPDATE_DELIBERATE_LEAK_H_
#define TESTS_UNIT_CONFIG_UPDATE_DELIBERATE_LEAK_H_

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace test_support {

// What this thread allocates during its lifetime may leak.
class DeliberateLeak {
 public:
  DeliberateLeak() {
#ifdef __SANITIZE_ADDRESS__
    __lsan_disable();
#endif
  }
  ~DeliberateLeak() {
#ifdef __SANITIZE_ADDRESS__
    __lsan_enable();
#endif
  }
  DeliberateLeak(const DeliberateLeak&) = delete;
  DeliberateLeak& operator=(const DeliberateLeak&) = delete;
};

}  // namespace test_support

#endif  // TESTS_UNIT_CONFIG_UPDATE_DELIBERATE_LEAK_H_
