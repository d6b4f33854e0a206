// Device logs are searched for the lines that failed assertions print. Those
// lines stay where they are; the tests of the passes know their numbers, and
// whoever edits a source has to see them.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace {

// Adds the lines that a comment announces as its next ones: "// Line 7 in
// device logs", "// Lines 7 to 9 in device logs". Returns the first, 0 if none.
int AddAnnounced(const std::string& text, std::set<int>& lines) {
  const size_t comment = text.find("// Line");
  if (comment == std::string::npos ||
      text.find("in device logs", comment) == std::string::npos) {
    return 0;
  }
  int first = 0;
  int last = 0;
  if (std::sscanf(&text[comment], "// Line %d", &first) == 1) {
    last = first;
  } else {
    std::sscanf(&text[comment], "// Lines %d %*s %d", &first, &last);
  }
  for (int line = first; line <= last; ++line) lines.insert(line);
  return first;
}

TEST(AssertionLinesTest, ACommentBeforeEachSaysItsNumber) {
  const std::filesystem::path folder =
      std::filesystem::path(TEST_SOURCE_ROOT) / "src/config-update";
  int files_with_assertions = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    SCOPED_TRACE(entry.path());
    std::set<int> asserting;  // by ConfD's accessors of values
    std::set<int> announced;
    std::ifstream file(entry.path());
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
      if (text.find("CONFD_GET_") != std::string::npos) asserting.insert(line);
      const int first = AddAnnounced(text, announced);
      if (first != 0) {
        EXPECT_EQ(first, line + 1) << text;
      }
    }
    EXPECT_EQ(announced, asserting);
    if (!asserting.empty()) ++files_with_assertions;
  }
  EXPECT_EQ(files_with_assertions, 3);
}

}  // namespace
