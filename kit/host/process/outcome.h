// What a run came to, without the events on the way.
#ifndef KIT_HOST_PROCESS_OUTCOME_H_
#define KIT_HOST_PROCESS_OUTCOME_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/digest.h"
#include "kit/host/events.h"
#include "kit/host/failure.h"
#include "kit/host/finding.h"
#include "kit/host/process/protocol.h"

namespace kit::host {

struct Outcome {
  std::string config;
  std::string plugin;
  Digest input_digest;  // if it was asked for
  // Of update; none when it did not return.
  std::optional<int> result;
  uint64_t calls = 0;
  std::map<std::string, uint64_t> calls_by_function;
  std::optional<std::string> last_call;
  uint64_t open_cursors = 0;                    // left by the plug-in
  uint64_t unreleased_values = 0;               // that have a text
  std::vector<control::CarriedModule> carried;  // past the plug-in
  std::vector<control::Loss> losses;            // before the plug-in ran
  // By list, where they were to be counted; of the result none without one.
  std::vector<control::LeafCount> input_leaves;
  std::optional<std::vector<control::LeafCount>> result_leaves;
  std::string device;  // what it is called, "router r1"; "" if unknown
  std::vector<Finding> findings;
  bool schemas_loaded = true;
  std::optional<SchemasMessage> schemas;  // after a success
  bool validated = false;
  std::vector<control::Violation> violations;
  bool compared = false;
  std::vector<ListTotals> changes;
  std::vector<control::EntryChange> entries;
  // What the plug-in printed; if much, the end, which says so.
  std::string plugin_output;
  std::optional<control::Format> format;
  std::optional<Failure> failure;

  ExitCode exit_code() const {
    return failure ? failure->code : ExitCode::kSuccess;
  }
};

}  // namespace kit::host

#endif  // KIT_HOST_PROCESS_OUTCOME_H_
