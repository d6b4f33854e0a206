#include "kit/host/protocol.h"

#include <gtest/gtest.h>

#include <cstring>

namespace kit::host {
namespace {

template <typename T>
T RoundTrip(const T& message) {
  MessageReader reader;
  reader.Append(Encode(message));
  auto read = reader.Next();
  EXPECT_FALSE(reader.Next().has_value());
  return std::get<T>(read.value());
}

std::string Frame(uint32_t length, const std::string& content) {
  std::string frame(sizeof(length), '\0');
  std::memcpy(frame.data(), &length, sizeof(length));
  return frame + content;
}

TEST(ProtocolTest, ScalarsComeThrough) {
  EXPECT_EQ(RoundTrip(PhaseMessage{Phase::kUpdating}).phase, Phase::kUpdating);
  EXPECT_EQ(RoundTrip(InputMessage{control::Format::kJson}).format,
            control::Format::kJson);
  const auto result = RoundTrip(ResultMessage{-1, 3});
  EXPECT_EQ(result.result, -1);
  EXPECT_EQ(result.open_cursors, 3U);
  RoundTrip(ValidatedMessage{});
  RoundTrip(DoneMessage{});
}

TEST(ProtocolTest, TextComesThroughByteForByte) {
  const std::string text("a\0\n\xff\x1b", 5);
  EXPECT_EQ(RoundTrip(LogMessage{text}).text, text);
  EXPECT_EQ(RoundTrip(CallMessage{text}).text, text);
  EXPECT_EQ(RoundTrip(LogMessage{""}).text, "");
}

TEST(ProtocolTest, ViolationsAndTotalsComeThrough) {
  const auto violation = RoundTrip(ViolationMessage{{12, "/a/b", "missing"}});
  EXPECT_EQ(violation.violation.error, 12);
  EXPECT_EQ(violation.violation.path, "/a/b");
  EXPECT_EQ(violation.violation.reason, "missing");

  const auto totals = RoundTrip(ListTotals{"/a/b", 1, 2, uint64_t{1} << 40});
  EXPECT_EQ(totals.list, "/a/b");
  EXPECT_EQ(totals.created, 1U);
  EXPECT_EQ(totals.changed, 2U);
  EXPECT_EQ(totals.deleted, uint64_t{1} << 40);
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

TEST(ProtocolTest, MessagesMayArriveInPieces) {
  const std::string bytes =
      Encode(LogMessage{"first"}) + Encode(LogMessage{"second"});
  MessageReader reader;
  std::string read;
  for (const char byte : bytes) {
    reader.Append(std::string_view(&byte, 1));
    while (auto message = reader.Next()) {
      read += std::get<LogMessage>(*message).text + ";";
    }
  }
  EXPECT_EQ(read, "first;second;");
}

TEST(ProtocolTest, CorruptedStreamsThrow) {
  const std::string rows[] = {
      Frame(0xffffffff, "x"),    // absurd length
      Frame(3, "abc"),           // no CBOR array
      Frame(0, ""),              // nothing
      Frame(1, "\x80"),          // empty array
      Frame(3, "\x81\x18\x63"),  // unknown kind 99
      Frame(2, "\x81\x02"),      // a log record without text
      Frame(3, "\x82\x02\x05"),  // a log record whose text is a number
  };
  for (const std::string& row : rows) {
    MessageReader reader;
    reader.Append(row);
    EXPECT_THROW(reader.Next(), ProtocolError) << (&row - rows);
  }
}

}  // namespace
}  // namespace kit::host
