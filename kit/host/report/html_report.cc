#include "kit/host/report/html_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "kit/host/report/names.h"
#include "kit/host/report/page/page_files.h"
#include "kit/host/report/page_content.h"
#include "kit/host/report/page_data.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

const char* Tone(const Report& report) {
  const auto has = [&](Severity severity) {
    return std::any_of(
        report.findings.begin(), report.findings.end(),
        [&](const Finding& finding) { return finding.severity == severity; });
  };
  if (report.failure || has(Severity::kStop)) return "stop";
  return has(Severity::kLook) ? "look" : "good";
}

std::string SubjectOf(const Report& report) {
  return report.device.empty()
             ? report.config
             : fmt::format("{} ({})", report.device, report.config);
}

void AddFact(std::string_view name, std::string_view text, std::string& html) {
  if (text.empty()) return;
  html += fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, Html(text));
}

std::string ValidationOf(const Report& report) {
  if (!report.validated) return "not reached";
  return report.violations.empty()
             ? "the result is valid under the new model"
             : fmt::format(
                   "the result breaks the new model in {}",
                   Counted(report.violations.size(), "place", "places"));
}

std::string OutputOf(const Report& report) {
  if (report.output) return *report.output;
  if (report.partly_written) return "standard output has a part of it";
  return "not written";
}

std::string FactsOf(const Report& report) {
  std::string html;
  AddFact("Configuration", report.config, html);
  if (report.compared) {
    const std::string changes = ChangesSentence(ListsOf(report));
    AddFact("Changes", changes.empty() ? "none" : changes, html);
  }
  AddFact("Validation", ValidationOf(report), html);
  AddFact("Result", OutputOf(report), html);
  AddFact("ConfD calls", std::to_string(report.calls), html);
  if (!report.result && report.last_call) {
    AddFact("Last ConfD call", *report.last_call, html);
  }
  return html;
}

std::string FailureOf(const Report& report) {
  if (!report.failure) return "";
  const Failure& failure = *report.failure;
  std::string where = failure.file;
  if (failure.line > 0) where += fmt::format(", line {}", failure.line);
  if (!failure.path.empty()) {
    where += (where.empty() ? "" : ", ") + failure.path;
  }
  std::string html =
      "<section class=\"failure\" id=\"failure\" "
      "aria-labelledby=\"failure-title\">\n"
      "<h2 id=\"failure-title\">What failed</h2>\n";
  html += fmt::format("<p>{}</p>\n", Html(failure.reason));
  if (!where.empty()) {
    html += fmt::format("<p><code>{}</code></p>\n", Html(where));
  }
  if (!failure.details.empty()) {
    html += "<ul class=\"mono\">\n";
    for (const std::string& line : failure.details) {
      html += fmt::format("<li>{}</li>\n", Html(line));
    }
    html += "</ul>\n";
  }
  if (!failure.advice.empty()) {
    html += fmt::format("<p class=\"advice\"><b>What to do:</b> {}.</p>\n",
                        Html(failure.advice));
  }
  return html + "</section>\n";
}

std::string PlacesOf(const Finding& finding) {
  if (finding.places.empty()) return "";
  const auto count = std::max<uint64_t>(finding.count, finding.places.size());
  std::string html =
      fmt::format("<details><summary>{}</summary>\n<ul>\n",
                  count == finding.places.size()
                      ? Counted(count, "place", "places")
                      : fmt::format("The first {} of {} places",
                                    finding.places.size(), count));
  for (const std::string& place : finding.places) {
    html += fmt::format("<li><code>{}</code></li>\n", Html(place));
  }
  return html + "</ul></details>\n";
}

std::string FindingOf(const Finding& finding) {
  const char* word = Name(finding.severity);
  std::string html = fmt::format(
      "<li class=\"finding\"><span class=\"word {0}\">{0}</span><div>\n"
      "<p class=\"message\">{1}{2} <code>{3}</code></p>\n",
      word, Html(finding.message),
      finding.unit.empty() ? "" : fmt::format(" ({})", Html(finding.unit)),
      Html(finding.rule));
  if (!finding.advice.empty()) {
    html += fmt::format("<p class=\"do\"><b>What to do:</b> {}</p>\n",
                        Html(finding.advice));
  }
  if (!finding.section.empty()) {
    html += fmt::format("<p class=\"note\">More in <code>{}</code></p>\n",
                        Html(finding.section));
  }
  return html + PlacesOf(finding) + "</div></li>\n";
}

std::string FindingsOf(const Report& report) {
  if (report.findings.empty()) {
    return "<p>Nothing to look at was found.</p>\n";
  }
  std::string html = "<ul>\n";
  for (const Finding& finding : report.findings) html += FindingOf(finding);
  return html + "</ul>\n";
}

std::string FilesOf(const PageFacts& facts) {
  if (facts.files.empty()) return "<p>None was read.</p>\n";
  std::string html = "<dl class=\"files\">\n";
  for (const PageFile& file : facts.files) {
    html += fmt::format("<dt>{}</dt><dd>{}", Html(file.role), Html(file.name));
    if (!file.digest.sha256.empty()) {
      html += fmt::format(
          " <span class=\"note\">{}</span><code class=\"sum\">{}</code>",
          Counted(file.digest.bytes, "byte", "bytes"), file.digest.sha256);
    }
    html += "</dd>\n";
  }
  return html + "</dl>\n<p class=\"note\">The sums are SHA-256.</p>\n";
}

}  // namespace

std::string RenderHtml(const Report& report, const PageFacts& facts) {
  const std::string script = std::string(kPageJs) + kPartsJs + kStartJs;
  return Filled(
      kPageHtml,
      {{"head", PageHead(SubjectOf(report) + ": " + Verdict(report),
                         facts.version, kPageCss, script)},
       {"subject", Html(SubjectOf(report))},
       {"tone", Tone(report)},
       {"verdict", Html(Verdict(report))},
       {"facts", FactsOf(report)},
       {"failure", FailureOf(report)},
       {"findings", FindingsOf(report)},
       {"files", FilesOf(facts)},
       {"times", fmt::format("<p id=\"times\">{}</p>\n", Html(facts.times))},
       {"data", PageContent(report)},
       {"script", script}});
}

}  // namespace kit::host
