// The command `run`: one configuration through the upgrade.
#ifndef KIT_HOST_COMMANDS_RUN_H_
#define KIT_HOST_COMMANDS_RUN_H_

#include <string>
#include <vector>

#include "kit/host/commands/options.h"
#include "kit/host/exit_code.h"
#include "kit/host/findings/rule.h"
#include "kit/host/journal/view.h"
#include "kit/host/process/worker.h"
#include "kit/host/report/comparison.h"
#include "kit/host/report/report.h"

namespace kit::host {

// What the runs of one upgrade have in common.
class PreparedUpgrade {
 public:
  // Throws FailureError (kBadInput, kNotLoaded).
  explicit PreparedUpgrade(const UpgradeOptions& options);
  // Its parts refer to each other.
  PreparedUpgrade(const PreparedUpgrade&) = delete;
  PreparedUpgrade& operator=(const PreparedUpgrade&) = delete;

  // Loads the models, which otherwise each run does. Throws FailureError
  // (kBadInput).
  void LoadModels();

  const Catalogue& catalogue() const { return catalogue_; }
  // Without what is one run's own.
  const WorkerTask& task() const { return task_; }

 private:
  WorkerTask task_;
  Catalogue catalogue_;
};

// Prints the report, and writes what the options ask for.
ExitCode Run(const RunOptions& options);

// Runs without printing anything, and puts the output in its place.
Report RunQuietly(const RunOptions& options, const PreparedUpgrade& upgrade);

// Runs without printing or writing anything, and keeps the calls, the changes
// of the whole run and the upgraded configuration.
ComparedRun RunInMemory(RunOptions options, const PreparedUpgrade& upgrade);

// Runs for what a view makes of it, and prints and writes nothing: the view is
// told of all calls and changes, and of the places.
Report RunForView(const UpgradeOptions& options, const std::string& config,
                  std::vector<std::string> places,
                  const PreparedUpgrade& upgrade, JournalView& view);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RUN_H_
