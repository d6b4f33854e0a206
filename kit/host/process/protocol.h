// What the processes of a run tell the supervisor.
#ifndef KIT_HOST_PROCESS_PROTOCOL_H_
#define KIT_HOST_PROCESS_PROTOCOL_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/digest.h"
#include "kit/host/events.h"
#include "kit/host/failure.h"
#include "kit/host/finding.h"
#include "kit/host/process/checksum.h"
#include "kit/host/process/progress.h"

namespace kit::host {

struct PhaseMessage {
  Phase phase;
};
struct InputMessage {
  control::Format format;
};
// Of the configuration as it was read.
struct DigestMessage {
  Digest digest;
};
struct LogMessage {
  LogRecord record;
};
struct CallMessage {
  CallRecord call;
};
struct ChangeMessage {
  ChangeRecord change;
};
struct PassMessage {
  PassTotals totals;
};
struct ResultMessage {
  int result;
  uint64_t calls;         // of the C API
  uint64_t open_cursors;  // left by the plug-in
  uint64_t unreleased_values;
  int finisher;  // the process that goes on after a success
};
struct LossMessage {
  control::Loss loss;
};
struct ViolationMessage {
  control::Violation violation;
};
struct ValidatedMessage {};
// What would come of a successful run with the schemas the other way: loaded
// where they were not, and not where they were.
enum class SchemaEffect : uint32_t {
  kNone,
  kUnknown,      // something else, or not
  kFails,        // update returns `number`
  kDies,         // update does not return
  kInvalid,      // the result breaks the new model in `number` places
  kOtherResult,  // it differs, and is valid
};
struct SchemasMessage {
  SchemaEffect effect;
  int number;
};
struct ListMessage {
  ListTotals totals;
};
struct RekeyedMessage {
  RekeyedEntries entries;
};
struct EntryMessage {
  control::EntryChange entry;
};
struct PlaceMessage {
  PlaceRecord record;
};
struct CarriedMessage {
  control::CarriedModule module;
};
// Of the automatic upgrade.
struct StartChangeMessage {
  ChangeRecord change;
};
// All of one side, by list.
struct LeafCountsMessage {
  control::Side side;
  std::vector<control::LeafCount> counts;
};
struct FailureMessage {
  Failure failure;
};
struct DeviceMessage {
  std::string name;
};
struct SecretsMessage {
  std::vector<std::string> values;
};
struct FindingMessage {
  Finding finding;
};
// Nothing follows; without it the finisher did not come to its end.
struct DoneMessage {
  Checksum written;  // to the output, if there is one
};

using Message =
    std::variant<PhaseMessage, InputMessage, LogMessage, CallMessage,
                 ResultMessage, LossMessage, ViolationMessage, ValidatedMessage,
                 ListMessage, EntryMessage, FailureMessage, DoneMessage,
                 SchemasMessage, PassMessage, RekeyedMessage, DeviceMessage,
                 FindingMessage, ChangeMessage, SecretsMessage, CarriedMessage,
                 DigestMessage, PlaceMessage, StartChangeMessage,
                 LeafCountsMessage>;

class ProtocolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The message's number in the variant and its fields: numbers as 8 bytes in the
// machine's order, texts of any bytes after their length.
std::string Encode(const Message& message);

// Throws ProtocolError for what Encode does not make.
Message Decode(std::string_view bytes);

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_PROTOCOL_H_
