#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "kit/host/report/names.h"
#include "kit/host/report/report.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Color = Screen::Color;

constexpr char kDot[] = "\u00b7";

char Mark(EntryDifference::Kind kind) {
  switch (kind) {
    case EntryDifference::Kind::kCreated:
      return '+';
    case EntryDifference::Kind::kChanged:
      return '~';
    case EntryDifference::Kind::kDeleted:
      return '-';
    case EntryDifference::Kind::kRekeyed:
      return '>';
    case EntryDifference::Kind::kMoved:
      return '^';
  }
  return '?';
}

Color ColorOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return Color::kDim;
    case Severity::kLook:
      return Color::kYellow;
    case Severity::kStop:
      return Color::kRed;
  }
  return Color::kDim;
}

// The device by its name, if it has one, and the configuration's file.
void AppendHeadline(const Report& report, const Screen& screen,
                    std::string& text) {
  const std::string config = OneLine(report.config);
  const std::string subject =
      report.device.empty()
          ? config
          : fmt::format("{} ({})", OneLine(report.device), config);
  const bool is_clean =
      !report.failure &&
      std::none_of(report.findings.begin(), report.findings.end(),
                   [](const Finding& finding) {
                     return finding.severity == Severity::kStop;
                   });
  text +=
      screen.Painted(Color::kBold, subject + ": ") +
      screen.Painted(is_clean ? Color::kGreen : Color::kRed, Verdict(report)) +
      "\n";
}

// Passes that changed something.
void AppendPasses(const Report& report, const Screen& screen,
                  std::string& text) {
  std::string line;
  for (const PassTotals& pass : report.journal.passes()) {
    const std::string summary = PassSummary(pass);
    if (summary.empty() || pass.pass > report.passes.size()) continue;
    if (!line.empty()) line += fmt::format(" {} ", kDot);
    line += pass.pass == 0
                ? "outside of them"
                : fmt::format("{} {}", pass.pass,
                              OneLine(report.passes[pass.pass - 1].name));
    line += "  " + summary;
  }
  // A plug-in whose passes nobody named has none to show.
  const bool has_passes = !report.journal.passes().empty() &&
                          report.journal.passes().back().pass > 0;
  if (!has_passes) return;
  constexpr size_t kMargin = 9;
  text += Wrapped("Passes:  " + (line.empty() ? "no changes" : line),
                  screen.width, kMargin) +
          "\n";
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

void AppendCalls(const Report& report, const ReportView& view,
                 std::string& text) {
  text += fmt::format("ConfD calls: {}", report.calls);
  if (!view.details) text += " (--trace shows them)";
  text += "\n";
  if (view.details) {
    for (const auto& [function, calls] : report.calls_by_function) {
      text += fmt::format("  {:<24} {:>10}\n", OneLine(function), calls);
    }
    text += fmt::format("Cursors left open: {}\n", report.open_cursors);
  }
  if (!report.result && report.last_call) {
    text += fmt::format("Last ConfD call: {}\n", OneLine(*report.last_call));
  }
}

// A path in so many columns; a longer one loses its middle.
std::string Fitted(const std::string& path, size_t columns) {
  constexpr size_t kLeast = 20;
  if (columns < kLeast || path.size() <= columns) return path;
  return "..." + path.substr(path.size() - (columns - 3));
}

void AppendChanges(const Report& report, const Screen& screen,
                   std::string& text) {
  if (!report.compared) return;
  const std::vector<ListTotals> lists = ListsOf(report);
  if (lists.empty()) {
    text += "Changes: none\n";
    return;
  }
  const bool any_moved =
      std::any_of(lists.begin(), lists.end(),
                  [](const ListTotals& list) { return list.moved > 0; });
  const size_t numbers = any_moved ? 52 : 42;
  const size_t room =
      screen.width > numbers ? screen.width - numbers : size_t{0};
  size_t width = 4;
  std::vector<std::string> names;
  for (const ListTotals& totals : lists) {
    names.push_back(Fitted(OneLine(totals.list), room));
    width = std::max(width, ColumnsOf(names.back()));
  }
  text += fmt::format("Changes: {}\n", ChangesSentence(lists));
  const auto row = [&](const std::string& name, auto created, auto rekeyed,
                       auto changed, auto deleted, auto moved) {
    text += fmt::format("  {:<{}} {:>9} {:>9} {:>9} {:>9}", name, width,
                        created, rekeyed, changed, deleted);
    if (any_moved) text += fmt::format(" {:>9}", moved);
    text += "\n";
  };
  row("list", "created", "re-keyed", "changed", "deleted", "moved");
  for (size_t i = 0; i < lists.size(); ++i) {
    row(names[i], lists[i].created, lists[i].rekeyed, lists[i].changed,
        lists[i].deleted, lists[i].moved);
  }
}

void AppendCarried(const Report& report, std::string& text) {
  if (report.carried.empty()) return;
  std::string names;
  uint64_t leaves = 0;
  for (const control::CarriedModule& module : report.carried) {
    names += (names.empty() ? "" : ", ") + OneLine(module.name);
    leaves += module.leaves;
  }
  text += fmt::format(
      "Not rehearsed: {} (unknown to the models; {} carried through as they "
      "are)\n",
      names, Counted(leaves, "leaf", "leaves"));
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

std::vector<ListTotals> ListsOf(const Report& report) {
  std::vector<ListTotals> lists = report.changes;
  for (const PassTotals& pass : report.journal.passes()) {
    for (const ListTotals& moved : pass.lists) {
      if (moved.moved == 0) continue;
      auto at = std::find_if(
          lists.begin(), lists.end(),
          [&](const ListTotals& list) { return list.list == moved.list; });
      if (at == lists.end()) {
        lists.push_back({moved.list});
        at = std::prev(lists.end());
      }
      at->moved += moved.moved;
    }
  }
  return lists;
}

std::string PassSummary(const PassTotals& pass) {
  ListTotals sum;
  for (const ListTotals& list : pass.lists) {
    sum.created += list.created;
    sum.rekeyed += list.rekeyed;
    sum.changed += list.changed;
    sum.deleted += list.deleted;
    sum.moved += list.moved;
  }
  std::string text;
  const auto add = [&text](uint64_t count, const char* what) {
    if (count == 0) return;
    if (!text.empty()) text += ", ";
    text += fmt::format("{} {}", count, what);
  };
  add(sum.rekeyed, "re-keyed");
  add(sum.created, "created");
  add(sum.changed, "changed");
  add(sum.deleted, "deleted");
  add(sum.moved, "moved");
  return text;
}

std::string ChangesSentence(const std::vector<ListTotals>& lists) {
  ListTotals sum;
  for (const ListTotals& list : lists) {
    sum.created += list.created;
    sum.rekeyed += list.rekeyed;
    sum.changed += list.changed;
    sum.deleted += list.deleted;
    sum.moved += list.moved;
  }
  std::string text;
  const auto add = [&text](uint64_t count, const char* one, const char* many) {
    if (count == 0) return;
    text += text.empty() ? Counted(count, "entry ", "entries ")
                         : fmt::format(", {} ", count);
    text += count == 1 ? one : many;
  };
  add(sum.rekeyed, "got another key", "got another key");
  add(sum.created, "is new", "are new");
  add(sum.changed, "changed", "changed");
  add(sum.deleted, "is gone", "are gone");
  add(sum.moved, "moved", "moved");
  return text;
}

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

std::string RenderChange(const ChangeRecord& change) {
  using Kind = control::Change::Kind;
  switch (change.kind) {
    case Kind::kCreated:
      return "  created " + change.path;
    case Kind::kDeleted:
      return "  deleted " + change.path;
    case Kind::kRenamed:
      return "  renamed " + change.old_path + " to " + change.path;
    case Kind::kMoved:
      return "  moved " + change.path;
    case Kind::kValue:
      break;
  }
  const std::string holder = change.path == "/" ? "" : change.path;
  return fmt::format("  changed {}/{}: {} -> {}", holder, change.leaf,
                     change.before.value_or("(none)"),
                     change.after.value_or("(none)"));
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

std::string RenderEntry(const EntryDifference& entry) {
  using Kind = EntryDifference::Kind;
  std::string text = fmt::format("{} ", Mark(entry.kind));
  if (!entry.old_path.empty()) text += OneLine(entry.old_path) + " -> ";
  text += OneLine(entry.path) + "\n";
  const bool both =
      entry.kind != Kind::kCreated && entry.kind != Kind::kDeleted;
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

std::string RenderFindings(const std::vector<Finding>& findings,
                           const ReportView& view) {
  size_t id_width = 0;
  for (const Finding& finding : findings) {
    id_width = std::max(id_width, ColumnsOf(OneLine(finding.rule)));
  }
  const size_t indent = 8 + id_width;
  std::string text;
  for (const Finding& finding : findings) {
    std::string message = OneLine(finding.message);
    if (!finding.unit.empty()) {
      message += fmt::format(" ({})", OneLine(finding.unit));
    }
    if (!finding.section.empty()) message += "   " + OneLine(finding.section);
    const std::string rule = OneLine(finding.rule);
    const std::string blanks(id_width - ColumnsOf(rule) + 2, ' ');
    const size_t width = view.screen.width;
    text +=
        " " +
        view.screen.Painted(ColorOf(finding.severity), Name(finding.severity)) +
        "  " + rule + blanks;
    // What is painted takes no columns, so that only the message is wrapped.
    const std::string lines =
        Wrapped(message, width > indent + 20 ? width - indent : 0, 0);
    for (const char c : lines) {
      text += c;
      if (c == '\n') text += std::string(indent, ' ');
    }
    text += "\n";
    if (!view.details) continue;
    const std::string margin(indent, ' ');
    for (const std::string& place : finding.places) {
      text += margin + OneLine(place) + "\n";
    }
    if (finding.count > finding.places.size() && !finding.places.empty()) {
      text += fmt::format("{}... and {} more\n", margin,
                          finding.count - finding.places.size());
    }
    if (!finding.advice.empty()) {
      text +=
          fmt::format("{}What to do: {}\n", margin, OneLine(finding.advice));
    }
  }
  return text;
}

namespace {

void AppendDifferences(const Report& report, std::string& text) {
  for (const Differences& part : report.differences) {
    if (part.entries.empty()) continue;
    if (part.pass) {
      text += PassTitle(report, *part.pass) + ":\n";
    }
    for (const EntryDifference& entry : part.entries) {
      text += RenderEntry(entry);
    }
  }
}

}  // namespace

std::string RenderText(const Report& report, const ReportView& view) {
  std::string text;
  AppendHeadline(report, view.screen, text);
  text += RenderFindings(report.findings, view);
  if (view.details) {
    text += fmt::format("Plug-in: {}\n", OneLine(report.plugin));
  }
  AppendPasses(report, view.screen, text);
  if (view.log) AppendLog(report, text);
  AppendPluginOutput(report, text);
  AppendChanges(report, view.screen, text);
  if (view.diff) {
    AppendDifferences(report, text);
  }
  if (view.ledger) text += RenderLedger(report);
  AppendCarried(report, text);
  AppendLosses(report, view.diff, text);
  AppendValidation(report, text);
  AppendCalls(report, view, text);
  return text;
}

namespace {

std::string OutputLine(const Report& report) {
  if (report.output) {
    return fmt::format("Written: {} ({}, {})\n", OneLine(*report.output),
                       report.format == control::Format::kJson ? "JSON" : "XML",
                       Counted(report.output_size, "byte", "bytes"));
  }
  if (report.partly_written) {
    return "Not written as a whole: standard output may have a part of it.\n";
  }
  const char* nothing =
      report.page ? "No configuration was written" : "Nothing was written";
  return fmt::format(
      "{}{}.\n", nothing,
      report.failure ? "" : ": -o FILE keeps the upgraded configuration");
}

}  // namespace

std::string RenderTextEnd(const Report& report) {
  std::string text;
  if (report.page) {
    text = fmt::format("Page: {} (HTML, {})\n", OneLine(*report.page),
                       Counted(report.page_size, "byte", "bytes"));
  }
  return text + OutputLine(report);
}

}  // namespace kit::host
