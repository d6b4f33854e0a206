#include "kit/confd/text/password.h"

#include <crypt.h>
#include <gtest/gtest.h>

#include <string>

namespace kit::text {
namespace {

TEST(HashPassword, HashesAsTheMethodDoes) {
  for (const char* method : {"$1$", "$5$", "$6$"}) {
    for (const std::string password : {"", "secret", "p\xc3\xa4ss word"}) {
      const auto hash = HashPassword(password, method);
      ASSERT_TRUE(hash) << method;
      EXPECT_EQ(hash->substr(0, 3), method);
      EXPECT_EQ(crypt(password.c_str(), hash->c_str()), *hash);
      EXPECT_EQ(HashPassword(password, method), hash);
    }
  }
}

TEST(HashPassword, PasswordsHaveTheirOwnSalt) {
  const std::string one = *HashPassword("one", "$5$");
  const std::string two = *HashPassword("two", "$5$");
  EXPECT_NE(one.substr(0, 11), two.substr(0, 11));
}

TEST(HashPassword, UnknownMethodsGiveNothing) {
  EXPECT_EQ(HashPassword("secret", "$%$"), std::nullopt);
}

}  // namespace
}  // namespace kit::text
