#include "kit/host/commands/run_page.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "kit/host/commands/run_files.h"
#include "kit/host/digest.h"

#ifndef KIT_VERSION
#define KIT_VERSION "0.0.0"
#endif

namespace kit::host {

RunPage::RunPage(const RunOptions& options,
                 const std::optional<struct stat>& input)
    : options_(options), file_(PreparePage(options, input)) {}

void RunPage::Ask(WorkerTask& task) {
  task.count_changes = true;
  task.recording.changes = true;
  task.recording.change_records = true;
  task.tell_digest = true;
  // Before the plug-in runs, which may write where it came from.
  plugin_ = {"Plug-in", task.plugin,
             DigestOfFile(task.plugin).value_or(Digest())};
}

std::string RunPage::Times() const {
  const auto now = Clock::now();
  const std::chrono::duration<double> took = now - started_;
  return fmt::format("Run on {:%Y-%m-%d at %H:%M:%S} UTC; it took {:.1f} s.",
                     fmt::gmtime(Clock::to_time_t(started_)), took.count());
}

void RunPage::Publish(Report& report, const OutputFile* output) {
  PageFacts facts;
  facts.version = KIT_VERSION;
  facts.files.push_back({"Configuration", report.config, report.input_digest});
  facts.files.push_back(plugin_);
  if (report.output && output != nullptr) {
    facts.files.push_back({"Upgraded configuration", *report.output,
                           DigestOfFile(output->fd()).value_or(Digest())});
  }
  facts.times = Times();
  file_.SetContent(RenderHtml(report, facts));
  report.page_size = file_.Commit();
  report.page = *options_.page;
}

}  // namespace kit::host
