#include "kit/host/commands/explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/host/commands/run.h"
#include "kit/host/commands/stdin_copy.h"
#include "kit/host/failure.h"
#include "kit/host/journal/explanation.h"
#include "kit/host/journal/place_history.h"
#include "kit/host/report/explanation.h"
#include "kit/host/report/report.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

// One run, and what it tells of the places.
struct Observation {
  PlaceHistory history;
  std::vector<EntryStep> steps;
  Report report;
};

void Observe(const ExplainOptions& options, const PreparedUpgrade& upgrade,
             std::vector<std::string> places, Observation& observation) {
  observation.report = RunForView(options, options.config, std::move(places),
                                  upgrade, observation.history);
  observation.steps = observation.history.TakeSteps();
}

bool Same(const Report& a, const Report& b) {
  const auto same_lists = [](const ListTotals& one, const ListTotals& other) {
    return one.list == other.list && one.created == other.created &&
           one.rekeyed == other.rekeyed && one.changed == other.changed &&
           one.deleted == other.deleted && one.moved == other.moved;
  };
  return a.result == b.result && a.calls == b.calls &&
         a.exit_code() == b.exit_code() &&
         a.calls_by_function == b.calls_by_function &&
         std::equal(a.changes.begin(), a.changes.end(), b.changes.begin(),
                    b.changes.end(), same_lists);
}

// Whether it came far enough for anything to be said.
bool HasPlaces(const Observation& observation) {
  return !observation.history.states().empty();
}

bool HasSucceeded(const Report& report) {
  return report.result == 0 && report.validated;
}

Failure NotFound(const Explanation& explanation) {
  Failure failure{ExitCode::kNotFound,
                  "is neither in the input nor in the result",
                  "see --diff of the command run for paths"};
  failure.path = explanation.path;
  return failure;
}

Failure Differs() {
  return {ExitCode::kInternal,
          "two runs of the upgrade differ, so that the history of this place "
          "may not be that of its values",
          "run again; correct a plug-in that does not do the same each time"};
}

bool Print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

// What is printed, and the failure that the command ends with.
std::optional<Failure> ExplainRun(const ExplainOptions& options) {
  const std::optional<StdinCopy> input =
      options.config == "-"
          ? std::make_optional<StdinCopy>(options.max_size_mib)
          : std::nullopt;
  const PreparedUpgrade upgrade(options);
  Observation seen;
  Observe(options, upgrade, {options.path}, seen);
  if (!HasPlaces(seen)) return seen.report.failure;
  const std::vector<std::string> paths =
      PathsOf(seen.history.states().front(), seen.steps);
  bool differs = false;
  if (paths.size() > 1) {
    // The entry had other paths, whose history is not known yet.
    Observation again;
    if (input) input->Rewind();
    Observe(options, upgrade, paths, again);
    if (!HasPlaces(again)) return again.report.failure;
    differs = !Same(seen.report, again.report) ||
              paths != PathsOf(again.history.states().front(), again.steps);
    std::swap(seen, again);
  }
  const Explanation explanation = Explain(
      seen.history, seen.steps, seen.report.losses, HasSucceeded(seen.report));
  if (!Print(options.json ? RenderJson(explanation, seen.report)
                          : RenderText(explanation, seen.report))) {
    return Failure{ExitCode::kOutputFailed, "the explanation cannot be written",
                   "make room where it goes"};
  }
  if (seen.report.failure) return seen.report.failure;
  if (differs) return Differs();
  if (explanation.kind == Explanation::Kind::kNowhere) {
    return NotFound(explanation);
  }
  return std::nullopt;
}

}  // namespace

ExitCode Explain(const ExplainOptions& options) {
  std::optional<Failure> failure;
  try {
    failure = ExplainRun(options);
  } catch (const FailureError& error) {
    failure = error.failure();
  } catch (const std::exception& error) {
    failure = UnexpectedFailure(error, "");
  }
  if (!failure) return ExitCode::kSuccess;
  std::fputs(RenderFailure(*failure).c_str(), stderr);
  return failure->code;
}

}  // namespace kit::host
