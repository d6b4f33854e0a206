#include "kit/host/moves.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kit::host {
namespace {

using control::ChangeKind;
using control::EntryChange;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

TEST(KeysOfTest, AreThoseOfTheLastEntry) {
  EXPECT_THAT(KeysOf("/a/b{1 10.0.0.1}"), ElementsAre("1", "10.0.0.1"));
  EXPECT_THAT(KeysOf("/a{1}/b{2}"), ElementsAre("2"));
  EXPECT_THAT(KeysOf(R"(/a{"x {y} \" z" 2})"),
              ElementsAre(R"("x {y} \" z")", "2"));
  EXPECT_THAT(KeysOf("/a{1}/b"), IsEmpty());
  EXPECT_THAT(KeysOf("/"), IsEmpty());
  EXPECT_THAT(KeysOf("/a{\"\"}"), ElementsAre("\"\""));
}

class MoveFinderTest : public testing::Test {
 protected:
  // Leaves a, b, c, ... with these values; '-' for one that is not set.
  void Add(ChangeKind kind, const std::string& keys, const std::string& leaves,
           uint64_t id) {
    EntryChange entry{kind, "/list", "/list{" + keys + "}", {}};
    for (size_t i = 0; i < leaves.size(); ++i) {
      if (leaves[i] == '-') continue;
      control::LeafChange leaf{
          std::string(1, static_cast<char>('a' + i)), {}, {}};
      (kind == ChangeKind::kCreated ? leaf.after : leaf.before) =
          std::string(1, leaves[i]);
      entry.leaves.push_back(leaf);
    }
    finder_.Add(entry, id);
  }
  void Created(const std::string& keys, const std::string& leaves,
               uint64_t id) {
    Add(ChangeKind::kCreated, keys, leaves, id);
  }
  void Deleted(const std::string& keys, const std::string& leaves,
               uint64_t id) {
    Add(ChangeKind::kDeleted, keys, leaves, id);
  }

  MoveFinder finder_;
};

TEST_F(MoveFinderTest, AnEntryWithOneOtherKeyIsThatEntry) {
  Created("1 x", "123", 1);
  Created("1 y", "123", 2);
  Deleted("7 x", "123", 3);
  Deleted("7 y", "129", 4);
  EXPECT_THAT(finder_.Pairs(), UnorderedElementsAre(Pair(3, 1), Pair(4, 2)));
}

TEST_F(MoveFinderTest, TheFirstKeyIsLookedAtFirst) {
  Created("1 x", "12", 1);
  Deleted("1 y", "12", 2);
  Deleted("7 x", "12", 3);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(3, 1)));
}

TEST_F(MoveFinderTest, TheMostAlikeIsTaken) {
  Created("1 x", "1234", 1);
  Deleted("7 x", "1299", 2);
  Deleted("8 x", "1239", 3);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(3, 1)));
}

TEST_F(MoveFinderTest, OneThatHasLittleInCommonIsAnother) {
  Created("1 x", "1999", 1);
  Deleted("7 x", "1234", 2);
  EXPECT_THAT(finder_.Pairs(), IsEmpty());
}

TEST_F(MoveFinderTest, LeavesThatCameInBetweenDoNotHinder) {
  Created("1 x", "1n2n34", 1);
  Deleted("7 x", "1-2-34", 2);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(2, 1)));
}

TEST_F(MoveFinderTest, EntriesWithOneKeyAreKnownByTheirContent) {
  Created("1", "56", 1);
  Created("2", "78", 2);
  Deleted("8", "78", 3);
  Deleted("9", "56", 4);
  EXPECT_THAT(finder_.Pairs(), UnorderedElementsAre(Pair(4, 1), Pair(3, 2)));
}

TEST_F(MoveFinderTest, WhatIsLeftIsTakenInItsOrder) {
  Created("1", "123", 1);
  Created("2", "456", 2);
  Deleted("8", "129", 3);
  Deleted("9", "459", 4);
  EXPECT_THAT(finder_.Pairs(), UnorderedElementsAre(Pair(3, 1), Pair(4, 2)));
}

TEST_F(MoveFinderTest, LeavesThatRepeatTheFirstKeyFollowIt) {
  Created("1", "1234", 1);
  Deleted("7", "7", 2);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(2, 1)));
}

TEST_F(MoveFinderTest, ALeafThatHappensToRepeatTheFirstKeyIsCompared) {
  Created("1 x", "7", 1);
  Deleted("7 x", "7", 2);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(2, 1)));
}

TEST_F(MoveFinderTest, LeavesOfDifferentNamesThatRepeatTheKeyAreNotTheSame) {
  Created("1", "-134", 1);
  Deleted("7", "7", 2);
  EXPECT_THAT(finder_.Pairs(), IsEmpty());
}

TEST_F(MoveFinderTest, EntriesOfKeysAloneMoveWithOneOtherKeyOnly) {
  Created("1 x", "", 1);
  Created("3 z", "", 2);
  Deleted("2 x", "", 3);
  Deleted("4 y", "", 4);
  EXPECT_THAT(finder_.Pairs(), ElementsAre(Pair(3, 1)));
}

TEST_F(MoveFinderTest, OneSideAloneHasNoPairs) {
  Created("1 x", "12", 1);
  EXPECT_THAT(finder_.Pairs(), IsEmpty());
}

}  // namespace
}  // namespace kit::host
