#include "kit/host/process/change_counter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace kit::host {
namespace {

using Kind = control::Change::Kind;

class FakeChange : public control::Change {
 public:
  FakeChange(Kind what, uint64_t list_number, uint64_t entry_number)
      : Change(what, list_number, entry_number) {}
  std::string List() const override { return "/l" + std::to_string(list); }
  std::string Path() const override { return ""; }
  std::string OldPath() const override { return ""; }
  std::string Leaf() const override { return ""; }
  std::optional<std::string> Before() const override { return {}; }
  std::optional<std::string> After() const override { return {}; }
  std::vector<control::LeafChange> Leaves() const override { return {}; }
  std::optional<std::string> Default() const override { return {}; }
};

class ChangeCounterTest : public testing::Test {
 protected:
  void Add(Kind kind, uint64_t entry, uint64_t list = 1) {
    counter_.Add(FakeChange(kind, list, entry));
  }
  // "/l1 +1 ~0 -0" for each list.
  std::string Take(uint32_t next_pass) {
    std::string text;
    for (const ListTotals& totals : counter_.Take(next_pass)) {
      if (!text.empty()) text += "; ";
      text += totals.list + " +" + std::to_string(totals.created) + " ~" +
              std::to_string(totals.changed) + " -" +
              std::to_string(totals.deleted);
    }
    return text;
  }

  ChangeCounter counter_;
};

TEST_F(ChangeCounterTest, AnEntryIsCountedOnceHoweverManyValuesChange) {
  for (const uint64_t entry : {1, 1, 2, 1, 2}) Add(Kind::kValue, entry);
  EXPECT_EQ(Take(1), "/l1 +0 ~2 -0");
}

TEST_F(ChangeCounterTest, TheValuesOfANewEntryAreNoChanges) {
  Add(Kind::kCreated, 1);
  Add(Kind::kValue, 1);
  Add(Kind::kValue, 2);
  Add(Kind::kValue, 1);
  EXPECT_EQ(Take(1), "/l1 +1 ~1 -0");
}

TEST_F(ChangeCounterTest, AnEntryOfAnEarlierPassIsChangedInThisOne) {
  Take(1);
  Add(Kind::kCreated, 1);
  EXPECT_EQ(Take(2), "/l1 +1 ~0 -0");
  Add(Kind::kValue, 1);
  EXPECT_EQ(Take(3), "/l1 +0 ~1 -0");
  EXPECT_EQ(counter_.CreatorOf(1), 1u);
}

TEST_F(ChangeCounterTest, WhatComesAndGoesInOnePassIsNotCounted) {
  Add(Kind::kCreated, 1);
  Add(Kind::kDeleted, 1);
  EXPECT_EQ(Take(1), "");
  Add(Kind::kCreated, 1);
  Take(2);
  Add(Kind::kDeleted, 1);
  EXPECT_EQ(Take(3), "/l1 +0 ~0 -1");
}

TEST_F(ChangeCounterTest, ADeletedEntryIsNotAChangedOneToo) {
  Add(Kind::kValue, 1);
  Add(Kind::kDeleted, 1);
  EXPECT_EQ(Take(1), "/l1 +0 ~0 -1");
}

TEST_F(ChangeCounterTest, ANewEntryMayHaveTheNumberOfADeletedOne) {
  Add(Kind::kValue, 1);
  Add(Kind::kDeleted, 1);
  Add(Kind::kCreated, 1);
  Add(Kind::kValue, 1);
  EXPECT_EQ(Take(1), "/l1 +1 ~0 -1");
  Add(Kind::kValue, 1);
  EXPECT_EQ(Take(2), "/l1 +0 ~1 -0");
}

TEST_F(ChangeCounterTest, ListsAreInTheOrderOfTheirFirstChange) {
  Add(Kind::kDeleted, 1, 2);
  Add(Kind::kCreated, 2, 1);
  EXPECT_EQ(Take(1), "/l2 +0 ~0 -1; /l1 +1 ~0 -0");
  Add(Kind::kDeleted, 1, 3);
  EXPECT_EQ(Take(2), "/l3 +0 ~0 -1");
}

}  // namespace
}  // namespace kit::host
