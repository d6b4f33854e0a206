// Recorded calls as people read them.
#ifndef TESTS_SUPPORT_CALL_TEXT_H_
#define TESTS_SUPPORT_CALL_TEXT_H_

#include <string>
#include <string_view>

namespace test_support {

// The line of a call with the values that are none, where several stand in a
// row, as one with their number: "C_UINT32 7, C_NOEXISTS x67".
std::string CountMissingValues(std::string_view call);

}  // namespace test_support

#endif  // TESTS_SUPPORT_CALL_TEXT_H_
