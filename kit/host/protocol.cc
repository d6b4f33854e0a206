#include "kit/host/protocol.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace kit::host {
namespace {

using Json = nlohmann::json;

using FrameLength = uint32_t;
// More than any message needs; a larger length means a corrupted stream.
constexpr FrameLength kMaxFrame = 1U << 30;

// How each message is written to and read from a JSON array; the array's first
// element is the message's index in the variant.
void Write(Json& out, const PhaseMessage& m) {
  out.push_back(static_cast<uint32_t>(m.phase));
}
void Read(const Json& in, PhaseMessage& m) {
  m.phase = static_cast<Phase>(in.at(1).get<uint32_t>());
}

void Write(Json& out, const InputMessage& m) {
  out.push_back(static_cast<int>(m.format));
}
void Read(const Json& in, InputMessage& m) {
  m.format = static_cast<control::Format>(in.at(1).get<int>());
}

void Write(Json& out, const LogMessage& m) { out.push_back(m.text); }
void Read(const Json& in, LogMessage& m) { in.at(1).get_to(m.text); }

void Write(Json& out, const CallMessage& m) { out.push_back(m.text); }
void Read(const Json& in, CallMessage& m) { in.at(1).get_to(m.text); }

void Write(Json& out, const ResultMessage& m) {
  out.push_back(m.result);
  out.push_back(m.open_cursors);
}
void Read(const Json& in, ResultMessage& m) {
  in.at(1).get_to(m.result);
  in.at(2).get_to(m.open_cursors);
}

void Write(Json& out, const LossMessage& m) {
  out.push_back(m.loss.path);
  out.push_back(m.loss.value);
  out.push_back(m.loss.reason);
}
void Read(const Json& in, LossMessage& m) {
  in.at(1).get_to(m.loss.path);
  in.at(2).get_to(m.loss.value);
  in.at(3).get_to(m.loss.reason);
}

void Write(Json& out, const ViolationMessage& m) {
  out.push_back(m.violation.error);
  out.push_back(m.violation.path);
  out.push_back(m.violation.reason);
}
void Read(const Json& in, ViolationMessage& m) {
  in.at(1).get_to(m.violation.error);
  in.at(2).get_to(m.violation.path);
  in.at(3).get_to(m.violation.reason);
}

void Write(Json&, const ValidatedMessage&) {}
void Read(const Json&, ValidatedMessage&) {}

void Write(Json& out, const ListTotals& m) {
  out.push_back(m.list);
  out.push_back(m.created);
  out.push_back(m.changed);
  out.push_back(m.deleted);
}
void Read(const Json& in, ListTotals& m) {
  in.at(1).get_to(m.list);
  in.at(2).get_to(m.created);
  in.at(3).get_to(m.changed);
  in.at(4).get_to(m.deleted);
}

Json FromOptional(const std::optional<std::string>& text) {
  return text ? Json(*text) : Json();
}
std::optional<std::string> ToOptional(const Json& json) {
  if (json.is_null()) return std::nullopt;
  return json.get<std::string>();
}

void Write(Json& out, const EntryMessage& m) {
  out.push_back(static_cast<int>(m.entry.kind));
  out.push_back(m.entry.list);
  out.push_back(m.entry.path);
  Json leaves = Json::array();
  for (const control::LeafChange& leaf : m.entry.leaves) {
    Json row = Json::array();
    row.push_back(leaf.leaf);
    row.push_back(FromOptional(leaf.before));
    row.push_back(FromOptional(leaf.after));
    leaves.push_back(std::move(row));
  }
  out.push_back(std::move(leaves));
}
void Read(const Json& in, EntryMessage& m) {
  m.entry.kind = static_cast<control::ChangeKind>(in.at(1).get<int>());
  in.at(2).get_to(m.entry.list);
  in.at(3).get_to(m.entry.path);
  for (const Json& row : in.at(4)) {
    m.entry.leaves.push_back({row.at(0).get<std::string>(),
                              ToOptional(row.at(1)), ToOptional(row.at(2))});
  }
}

void Write(Json& out, const FailureMessage& m) {
  out.push_back(static_cast<int>(m.failure.code));
  out.push_back(m.failure.reason);
  out.push_back(m.failure.advice);
  out.push_back(m.failure.file);
  out.push_back(m.failure.line);
  out.push_back(m.failure.path);
  out.push_back(m.failure.details);
}
void Read(const Json& in, FailureMessage& m) {
  m.failure.code = static_cast<ExitCode>(in.at(1).get<int>());
  in.at(2).get_to(m.failure.reason);
  in.at(3).get_to(m.failure.advice);
  in.at(4).get_to(m.failure.file);
  in.at(5).get_to(m.failure.line);
  in.at(6).get_to(m.failure.path);
  in.at(7).get_to(m.failure.details);
}

void Write(Json&, const DoneMessage&) {}
void Read(const Json&, DoneMessage&) {}

template <size_t kIndex = 0>
Message DecodeAs(size_t index, const Json& json) {
  if constexpr (kIndex == std::variant_size_v<Message>) {
    throw ProtocolError("a message of an unknown kind");
  } else {
    if (index != kIndex) return DecodeAs<kIndex + 1>(index, json);
    std::variant_alternative_t<kIndex, Message> message{};
    Read(json, message);
    return message;
  }
}

Message Decode(std::string_view cbor) {
  try {
    const Json json = Json::from_cbor(cbor.begin(), cbor.end());
    return DecodeAs(json.at(0).get<size_t>(), json);
  } catch (const Json::exception& error) {
    throw ProtocolError(error.what());
  }
}

}  // namespace

std::string Encode(const Message& message) {
  Json json = Json::array();
  json.push_back(message.index());
  std::visit([&json](const auto& m) { Write(json, m); }, message);
  std::string frame(sizeof(FrameLength), '\0');
  Json::to_cbor(json, frame);
  const auto length =
      static_cast<FrameLength>(frame.size() - sizeof(FrameLength));
  std::memcpy(frame.data(), &length, sizeof(length));
  return frame;
}

std::optional<Message> MessageReader::Next() {
  const size_t available = buffer_.size() - start_;
  FrameLength length = 0;
  if (available >= sizeof(length)) {
    std::memcpy(&length, buffer_.data() + start_, sizeof(length));
    if (length > kMaxFrame) throw ProtocolError("a message of absurd length");
  }
  if (available < sizeof(length) || available - sizeof(length) < length) {
    buffer_.erase(0, start_);
    start_ = 0;
    return std::nullopt;
  }
  const std::string_view frame(buffer_.data() + start_ + sizeof(length),
                               length);
  start_ += sizeof(length) + length;
  return Decode(frame);
}

}  // namespace kit::host
