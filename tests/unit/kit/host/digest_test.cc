#include "kit/host/digest.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace kit::host {
namespace {

// As sha256sum prints it.
constexpr char kOfAbc[] =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

TEST(Digest, IsThatOfOtherPrograms) {
  EXPECT_EQ(DigestOf("abc").sha256, kOfAbc);
  EXPECT_EQ(DigestOf("abc").bytes, 3U);
  EXPECT_EQ(DigestOf("").sha256,
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Digest, OfAFileIsOfAllThatItHolds) {
  const int file = memfd_create("digest", 0);
  const std::string text(200'000, 'x');
  ASSERT_EQ(write(file, text.data(), text.size()),
            static_cast<ssize_t>(text.size()));
  const auto digest = DigestOfFile(file);
  close(file);
  ASSERT_TRUE(digest);
  EXPECT_EQ(digest->sha256, DigestOf(text).sha256);
  EXPECT_EQ(digest->bytes, text.size());
  EXPECT_FALSE(DigestOfFile("/no/such/file"));
}

TEST(Digest, Base64IsAsPagesNameScripts) {
  EXPECT_EQ(Sha256Base64("abc"),
            "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
}

}  // namespace
}  // namespace kit::host
