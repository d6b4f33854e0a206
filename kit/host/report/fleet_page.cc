#include "kit/host/report/fleet_page.h"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <system_error>
#include <vector>

#include "kit/host/report/page/page_files.h"
#include "kit/host/report/page_data.h"

namespace kit::host {
namespace {

constexpr std::string_view kDataMark = "{{data}}";

// As a reference from one file to another.
std::string LinkTo(const std::string& page, const std::string& folder) {
  std::error_code error;
  const std::filesystem::path path =
      std::filesystem::proximate(page, folder, error);
  std::string link;
  for (const char c : error ? page : path.string()) {
    const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                          (c >= '0' && c <= '9') || c == '-' || c == '_' ||
                          c == '.' || c == '/';
    if (is_plain) {
      link += c;
    } else {
      link += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  // A name with a colon, which is escaped here, is no scheme.
  return link;
}

const char* Tone(const FleetSummary& summary) {
  if (!summary.Failures().empty()) return "stop";
  for (const FleetSummary::Kind& kind : summary.Rules()) {
    if (kind.severity != Severity::kNote) return "look";
  }
  return "good";
}

class Writer {
 public:
  Writer(const FleetSummary& summary, const FleetPageFacts& facts)
      : facts_(facts), rules_(summary.Rules()), failures_(summary.Failures()) {
    for (size_t i = 0; i < rules_.size(); ++i) numbers_[rules_[i].name] = i;
  }

  std::string Kinds() const {
    PageJson json;
    json.Begin('[');
    for (const FleetSummary::Kind& kind : failures_) {
      json.Begin('[');
      json.Add(std::string_view(kind.name));
      json.Add(kind.routers);
      json.End(']');
    }
    json.End(']');
    return json.Take();
  }

  std::string Rules() const {
    PageJson json;
    json.Begin('[');
    for (const FleetSummary::Kind& kind : rules_) {
      json.Begin('[');
      json.Add(std::string_view(kind.name));
      json.Add(static_cast<uint64_t>(kind.severity));
      json.Add(kind.routers);
      json.End(']');
    }
    json.End(']');
    return json.Take();
  }

  std::string Router(const RouterResult& result) const {
    PageJson json;
    json.Begin('[');
    json.Add(std::string_view(result.config));
    json.Add(std::string_view(result.device));
    json.Add(static_cast<uint64_t>(result.verdict));
    json.Add(WhatFailed(result));
    json.Add(result.page ? LinkTo(*result.page, facts_.folder) : "");
    json.Begin('[');
    for (const Finding& finding : result.findings) {
      const auto rule = numbers_.find(finding.rule);
      if (rule == numbers_.end()) continue;
      json.Begin('[');
      json.Add(static_cast<uint64_t>(rule->second));
      json.Add(finding.count);
      json.End(']');
    }
    json.End(']');
    json.End(']');
    return json.Take();
  }

 private:
  const FleetPageFacts& facts_;
  const std::vector<FleetSummary::Kind> rules_;
  const std::vector<FleetSummary::Kind> failures_;
  std::map<std::string, size_t> numbers_;  // of rules, by name
};

}  // namespace

void WriteFleetPage(const FleetSummary& summary, const FleetPageFacts& facts,
                    const std::function<void(const ResultSink&)>& for_each,
                    const std::function<void(std::string_view)>& sink) {
  const std::string script = std::string(kPageJs) + kFleetJs;
  const std::string style = std::string(kPageCss) + kFleetCss;
  const std::string headline = summary.Headline();
  const std::string subject = headline.substr(0, headline.find(':'));
  const std::map<std::string_view, std::string> values = {
      {"head", PageHead(headline, facts.version, style, script)},
      {"subject", Html(subject)},
      {"tone", Tone(summary)},
      {"verdict", Html(headline.substr(subject.size() + 2))},
      {"times", fmt::format("<p id=\"times\">{}</p>\n", Html(facts.times))},
      {"script", script}};
  const std::string_view page = kFleetHtml;
  const size_t data = page.find(kDataMark);
  sink(Filled(page.substr(0, data), values));
  const Writer writer(summary, facts);
  sink("{\"failures\":" + writer.Kinds() + ",\"rules\":" + writer.Rules() +
       ",\"routers\":[");
  bool is_first = true;
  for_each([&](const RouterResult& result) {
    if (!is_first) sink(",\n");
    is_first = false;
    sink(writer.Router(result));
  });
  sink("]}");
  sink(Filled(page.substr(data + kDataMark.size()), values));
}

}  // namespace kit::host
