#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "kit/host/report/report.h"
#include "kit/host/report/schemas_effect.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

char Mark(control::ChangeKind kind) {
  switch (kind) {
    case control::ChangeKind::kCreated:
      return '+';
    case control::ChangeKind::kChanged:
      return '~';
    case control::ChangeKind::kDeleted:
      return '-';
  }
  return '?';
}

void AppendLog(const Report& report, std::string& text) {
  const std::vector<std::string> records = report.journal.LogTexts();
  if (records.empty()) {
    text += "Log: no records\n";
    return;
  }
  text +=
      fmt::format("Log ({}):\n", Counted(records.size(), "record", "records"));
  for (const std::string& record : records) {
    text += fmt::format("  {}\n", RecordLine(record));
  }
}

void AppendPluginOutput(const Report& report, std::string& text) {
  if (report.plugin_output.empty()) return;
  text += "Printed by the plug-in:\n";
  text += Indent(report.plugin_output, "  ");
}

void AppendResult(const Report& report, std::string& text) {
  if (report.result) {
    text += fmt::format("Result: update returned {}\n", *report.result);
  } else {
    text += "Result: none, update did not return\n";
  }
}

void AppendCalls(const Report& report, bool by_function, std::string& text) {
  text += fmt::format("ConfD calls: {}\n", report.calls);
  if (by_function) {
    for (const auto& [function, calls] : report.calls_by_function) {
      text += fmt::format("  {:<24} {:>10}\n", OneLine(function), calls);
    }
    text += fmt::format("Cursors left open: {}\n", report.open_cursors);
  }
  if (!report.result && report.last_call) {
    text += fmt::format("Last ConfD call: {}\n", OneLine(*report.last_call));
  }
}

void AppendChanges(const Report& report, std::string& text) {
  if (!report.compared) return;
  if (report.changes.empty()) {
    text += "Changes: none\n";
    return;
  }
  size_t width = 4;
  for (const ListTotals& totals : report.changes) {
    width = std::max(width, OneLine(totals.list).size());
  }
  text += fmt::format("Changes:\n  {:<{}} {:>9} {:>9} {:>9} {:>9}\n", "list",
                      width, "created", "re-keyed", "changed", "deleted");
  for (const ListTotals& totals : report.changes) {
    text += fmt::format("  {:<{}} {:>9} {:>9} {:>9} {:>9}\n",
                        OneLine(totals.list), width, totals.created,
                        totals.rekeyed, totals.changed, totals.deleted);
  }
}

// What is lost before the plug-in runs would otherwise be seen nowhere.
void AppendLosses(const Report& report, bool all, std::string& text) {
  constexpr size_t kShown = 10;
  if (report.losses.empty()) return;
  text +=
      fmt::format("Automatic upgrade: {} not carried over into the new model\n",
                  Counted(report.losses.size(), "node is", "nodes are"));
  const size_t shown =
      all ? report.losses.size() : std::min(kShown, report.losses.size());
  for (size_t i = 0; i < shown; ++i) {
    const control::Loss& loss = report.losses[i];
    const std::string value =
        loss.value.empty() ? "" : fmt::format(" ({})", OneLine(loss.value));
    text += fmt::format("  {}{}: {}\n", OneLine(loss.path), value,
                        OneLine(loss.reason));
  }
  if (shown < report.losses.size()) {
    text += fmt::format("  ... and {} more, which --diff shows\n",
                        report.losses.size() - shown);
  }
}

// Nothing where it makes no difference.
void AppendSchemas(const Report& report, std::string& text) {
  if (!report.schemas || report.schemas->effect == SchemaEffect::kNone) return;
  const bool loaded = report.schemas_loaded;
  const char* const here = loaded ? "loaded" : "not loaded";
  if (report.schemas->effect == SchemaEffect::kUnknown) {
    text += fmt::format(
        "Schemas: {}, which the plug-in depends on; how it does otherwise was "
        "not found out, --schemas {} shows it\n",
        here, loaded ? "none" : "loaded");
    return;
  }
  text += fmt::format("Schemas: {}; where the upgrade framework {} them, {}\n",
                      here, loaded ? "does not load" : "loads",
                      EffectOfSchemas(*report.schemas));
}

void AppendValidation(const Report& report, std::string& text) {
  if (!report.validated) return;
  if (report.violations.empty()) {
    text += "Validation: the result is valid under the new model\n";
    return;
  }
  text += fmt::format("Validation: the result breaks the new model in {}\n",
                      Counted(report.violations.size(), "place", "places"));
  text += RenderViolations(report.violations);
}

}  // namespace

std::string RenderFailure(const Failure& failure) {
  std::string text = "ospf-upgrade: ";
  if (!failure.file.empty()) text += OneLine(failure.file) + ": ";
  if (failure.line > 0) text += fmt::format("line {}: ", failure.line);
  if (!failure.path.empty()) text += OneLine(failure.path) + ": ";
  text += OneLine(failure.reason) + "\n";
  for (const std::string& line : failure.details) {
    text += fmt::format("  {}\n", OneLine(line));
  }
  if (!failure.advice.empty()) {
    text += fmt::format("  What to do: {}.\n", OneLine(failure.advice));
  }
  return text;
}

std::string RenderCall(const CallRecord& call) {
  return control::ToString({call.number, call.function, call.path, call.input,
                            call.output, call.result, call.error, call.reason});
}

std::string RenderViolations(
    const std::vector<control::Violation>& violations) {
  std::string text;
  for (const control::Violation& violation : violations) {
    text += fmt::format(
        "  {}: {} (ConfD error {})\n",
        violation.path.empty() ? "(unknown node)" : OneLine(violation.path),
        OneLine(violation.reason), violation.error);
  }
  return text;
}

std::string RenderEntry(const control::EntryChange& entry) {
  std::string text =
      fmt::format("{} {}\n", Mark(entry.kind), OneLine(entry.path));
  const bool both = entry.kind == control::ChangeKind::kChanged;
  for (const control::LeafChange& leaf : entry.leaves) {
    const std::string unset =
        leaf.default_value ? *leaf.default_value + " (default)" : "(none)";
    const std::string before = OneLine(leaf.before.value_or(unset));
    const std::string after = OneLine(leaf.after.value_or(unset));
    text += fmt::format("    {}: ", OneLine(leaf.leaf));
    text += both ? fmt::format("{} -> {}\n", before, after)
                 : (leaf.after ? after : before) + "\n";
  }
  return text;
}

std::string RenderText(const Report& report, const ReportView& view) {
  std::string text =
      fmt::format("Configuration: {}\nPlug-in: {}\n", OneLine(report.config),
                  OneLine(report.plugin));
  AppendLosses(report, view.diff, text);
  AppendLog(report, text);
  AppendPluginOutput(report, text);
  AppendResult(report, text);
  AppendCalls(report, view.verbose, text);
  AppendChanges(report, text);
  if (view.diff) {
    for (const control::EntryChange& entry : report.entries) {
      text += RenderEntry(entry);
    }
  }
  AppendValidation(report, text);
  AppendSchemas(report, text);
  return text;
}

std::string RenderTextEnd(const Report& report) {
  if (report.output) {
    return fmt::format("Written: {} ({}, {})\n", OneLine(*report.output),
                       report.format == control::Format::kJson ? "JSON" : "XML",
                       Counted(report.output_size, "byte", "bytes"));
  }
  if (report.partly_written) {
    return "Not written as a whole: standard output may have a part of it.\n";
  }
  if (report.failure) return "Nothing was written.\n";
  return "Nothing was written: -o FILE keeps the upgraded configuration.\n";
}

}  // namespace kit::host
