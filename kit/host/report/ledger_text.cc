#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "kit/host/report/names.h"
#include "kit/host/report/report.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

struct Line {
  std::string what;
  uint64_t leaves;
  std::string remark;
};

std::string Remark(const LedgerRow& row) {
  if (row.by_default == 0) return "";
  return fmt::format("   {} by default", row.by_default);
}

// A row of all lists, and which lists it is made up of; what is kept, and what
// stands in one list alone, needs no more lines.
void AppendRow(const Report& report, const LedgerRow& row,
               std::vector<Line>& lines) {
  std::string what = Name(row.fate);
  if (row.by) what += " by " + AgentName(report, row.by);
  lines.push_back({std::move(what), row.leaves, Remark(row)});
  if (row.fate == Fate::kKept) return;
  for (const LedgerList& list : report.ledger->lists) {
    for (const LedgerRow& part : list.rows) {
      if (part.fate != row.fate || part.by != row.by) continue;
      lines.push_back({"  " + OneLine(list.list), part.leaves, Remark(part)});
    }
  }
}

std::string Table(const std::vector<Line>& lines) {
  size_t width = 0;
  for (const Line& line : lines) width = std::max(width, ColumnsOf(line.what));
  std::string text;
  for (const Line& line : lines) {
    text += fmt::format("  {}{} {:>9}{}\n", line.what,
                        std::string(width - ColumnsOf(line.what), ' '),
                        line.leaves, line.remark);
  }
  return text;
}

std::string RenderLeaf(const Report& report, const LedgerLeaf& leaf) {
  std::string text =
      fmt::format("  {} {}", Name(leaf.fate), OneLine(leaf.path));
  if (!leaf.new_path.empty()) text += " -> " + OneLine(leaf.new_path);
  text += ": " + OneLine(leaf.before);
  if (leaf.after) text += " -> " + OneLine(*leaf.after);
  if (leaf.by_default) text += " (default)";
  return text + fmt::format(" ({})\n", AgentName(report, leaf.by));
}

}  // namespace

std::string RenderLedger(const Report& report) {
  if (!report.ledger) return "";
  const Ledger& ledger = *report.ledger;
  std::string text = fmt::format(
      "Ledger: {} of the input{}\n", Counted(ledger.input, "leaf", "leaves"),
      ledger.is_whole ? "" : ", as far as the upgrade came");
  std::vector<Line> lines;
  for (const LedgerRow& row : ledger.rows) AppendRow(report, row, lines);
  if (ledger.added > 0) lines.push_back({"new", ledger.added, ""});
  if (ledger.result)
    lines.push_back({"leaves of the result", *ledger.result, ""});
  for (const control::CarriedModule& module : report.carried) {
    lines.push_back(
        {"carried, not rehearsed: " + OneLine(module.name), module.leaves, ""});
  }
  text += Table(lines);
  if (!ledger.balances) text += "  These numbers do not come out even.\n";
  for (const LedgerLeaf& leaf : ledger.leaves) {
    text += RenderLeaf(report, leaf);
  }
  return text;
}

}  // namespace kit::host
