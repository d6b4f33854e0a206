// What the automatic upgrade changes, and how many leaves there are on either
// side.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::control {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class StartChangesTest : public testing::Test {
 protected:
  void Open(const std::string& inside) {
    const std::string models =
        std::string(TEST_SOURCE_ROOT) + "/tests/models/growth/";
    database_.emplace(Database::Open(
        {models + "before", {}}, {models + "after", {}},
        "<g xmlns=\"urn:test:growth\">" + inside + "</g>", "g.xml"));
  }

  // "deleted PATH a=1", "renamed OLD -> PATH a=1", "PATH a 1 -> 2 (DEFAULT)".
  std::vector<std::string> Changes(const std::string& inside) {
    Open(inside);
    std::vector<std::string> lines;
    database_->StartChanges([&lines](const StartChange& change) {
      std::string line = change.path;
      if (change.kind == Change::Kind::kDeleted) line = "deleted " + line;
      if (!change.old_path.empty()) line = change.old_path + " -> " + line;
      if (change.kind == Change::Kind::kValue) {
        const LeafChange& leaf = change.value;
        line += " " + leaf.leaf + " " + leaf.before.value_or("-") + " -> " +
                leaf.after.value_or("-");
        if (leaf.default_value) line += " (" + *leaf.default_value + ")";
      }
      for (const LeafChange& leaf : change.leaves) {
        line += " " + leaf.leaf + "=" + *leaf.before;
      }
      lines.push_back(line);
    });
    return lines;
  }

  // "LIST entries leaves" for each.
  std::vector<std::string> Counts(Side side) const {
    std::vector<std::string> lines;
    for (const LeafCount& count : database_->CountLeaves(side)) {
      lines.push_back(count.list + " " + std::to_string(count.entries) + " " +
                      std::to_string(count.leaves));
    }
    return lines;
  }

  std::optional<Database> database_;
};

TEST_F(StartChangesTest, ThereAreNoneWhereEverythingStaysAsItWas) {
  EXPECT_THAT(
      Changes("<kept>7</kept><widened>255</widened><becomes-list>1"
              "</becomes-list><entry><id>5</id><value>1</value></entry>"),
      IsEmpty());
}

TEST_F(StartChangesTest, ALostLeafHasNothingAfterIt) {
  EXPECT_THAT(Changes("<gone>7</gone><narrowed>100</narrowed>"),
              ElementsAre("/ g/gone 7 -> -", "/ g/narrowed 100 -> -"));
}

TEST_F(StartChangesTest, WhatYieldsToADefaultSaysWhich) {
  EXPECT_THAT(
      Changes("<followed>10</followed><narrowed-with-default>100"
              "</narrowed-with-default><flag-to-empty>false</flag-to-empty>"),
      UnorderedElementsAre("/ g/followed 10 -> - (20)",
                           "/ g/narrowed-with-default 100 -> - (9)",
                           "/ g/flag-to-empty false -> - (false)"));
}

TEST_F(StartChangesTest, ConvertedValuesAreTold) {
  EXPECT_THAT(Changes("<text-to-number>007</text-to-number><words>12</words>"
                      "<words>twelve</words>"),
              UnorderedElementsAre("/ g/text-to-number 007 -> 7",
                                   "/ g/words [12 twelve] -> [12]"));
}

TEST_F(StartChangesTest, LostEntriesComeWithAllThatStandsInThem) {
  EXPECT_THAT(Changes("<entry><id>word</id><value>1</value><sub><n>3</n></sub>"
                      "</entry>"),
              ElementsAre("deleted /g/entry{word} value=1",
                          "deleted /g/entry{word}/sub{3}"));
}

TEST_F(StartChangesTest, EntriesWithOtherKeysAreRenamedWithThoseInThem) {
  EXPECT_THAT(Changes("<entry><id>07</id><value>1</value><sub><n>3</n></sub>"
                      "</entry>"),
              ElementsAre("/g/entry{07}/sub{3} -> /g/entry{7}/sub{3}",
                          "/g/entry{07} -> /g/entry{7} value=1"));
}

TEST_F(StartChangesTest, AKeyThatIsNoneAnyMoreIsALeaf) {
  EXPECT_THAT(Changes("<entry><id>1</id><pair><a>1</a><b>2</b></pair></entry>"),
              ElementsAre("/g/entry{1}/pair{1 2} -> /g/entry{1}/pair{1}",
                          "/g/entry{1}/pair{1} b - -> 2"));
}

TEST_F(StartChangesTest, AContainerThatBecomesAnEntryIsRenamed) {
  EXPECT_THAT(Changes("<container-to-list><name>5</name><size>7</size>"
                      "</container-to-list>"),
              ElementsAre("/g/container-to-list -> /g/container-to-list{5} "
                          "name=5 size=7",
                          "/g/container-to-list{5} name 5 -> -"));
}

TEST_F(StartChangesTest, TheLeavesOfAnEntryThatBecomesAContainerMove) {
  EXPECT_THAT(Changes("<list-to-container><name>5</name></list-to-container>"),
              ElementsAre("/g/list-to-container{5}/name -> / "
                          "g/list-to-container/name 5 -> 5"));
}

TEST_F(StartChangesTest, LeavesAreCountedByListOnEachSide) {
  Open(
      "<kept>1</kept><gone>7</gone><words>1</words><words>2</words>"
      "<lost-presence/><entry><id>1</id><value>1</value>"
      "<pair><a>1</a><b>2</b></pair></entry><entry><id>2</id></entry>");
  EXPECT_THAT(Counts(Side::kInput),
              ElementsAre("/ 1 4", "/g/entry 2 3", "/g/entry/pair 1 2"));
  EXPECT_THAT(Counts(Side::kResult),
              ElementsAre("/ 1 2", "/g/entry 2 3", "/g/entry/pair 1 2"));
  EXPECT_THAT(database_->CountLeaves(Side::kInput)[2].keys,
              ElementsAre("a", "b"));
  EXPECT_THAT(database_->CountLeaves(Side::kResult)[2].keys, ElementsAre("a"));
}

}  // namespace
}  // namespace kit::control
