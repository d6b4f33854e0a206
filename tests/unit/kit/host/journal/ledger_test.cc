#include "kit/host/journal/ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kit::host {
namespace {

using testing::ElementsAre;
using What = control::Change::Kind;
using Leaves = std::vector<control::LeafChange>;

constexpr auto kNone = std::nullopt;

class LedgerTest : public testing::Test {
 protected:
  static ChangeRecord Record(uint32_t pass, What kind,
                             const std::string& path) {
    ChangeRecord change;
    change.pass = pass;
    change.kind = kind;
    change.list = "/l";
    change.path = path;
    return change;
  }
  static ChangeRecord Value(uint32_t pass, const std::string& path,
                            const std::string& leaf,
                            std::optional<std::string> before,
                            std::optional<std::string> after,
                            std::optional<std::string> by_default = {}) {
    ChangeRecord change = Record(pass, What::kValue, path);
    change.leaf = leaf;
    change.before = std::move(before);
    change.after = std::move(after);
    change.default_value = std::move(by_default);
    return change;
  }
  static ChangeRecord Entry(uint32_t pass, What kind, const std::string& path,
                            Leaves leaves) {
    ChangeRecord change = Record(pass, kind, path);
    change.leaves = std::move(leaves);
    return change;
  }
  static ChangeRecord Renamed(uint32_t pass, const std::string& old_path,
                              const std::string& path, Leaves leaves) {
    ChangeRecord change = Entry(pass, What::kRenamed, path, std::move(leaves));
    change.old_path = old_path;
    return change;
  }

  // The list /l has so many leaves before and after; its key is k.
  Ledger Take(uint64_t input, std::optional<uint64_t> result) {
    const std::vector<control::LeafCount> before = {{"/l", {"k"}, 1, input}};
    if (!result) return builder_.Take(before, nullptr);
    const std::vector<control::LeafCount> after = {{"/l", {"k"}, 1, *result}};
    return builder_.Take(before, &after);
  }

  // "dropped 3 by 2", "kept 4".
  static std::vector<std::string> Rows(const Ledger& ledger) {
    std::vector<std::string> lines;
    for (const LedgerRow& row : ledger.rows) {
      const char* const names[] = {"kept", "moved", "changed", "dropped"};
      std::string line = names[static_cast<size_t>(row.fate)];
      line += " " + std::to_string(row.leaves);
      if (row.by) {
        line += *row.by == kAutomaticUpgrade ? " by the automatic upgrade"
                                             : " by " + std::to_string(*row.by);
      }
      if (row.by_default > 0) {
        line += " default " + std::to_string(row.by_default);
      }
      lines.push_back(line);
    }
    return lines;
  }
  static std::vector<std::string> Told(const Ledger& ledger) {
    std::vector<std::string> lines;
    for (const LedgerLeaf& leaf : ledger.leaves) {
      lines.push_back(leaf.path + " " + leaf.before + " -> " +
                      leaf.after.value_or("-") + " " + leaf.new_path);
    }
    return lines;
  }

  LedgerBuilder builder_;
};

TEST_F(LedgerTest, WhatNobodyTouchesIsKept) {
  const Ledger ledger = Take(5, 5);
  EXPECT_THAT(Rows(ledger), ElementsAre("kept 5"));
  EXPECT_TRUE(ledger.balances);
  EXPECT_TRUE(ledger.is_whole);
}

TEST_F(LedgerTest, TheLastToChangeALeafHasChangedIt) {
  builder_.Add(Value(1, "/l{1}", "a", "1", "2"));
  builder_.Add(Value(2, "/l{1}", "a", "2", "3"));
  builder_.Add(Value(2, "/l{1}", "b", "1", "2"));
  builder_.Add(Value(3, "/l{1}", "b", "2", "1"));
  const Ledger ledger = Take(5, 5);
  EXPECT_THAT(Rows(ledger), ElementsAre("kept 4", "changed 1 by 2"));
  EXPECT_THAT(Told(ledger), ElementsAre("/l{1}/a 1 -> 3 "));
}

TEST_F(LedgerTest, ADeletedEntryDropsItsKeysToo) {
  builder_.Add(Entry(2, What::kDeleted, "/l{1}", {{"a", "7", kNone}}));
  const Ledger ledger = Take(5, 3);
  EXPECT_THAT(Rows(ledger), ElementsAre("kept 3", "dropped 2 by 2"));
  EXPECT_THAT(Told(ledger), ElementsAre("/l{1}/k 1 -> - ", "/l{1}/a 7 -> - "));
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, AnEntryUnderOtherKeysHasMovedWithItsKeys) {
  builder_.Add(Entry(3, What::kCreated, "/l{2}", {}));
  builder_.Add(Value(3, "/l{2}", "a", kNone, "7"));
  builder_.Add(Value(3, "/l{2}", "d", kNone, "7"));
  builder_.Add(Value(3, "/l{2}", "b", kNone, "9"));
  builder_.Add(Value(3, "/l{2}", "new", kNone, "1"));
  builder_.Add(Entry(3, What::kDeleted, "/l{1}",
                     {{"a", "7", kNone},
                      {"d", "7", kNone},
                      {"b", "8", kNone},
                      {"c", "3", kNone}}));
  const Ledger ledger = Take(9, 9);
  EXPECT_THAT(Rows(ledger), ElementsAre("kept 4", "moved 3 by 3",
                                        "changed 1 by 3", "dropped 1 by 3"));
  EXPECT_THAT(Told(ledger),
              ElementsAre("/l{1}/b 8 -> 9 /l{2}/b", "/l{1}/c 3 -> - "));
  EXPECT_EQ(ledger.added, 1u);
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, ARenamedEntryHasMovedWithAllThatNobodyTouched) {
  ChangeRecord nested = Value(1, "/l{1}/m{1}", "x", "1", "2");
  nested.list = "/l/m";
  builder_.Add(nested);
  builder_.Add(
      Renamed(1, "/l{1}", "/l{2}", {{"a", "7", "7"}, {"b", "8", "8"}}));
  builder_.Add(Value(2, "/l{2}", "b", "8", "9"));
  nested = Value(2, "/l{2}/m{1}", "x", "2", "3");
  nested.list = "/l/m";
  builder_.Add(nested);
  const std::vector<control::LeafCount> counts = {{"/l", {"k"}, 1, 4},
                                                  {"/l/m", {"k"}, 1, 2}};
  const Ledger ledger = builder_.Take(counts, &counts);
  EXPECT_THAT(Rows(ledger),
              ElementsAre("kept 1", "moved 3 by 1", "changed 2 by 2"));
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, ALeafThatFallsBackToADefaultIsNotDropped) {
  builder_.AddStart(Value(kAutomaticUpgrade, "/l{1}", "a", "1", kNone, "2"));
  builder_.AddStart(Value(kAutomaticUpgrade, "/l{1}", "b", "2", kNone, "2"));
  builder_.AddStart(Value(kAutomaticUpgrade, "/l{1}", "c", "3", kNone));
  const Ledger ledger = Take(6, 3);
  EXPECT_THAT(Rows(ledger),
              ElementsAre("kept 4 default 1",
                          "changed 1 by the automatic upgrade default 1",
                          "dropped 1 by the automatic upgrade"));
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, AKeyThatBecomesALeafHasMoved) {
  builder_.AddStart(Renamed(kAutomaticUpgrade, "/l{1 2}", "/l{1}", {}));
  builder_.AddStart(Value(kAutomaticUpgrade, "/l{1}", "b", kNone, "2"));
  const std::vector<control::LeafCount> before = {{"/l", {"a", "b"}, 1, 2}};
  const std::vector<control::LeafCount> after = {{"/l", {"a"}, 1, 2}};
  const Ledger ledger = builder_.Take(before, &after);
  EXPECT_THAT(Rows(ledger), ElementsAre("moved 2 by the automatic upgrade"));
  EXPECT_EQ(ledger.added, 0u);
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, AContainerThatBecomesAnEntryHasMoved) {
  builder_.AddStart(Renamed(kAutomaticUpgrade, "/l", "/l{5}",
                            {{"k", "5", "5"}, {"a", "7", "7"}}));
  builder_.AddStart(Value(kAutomaticUpgrade, "/l{5}", "k", "5", kNone));
  const std::vector<control::LeafCount> before = {{"/", {}, 1, 2}};
  const std::vector<control::LeafCount> after = {{"/l", {"k"}, 1, 2}};
  const Ledger ledger = builder_.Take(before, &after);
  EXPECT_THAT(Rows(ledger), ElementsAre("moved 2 by the automatic upgrade"));
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, ALeafOfAnEntryThatBecomesAContainerHasMoved) {
  ChangeRecord change = Value(kAutomaticUpgrade, "/", "l/k", "5", "5");
  change.list = "/";
  change.old_path = "/l{5}/k";
  builder_.AddStart(change);
  const std::vector<control::LeafCount> before = {{"/l", {"k"}, 1, 1}};
  const std::vector<control::LeafCount> after = {{"/", {}, 1, 1}};
  const Ledger ledger = builder_.Take(before, &after);
  EXPECT_THAT(Rows(ledger), ElementsAre("moved 1 by the automatic upgrade"));
  EXPECT_TRUE(ledger.balances);
}

TEST_F(LedgerTest, ADifferenceThatNobodyToldOfDoesNotBalance) {
  EXPECT_FALSE(Take(5, 4).balances);
}

TEST_F(LedgerTest, MoreChangesThanLeavesDoNotBalance) {
  builder_.Add(Entry(1, What::kDeleted, "/l{1}", {{"a", "7", kNone}}));
  EXPECT_FALSE(Take(1, 0).balances);
}

TEST_F(LedgerTest, WithoutAResultItIsNotWhole) {
  builder_.Add(Value(1, "/l{1}", "a", "1", "2"));
  const Ledger ledger = Take(5, kNone);
  EXPECT_FALSE(ledger.is_whole);
  EXPECT_EQ(ledger.result, kNone);
  EXPECT_THAT(Rows(ledger), ElementsAre("kept 4", "changed 1 by 1"));
}

}  // namespace
}  // namespace kit::host
