#include "tests/support/golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/line_diff.h"

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
  if (!stream) {
    ADD_FAILURE() << path << " can't be read; UPDATE_GOLDEN=1 writes it";
    return;
  }
  std::ostringstream expected;
  expected << stream.rdbuf();
  std::string difference = LineDiff(expected.str(), actual);
  if (!difference.empty()) {
    ADD_FAILURE() << "--- tests/" << file << " (expected)\n"
                  << "+++ what the program gave\n"
                  << difference;
  }
}

}  // namespace test_support
