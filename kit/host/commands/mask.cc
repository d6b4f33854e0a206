#include "kit/host/commands/mask.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kit::host {
namespace {

void MaskText(const Secrets& secrets, std::string& text) {
  text = secrets.Masked(std::move(text));
}

void MaskTexts(const Secrets& secrets, std::vector<std::string>& texts) {
  for (std::string& text : texts) MaskText(secrets, text);
}

void MaskValue(const Secrets& secrets, const std::string& path,
               std::optional<std::string>& value) {
  if (value) *value = secrets.MaskedAt(path, std::move(*value));
}

void MaskLeaves(const Secrets& secrets, const std::string& entry,
                std::vector<control::LeafChange>& leaves) {
  for (control::LeafChange& leaf : leaves) {
    const std::string path = entry + "/" + leaf.leaf;
    MaskValue(secrets, path, leaf.before);
    MaskValue(secrets, path, leaf.after);
  }
}

// What a message about a secret leaf quotes, known or not.
std::string WithoutQuotes(std::string_view text) {
  std::string bare;
  char quote = 0;
  for (const char c : text) {
    if (quote != 0) {
      if (c != quote) continue;
      bare += c;
      quote = 0;
    } else {
      bare += c;
      if (c == '"' || c == '\'') {
        quote = c;
        bare += Secrets::kMask;
      }
    }
  }
  return bare;
}

}  // namespace

void Mask(const Secrets& secrets, LogRecord& record) {
  MaskText(secrets, record.text);
}

void Mask(const Secrets& secrets, CallRecord& call) {
  const std::string path = call.path;
  MaskText(secrets, call.path);
  for (std::string* text : {&call.input, &call.output}) {
    if (!text->empty()) *text = secrets.MaskedAt(path, std::move(*text));
  }
  MaskText(secrets, call.reason);
}

void Mask(const Secrets& secrets, ChangeRecord& change) {
  const std::string path = change.path + "/" + change.leaf;
  MaskValue(secrets, path, change.before);
  MaskValue(secrets, path, change.after);
  MaskLeaves(secrets, change.path, change.leaves);
}

void Mask(const Secrets& secrets, PlaceRecord& record) {
  control::Place& place = record.place;
  for (control::Place::Leaf& leaf : place.leaves) {
    leaf.value =
        secrets.MaskedAt(place.entry + "/" + leaf.name, std::move(leaf.value));
  }
}

void Mask(const Secrets& secrets, PassTotals& totals) {
  for (FailedCalls& calls : totals.failures) {
    MaskText(secrets, calls.path);
    MaskText(secrets, calls.reason);
  }
  Mask(secrets, totals.last_failure);
}

void Mask(const Secrets& secrets, Failure& failure) {
  MaskText(secrets, failure.reason);
  if (secrets.Covers(failure.path)) {
    failure.reason = WithoutQuotes(failure.reason);
  }
  MaskTexts(secrets, failure.details);
  for (std::string& line : failure.details) {
    if (secrets.IsNamedIn(line)) line = WithoutQuotes(line);
  }
}

void Mask(const Secrets& secrets, Ledger& ledger) {
  for (LedgerLeaf& leaf : ledger.leaves) {
    leaf.before = secrets.MaskedAt(leaf.path, std::move(leaf.before));
    MaskValue(secrets, leaf.path, leaf.after);
  }
}

void Mask(const Secrets& secrets, Report& report) {
  if (report.failure) Mask(secrets, *report.failure);
  if (report.last_call) MaskText(secrets, *report.last_call);
  MaskText(secrets, report.plugin_output);
  for (control::Loss& loss : report.losses) {
    loss.value = secrets.MaskedAt(loss.path, std::move(loss.value));
  }
  for (control::Violation& violation : report.violations) {
    MaskText(secrets, violation.reason);
    if (secrets.Covers(violation.path)) {
      violation.reason = WithoutQuotes(violation.reason);
    }
  }
  for (control::EntryChange& entry : report.entries) {
    MaskLeaves(secrets, entry.path, entry.leaves);
  }
  for (Finding& finding : report.findings) {
    MaskText(secrets, finding.message);
    MaskTexts(secrets, finding.places);
  }
}

}  // namespace kit::host
