#include "kit/host/journal/differences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kit::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using What = control::Change::Kind;

class DifferencesTest : public testing::Test {
 protected:
  void Value(const std::string& path, const std::string& leaf,
             std::optional<std::string> before,
             std::optional<std::string> after) {
    ChangeRecord change = Record(What::kValue, path);
    change.leaf = leaf;
    change.before = std::move(before);
    change.after = std::move(after);
    builder_.Add(change);
  }
  void Create(const std::string& path) {
    builder_.Add(Record(What::kCreated, path));
  }
  void Delete(const std::string& path,
              std::vector<control::LeafChange> leaves = {}) {
    ChangeRecord change = Record(What::kDeleted, path);
    change.leaves = std::move(leaves);
    builder_.Add(change);
  }
  void Rename(const std::string& from, const std::string& to) {
    ChangeRecord change = Record(What::kRenamed, to);
    change.old_path = from;
    builder_.Add(change);
  }
  void Move(const std::string& path) {
    builder_.Add(Record(What::kMoved, path));
  }

  // "~ /l{1} a:1>2" for each, "-" for what is not set.
  std::vector<std::string> Take() {
    std::vector<std::string> lines;
    for (const EntryDifference& difference : builder_.Take()) {
      std::string line(1, "+~->^"[static_cast<size_t>(difference.kind)]);
      line += " " + difference.path;
      if (!difference.old_path.empty()) line += " " + difference.old_path;
      for (const control::LeafChange& leaf : difference.leaves) {
        line += " " + leaf.leaf + ":" + leaf.before.value_or("-") + ">" +
                leaf.after.value_or("-");
      }
      lines.push_back(line);
    }
    return lines;
  }

 private:
  static ChangeRecord Record(What kind, const std::string& path) {
    ChangeRecord change;
    change.kind = kind;
    change.list = "/l";
    change.path = path;
    return change;
  }

  DifferenceBuilder builder_;
};

constexpr auto kNone = std::nullopt;

TEST_F(DifferencesTest, AValueIsComparedFromTheFirstToTheLast) {
  Value("/l{1}", "a", "1", "2");
  Value("/l{1}", "a", "2", "3");
  Value("/l{1}", "b", kNone, "4");
  EXPECT_THAT(Take(), ElementsAre("~ /l{1} a:1>3 b:->4"));
}

TEST_F(DifferencesTest, AMoveIsFoundWhateverTheOrderOfItsLeaves) {
  Value("/l{1}", "c", "3", "4");
  Value("/l{1}", "c", "4", "3");
  Create("/l{2}");
  for (const char* leaf : {"a", "b", "c"}) {
    Value("/l{2}", leaf, kNone, "3");
  }
  Delete("/l{1}", {{"a", "3", kNone}, {"b", "3", kNone}, {"c", "3", kNone}});
  EXPECT_THAT(Take(), ElementsAre("> /l{2} /l{1}"));
}

TEST_F(DifferencesTest, WhatStandsInARenamedEntryIsRenamedWithIt) {
  Value("/l{1}/m{5}", "a", "1", "2");
  Rename("/l{1}", "/l{2}");
  Value("/l{2}/m{5}", "a", "2", "3");
  EXPECT_THAT(Take(),
              ElementsAre("> /l{2} /l{1}", "> /l{2}/m{5} /l{1}/m{5} a:1>3"));
}

TEST(Differences, TellWhoWasTheLastToChangeEachLeafAndEntry) {
  DifferenceBuilder builder;
  ChangeRecord change;
  change.list = "/l";
  change.path = "/l{1}";
  change.leaf = "a";
  change.before = "1";
  for (const uint32_t pass : {2u, 3u}) {
    change.pass = pass;
    change.after = std::to_string(pass);
    builder.Add(change);
  }
  change.kind = What::kDeleted;
  change.path = "/l{2}";
  change.leaves = {{"a", "1", std::nullopt}};
  change.pass = 4;
  builder.Add(change);
  const std::vector<EntryDifference> differences = builder.Take();
  ASSERT_EQ(differences.size(), 2u);
  EXPECT_EQ(differences[0].leaves.at(0).pass, 3u);
  EXPECT_EQ(differences[1].pass, 4u);
}

TEST_F(DifferencesTest, WhatComesBackIsNoDifference) {
  Value("/l{1}", "a", "1", "2");
  Value("/l{1}", "a", "2", "1");
  Create("/l{2}");
  Value("/l{2}", "a", kNone, "1");
  Delete("/l{2}", {{"a", "1", kNone}});
  EXPECT_THAT(Take(), IsEmpty());
}

TEST_F(DifferencesTest, AnEntryIsNewOrGoneWithItsLeaves) {
  Create("/l{1}");
  Value("/l{1}", "a", kNone, "1");
  Value("/l{2}", "a", "0", "5");
  Delete("/l{2}", {{"a", "5", kNone}, {"b", "6", kNone}});
  EXPECT_THAT(Take(), ElementsAre("+ /l{1} a:->1", "- /l{2} a:0>- b:6>-"));
}

TEST_F(DifferencesTest, AnEntryThatIsMadeAnewHasChanged) {
  Delete("/l{1}", {{"a", "1", kNone}, {"b", "2", kNone}});
  Create("/l{1}");
  Value("/l{1}", "b", kNone, "2");
  Value("/l{1}", "c", kNone, "3");
  EXPECT_THAT(Take(), ElementsAre("~ /l{1} a:1>- c:->3"));
}

TEST_F(DifferencesTest, AnEntryUnderOtherKeysIsOne) {
  Delete("/l{7 x}", {{"a", "1", kNone}, {"b", "2", kNone}, {"c", "3", kNone}});
  Create("/l{1 x}");
  Value("/l{1 x}", "a", kNone, "1");
  Value("/l{1 x}", "b", kNone, "9");
  Value("/l{1 x}", "d", kNone, "4");
  Value("/l{1 x}", "c", kNone, "3");
  EXPECT_THAT(Take(), ElementsAre("> /l{1 x} /l{7 x} b:2>9 d:->4"));
}

TEST_F(DifferencesTest, ARenamedEntryIsOneToo) {
  Value("/l{1}", "a", "1", "2");
  Rename("/l{1}", "/l{2}");
  Value("/l{2}", "b", "3", "4");
  Rename("/l{2}", "/l{3}");
  EXPECT_THAT(Take(), ElementsAre("> /l{3} /l{1} a:1>2 b:3>4"));
  Rename("/l{1}", "/l{2}");
  Rename("/l{2}", "/l{1}");
  EXPECT_THAT(Take(), IsEmpty());
  Rename("/l{1}", "/l{2}");
  Delete("/l{2}");
  EXPECT_THAT(Take(), ElementsAre("- /l{1}"));
}

TEST_F(DifferencesTest, AnEntryInAnotherPlaceHasMoved) {
  Move("/l{2}");
  Value("/l{2}", "a", "1", "2");
  EXPECT_THAT(Take(), ElementsAre("^ /l{2} a:1>2"));
}

TEST_F(DifferencesTest, AStretchBeginsAnew) {
  Value("/l{1}", "a", "1", "2");
  EXPECT_THAT(Take(), ElementsAre("~ /l{1} a:1>2"));
  Value("/l{1}", "a", "2", "3");
  EXPECT_THAT(Take(), ElementsAre("~ /l{1} a:2>3"));
}

}  // namespace
}  // namespace kit::host
