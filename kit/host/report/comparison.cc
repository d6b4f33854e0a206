#include "kit/host/report/comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <variant>

#include "kit/host/report/json_parts.h"
#include "kit/host/report/names.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Texts = std::vector<std::string>;

// Of each side's lines that are shown.
constexpr size_t kMostLines = 8;

Texts VerdictOf(const Report& report) {
  Texts lines = {Verdict(report)};
  if (report.failure) lines.push_back(report.failure->reason);
  for (const control::Violation& violation : report.violations) {
    lines.push_back(violation.path + ": " + violation.reason);
  }
  return lines;
}

Texts FindingsOf(const Report& report) {
  Texts lines;
  for (const Finding& finding : report.findings) {
    lines.push_back(fmt::format("{} {} {} ({})", Name(finding.severity),
                                finding.rule, finding.message, finding.count));
  }
  return lines;
}

Texts CallsOf(const Report& report) {
  Texts lines;
  for (const Event& event : report.journal.events()) {
    const auto* call = std::get_if<CallRecord>(&event);
    if (call != nullptr && call->number > 0) lines.push_back(RenderCall(*call));
  }
  return lines;
}

Texts EntriesOf(const Report& report) {
  Texts lines;
  for (const Differences& part : report.differences) {
    for (const EntryDifference& entry : part.entries) {
      std::string text = RenderEntry(entry);
      std::replace(text.begin(), text.end(), '\n', ' ');
      lines.push_back(std::move(text));
    }
  }
  return lines;
}

Texts ResultLines(const std::string& text) {
  Texts lines = {""};
  for (size_t i = 0; i < text.size(); ++i) {
    const bool is_between = text[i] == '<' && i > 0 && text[i - 1] == '>';
    if (text[i] == '\n' || is_between) lines.emplace_back();
    if (text[i] != '\n') lines.back() += text[i];
  }
  return lines;
}

void Mask(const Secrets& secrets, std::vector<std::string>& lines) {
  for (std::string& line : lines) {
    line = secrets.IsLeafIn(line) ? std::string(Secrets::kMask)
                                  : secrets.Masked(std::move(line));
  }
}

std::string LinesOf(char name, const Texts& lines) {
  std::string text;
  for (size_t i = 0; i < lines.size() && i < kMostLines; ++i) {
    text += fmt::format("    {}  {}\n", name, OneLine(lines[i]));
  }
  if (lines.size() > kMostLines) {
    text += fmt::format("    {}  ... and {} more\n", name,
                        lines.size() - kMostLines);
  }
  return text;
}

}  // namespace

std::optional<DifferingPart> CompareSequences(std::string what,
                                              std::array<Texts, 2> lines) {
  Texts& a = lines[0];
  Texts& b = lines[1];
  if (a == b) return std::nullopt;
  size_t first = 0;
  const size_t shorter = std::min(a.size(), b.size());
  while (first < shorter && a[first] == b[first]) ++first;
  size_t last = 0;
  while (last < shorter - first &&
         a[a.size() - 1 - last] == b[b.size() - 1 - last]) {
    ++last;
  }
  for (Texts* side : {&a, &b}) {
    side->erase(side->end() - static_cast<ptrdiff_t>(last), side->end());
    side->erase(side->begin(), side->begin() + static_cast<ptrdiff_t>(first));
  }
  return DifferingPart{std::move(what), first, std::move(lines)};
}

std::optional<DifferingPart> CompareSets(std::string what,
                                         std::array<Texts, 2> lines) {
  std::map<std::string, int64_t> balance;  // of the first side over the second
  for (const std::string& line : lines[0]) ++balance[line];
  for (const std::string& line : lines[1]) --balance[line];
  DifferingPart part{std::move(what), std::nullopt, {}};
  for (size_t side = 0; side < lines.size(); ++side) {
    const int64_t sign = side == 0 ? 1 : -1;
    for (std::string& line : lines[side]) {
      int64_t& count = balance[line];
      if (count * sign <= 0) continue;
      count -= sign;
      part.lines[side].push_back(std::move(line));
    }
  }
  if (part.lines[0].empty() && part.lines[1].empty()) return std::nullopt;
  return part;
}

std::vector<DifferingPart> CompareRuns(const ComparedRun& a,
                                       const ComparedRun& b) {
  std::vector<DifferingPart> parts;
  const auto add = [&parts](std::optional<DifferingPart> part) {
    if (part) parts.push_back(std::move(*part));
    return part.has_value();
  };
  add(CompareSequences("verdict", {VerdictOf(a.report), VerdictOf(b.report)}));
  add(CompareSets("findings", {FindingsOf(a.report), FindingsOf(b.report)}));
  add(CompareSequences(
      "log", {a.report.journal.LogTexts(), b.report.journal.LogTexts()}));
  add(CompareSequences("calls", {CallsOf(a.report), CallsOf(b.report)}));
  if (a.result == b.result || a.result.empty() || b.result.empty()) {
    return parts;
  }
  if (!add(CompareSets("result", {EntriesOf(a.report), EntriesOf(b.report)}))) {
    parts.push_back(CompareResults(a.result, b.result, a.secrets).front());
  }
  return parts;
}

std::vector<DifferingPart> CompareResults(const std::string& a,
                                          const std::string& b,
                                          const Secrets& secrets) {
  if (a == b) return {};
  auto part = CompareSequences("result", {ResultLines(a), ResultLines(b)});
  // They may differ in line breaks alone.
  if (!part) part = DifferingPart{"result", 0, {Texts{a}, Texts{b}}};
  for (Texts& lines : part->lines) Mask(secrets, lines);
  return {std::move(*part)};
}

std::string RenderComparison(const std::string& config,
                             const std::vector<DifferingPart>& parts,
                             const std::array<std::string, 2>& names) {
  if (parts.empty()) return "";
  std::string text = OneLine(config) + " differs\n";
  text += fmt::format("  A is {}\n  B is {}\n", OneLine(names[0]),
                      OneLine(names[1]));
  for (const DifferingPart& part : parts) {
    text += "  " + part.what;
    if (part.first) text += fmt::format(", from line {}", *part.first + 1);
    text += ":\n";
    text += LinesOf('A', part.lines[0]) + LinesOf('B', part.lines[1]);
  }
  return text;
}

std::string ComparisonLine(const std::string& config,
                           const std::vector<DifferingPart>& parts,
                           const std::array<std::string, 2>& names) {
  Json differs = Json::array();
  for (const DifferingPart& part : parts) {
    differs.push_back({{"what", part.what},
                       {"first", OrNull(part.first)},
                       {"a", part.lines[0]},
                       {"b", part.lines[1]}});
  }
  const Json json = {{"config", config},
                     {"a", names[0]},
                     {"b", names[1]},
                     {"differs", std::move(differs)}};
  return DumpLine(json) + "\n";
}

}  // namespace kit::host
