// What a run came to, and how it is shown.
#ifndef KIT_HOST_REPORT_REPORT_H_
#define KIT_HOST_REPORT_REPORT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/failure.h"
#include "kit/host/finding.h"
#include "kit/host/journal/differences.h"
#include "kit/host/journal/journal.h"
#include "kit/host/journal/ledger.h"
#include "kit/host/journal/pass_differences.h"
#include "kit/host/passes.h"
#include "kit/host/process/outcome.h"
#include "kit/host/report/screen.h"

namespace kit::host {

struct Report : Outcome {
  Report() = default;
  explicit Report(Outcome outcome) : Outcome(std::move(outcome)) {}

  Journal journal;
  // With --diff: of the whole run, or of each stretch of a pass in their order.
  std::vector<Differences> differences;
  // Where it was asked for and the configuration could be read.
  std::optional<Ledger> ledger;
  PassTable passes;                   // that the journal's numbers refer to
  std::optional<std::string> output;  // where the result was written
  bool partly_written = false;        // to standard output
  uint64_t output_size = 0;
  std::optional<std::string> page;  // where the page of it was written
  uint64_t page_size = 0;
};

struct ReportView {
  bool log = false;      // the records
  bool details = false;  // of findings; how often each call was made
  bool diff = false;     // each entry
  bool ledger = false;
  bool events = false;  // log records and calls in their order (JSON)
  Screen screen = {};
};

// What changed, by list: the comparison's, and the moves that passes made.
std::vector<ListTotals> ListsOf(const Report& report);

// "2 re-keyed, 1 created"; "" for no changes.
std::string PassSummary(const PassTotals& pass);

// What became of the entries, in a sentence; "" for no changes.
std::string ChangesSentence(const std::vector<ListTotals>& lists);

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

// A call as one line, of any characters.
std::string RenderCall(const CallRecord& call);

// A change as one line, of any characters.
std::string RenderChange(const ChangeRecord& change);

// What became of the input's leaves.
std::string RenderLedger(const Report& report);

// One line for each constraint that the result breaks.
std::string RenderViolations(const std::vector<control::Violation>& violations);

// One line for each finding, without the section below.
std::string RenderFindings(const std::vector<Finding>& findings,
                           const ReportView& view);

// One entry of --diff.
std::string RenderEntry(const EntryDifference& entry);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_REPORT_H_
