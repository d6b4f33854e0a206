// What an observer is told of the changes that calls make.
#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::control {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* Name(Change::Kind kind) {
  switch (kind) {
    case Change::Kind::kCreated:
      return "created";
    case Change::Kind::kDeleted:
      return "deleted";
    case Change::Kind::kRenamed:
      return "renamed";
    case Change::Kind::kMoved:
      return "moved";
    case Change::Kind::kValue:
      return "value";
  }
  return "?";
}

class ChangeTest : public testing::Test, public Observer {
 protected:
  void Open(const std::string& text) {
    const std::string models =
        std::string(TEST_SOURCE_ROOT) + "/tests/models/zoo";
    database_.emplace(Database::Open({models, {}}, {models, {}}, text, "zoo"));
    SetObserver(this);
    handles_ = database_->Attach();
  }
  void TearDown() override { SetObserver(nullptr); }

  void OnCall(const Call&) override {}
  bool WantsChanges() const override { return wants_changes_; }
  void OnChange(const Change& change) override {
    std::string line = std::string(Name(change.kind)) + " " + change.Path();
    if (change.kind == Change::Kind::kRenamed) line += " " + change.OldPath();
    if (change.kind == Change::Kind::kValue) {
      line += " " + change.Leaf() + " " + change.Before().value_or("(none)") +
              " -> " + change.After().value_or("(none)");
    }
    for (const LeafChange& leaf : change.Leaves()) {
      line += " " + leaf.leaf + "=" + leaf.before.value_or("") +
              leaf.after.value_or("");
    }
    lines_.push_back(line);
    lists_.push_back(change.List());
    entries_.push_back(change.entry);
  }

  int Set(const char* path, const char* text) {
    return maapi_set_elem2(handles_.maapi_sock, handles_.thandle, text, "%s",
                           path);
  }
  int Create(const char* path) {
    return maapi_create(handles_.maapi_sock, handles_.thandle, "%s", path);
  }
  int Delete(const char* path) {
    return maapi_delete(handles_.maapi_sock, handles_.thandle, "%s", path);
  }
  std::vector<std::string> Told() { return std::exchange(lines_, {}); }

  bool wants_changes_ = true;
  std::optional<Database> database_;
  Handles handles_{};
  std::vector<std::string> lines_;
  std::vector<std::string> lists_;
  std::vector<uint64_t> entries_;
};

constexpr char kObject[] =
    R"({"zoo:object": [{"id": 1, "name": "a", "box": {"width": 2},
                        "part": [{"n": 3}, {"n": 4, "note": "b"}]}]})";

TEST_F(ChangeTest, AValueIsToldWithWhatWasThere) {
  Open("{}");
  ASSERT_EQ(Set("/values/i32", "5"), CONFD_OK) << confd_lasterr();
  ASSERT_EQ(Set("/values/i32", "6"), CONFD_OK);
  EXPECT_EQ(lists_.back(), "/");
  ASSERT_EQ(Delete("/values/i32"), CONFD_OK);
  EXPECT_THAT(Told(), ElementsAre("value / values/i32 (none) -> 5",
                                  "value / values/i32 5 -> 6",
                                  "value / values/i32 6 -> (none)"));
}

TEST_F(ChangeTest, WritingWhatIsThereIsNoChange) {
  Open("{}");
  ASSERT_EQ(Set("/values/i32", "5"), CONFD_OK);
  Told();
  ASSERT_EQ(Set("/values/i32", "5"), CONFD_OK);
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(ChangeTest, AnEntryIsToldWithTheEntriesInItButNotItsValues) {
  Open(kObject);
  ASSERT_EQ(Delete("/object{1}"), CONFD_OK);
  EXPECT_THAT(Told(), ElementsAre("deleted /object{1} name=a box/width=2",
                                  "deleted /object{1}/part{3}",
                                  "deleted /object{1}/part{4} note=b"));
  EXPECT_EQ(lists_[0], "/object");
  EXPECT_EQ(lists_[2], "/object/part");
  ASSERT_EQ(Create("/object{2}"), CONFD_OK);
  EXPECT_THAT(Told(), ElementsAre("created /object{2}"));
}

TEST_F(ChangeTest, APresenceContainerIsAValueOfItsEntry) {
  Open(kObject);
  ASSERT_EQ(Create("/object{1}/extra"), CONFD_OK);
  ASSERT_EQ(Delete("/object{1}/extra"), CONFD_OK);
  EXPECT_THAT(Told(), ElementsAre("value /object{1} extra (none) -> ",
                                  "value /object{1} extra  -> (none)"));
}

TEST_F(ChangeTest, AnEntryThatMovesOrGetsOtherKeysIsTold) {
  Open(R"({"zoo:lists": {"queue": [{"n": 1}, {"n": 2}]}})");
  ASSERT_EQ(maapi_move_ordered(handles_.maapi_sock, handles_.thandle,
                               MAAPI_MOVE_FIRST, nullptr, 0, "/lists/queue{2}"),
            CONFD_OK);
  confd_value_t key;
  CONFD_SET_UINT8(&key, 9);
  ASSERT_EQ(maapi_move(handles_.maapi_sock, handles_.thandle, &key, 1,
                       "/lists/queue{1}"),
            CONFD_OK)
      << confd_lasterr();
  EXPECT_THAT(Told(), ElementsAre("moved /lists/queue{2}",
                                  "renamed /lists/queue{9} /lists/queue{1}"));
}

TEST_F(ChangeTest, WhatAnotherCaseOfAChoiceTakesAwayIsTold) {
  Open(R"({"zoo:pick": {"pauses": {"length": 5}, "stop": [{"n": 1}]}})");
  ASSERT_EQ(Set("/pick/speed", "7"), CONFD_OK) << confd_lasterr();
  EXPECT_THAT(Told(),
              testing::UnorderedElementsAre(
                  "value / pick/pauses/length 5 -> (none)",
                  "deleted /pick/stop{1}", "value / pick/speed (none) -> 7"));
}

TEST_F(ChangeTest, AnEntryHasOneNumberThatItsDifferenceHasToo) {
  Open(kObject);
  ASSERT_EQ(Set("/object{1}/part{3}/note", "x"), CONFD_OK) << confd_lasterr();
  const uint64_t told = entries_.back();
  std::vector<uint64_t> seen;
  database_->Diff(
      [&](const EntryChange& change) { seen.push_back(change.entry); });
  EXPECT_THAT(seen, ElementsAre(told));
}

TEST_F(ChangeTest, AnObserverThatWantsNoneIsToldNone) {
  wants_changes_ = false;
  Open(kObject);
  ASSERT_EQ(Delete("/object{1}"), CONFD_OK);
  EXPECT_THAT(Told(), IsEmpty());
}

}  // namespace
}  // namespace kit::control
