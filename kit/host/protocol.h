// What the worker process tells its parent, and how it crosses the pipe.
#ifndef KIT_HOST_PROTOCOL_H_
#define KIT_HOST_PROTOCOL_H_

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include "kit/confd/control/control.h"
#include "kit/host/failure.h"
#include "kit/host/progress.h"

namespace kit::host {

struct PhaseMessage {
  Phase phase;
};
struct InputMessage {
  control::Format format;
};
struct LogMessage {
  std::string text;
};
struct CallMessage {
  std::string text;
};
struct ResultMessage {
  int result;
  uint64_t open_cursors;
};
struct LossMessage {
  control::Loss loss;
};
struct ViolationMessage {
  control::Violation violation;
};
struct ValidatedMessage {};
struct ListTotals {
  std::string list;
  uint64_t created = 0;
  uint64_t changed = 0;
  uint64_t deleted = 0;
};
struct EntryMessage {
  control::EntryChange entry;
};
struct FailureMessage {
  Failure failure;
};
// Nothing follows; without it the worker did not come to its end.
struct DoneMessage {};

using Message =
    std::variant<PhaseMessage, InputMessage, LogMessage, CallMessage,
                 ResultMessage, LossMessage, ViolationMessage, ValidatedMessage,
                 ListTotals, EntryMessage, FailureMessage, DoneMessage>;

class ProtocolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One frame: 4 bytes of length in the machine's order, then the message as
// CBOR, which keeps bytes that are not UTF-8.
std::string Encode(const Message& message);

// Cuts the frames out of a stream of bytes.
class MessageReader {
 public:
  void Append(std::string_view bytes) { buffer_ += bytes; }
  // The next whole message, if there is one. Throws ProtocolError.
  std::optional<Message> Next();

 private:
  std::string buffer_;
  size_t start_ = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_PROTOCOL_H_
