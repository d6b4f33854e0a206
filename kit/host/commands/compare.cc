#include "kit/host/commands/compare.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/host/commands/run.h"
#include "kit/host/commands/status_line.h"
#include "kit/host/failure.h"
#include "kit/host/report/comparison.h"
#include "kit/host/report/report.h"

namespace kit::host {
namespace {

// Whether the upgrade came to something that can be compared.
bool IsOfTheUpgrade(const std::optional<Failure>& failure) {
  return !failure || failure->code == ExitCode::kPluginFailed ||
         failure->code == ExitCode::kInvalidResult ||
         failure->code == ExitCode::kPluginDied;
}

// One way to upgrade.
struct Way {
  Way(std::string what, const UpgradeOptions& options)
      : name(std::move(what)), upgrade(options) {
    upgrade.LoadModels();
  }

  std::string name;
  PreparedUpgrade upgrade;
};

// All of a saved result.
std::string ReadResult(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)),
                   std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad() || text.empty()) {
    throw FailureError({ExitCode::kBadInput, "cannot be read, or is empty",
                        "name a file that -o of a run has written with "
                        "--before",
                        path});
  }
  return text;
}

UpgradeOptions WithPlugin(UpgradeOptions options, const std::string& plugin) {
  options.plugin = plugin;
  return options;
}

UpgradeOptions WithSchemas(UpgradeOptions options, bool loaded) {
  options.schemas_loaded = loaded;
  return options;
}

class Comparing {
 public:
  explicit Comparing(const CompareOptions& options) : options_(options) {
    if (options.schemas) {
      ways_.emplace_back("schemas loaded", WithSchemas(options, true));
      ways_.emplace_back("schemas not loaded", WithSchemas(options, false));
    } else if (options.before) {
      ways_.emplace_back("what the upgrade makes of it now", options);
    } else {
      for (const std::string& plugin : options.plugins) {
        ways_.emplace_back(plugin, WithPlugin(options, plugin));
      }
    }
  }

  ExitCode Run() {
    ExitCode worst = ExitCode::kSuccess;
    for (const std::string& config : options_.configs) {
      if (status_.Due()) status_.Show("comparing " + config);
      worst = std::max(worst, CompareOne(config));
    }
    return worst;
  }

 private:
  ExitCode CompareOne(const std::string& config) {
    std::array<std::string, 2> names;
    std::vector<DifferingPart> parts;
    try {
      if (options_.before) {
        const std::string before = ReadResult(*options_.before);
        names = {*options_.before, ways_.front().name};
        const ComparedRun now = Rehearse(config, ways_.front());
        parts = CompareResults(before, now.result, now.secrets);
      } else {
        names = {ways_.front().name, ways_.back().name};
        const ComparedRun a = Rehearse(config, ways_.front());
        parts = CompareRuns(a, Rehearse(config, ways_.back()));
      }
    } catch (const FailureError& error) {
      status_.Hide();
      std::fputs(RenderFailure(error.failure()).c_str(), stderr);
      return error.failure().code;
    }
    status_.Hide();
    const std::string text = options_.json
                                 ? ComparisonLine(config, parts, names)
                                 : RenderComparison(config, parts, names);
    if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
      throw FailureError({ExitCode::kOutputFailed,
                          "what differs cannot be written",
                          "make room where it goes"});
    }
    return parts.empty() ? ExitCode::kSuccess : ExitCode::kPluginFailed;
  }

  ComparedRun Rehearse(const std::string& config, const Way& way) const {
    RunOptions run;
    static_cast<UpgradeOptions&>(run) = options_;
    run.config = config;
    ComparedRun compared = RunInMemory(run, way.upgrade);
    if (IsOfTheUpgrade(compared.report.failure)) return compared;
    throw FailureError(*compared.report.failure);
  }

  const CompareOptions& options_;
  StatusLine status_{true};
  std::list<Way> ways_;
};

ExitCode Fail(const Failure& failure) {
  std::fputs(RenderFailure(failure).c_str(), stderr);
  return failure.code;
}

}  // namespace

ExitCode RunCompare(const CompareOptions& options) {
  try {
    return Comparing(options).Run();
  } catch (const FailureError& error) {
    return Fail(error.failure());
  } catch (const std::exception& error) {
    return Fail(UnexpectedFailure(error, ""));
  }
}

}  // namespace kit::host
