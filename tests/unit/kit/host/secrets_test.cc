#include "kit/host/secrets.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

TEST(SecretsTest, ValuesAreMaskedWhereverTheyStand) {
  Secrets secrets;
  secrets.AddValue("hunter2");
  secrets.AddValue("open sesame");
  EXPECT_EQ(secrets.Masked("hunter2"), "****");
  EXPECT_EQ(secrets.Masked("a hunter2hunter2, \"open sesame\"."),
            "a ********, \"****\".");
  EXPECT_EQ(secrets.Masked("hunter 2, open sesam"), "hunter 2, open sesam");
  EXPECT_EQ(secrets.Masked(""), "");
}

TEST(SecretsTest, TheLongestOfTwoIsMasked) {
  Secrets secrets;
  secrets.AddValue("abcd");
  secrets.AddValue("abcdef");
  EXPECT_EQ(secrets.Masked("abcdefg abcdx"), "****g ****x");
}

TEST(SecretsTest, ShortValuesAreMaskedInTheirLeafAlone) {
  Secrets secrets({"/l/key"});
  secrets.AddValue("abc");
  EXPECT_EQ(secrets.Masked("abc"), "abc");
  EXPECT_EQ(secrets.MaskedAt("/l{1 \"}\"}/key", "abc"), "****");
  EXPECT_EQ(secrets.MaskedAt("/l{1}/name", "abc"), "abc");
}

TEST(SecretsTest, ATextThatNamesALeafOfOneIsKnown) {
  const Secrets secrets({"/l/key"});
  EXPECT_TRUE(secrets.IsNamedIn("line 3: /l{1}/key: \"x\" is too long"));
  EXPECT_FALSE(secrets.IsNamedIn("line 3: /l{1}/name: \"x\" is too long"));
}

TEST(SecretsTest, WithoutAnyNothingIsMasked) {
  const Secrets none;
  EXPECT_FALSE(none.Covers("/l/key"));
  EXPECT_EQ(none.Masked("anything"), "anything");
}

}  // namespace
}  // namespace kit::host
