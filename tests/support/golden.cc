#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace test_support {

void ExpectGolden(const std::string& file, const std::string& actual) {
  std::filesystem::path path =
      std::filesystem::path(TEST_SOURCE_ROOT) / "tests" / file;
  const char* update = std::getenv("UPDATE_GOLDEN");
  if (update != nullptr && std::string(update) == "1") {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << actual;
    ADD_FAILURE() << path << " was rewritten; read the change";
    return;
  }
  std::ifstream stream(path, std::ios::binary);
  ASSERT_TRUE(stream) << path << " can't be read";
  std::ostringstream expected;
  expected << stream.rdbuf();
  EXPECT_EQ(expected.str(), actual)
      << "expected: " << path << "\nactual: the second value";
}

}  // namespace test_support
