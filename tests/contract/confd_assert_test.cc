// A program that has its own way to fail.
#include <gtest/gtest.h>

#include <string>

namespace {
std::string failed;
}  // namespace

#define CONFD_ASSERT(E) ((E) ? void(0) : void(failed = #E))
#include <confd_lib.h>

namespace contract {
namespace {

TEST(ConfdTypesHeader, GettersCheckTheTagAsTheProgramSays) {
  confd_value_t v = {};
  confd_value_t* value = &v;
  CONFD_SET_UINT32(value, 7);
  EXPECT_EQ(CONFD_GET_UINT32(value), 7u);
  EXPECT_EQ(failed, "");
  (void)CONFD_GET_INT32(value);
  EXPECT_EQ(failed, "(value)->type == C_INT32");
}

}  // namespace
}  // namespace contract
