#include <fmt/format.h>

#include <cstring>

#include "kit/host/report/json_parts.h"
#include "kit/host/report/names.h"
#include "kit/host/report/report.h"
#include "kit/host/report/schemas_effect.h"

namespace kit::host {
namespace {

Json SchemasJson(const Report& report) {
  Json matter;
  Json effect;
  if (report.schemas && report.schemas->effect != SchemaEffect::kUnknown) {
    matter = report.schemas->effect != SchemaEffect::kNone;
    if (matter) effect = EffectOfSchemas(*report.schemas);
  }
  return {{"loaded", report.schemas_loaded},
          {"matter", std::move(matter)},
          {"otherwise", std::move(effect)}};
}

Json CarriedJson(const Report& report) {
  Json modules = Json::array();
  for (const control::CarriedModule& module : report.carried) {
    modules.push_back({{"module", module.name}, {"leaves", module.leaves}});
  }
  return modules;
}

Json FailureJson(const std::optional<Failure>& failure) {
  if (!failure) return nullptr;
  return {{"reason", failure->reason},
          {"details", failure->details},
          {"advice", failure->advice},
          {"file", NullIfEmpty(failure->file)},
          {"line", failure->line > 0 ? Json(failure->line) : Json()},
          {"path", NullIfEmpty(failure->path)}};
}

Json CallsJson(const Report& report) {
  Json by_function = Json::object();
  for (const auto& [function, calls] : report.calls_by_function) {
    by_function[function] = calls;
  }
  return {{"total", report.calls},
          {"by_function", std::move(by_function)},
          {"last", OrNull(report.last_call)},
          {"open_cursors", report.open_cursors},
          {"unreleased_values", report.unreleased_values}};
}

Json ListsJson(const std::vector<ListTotals>& lists) {
  Json changes = Json::array();
  for (const ListTotals& totals : lists) {
    changes.push_back({{"list", totals.list},
                       {"created", totals.created},
                       {"rekeyed", totals.rekeyed},
                       {"changed", totals.changed},
                       {"deleted", totals.deleted},
                       {"moved", totals.moved}});
  }
  return changes;
}

Json FindingsJson(const Report& report) {
  Json findings = Json::array();
  for (const Finding& finding : report.findings) {
    findings.push_back({{"rule", finding.rule},
                        {"severity", Name(finding.severity)},
                        {"message", finding.message},
                        {"count", finding.count},
                        {"places", finding.places},
                        {"advice", NullIfEmpty(finding.advice)},
                        {"section", NullIfEmpty(finding.section)}});
  }
  return findings;
}

Json FailuresJson(const PassTotals& pass) {
  Json failures = Json::array();
  for (const FailedCalls& failed : pass.failures) {
    failures.push_back({{"function", failed.function},
                        {"node", NullIfEmpty(failed.node)},
                        {"error", failed.error},
                        {"count", failed.count},
                        {"number", failed.number},
                        {"path", NullIfEmpty(failed.path)},
                        {"reason", NullIfEmpty(failed.reason)}});
  }
  return failures;
}

// What lies outside of all passes has the number 0 and no name.
Json PassesJson(const Report& report) {
  Json passes = Json::array();
  for (const PassTotals& pass : report.journal.passes()) {
    const bool is_named = pass.pass > 0 && pass.pass <= report.passes.size();
    passes.push_back(
        {{"pass", pass.pass},
         {"name", is_named ? Json(report.passes[pass.pass - 1].name) : Json()},
         {"calls", pass.calls},
         {"changes", ListsJson(pass.lists)},
         {"failed_calls", FailuresJson(pass)}});
  }
  return passes;
}

// Whether the model's default holds on one side.
bool HasDefault(const EntryDifference& entry, const control::LeafChange& leaf) {
  using Kind = EntryDifference::Kind;
  return leaf.default_value && !(leaf.before && leaf.after) &&
         entry.kind != Kind::kCreated && entry.kind != Kind::kDeleted;
}

Json EntriesJson(const Report& report) {
  Json entries = Json::array();
  for (const Differences& part : report.differences) {
    for (const EntryDifference& entry : part.entries) {
      Json leaves = Json::array();
      for (const control::LeafChange& leaf : entry.leaves) {
        leaves.push_back(
            {{"leaf", leaf.leaf},
             {"before", OrNull(leaf.before)},
             {"after", OrNull(leaf.after)},
             {"default",
              HasDefault(entry, leaf) ? Json(*leaf.default_value) : Json()}});
      }
      entries.push_back({{"change", Name(entry.kind)},
                         {"pass", OrNull(part.pass)},
                         {"list", entry.list},
                         {"path", entry.path},
                         {"old_path", NullIfEmpty(entry.old_path)},
                         {"leaves", std::move(leaves)}});
    }
  }
  return entries;
}

Json ViolationsJson(const Report& report) {
  Json violations = Json::array();
  for (const control::Violation& violation : report.violations) {
    violations.push_back({{"error", violation.error},
                          {"path", violation.path},
                          {"reason", violation.reason}});
  }
  return violations;
}

Json ToJson(const CallRecord& call) {
  return {{"kind", "call"},
          {"number", call.number},
          {"pass", call.pass},
          {"function", call.function},
          {"path", NullIfEmpty(call.path)},
          {"input", NullIfEmpty(call.input)},
          {"output", NullIfEmpty(call.output)},
          {"result", call.result},
          {"error", call.error},
          {"reason", NullIfEmpty(call.reason)},
          {"nanoseconds", call.nanoseconds},
          {"text", RenderCall(call)}};
}

Json ToJson(const ChangeRecord& change) {
  return {{"kind", "change"},
          {"call", change.call},
          {"pass", change.pass},
          {"change", Name(change.kind)},
          {"list", change.list},
          {"path", change.path},
          {"old_path", NullIfEmpty(change.old_path)},
          {"leaf", NullIfEmpty(change.leaf)},
          {"before", OrNull(change.before)},
          {"after", OrNull(change.after)}};
}

Json EventsJson(const Report& report) {
  Json events = Json::array();
  for (const Event& event : report.journal.events()) {
    events.push_back(
        std::visit([](const auto& e) { return ToJson(e); }, event));
  }
  return events;
}

// Beside it stands the number of the pass.
Json AgentJson(Agent agent) {
  if (!agent) return nullptr;
  return *agent == kAutomaticUpgrade ? "automatic-upgrade" : "plugin";
}

Json PassJson(Agent agent) {
  return agent && *agent != kAutomaticUpgrade ? Json(*agent) : Json();
}

Json RowsJson(const std::vector<LedgerRow>& rows) {
  Json all = Json::array();
  for (const LedgerRow& row : rows) {
    all.push_back({{"fate", Name(row.fate)},
                   {"by", AgentJson(row.by)},
                   {"pass", PassJson(row.by)},
                   {"leaves", row.leaves},
                   {"by_default", row.by_default}});
  }
  return all;
}

Json LedgerJson(const Report& report) {
  if (!report.ledger) return nullptr;
  const Ledger& ledger = *report.ledger;
  Json lists = Json::array();
  for (const LedgerList& list : ledger.lists) {
    lists.push_back({{"list", list.list},
                     {"input", list.input},
                     {"fates", RowsJson(list.rows)},
                     {"added", list.added},
                     {"result", OrNull(list.result)}});
  }
  Json leaves = Json::array();
  for (const LedgerLeaf& leaf : ledger.leaves) {
    leaves.push_back({{"fate", Name(leaf.fate)},
                      {"by", AgentJson(leaf.by)},
                      {"pass", PassJson(leaf.by)},
                      {"list", leaf.list},
                      {"path", leaf.path},
                      {"new_path", NullIfEmpty(leaf.new_path)},
                      {"before", leaf.before},
                      {"after", OrNull(leaf.after)},
                      {"by_default", leaf.by_default}});
  }
  return {{"whole", ledger.is_whole},  {"balances", ledger.balances},
          {"input", ledger.input},     {"fates", RowsJson(ledger.rows)},
          {"added", ledger.added},     {"result", OrNull(ledger.result)},
          {"lists", std::move(lists)}, {"leaves", std::move(leaves)}};
}

}  // namespace

std::string RenderJson(const Report& report, const ReportView& view) {
  Json json = {
      {"config", report.config},
      {"device", NullIfEmpty(report.device)},
      {"plugin", report.plugin},
      {"result", OrNull(report.result)},
      {"findings", FindingsJson(report)},
      {"passes", PassesJson(report)},
      {"not_rehearsed", CarriedJson(report)},
      {"not_carried_over", ToJson(report.losses)},
      {"log", report.journal.LogTexts()},
      {"calls", CallsJson(report)},
      {"changes", ListsJson(ListsOf(report))},
      {"valid", report.validated ? Json(report.violations.empty()) : Json()},
      {"violations", ViolationsJson(report)},
      {"schemas", SchemasJson(report)},
      {"plugin_output", report.plugin_output}};
  if (view.diff) json["entries"] = EntriesJson(report);
  if (view.ledger) json["ledger"] = LedgerJson(report);
  if (view.events) json["events"] = EventsJson(report);
  std::string text = Dump(json);
  text.resize(text.size() - std::strlen("\n}"));
  return text;
}

std::string RenderJsonEnd(const Report& report) {
  const Json json = {
      {"exit_code", static_cast<int>(report.exit_code())},
      {"outcome", Name(report.exit_code())},
      {"error", FailureJson(report.failure)},
      {"output", OrNull(report.output)},
      {"page", OrNull(report.page)},
      {"format", report.format ? Json(Name(*report.format)) : Json()}};
  return "," + Dump(json).substr(std::strlen("{")) + "\n";
}

}  // namespace kit::host
