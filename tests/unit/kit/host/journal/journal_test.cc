#include "kit/host/journal/journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kit::host {
namespace {

using testing::ElementsAre;

PassTotals Pass(uint32_t number, uint64_t calls) {
  PassTotals totals;
  totals.pass = number;
  totals.calls = calls;
  return totals;
}

TEST(JournalTest, KeepsRecordsAndCallsInTheirOrder) {
  Journal journal;
  journal.Add(LogRecord{0, 0, "a"});
  journal.Add(CallRecord{1, 0, "f", "", "", "", 0, 0, "", 5});
  journal.Add(LogRecord{1, 0, "b"});
  ASSERT_EQ(journal.events().size(), 3u);
  EXPECT_EQ(std::get<CallRecord>(journal.events()[1]).function, "f");
  EXPECT_THAT(journal.LogTexts(), ElementsAre("a", "b"));
}

TEST(JournalTest, AddsUpTheStretchesOfAPass) {
  Journal journal;
  PassTotals first = Pass(2, 3);
  first.functions = {{"f", 3, 1}};
  first.lists = {{"/a", 1, 0, 2, 3, 1}};
  first.failures = {{"f", "/a/b", 1, 1, 7, "/a{1}/b", "why"}};
  PassTotals second = Pass(2, 5);
  second.functions = {{"g", 1, 0}, {"f", 4, 2}};
  second.lists = {{"/b", 1, 0, 0, 0, 0}, {"/a", 1, 0, 1, 1, 1}};
  second.failures = {{"f", "/a/b", 1, 2, 9, "/a{2}/b", "why"},
                     {"f", "/a/b", 2, 1, 10, "/a{2}/b", "how"}};
  journal.Add(first);
  journal.Add(Pass(1, 1));
  journal.Add(second);
  ASSERT_EQ(journal.passes().size(), 2u);
  EXPECT_EQ(journal.passes()[0].pass, 1u);
  const PassTotals& pass = journal.passes()[1];
  EXPECT_EQ(pass.calls, 8u);
  ASSERT_EQ(pass.functions.size(), 2u);
  EXPECT_EQ(pass.functions[0].calls, 7u);
  EXPECT_EQ(pass.functions[0].failed, 3u);
  ASSERT_EQ(pass.lists.size(), 2u);
  EXPECT_EQ(pass.lists[0].created, 2u);
  EXPECT_EQ(pass.lists[0].changed, 3u);
  EXPECT_EQ(pass.lists[0].deleted, 4u);
  EXPECT_EQ(pass.lists[0].moved, 2u);
  ASSERT_EQ(pass.failures.size(), 2u);
  EXPECT_EQ(pass.failures[0].count, 3u);
  EXPECT_EQ(pass.failures[0].path, "/a{1}/b");
}

TEST(JournalTest, RekeyedEntriesAreNeitherCreatedNorDeleted) {
  Journal journal;
  PassTotals totals = Pass(3, 1);
  totals.lists = {{"/a", 5, 0, 0, 4, 0}};
  journal.Add(totals);
  journal.Add(RekeyedEntries{3, "/a", 4});
  const ListTotals& list = journal.passes()[0].lists[0];
  EXPECT_EQ(list.created, 1u);
  EXPECT_EQ(list.rekeyed, 4u);
  EXPECT_EQ(list.deleted, 0u);
}

TEST(JournalTest, MoreRekeyedEntriesThanWereCreatedAreNotBelieved) {
  Journal journal;
  PassTotals totals = Pass(3, 1);
  totals.lists = {{"/a", 2, 0, 0, 1, 0}};
  journal.Add(totals);
  journal.Add(RekeyedEntries{3, "/a", 9});
  const ListTotals& list = journal.passes()[0].lists[0];
  EXPECT_EQ(list.rekeyed, 2u);
  EXPECT_EQ(list.created, 0u);
  EXPECT_EQ(list.deleted, 0u);
}

}  // namespace
}  // namespace kit::host
