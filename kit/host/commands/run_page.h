// The page of --report: what it takes of a run, and its file.
#ifndef KIT_HOST_COMMANDS_RUN_PAGE_H_
#define KIT_HOST_COMMANDS_RUN_PAGE_H_

#include <sys/stat.h>

#include <chrono>
#include <optional>
#include <string>

#include "kit/host/commands/options.h"
#include "kit/host/journal/pass_differences.h"
#include "kit/host/process/output_file.h"
#include "kit/host/process/worker.h"
#include "kit/host/report/html_report.h"
#include "kit/host/report/report.h"

namespace kit::host {

class RunPage {
 public:
  // `options` name a page, and have to outlive it. Throws FailureError
  // (kOutputFailed) when it can't be written there.
  RunPage(const RunOptions& options, const std::optional<struct stat>& input);

  // Has a run tell what the page shows.
  void Ask(WorkerTask& task);
  PassDifferences& differences() { return differences_; }

  // Puts it in place, to be taken back until Confirm. Throws FailureError
  // (kOutputFailed).
  void Publish(Report& report, const OutputFile* output);

  // As those of OutputFile.
  std::string Confirm() { return file_.Confirm(); }
  std::string TakeBack() { return file_.TakeBack(); }

 private:
  using Clock = std::chrono::system_clock;

  std::string Times() const;

  const RunOptions& options_;
  OutputFile file_;
  PassDifferences differences_;
  PageFile plugin_;
  Clock::time_point started_ = Clock::now();
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RUN_PAGE_H_
