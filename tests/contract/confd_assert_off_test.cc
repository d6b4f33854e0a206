// A program that checks nothing.
#define NDEBUG
#include <confd_lib.h>
#include <gtest/gtest.h>

namespace contract {
namespace {

TEST(ConfdTypesHeader, GettersCheckNothingWithoutAssertions) {
  confd_value_t v = {};
  CONFD_SET_INT32(&v, 7);
  EXPECT_EQ(CONFD_GET_UINT32(&v), 7u);
}

}  // namespace
}  // namespace contract
