#include "kit/host/process/protocol.h"

#include <cstring>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace kit::host {
namespace {

auto Fields(PhaseMessage& m) { return std::tie(m.phase); }
auto Fields(InputMessage& m) { return std::tie(m.format); }
auto Fields(DigestMessage& m) {
  return std::tie(m.digest.sha256, m.digest.bytes);
}
auto Fields(LogMessage& m) {
  return std::tie(m.record.call, m.record.pass, m.record.text);
}
auto Fields(CallMessage& m) { return std::tie(m.call); }
auto Fields(PassMessage& m) {
  return std::tie(m.totals.pass, m.totals.calls, m.totals.functions,
                  m.totals.lists, m.totals.failures, m.totals.last_failure);
}
auto Fields(ResultMessage& m) {
  return std::tie(m.result, m.calls, m.open_cursors, m.unreleased_values,
                  m.finisher);
}
auto Fields(LossMessage& m) {
  return std::tie(m.loss.path, m.loss.value, m.loss.reason);
}
auto Fields(ViolationMessage& m) {
  return std::tie(m.violation.error, m.violation.path, m.violation.reason);
}
auto Fields(ValidatedMessage&) { return std::tie(); }
auto Fields(SchemasMessage& m) { return std::tie(m.effect, m.number); }
auto Fields(ListMessage& m) { return std::tie(m.totals); }
auto Fields(RekeyedMessage& m) {
  return std::tie(m.entries.pass, m.entries.list, m.entries.count);
}
auto Fields(EntryMessage& m) {
  return std::tie(m.entry.kind, m.entry.list, m.entry.path, m.entry.leaves);
}
auto Fields(CarriedMessage& m) {
  return std::tie(m.module.name, m.module.leaves);
}
auto Fields(PlaceMessage& m) {
  control::Place& p = m.record.place;
  return std::tie(m.record.when, m.record.number, p.state, p.path, p.list,
                  p.entry, p.leaf, p.is_leaf, p.leaves, p.reason, p.near);
}
auto Fields(control::Place::Leaf& leaf) {
  return std::tie(leaf.name, leaf.value, leaf.by_default);
}
auto Fields(FailureMessage& m) {
  return std::tie(m.failure.code, m.failure.reason, m.failure.advice,
                  m.failure.file, m.failure.line, m.failure.path,
                  m.failure.details);
}
auto Fields(DoneMessage& m) {
  return std::tie(m.written.bytes, m.written.sum, m.written.sum_of_sums);
}
auto Fields(ChangeRecord& c) {
  return std::tie(c.call, c.pass, c.kind, c.list, c.path, c.old_path, c.leaf,
                  c.before, c.after, c.leaves, c.default_value);
}
auto Fields(ChangeMessage& m) { return Fields(m.change); }
auto Fields(StartChangeMessage& m) { return Fields(m.change); }
auto Fields(LeafCountsMessage& m) { return std::tie(m.side, m.counts); }
auto Fields(control::LeafCount& count) {
  return std::tie(count.list, count.keys, count.entries, count.leaves);
}
auto Fields(DeviceMessage& m) { return std::tie(m.name); }
auto Fields(SecretsMessage& m) { return std::tie(m.values); }
auto Fields(FindingMessage& m) {
  Finding& f = m.finding;
  return std::tie(f.rule, f.severity, f.message, f.count, f.unit, f.places,
                  f.advice, f.section);
}
auto Fields(control::LeafChange& leaf) {
  return std::tie(leaf.leaf, leaf.before, leaf.after, leaf.default_value);
}
auto Fields(CallRecord& call) {
  return std::tie(call.number, call.pass, call.function, call.path, call.input,
                  call.output, call.result, call.error, call.reason,
                  call.nanoseconds);
}
auto Fields(FunctionTotals& totals) {
  return std::tie(totals.function, totals.calls, totals.failed);
}
auto Fields(ListTotals& totals) {
  return std::tie(totals.list, totals.created, totals.rekeyed, totals.changed,
                  totals.deleted, totals.moved);
}
auto Fields(FailedCalls& calls) {
  return std::tie(calls.function, calls.node, calls.error, calls.count,
                  calls.number, calls.path, calls.reason);
}

class Writer {
 public:
  explicit Writer(std::string& out) : out_(out) {}

  template <typename T>
  std::enable_if_t<!std::is_class_v<T>> Put(const T& number) {
    const auto wide = static_cast<uint64_t>(number);
    char bytes[sizeof(wide)];
    std::memcpy(bytes, &wide, sizeof(wide));
    out_.append(bytes, sizeof(wide));
  }
  void Put(std::string& text) {
    Put(text.size());
    out_ += text;
  }
  void Put(std::optional<std::string>& text) {
    Put(text.has_value());
    if (text) Put(*text);
  }
  template <typename T>
  void Put(std::vector<T>& items) {
    Put(items.size());
    for (T& item : items) Put(item);
  }
  template <typename T>
  std::enable_if_t<std::is_class_v<T>> Put(T& fields) {
    PutFields(fields);
  }
  template <typename T>
  void PutFields(T& fields) {
    std::apply([this](auto&... field) { (Put(field), ...); }, Fields(fields));
  }

 private:
  std::string& out_;
};

// The last of the values that an enumeration has; all before it are its too.
constexpr Phase Last(Phase) { return Phase::kSaving; }
constexpr control::Format Last(control::Format) {
  return control::Format::kJson;
}
constexpr control::ChangeKind Last(control::ChangeKind) {
  return control::ChangeKind::kDeleted;
}
constexpr control::Change::Kind Last(control::Change::Kind) {
  return control::Change::Kind::kValue;
}
constexpr PlaceRecord::When Last(PlaceRecord::When) {
  return PlaceRecord::When::kResult;
}
constexpr control::Place::State Last(control::Place::State) {
  return control::Place::State::kNotInModel;
}
constexpr control::Side Last(control::Side) { return control::Side::kResult; }
constexpr SchemaEffect Last(SchemaEffect) { return SchemaEffect::kOtherResult; }
constexpr Severity Last(Severity) { return Severity::kStop; }
constexpr ExitCode Last(ExitCode) { return ExitCode::kInternal; }

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}

  template <typename T>
  std::enable_if_t<!std::is_class_v<T>> Get(T& number) {
    uint64_t wide = 0;
    std::memcpy(&wide, Take(sizeof(wide)).data(), sizeof(wide));
    if constexpr (std::is_enum_v<T>) {
      if (wide > static_cast<uint64_t>(Last(T{}))) {
        throw ProtocolError("a value of an unknown kind");
      }
    }
    number = static_cast<T>(wide);
  }
  void Get(std::string& text) {
    size_t length = 0;
    Get(length);
    text = Take(length);
  }
  void Get(std::optional<std::string>& text) {
    bool present = false;
    Get(present);
    if (present) Get(text.emplace());
  }
  template <typename T>
  void Get(std::vector<T>& items) {
    size_t count = 0;
    Get(count);
    // Not reserved: the number may be as wrong as the rest.
    for (size_t i = 0; i < count; ++i) Get(items.emplace_back());
  }
  template <typename T>
  std::enable_if_t<std::is_class_v<T>> Get(T& fields) {
    GetFields(fields);
  }
  template <typename T>
  void GetFields(T& fields) {
    std::apply([this](auto&... field) { (Get(field), ...); }, Fields(fields));
  }
  bool AtEnd() const { return bytes_.empty(); }

 private:
  std::string_view Take(size_t length) {
    if (length > bytes_.size()) throw ProtocolError("a message is cut short");
    const std::string_view taken = bytes_.substr(0, length);
    bytes_.remove_prefix(length);
    return taken;
  }

  std::string_view bytes_;
};

template <size_t kIndex = 0>
Message DecodeAs(size_t index, Reader& reader) {
  if constexpr (kIndex == std::variant_size_v<Message>) {
    throw ProtocolError("a message of an unknown kind");
  } else {
    if (index != kIndex) return DecodeAs<kIndex + 1>(index, reader);
    std::variant_alternative_t<kIndex, Message> message{};
    reader.GetFields(message);
    return message;
  }
}

}  // namespace

std::string Encode(const Message& message) {
  std::string bytes;
  Writer writer(bytes);
  writer.Put(message.index());
  // Fields ties what is to be read as well, so that it takes no const.
  std::visit([&writer](auto& m) { writer.PutFields(m); },
             const_cast<Message&>(message));
  return bytes;
}

Message Decode(std::string_view bytes) {
  Reader reader(bytes);
  size_t index = 0;
  reader.Get(index);
  Message message = DecodeAs(index, reader);
  if (!reader.AtEnd()) throw ProtocolError("a message is too long");
  return message;
}

}  // namespace kit::host
