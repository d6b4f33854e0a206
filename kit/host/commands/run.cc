#include "kit/host/commands/run.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/host/commands/inspect.h"
#include "kit/host/commands/install_paths.h"
#include "kit/host/commands/mask.h"
#include "kit/host/commands/releases.h"
#include "kit/host/commands/run_files.h"
#include "kit/host/commands/run_listener.h"
#include "kit/host/commands/run_page.h"
#include "kit/host/failure.h"
#include "kit/host/journal/pass_differences.h"
#include "kit/host/process/interrupt.h"
#include "kit/host/process/supervisor.h"
#include "kit/host/report/report.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"
#include "kit/host/text_file.h"

namespace kit::host {
namespace {

constexpr char kPasses[] = "ospf-passes.json";

FILE* ReportStream(const RunOptions& options) {
  return options.output == "-" ? stderr : stdout;
}

PassTable ReadPasses(const UpgradeOptions& options) {
  const std::string path =
      options.passes ? *options.passes : DefaultRules(kPasses).string();
  try {
    return ParsePasses(ReadTextFile(path), path);
  } catch (const TextFileError& error) {
    throw FailureError({ExitCode::kBadInput, error.what(),
                        "name a file with a table of passes", path});
  }
}

WorkerTask MakeTask(const UpgradeOptions& options) {
  WorkerTask task;
  task.max_size_mib = options.max_size_mib;
  task.plugin = options.plugin ? *options.plugin : DefaultPlugin().string();
  Releases releases = FindReleases(options);
  task.before = {releases.before, options.namespace_hashes};
  task.after = {releases.after, options.namespace_hashes};
  task.release = releases.own;
  task.releases = std::move(releases.others);
  task.unknown_modules = options.unknown_modules;
  task.named_modules = options.named_modules;
  task.schemas_loaded = options.schemas_loaded;
  task.timeout_s = options.timeout_s;
  task.passes = ReadPasses(options);
  return task;
}

// The task of one run.
WorkerTask TaskOf(const RunOptions& options, const PreparedUpgrade& upgrade) {
  WorkerTask task = upgrade.task();
  task.config = options.config;
  task.format = options.format;
  if (options.show_secrets) task.inspection.secrets = nullptr;
  const bool with_ledger = options.ledger || options.fail_on_loss;
  task.recording = {options.trace, !options.quiet || with_ledger,
                    options.trace || options.diff_by_pass || with_ledger};
  task.count_leaves = with_ledger;
  task.count_changes = !options.quiet;
  task.send_entries = options.diff;
  return task;
}

constexpr size_t kShownRecords = 3;

// Adds to a failure of the upgrade where it was, what came before it, and what
// it means for the device.
void AddContext(Report& report) {
  if (!report.failure) return;
  Failure& failure = *report.failure;
  if (failure.code != ExitCode::kPluginFailed &&
      failure.code != ExitCode::kPluginDied &&
      failure.code != ExitCode::kInvalidResult) {
    return;
  }
  std::vector<std::string> context;
  if (failure.code != ExitCode::kInvalidResult) {
    const std::string pass = LastPass(report);
    if (!pass.empty()) context.push_back("where: " + pass);
    const std::vector<std::string> log = report.journal.LogTexts();
    const size_t shown = std::min(log.size(), kShownRecords);
    for (size_t i = log.size() - shown; i < log.size(); ++i) {
      context.push_back("log: " + std::string(WithoutLastNewline(log[i])));
    }
    const CallRecord failed = report.journal.LastFailure();
    if (failed.number > 0 && failure.code == ExitCode::kPluginFailed) {
      context.push_back(fmt::format("last failed ConfD call, number {}: {}",
                                    failed.number, RenderCall(failed)));
    }
  }
  failure.details.insert(failure.details.begin(), context.begin(),
                         context.end());
  failure.details.push_back(
      "device: gives the upgrade up and keeps its configuration as it was");
}

// Of the whole run, out of its outcome.
Differences TotalOf(Report& report) {
  std::vector<EntryDifference> entries;
  for (control::EntryChange& entry : report.entries) {
    entries.push_back(ToDifference(std::move(entry)));
  }
  report.entries.clear();
  return {std::nullopt, PairMoves(std::move(entries))};
}

// With --strict.
void RequireNothingToLookAt(Report& report) {
  if (report.failure) return;
  const auto findings =
      std::count_if(report.findings.begin(), report.findings.end(),
                    [](const Finding& finding) {
                      return finding.severity != Severity::kNote;
                    });
  if (findings == 0) return;
  report.failure = Failure{
      ExitCode::kNeedsALook,
      fmt::format(
          "{} to look at, and --strict is given",
          Counted(static_cast<size_t>(findings), "thing is", "things are")),
      "see the report's findings; --verbose says what to do about each",
      report.config};
}

// Where the input could be counted.
void FinishLedger(LedgerBuilder& builder, const Secrets& secrets,
                  Report& report) {
  if (report.input_leaves.empty()) return;
  report.ledger =
      builder.Take(report.input_leaves,
                   report.result_leaves ? &*report.result_leaves : nullptr);
  Mask(secrets, *report.ledger);
  if (report.ledger->balances || report.failure) return;
  report.failure = Failure{
      ExitCode::kInternal,
      "the ledger does not balance: what became of the leaves that the input "
      "has does not come to those that the result has",
      "report this together with the configuration", report.config};
}

// With --fail-on-loss.
void RequireNoLoss(Report& report) {
  constexpr size_t kShownLosses = 10;
  if (report.failure || !report.ledger) return;
  const uint64_t dropped = report.ledger->LeavesWith(Fate::kDropped);
  if (dropped == 0) return;
  Failure failure{
      ExitCode::kNeedsALook,
      fmt::format(
          "{} dropped, and --fail-on-loss is given",
          Counted(dropped, "leaf of the input is", "leaves of the input are")),
      "see --ledger for what becomes of every leaf; put what must not be lost "
      "where the new model has room for it",
      report.config};
  for (const LedgerLeaf& leaf : report.ledger->leaves) {
    if (leaf.fate != Fate::kDropped) continue;
    if (failure.details.size() == kShownLosses) {
      failure.details.push_back(
          fmt::format("... and {} more", dropped - kShownLosses));
      break;
    }
    failure.details.push_back(
        fmt::format("{} ({})", leaf.path, AgentName(report, leaf.by)));
  }
  report.failure = std::move(failure);
}

void CommitOutput(const RunOptions& options, OutputFile& output,
                  Report& report) {
  try {
    report.output_size = output.Commit();
    report.output =
        *options.output == "-" ? "standard output" : *options.output;
  } catch (const FailureError& error) {
    report.failure = error.failure();
    report.partly_written = options.output == "-";
  }
}

// What is left of a run once it is over.
struct Rehearsal {
  Report report;
  std::optional<OutputFile> output;
  std::unique_ptr<RunPage> page;
  Secrets secrets;  // that it masks
};

void Upgrade(const RunOptions& options, const PreparedUpgrade& upgrade,
             Rehearsal& rehearsal) {
  const Catalogue& catalogue = upgrade.catalogue();
  WorkerTask task = TaskOf(options, upgrade);
  rehearsal.report.plugin = task.plugin;
  const auto input = StatInput(options);
  std::unique_ptr<RunPage> page;
  if (options.page) page = std::make_unique<RunPage>(options, input);
  std::optional<LogFile> log = OpenLog(options, input);
  rehearsal.output = PrepareOutput(options, input);
  rehearsal.page = std::move(page);
  if (rehearsal.page) rehearsal.page->Ask(task);
  task.has_output = rehearsal.output.has_value();
  Journal journal;
  Secrets& secrets = rehearsal.secrets;
  if (!options.show_secrets) secrets = Secrets(catalogue.secrets);
  PassDifferences by_pass;
  LedgerBuilder ledger;
  RunListening listening;
  listening.log = log ? &*log : nullptr;
  listening.keep_calls = options.trace && options.json;
  if (options.trace && !options.json) {
    listening.stream = ReportStream(options);
  }
  listening.show_status = !options.quiet && !options.trace;
  if (options.diff_by_pass) listening.views.push_back(&by_pass);
  if (rehearsal.page) {
    listening.views.push_back(&rehearsal.page->differences());
  }
  if (task.count_leaves) listening.unmasked_views.push_back(&ledger);
  {
    RunListener listener(journal, secrets, listening);
    rehearsal.report =
        Report(Supervise(task,
                         {options.timeout_s, listening.keep_calls,
                          rehearsal.output ? rehearsal.output->fd() : -1},
                         listener));
  }
  rehearsal.report.journal = std::move(journal);
  rehearsal.report.passes = task.passes;
  Mask(secrets, rehearsal.report);
  rehearsal.report.differences = by_pass.Take();
  if (options.diff)
    rehearsal.report.differences.push_back(TotalOf(rehearsal.report));
  if (task.count_leaves) {
    FinishLedger(ledger, secrets, rehearsal.report);
  }
  CompleteFindings(catalogue, rehearsal.report);
  if (options.fail_on_loss) RequireNoLoss(rehearsal.report);
  if (options.strict) RequireNothingToLookAt(rehearsal.report);
  AddContext(rehearsal.report);
  if (!rehearsal.report.failure && log)
    rehearsal.report.failure = log->failure();
}

// Without an upgrade it prepares one of its own.
Rehearsal Rehearse(const RunOptions& options,
                   const PreparedUpgrade* upgrade = nullptr) {
  Rehearsal rehearsal;
  rehearsal.report.config = ConfigName(options.config);
  try {
    std::optional<PreparedUpgrade> own;
    if (upgrade == nullptr) upgrade = &own.emplace(options);
    Upgrade(options, *upgrade, rehearsal);
  } catch (const FailureError& error) {
    rehearsal.report.failure = error.failure();
  } catch (const std::exception& error) {
    rehearsal.report.failure = UnexpectedFailure(error, "");
  }
  return rehearsal;
}

// Prints the report in its two parts.
class ReportPrinter {
 public:
  ReportPrinter(const RunOptions& options, const Report& report)
      : options_(options), report_(report), stream_(ReportStream(options)) {
    // Without a single step of the plug-in the error message says it all.
    const bool has_run =
        report.result || report.calls > 0 || !report.journal.events().empty();
    wanted_ = options.json || (!options.quiet && has_run);
  }

  // False if it could not be delivered.
  bool Print() const {
    ReportView view;
    view.log = options_.show_log;
    view.details = options_.details;
    view.diff = options_.diff || options_.diff_by_pass;
    view.ledger = options_.ledger;
    view.events = options_.trace;
    view.screen = Screen::Of(fileno(stream_));
    return Deliver(options_.json ? RenderJson(report_, view)
                                 : RenderText(report_, view));
  }
  bool PrintEnd() const {
    return Deliver(options_.json ? RenderJsonEnd(report_)
                                 : RenderTextEnd(report_));
  }

 private:
  bool Deliver(const std::string& text) const {
    if (wanted_) std::fputs(text.c_str(), stream_);
    return std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
  }

  const RunOptions& options_;
  const Report& report_;
  FILE* stream_;
  bool wanted_;
};

Failure ReportFailure() {
  return {ExitCode::kOutputFailed, "the report cannot be written",
          "make room where the report goes"};
}

std::string TakeBack(Rehearsal& rehearsal) {
  rehearsal.report.output.reset();
  return rehearsal.output ? rehearsal.output->TakeBack() : "";
}

// A page that can't be written fails a run that did not fail before.
void PublishPage(Rehearsal& rehearsal) {
  Report& report = rehearsal.report;
  try {
    rehearsal.page->Publish(report,
                            rehearsal.output ? &*rehearsal.output : nullptr);
  } catch (const FailureError& error) {
    if (report.failure) {
      std::fputs(RenderFailure(error.failure()).c_str(), stderr);
      return;
    }
    report.failure = error.failure();
    const std::string left = TakeBack(rehearsal);
    if (!left.empty()) report.failure->details.push_back(left);
  }
}

// Says what is left over of a file that has been replaced.
void SayLeft(const std::string& left) {
  if (left.empty()) return;
  std::fputs(("ospf-upgrade: " + OneLine(left) + "\n").c_str(), stderr);
}

// The output is put in its place between the two parts of the report, so that
// the report never says so too early, and taken back when the second part can't
// be delivered.
void Conclude(const RunOptions& options, Rehearsal& rehearsal) {
  Report& report = rehearsal.report;
  const ReportPrinter printer(options, report);
  bool printed = printer.Print();
  if (!printed && !report.failure) report.failure = ReportFailure();
  if (!report.failure && rehearsal.output)
    CommitOutput(options, *rehearsal.output, report);
  if (rehearsal.page) PublishPage(rehearsal);
  printed = printed && printer.PrintEnd();
  if (!printed && !report.failure) {
    report.failure = ReportFailure();
    std::string left = TakeBack(rehearsal);
    if (!left.empty()) report.failure->details.push_back(left);
    // It says that all went well.
    left = rehearsal.page ? rehearsal.page->TakeBack() : "";
    if (!left.empty()) report.failure->details.push_back(left);
    report.page.reset();
  }
  if (!report.failure) HoldInterrupts();
  if (report.page) SayLeft(rehearsal.page->Confirm());
  if (!report.failure) {
    if (rehearsal.output) SayLeft(rehearsal.output->Confirm());
    return;
  }
  std::fputs(RenderFailure(*report.failure).c_str(), stderr);
  if (options.quiet) {
    std::fputs(RenderViolations(report.violations).c_str(), stderr);
  }
}

}  // namespace

PreparedUpgrade::PreparedUpgrade(const UpgradeOptions& options)
    : task_(MakeTask(options)), catalogue_(LoadRules(options.rules)) {
  task_.inspection = MakeInspection(catalogue_);
}

void PreparedUpgrade::LoadModels() {
  try {
    task_.models = control::Models::Load(task_.before, task_.after);
  } catch (const control::ModelError& error) {
    throw FailureError(ModelFailure(error));
  }
}

Report RunQuietly(const RunOptions& options, const PreparedUpgrade& upgrade) {
  Rehearsal rehearsal = Rehearse(options, &upgrade);
  Report& report = rehearsal.report;
  if (!report.failure && rehearsal.output) {
    CommitOutput(options, *rehearsal.output, report);
  }
  if (rehearsal.page) PublishPage(rehearsal);
  HoldInterrupts();
  if (report.page) rehearsal.page->Confirm();
  if (report.output) rehearsal.output->Confirm();
  return std::move(report);
}

ComparedRun RunInMemory(RunOptions options, const PreparedUpgrade& upgrade) {
  options.output = "-";  // which stays in memory until it is committed
  options.diff = true;
  options.trace = true;
  options.json = true;  // so that nothing is printed on the way
  Rehearsal rehearsal = Rehearse(options, &upgrade);
  ComparedRun run{std::move(rehearsal.report), "",
                  std::move(rehearsal.secrets)};
  if (!run.report.failure && rehearsal.output) {
    run.result = ReadAll(rehearsal.output->fd());
  }
  return run;
}

Report RunForView(const UpgradeOptions& options, const std::string& config,
                  std::vector<std::string> places,
                  const PreparedUpgrade& upgrade, JournalView& view) {
  WorkerTask task = upgrade.task();
  task.config = config;
  task.places = std::move(places);
  task.recording = {true, true, true};
  task.count_changes = true;
  if (options.show_secrets) task.inspection.secrets = nullptr;
  Secrets secrets(options.show_secrets ? std::vector<std::string>()
                                       : upgrade.catalogue().secrets);
  RunListening listening;
  listening.show_status = true;
  listening.views.push_back(&view);
  Journal journal;
  Report report;
  {
    RunListener listener(journal, secrets, listening);
    report = Report(Supervise(task, {options.timeout_s, false, -1}, listener));
  }
  report.journal = std::move(journal);
  report.passes = task.passes;
  Mask(secrets, report);
  AddContext(report);
  return report;
}

ExitCode Run(const RunOptions& options) {
  Rehearsal rehearsal = Rehearse(options);
  Conclude(options, rehearsal);
  return rehearsal.report.exit_code();
}

}  // namespace kit::host
