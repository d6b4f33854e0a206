// What differs between two texts, for people to read.
#ifndef TESTS_SUPPORT_LINE_DIFF_H_
#define TESTS_SUPPORT_LINE_DIFF_H_

#include <string>

namespace test_support {

// A unified diff from `expected` to `actual` with three lines around each
// change: lines with "-" are missing from `actual`, lines with "+" are too
// many. "" when the texts are the same.
std::string LineDiff(const std::string& expected, const std::string& actual);

}  // namespace test_support

#endif  // TESTS_SUPPORT_LINE_DIFF_H_
