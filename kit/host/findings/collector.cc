#include "kit/host/findings/collector.h"

#include "kit/host/text.h"

namespace kit::host {

Collector::Collector(const Rule& rule) : rule_(rule) {
  finding_.rule = rule.id;
  finding_.severity = rule.severity;
  finding_.advice = rule.advice;
  finding_.section = rule.section;
}

void Collector::Add(const std::function<std::string(size_t)>& value,
                    const std::function<std::string()>& place, uint64_t count) {
  if (finding_.count == 0) finding_.message = rule_.message.Fill(value);
  finding_.count += count;
  if (WantsTexts()) finding_.places.push_back(place());
}

std::optional<Finding> Collector::Result() const {
  if (finding_.count == 0) return std::nullopt;
  Finding finding = finding_;
  if (!rule_.one.empty()) {
    finding.unit = Counted(finding.count, rule_.one, rule_.many);
  }
  return finding;
}

}  // namespace kit::host
