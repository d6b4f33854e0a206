// Comparing long texts with files that hold what they should be.
#ifndef TESTS_SUPPORT_GOLDEN_H_
#define TESTS_SUPPORT_GOLDEN_H_

#include <string>

namespace test_support {

// Fails the running test, showing the difference line by line, unless `actual`
// is what the file says. `file` is relative to the tests folder. With
// UPDATE_GOLDEN=1 in the environment it writes the file instead, and fails all
// the same: a rewritten expectation has to be read first.
void ExpectGolden(const std::string& file, const std::string& actual);

}  // namespace test_support

#endif  // TESTS_SUPPORT_GOLDEN_H_
