#include "kit/host/process/protocol.h"

#include <gtest/gtest.h>

namespace kit::host {
namespace {

template <typename T>
T RoundTrip(const T& message) {
  return std::get<T>(Decode(Encode(message)));
}

std::string Number(uint64_t number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

TEST(ProtocolTest, ScalarsComeThrough) {
  EXPECT_EQ(RoundTrip(PhaseMessage{Phase::kUpdating}).phase, Phase::kUpdating);
  EXPECT_EQ(RoundTrip(InputMessage{control::Format::kJson}).format,
            control::Format::kJson);
  const auto result =
      RoundTrip(ResultMessage{-1, uint64_t{1} << 40, 3, 5, 4711});
  EXPECT_EQ(result.result, -1);
  EXPECT_EQ(result.calls, uint64_t{1} << 40);
  EXPECT_EQ(result.open_cursors, 3U);
  EXPECT_EQ(result.unreleased_values, 5U);
  EXPECT_EQ(result.finisher, 4711);
  RoundTrip(ValidatedMessage{});
  const Checksum written = {1, 2, uint64_t{1} << 40};
  EXPECT_EQ(RoundTrip(DoneMessage{written}).written, written);
}

TEST(ProtocolTest, TextComesThroughByteForByte) {
  const std::string text("a\0\n\xff\x1b", 5);
  EXPECT_EQ(RoundTrip(LogMessage{{1, 2, text}}).record.text, text);
  EXPECT_EQ(RoundTrip(LogMessage{{1, 2, ""}}).record.text, "");
}

TEST(ProtocolTest, ViolationsAndTotalsComeThrough) {
  const auto violation = RoundTrip(ViolationMessage{{12, "/a/b", "missing"}});
  EXPECT_EQ(violation.violation.error, 12);
  EXPECT_EQ(violation.violation.path, "/a/b");
  EXPECT_EQ(violation.violation.reason, "missing");

  const auto totals =
      RoundTrip(ListMessage{{"/a/b", 1, 5, 2, uint64_t{1} << 40, 6}}).totals;
  EXPECT_EQ(totals.list, "/a/b");
  EXPECT_EQ(totals.created, 1U);
  EXPECT_EQ(totals.rekeyed, 5U);
  EXPECT_EQ(totals.changed, 2U);
  EXPECT_EQ(totals.deleted, uint64_t{1} << 40);
  EXPECT_EQ(totals.moved, 6U);
}

TEST(ProtocolTest, PlacesComeThrough) {
  using State = control::Place::State;
  const auto record = RoundTrip(PlaceMessage{{PlaceRecord::When::kStart,
                                              3,
                                              {State::kNoEntry,
                                               "/l{1}/a",
                                               "/l",
                                               "/l{1}",
                                               "a",
                                               true,
                                               {{"a", "x", true}},
                                               "why",
                                               {"{2}", "{3}"}}}})
                          .record;
  EXPECT_EQ(record.when, PlaceRecord::When::kStart);
  EXPECT_EQ(record.number, 3U);
  EXPECT_EQ(record.place.state, State::kNoEntry);
  EXPECT_EQ(record.place.path, "/l{1}/a");
  EXPECT_EQ(record.place.list, "/l");
  EXPECT_EQ(record.place.entry, "/l{1}");
  EXPECT_EQ(record.place.leaf, "a");
  EXPECT_TRUE(record.place.is_leaf);
  ASSERT_EQ(record.place.leaves.size(), 1U);
  EXPECT_EQ(record.place.leaves[0].value, "x");
  EXPECT_TRUE(record.place.leaves[0].by_default);
  EXPECT_EQ(record.place.reason, "why");
  EXPECT_EQ(record.place.near, (std::vector<std::string>{"{2}", "{3}"}));
}

TEST(ProtocolTest, CallsComeThrough) {
  const auto call =
      RoundTrip(CallMessage{{7, 3, "f", "/p", "in", "out", -1, 13, "why", 99}})
          .call;
  EXPECT_EQ(call.number, 7U);
  EXPECT_EQ(call.pass, 3U);
  EXPECT_EQ(call.function, "f");
  EXPECT_EQ(call.path, "/p");
  EXPECT_EQ(call.input, "in");
  EXPECT_EQ(call.output, "out");
  EXPECT_EQ(call.result, -1);
  EXPECT_EQ(call.error, 13);
  EXPECT_EQ(call.reason, "why");
  EXPECT_EQ(call.nanoseconds, 99U);
}

TEST(ProtocolTest, ChangesKeepAbsentAndEmptyValuesApart) {
  using Kind = control::Change::Kind;
  const auto change = RoundTrip(ChangeMessage{{7,
                                               3,
                                               Kind::kValue,
                                               "/l",
                                               "/l{1}",
                                               "/l{2}",
                                               "leaf",
                                               std::nullopt,
                                               "",
                                               {{"x", "1", {}}}}})
                          .change;
  EXPECT_EQ(change.call, 7U);
  EXPECT_EQ(change.pass, 3U);
  EXPECT_EQ(change.kind, Kind::kValue);
  EXPECT_EQ(change.list, "/l");
  EXPECT_EQ(change.path, "/l{1}");
  EXPECT_EQ(change.old_path, "/l{2}");
  EXPECT_EQ(change.leaf, "leaf");
  EXPECT_EQ(change.before, std::nullopt);
  EXPECT_EQ(change.after, "");
  ASSERT_EQ(change.leaves.size(), 1U);
  EXPECT_EQ(change.leaves[0].before, "1");
}

TEST(ProtocolTest, TheTotalsOfAPassComeThrough) {
  PassTotals sent;
  sent.pass = 4;
  sent.calls = 9;
  sent.functions = {{"f", 5, 1}, {"g", 4, 0}};
  sent.lists = {{"/a", 1, 2, 3, 4, 5}};
  sent.failures = {{"f", "/a/b", 1, 2, 3, "/a{1}/b", "why"}};
  const auto totals = RoundTrip(PassMessage{sent}).totals;
  EXPECT_EQ(totals.pass, 4U);
  EXPECT_EQ(totals.calls, 9U);
  ASSERT_EQ(totals.functions.size(), 2U);
  EXPECT_EQ(totals.functions[0].failed, 1U);
  EXPECT_EQ(totals.functions[1].function, "g");
  ASSERT_EQ(totals.lists.size(), 1U);
  EXPECT_EQ(totals.lists[0].changed, 3U);
  ASSERT_EQ(totals.failures.size(), 1U);
  EXPECT_EQ(totals.failures[0].node, "/a/b");
  EXPECT_EQ(totals.failures[0].path, "/a{1}/b");
  EXPECT_EQ(totals.failures[0].number, 3U);
  const auto rekeyed = RoundTrip(RekeyedMessage{{3, "/a", 8}}).entries;
  EXPECT_EQ(rekeyed.pass, 3U);
  EXPECT_EQ(rekeyed.list, "/a");
  EXPECT_EQ(rekeyed.count, 8U);
}

TEST(ProtocolTest, EntriesKeepAbsentAndEmptyLeavesApart) {
  const auto entry =
      RoundTrip(EntryMessage{{control::ChangeKind::kChanged,
                              "/a/b",
                              "/a/b{1}",
                              {{"c", std::nullopt, ""}, {"d", "x", "y"}}}})
          .entry;
  EXPECT_EQ(entry.kind, control::ChangeKind::kChanged);
  EXPECT_EQ(entry.list, "/a/b");
  EXPECT_EQ(entry.path, "/a/b{1}");
  ASSERT_EQ(entry.leaves.size(), 2U);
  EXPECT_EQ(entry.leaves[0].leaf, "c");
  EXPECT_EQ(entry.leaves[0].before, std::nullopt);
  EXPECT_EQ(entry.leaves[0].after, "");
  EXPECT_EQ(entry.leaves[1].before, "x");
  EXPECT_EQ(entry.leaves[1].after, "y");
}

TEST(ProtocolTest, FindingsComeThrough) {
  const Finding sent{"S-1",      Severity::kStop, "message", 7,
                     "7 places", {"/a", "/b"},    "advice",  "section"};
  const Finding finding = RoundTrip(FindingMessage{sent}).finding;
  EXPECT_EQ(finding.rule, "S-1");
  EXPECT_EQ(finding.severity, Severity::kStop);
  EXPECT_EQ(finding.message, "message");
  EXPECT_EQ(finding.count, 7U);
  EXPECT_EQ(finding.unit, "7 places");
  EXPECT_EQ(finding.places, sent.places);
  EXPECT_EQ(finding.advice, "advice");
  EXPECT_EQ(finding.section, "section");
  EXPECT_EQ(RoundTrip(DeviceMessage{"r1"}).name, "r1");
  EXPECT_EQ(RoundTrip(SecretsMessage{{"a", ""}}).values,
            (std::vector<std::string>{"a", ""}));
}

TEST(ProtocolTest, FailuresComeThrough) {
  const auto failure = RoundTrip(FailureMessage{{ExitCode::kBadInput,
                                                 "reason",
                                                 "advice",
                                                 "file",
                                                 7,
                                                 "/path",
                                                 {"one", "two"}}})
                           .failure;
  EXPECT_EQ(failure.code, ExitCode::kBadInput);
  EXPECT_EQ(failure.reason, "reason");
  EXPECT_EQ(failure.advice, "advice");
  EXPECT_EQ(failure.file, "file");
  EXPECT_EQ(failure.line, 7U);
  EXPECT_EQ(failure.path, "/path");
  EXPECT_EQ(failure.details, (std::vector<std::string>{"one", "two"}));
}

TEST(ProtocolTest, BytesThatAreNoMessageThrow) {
  constexpr uint64_t kPhase = 0;
  constexpr uint64_t kLog = 2;
  constexpr uint64_t kEntry = 9;
  const std::string rows[] = {
      "",                                 // nothing
      "trace",                            // no number
      Number(99),                         // an unknown kind
      Number(kLog),                       // no text
      Number(kLog) + Number(5) + "four",  // a text that ends too early
      Number(kLog) + Number(3) + "four",  // more than the message
      Number(kLog) + Number(UINT64_MAX),  // an absurd length
      Number(kPhase) + Number(99),        // an unknown phase
      Number(kPhase) + Number(UINT64_MAX),
      // An absurd number of leaves.
      Number(kEntry) + Number(0) + Number(0) + Number(0) + Number(UINT64_MAX),
  };
  for (const std::string& row : rows) {
    EXPECT_THROW(Decode(row), ProtocolError) << (&row - rows);
  }
}

}  // namespace
}  // namespace kit::host
