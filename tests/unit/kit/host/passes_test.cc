#include "kit/host/passes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "kit/host/failure.h"

namespace kit::host {
namespace {

constexpr char kFile[] = "passes.json";

TEST(PassTrackerTest, RecordsBelongToThePassThatHasStarted) {
  const PassTable table = {{"one", "Start one", "Finish one"},
                           {"two", "Start two", ""}};
  PassTracker tracker(table);
  EXPECT_EQ(tracker.Take("before"), 0u);
  EXPECT_EQ(tracker.Take("Start one\n"), 1u);
  EXPECT_EQ(tracker.Take("Start one more"), 1u);
  EXPECT_EQ(tracker.current(), 1u);
  EXPECT_EQ(tracker.Take("Finish one"), 1u);
  EXPECT_EQ(tracker.current(), 0u);
  EXPECT_EQ(tracker.Take("Start two"), 2u);
  EXPECT_EQ(tracker.Take("Start one"), 1u);
}

TEST(ParsePassesTest, ReadsATable) {
  const PassTable table = ParsePasses(
      R"({"passes": [{"name": "a", "start": "b", "finish": "c"},
                     {"name": "d", "start": "e"}]})",
      kFile);
  ASSERT_EQ(table.size(), 2u);
  EXPECT_EQ(table[0].finish, "c");
  EXPECT_EQ(table[1].name, "d");
  EXPECT_EQ(table[1].finish, "");
}

TEST(ParsePassesTest, ReadsTheTableOfTheOspfUpgrade) {
  std::ifstream file(std::string(TEST_SOURCE_ROOT) + "/rules/ospf-passes.json");
  std::stringstream text;
  text << file.rdbuf();
  const PassTable table = ParsePasses(text.str(), kFile);
  ASSERT_EQ(table.size(), 9u);
  EXPECT_EQ(table[2].name, "compound index");
}

TEST(ParsePassesTest, SaysWhatIsWrong) {
  struct {
    const char* text;
    const char* reason;
    uint64_t line;
  } const cases[] = {
      {"{\n\"passes\": [}", "is no JSON", 2},
      {"[]", "the table is no object", 0},
      {"{}", "has no list \"passes\" of one pass or more", 0},
      {R"({"passes": []})", "has no list \"passes\" of one pass or more", 0},
      {R"({"passes": [], "x": 1})", "the table has an unknown key \"x\"", 0},
      {R"({"passes": [1]})", "pass 1 is no object", 0},
      {R"({"passes": [{"name": "a", "start": ""}]})",
       "pass 1 has no text \"start\"", 0},
      {R"({"passes": [{"start": "a"}]})", "pass 1 has no text \"name\"", 0},
      {R"({"passes": [{"name": "a", "start": "b", "finish": 1}]})",
       "pass 1 has no text \"finish\"", 0},
      {R"({"passes": [{"name": "a", "start": "b"},
                      {"name": "c", "start": "b"}]})",
       "pass 2: the record \"b\" is a mark already", 0},
  };
  for (const auto& one : cases) {
    try {
      ParsePasses(one.text, kFile);
      ADD_FAILURE() << one.text;
    } catch (const FailureError& error) {
      EXPECT_EQ(error.failure().reason, one.reason);
      EXPECT_EQ(error.failure().line, one.line) << one.text;
      EXPECT_EQ(error.failure().file, kFile);
      EXPECT_EQ(error.failure().code, ExitCode::kBadInput);
    }
  }
}

}  // namespace
}  // namespace kit::host
