#include "kit/confd/model/value_type.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace kit::store {
namespace {

TEST(ValueTypes, AreNamedAsInTheCInterface) {
  EXPECT_STREQ(TypeName(ValueType::kUint32), "C_UINT32");
  EXPECT_STREQ(TypeName(ValueType::kEnum), "C_ENUM_VALUE");
  EXPECT_STREQ(TypeName(ValueType::kIpv4AndPlen), "C_IPV4_AND_PLEN");
  EXPECT_STREQ(TypeName(ValueType::kDouble), "C_DOUBLE");
  EXPECT_STREQ(TypeName(static_cast<ValueType>(0)), "C_?");
  EXPECT_STREQ(TypeName(static_cast<ValueType>(255)), "C_?");
}

TEST(ValueTypes, SaySignedOfTheNumbersThatAre) {
  std::set<std::string> names;
  for (int number = 0; number < 256; ++number) {
    const auto type = static_cast<ValueType>(number);
    if (IsSigned(type)) names.insert(TypeName(type));
  }
  EXPECT_EQ(names,
            (std::set<std::string>{"C_INT8", "C_INT16", "C_INT32", "C_INT64",
                                   "C_ENUM_VALUE", "C_DECIMAL64"}));
}

}  // namespace
}  // namespace kit::store
