// What a run came to, and how it is shown.
#ifndef KIT_HOST_REPORT_REPORT_H_
#define KIT_HOST_REPORT_REPORT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/failure.h"
#include "kit/host/journal/journal.h"
#include "kit/host/process/protocol.h"

namespace kit::host {

struct Report {
  std::string config;
  std::string plugin;
  Journal journal;
  // Of update; none when it did not return.
  std::optional<int> result;
  uint64_t open_cursors = 0;          // left by the plug-in
  std::vector<control::Loss> losses;  // before the plug-in ran
  bool schemas_loaded = true;
  std::optional<SchemasMessage> schemas;  // after a success
  bool validated = false;
  std::vector<control::Violation> violations;
  bool compared = false;
  std::vector<ListTotals> changes;
  std::vector<control::EntryChange> entries;
  std::string
      plugin_output;  // what it printed; if much, the end, which says so
  std::optional<control::Format> format;
  std::optional<std::string> output;  // where the result was written
  bool partly_written = false;        // to standard output
  uint64_t output_size = 0;
  std::optional<Failure> failure;

  ExitCode exit_code() const {
    return failure ? failure->code : ExitCode::kSuccess;
  }
};

struct ReportView {
  bool verbose = false;
  bool diff = false;
};

// A report has two parts: what is known before the output is put in its place,
// and what came of that. So the first can be delivered while a failure still
// keeps the output from being written.

// For people.
std::string RenderText(const Report& report, const ReportView& view);
std::string RenderTextEnd(const Report& report);

// For scripts: one JSON object.
std::string RenderJson(const Report& report, const ReportView& view);
std::string RenderJsonEnd(const Report& report);

// The error message: what failed, where, why, and what to do about it.
std::string RenderFailure(const Failure& failure);

// One line for each constraint that the result breaks.
std::string RenderViolations(const std::vector<control::Violation>& violations);

// One entry of --diff.
std::string RenderEntry(const control::EntryChange& entry);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_REPORT_H_
