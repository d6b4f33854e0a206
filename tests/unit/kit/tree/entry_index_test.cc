#include "kit/confd/tree/entry_index.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace kit::store {
namespace {

// Entries are numbers here; the index never looks into them.
Node* NodeOf(uint64_t number) {
  return reinterpret_cast<Node*>((number + 1) * 16);
}
uint64_t NumberOf(const Node* node) {
  return reinterpret_cast<uintptr_t>(node) / 16 - 1;
}

// Whether the prefix holds the number whole, or only its upper part.
class EntryIndexTest : public testing::TestWithParam<bool> {
 protected:
  static KeyPrefix PrefixOf(uint64_t number) {
    return {GetParam() ? number : number / 50, 0};
  }
  EntryIndex::Position Search(uint64_t number) const {
    return index_.LowerBound(PrefixOf(number), [number](const Node& node) {
      const uint64_t own = NumberOf(&node);
      return own < number ? -1 : own > number ? 1 : 0;
    });
  }
  void Insert(uint64_t number) {
    index_.Insert(arena_, Search(number), PrefixOf(number), NodeOf(number));
    expected_.insert(number);
  }
  void Erase(uint64_t number) {
    index_.Erase(arena_, Search(number));
    expected_.erase(number);
  }
  void ExpectAll() const {
    ASSERT_EQ(index_.size(), expected_.size());
    auto position = index_.Begin();
    size_t rank = 0;
    for (const uint64_t number : expected_) {
      ASSERT_EQ(index_.At(position), NodeOf(number));
      ASSERT_EQ(index_.AtRank(rank++), NodeOf(number));
      position = index_.After(position);
    }
    EXPECT_EQ(index_.At(position), nullptr);
  }

  Arena arena_;
  EntryIndex index_;
  std::set<uint64_t> expected_;
};

TEST_P(EntryIndexTest, IsInOrderHoweverEntriesCome) {
  for (uint64_t i = 0; i < 1500; ++i) Insert(i * 2);
  ExpectAll();
  for (uint64_t i = 1500; i > 0; --i) Insert(i * 2 - 1);
  ExpectAll();
}

TEST_P(EntryIndexTest, FindsTheFirstThatDoesNotStandBefore) {
  EXPECT_EQ(index_.At(Search(5)), nullptr);
  for (uint64_t i = 0; i < 2000; ++i) Insert(i * 3);
  for (uint64_t number : {0u, 1u, 2999u, 3000u, 5996u, 5997u, 17u}) {
    EXPECT_EQ(index_.At(Search(number)), NodeOf((number + 2) / 3 * 3));
  }
  EXPECT_EQ(index_.At(Search(5998)), nullptr);
}

TEST_P(EntryIndexTest, AgreesWithASetThroughRandomChanges) {
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    for (int i = 0; i < 1000; ++i) {
      const uint64_t number = random() % 3000;
      if (expected_.count(number) == 0) {
        Insert(number);
      } else if (round >= 10 || random() % 2 == 0) {
        Erase(number);
      }
    }
    ExpectAll();
  }
}

// As an upgrade re-keys a list: from one end to a place in front of it.
TEST_P(EntryIndexTest, StaysWholeWhileEntriesMoveToTheFront) {
  for (uint64_t i = 0; i < 3000; ++i) Insert(10000 + i);
  for (uint64_t i = 0; i < 3000; ++i) {
    Erase(10000 + i);
    Insert(i);
  }
  ExpectAll();
  for (uint64_t i = 0; i < 3000; ++i) Erase(i);
  ExpectAll();
  Insert(1);
  ExpectAll();
}

TEST_P(EntryIndexTest, TellsByAWholePrefixWhetherTheEntryIsThere) {
  for (uint64_t number : {100u, 200u}) Insert(number);
  EXPECT_EQ(index_.At(Search(150)), NodeOf(200));
  EXPECT_EQ(index_.At(Search(150), PrefixOf(150)), nullptr);
  EXPECT_EQ(index_.At(Search(200), PrefixOf(200)), NodeOf(200));
  EXPECT_EQ(index_.At(Search(300), PrefixOf(300)), nullptr);
}

TEST_P(EntryIndexTest, HasTheEntryThatWasLastFoundUntilItGoes) {
  for (uint64_t number : {100u, 200u, 300u}) Insert(number);
  Search(200);
  EXPECT_EQ(index_.AtLast(PrefixOf(200)), NodeOf(200));
  EXPECT_EQ(index_.AtLast(PrefixOf(300)), nullptr);
  Erase(200);
  EXPECT_EQ(index_.AtLast(PrefixOf(200)), nullptr);
  Search(400);
  EXPECT_EQ(index_.AtLast(PrefixOf(400)), nullptr);
  Erase(100);
  Erase(300);
  EXPECT_EQ(index_.AtLast(PrefixOf(300)), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Prefixes, EntryIndexTest, testing::Bool());

}  // namespace
}  // namespace kit::store
