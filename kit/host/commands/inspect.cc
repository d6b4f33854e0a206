#include "kit/host/commands/inspect.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <variant>

#include "kit/host/commands/install_paths.h"
#include "kit/host/failure.h"
#include "kit/host/findings/built_in.h"
#include "kit/host/findings/data_rules.h"
#include "kit/host/findings/rule_reader.h"
#include "kit/host/findings/run_rules.h"
#include "kit/host/report/schemas_effect.h"
#include "kit/host/secrets.h"

namespace kit::host {
namespace {

constexpr char kRules[] = "ospf.json";

// Gives a fault of a catalogue the form of a run's failure.
template <typename Step>
auto WithRuleFailures(const Step& step) {
  try {
    return step();
  } catch (const RuleError& error) {
    throw FailureError(
        {ExitCode::kBadInput, error.what(), "correct the file of rules"});
  }
}

void Append(std::vector<Finding> added, std::vector<Finding>& findings) {
  std::move(added.begin(), added.end(), std::back_inserter(findings));
}

std::string DeviceName(const DeviceRule& rule,
                       const control::Database& database) {
  if (rule.name.empty()) return "";
  std::string name;
  try {
    database.Evaluate(control::Side::kInput, {{rule.name, "", {"."}}},
                      [&name](const control::QueryMatch& match) {
                        if (name.empty()) name = match.texts[0].value_or("");
                      });
  } catch (const control::QueryError&) {
    return "";  // other models
  }
  return name.empty() || rule.kind.empty() ? name : rule.kind + " " + name;
}

std::vector<FailedCall> FailedCallsOf(const Report& report) {
  std::vector<FailedCall> calls;
  for (const PassTotals& pass : report.journal.passes()) {
    const bool is_named = pass.pass > 0 && pass.pass <= report.passes.size();
    for (const FailedCalls& failed : pass.failures) {
      calls.push_back({failed.function, failed.path, failed.error,
                       failed.reason, failed.count,
                       is_named ? report.passes[pass.pass - 1].name : ""});
    }
  }
  return calls;
}

}  // namespace

Catalogue LoadRules(const std::vector<std::string>& own_files) {
  return WithRuleFailures([&] {
    Catalogue catalogue = LoadCatalogue(DefaultRules(kRules).string(), false);
    for (const std::string& file : own_files) {
      catalogue.Add(LoadCatalogue(file, true));
    }
    return catalogue;
  });
}

Inspection MakeInspection(const Catalogue& catalogue) {
  Inspection inspection;
  inspection.device = [&catalogue](const control::Database& database) {
    return DeviceName(catalogue.device, database);
  };
  inspection.secrets = [&catalogue](const control::Database& database) {
    return ReadSecrets(database, catalogue.secrets);
  };
  inspection.input = [&catalogue](const control::Database& database) {
    return WithRuleFailures([&] {
      CheckExpressions(catalogue, database);
      return FindInInput(catalogue, database);
    });
  };
  inspection.result = [&catalogue](const control::Database& database) {
    return WithRuleFailures([&] {
      std::vector<Finding> findings = FindInResult(catalogue, database);
      Append(DefaultFindings(database.MovedDefaults()), findings);
      return findings;
    });
  };
  return inspection;
}

void CompleteFindings(const Catalogue& catalogue, Report& report) {
  std::vector<Finding>& findings = report.findings;
  LogRules log(catalogue);
  for (const Event& event : report.journal.events()) {
    if (const auto* record = std::get_if<LogRecord>(&event)) {
      log.Add(record->text);
    }
  }
  Append(log.Findings(), findings);
  const std::vector<FailedCall> failed = FailedCallsOf(report);
  Append(FindInCalls(catalogue, failed), findings);
  Append(LossFindings(report.losses), findings);
  Append(ViolationFindings(report.violations), findings);
  if (report.result == 0) {
    Append(FailedCallFindings(Unexplained(catalogue, findings, failed)),
           findings);
    Append(CursorFindings(report.open_cursors), findings);
    Append(UnreleasedValueFindings(report.unreleased_values), findings);
  }
  if (report.schemas && report.schemas->effect != SchemaEffect::kNone) {
    findings.push_back(OtherSchemasFinding(report.schemas_loaded,
                                           EffectOfSchemas(*report.schemas)));
  }
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) {
                     return a.severity > b.severity;
                   });
}

}  // namespace kit::host
