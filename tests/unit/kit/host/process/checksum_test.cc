#include "kit/host/process/checksum.h"

#include <gtest/gtest.h>

#include <string>

namespace kit::host {
namespace {

Checksum Of(std::string_view text) {
  Checksum checksum;
  checksum.Add(text);
  return checksum;
}

TEST(ChecksumTest, PiecesMakeNoDifference) {
  Checksum checksum;
  for (const char* piece : {"", "<a", ">1", "</a>"}) checksum.Add(piece);
  EXPECT_EQ(checksum, Of("<a>1</a>"));
  EXPECT_EQ(checksum.bytes, 8U);
}

TEST(ChecksumTest, EveryChangeMakesADifference) {
  using std::string_literals::operator""s;
  const Checksum original = Of("<a>12</a>");
  for (const std::string& text :
       {""s, "<a>13</a>"s, "<a>21</a>"s, "<a>12</a> "s, "a<>12</a>"s,
        "\0<a>12</a>"s, "<a>12</a>\0"s, "<a>\xff\xff</a>"s}) {
    EXPECT_NE(original, Of(text)) << text;
  }
}

}  // namespace
}  // namespace kit::host
