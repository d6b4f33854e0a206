#include "kit/host/commands/fleet.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "kit/host/commands/fleet_inputs.h"
#include "kit/host/commands/fleet_merge.h"
#include "kit/host/commands/fleet_results.h"
#include "kit/host/commands/progress_line.h"
#include "kit/host/commands/run.h"
#include "kit/host/failure.h"
#include "kit/host/process/checksum.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/job_pool.h"
#include "kit/host/process/output_file.h"
#include "kit/host/process/publication.h"
#include "kit/host/report/fleet_page.h"
#include "kit/host/report/fleet_summary.h"
#include "kit/host/report/junit.h"
#include "kit/host/report/report.h"
#include "kit/host/report/screen.h"

#ifndef KIT_VERSION
#define KIT_VERSION "0.0.0"
#endif

namespace kit::host {
namespace {

namespace fs = std::filesystem;

// What the machine was the reason of may end otherwise the next time.
bool IsOfTheMachine(ExitCode code) {
  return code == ExitCode::kOutputFailed || code == ExitCode::kInternal;
}

// One number for all that decides what a router's rehearsal comes to.
std::string FingerprintOf(const FleetOptions& options, const WorkerTask& task) {
  Checksum checksum;
  const auto add_file = [&checksum](const fs::path& path) {
    std::error_code error;
    const auto size = fs::file_size(path, error);
    const auto time = fs::last_write_time(path, error);
    checksum.Add(fmt::format("{} {} {}\n", path.string(), size,
                             time.time_since_epoch().count()));
  };
  add_file(task.plugin);
  for (const fs::path& folder : {task.before.directory, task.after.directory}) {
    std::vector<fs::path> files;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) add_file(file);
  }
  for (const std::string& file : options.rules) add_file(file);
  if (options.passes) add_file(*options.passes);
  checksum.Add(fmt::format(
      "{} {} {} {} {} {}", options.schemas_loaded, options.strict,
      static_cast<int>(options.unknown_modules), options.timeout_s,
      options.format ? static_cast<int>(*options.format) : -1,
      options.output.value_or("") + " " + options.page.value_or("")));
  for (const auto& [module, hash] : options.namespace_hashes) {
    checksum.Add(fmt::format("{}={} ", module, hash));
  }
  return fmt::format("{:016x}{:016x}", checksum.sum, checksum.sum_of_sums);
}

// Prints lines and progress without one destroying the other.
class FleetPrinter {
 public:
  FleetPrinter(const FleetOptions& options, size_t routers)
      : options_(options),
        screen_(Screen::Of(STDOUT_FILENO)),
        progress_(!options.quiet, routers) {}

  void Print(const RouterResult& result) {
    if (options_.quiet || !IsWanted(result.verdict)) return;
    progress_.Hide();
    Write(RenderRouter(result, screen_));
  }
  void Summarize(const FleetSummary& summary) {
    progress_.Hide();
    if (!options_.quiet) Write(summary.Render(screen_));
  }
  ProgressLine& progress() { return progress_; }

 private:
  bool IsWanted(RouterVerdict verdict) const {
    return options_.only.empty() ||
           std::count(options_.only.begin(), options_.only.end(), verdict) > 0;
  }
  static void Write(const std::string& text) {
    if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) {
      return;
    }
    throw FailureError({ExitCode::kOutputFailed,
                        "the lines of the routers cannot be written",
                        "make room where they go"});
  }

  const FleetOptions& options_;
  const Screen screen_;
  ProgressLine progress_;
};

using ForEachResult = std::function<void(const ResultSink&)>;

// What is made of all results once they are there.
class FleetEnd {
 public:
  explicit FleetEnd(const FleetOptions& options) : options_(options) {
    // Whether it can be written is said before hours of work.
    if (options.junit) Open(*options.junit, "--junit");
    if (options.page) Open(*options.page, "--report");
  }

  void Write(const FleetSummary& summary, const ForEachResult& for_each) const {
    if (options_.junit) WriteJUnit(for_each);
    if (options_.page) WritePage(summary, for_each);
  }

 private:
  using Sink = std::function<void(std::string_view)>;

  OutputFile Open(const std::string& name, const char* option) const {
    return OutputFile::ForFile(name, options_.force || options_.resume,
                               std::nullopt, option);
  }

  void WriteFile(const std::string& name, const char* option,
                 const std::function<void(const Sink&)>& write) const {
    OutputFile file = Open(name, option);
    write([&](std::string_view text) {
      try {
        WriteAll(file.fd(), text);
      } catch (const std::system_error& error) {
        throw FailureError(
            {ExitCode::kOutputFailed,
             "cannot be written: " + error.code().message(),
             fmt::format("make room, or name another file with {}", option),
             name});
      }
    });
    file.Commit();
    file.Confirm();
  }

  void WriteJUnit(const ForEachResult& for_each) const {
    size_t routers = 0;
    size_t failures = 0;
    size_t errors = 0;
    for_each([&](const RouterResult& result) {
      ++routers;
      if (result.failure) ++(IsJUnitError(result) ? errors : failures);
    });
    WriteFile(*options_.junit, "--junit", [&](const Sink& write) {
      write(JUnitBegin(routers, failures, errors));
      for_each([&](const RouterResult& result) { write(JUnitCase(result)); });
      write(JUnitEnd());
    });
  }

  void WritePage(const FleetSummary& summary,
                 const ForEachResult& for_each) const {
    const auto now = Clock::now();
    FleetPageFacts facts;
    facts.version = KIT_VERSION;
    facts.folder = FolderOf(*options_.page).string();
    const std::chrono::duration<double> took = now - started_;
    facts.times =
        fmt::format("Made on {:%Y-%m-%d at %H:%M:%S} UTC; it took {:.0f} s.",
                    fmt::gmtime(Clock::to_time_t(now)), took.count());
    WriteFile(*options_.page, "--report", [&](const Sink& write) {
      WriteFleetPage(summary, facts, for_each, write);
    });
  }

  using Clock = std::chrono::system_clock;

  const FleetOptions& options_;
  const Clock::time_point started_ = Clock::now();
};

class Fleet {
 public:
  explicit Fleet(const FleetOptions& options)
      : options_(options),
        upgrade_(options),
        all_(ListFleet(options)),
        inputs_(OfShard(all_, options.shard)),
        end_(options),
        results_(OpenResults()),
        printer_(options, inputs_.size()) {
    upgrade_.LoadModels();
  }

  ExitCode Run() && {
    FindWork();
    RunJobs({work_.size(), options_.jobs,
             [this](size_t job) { return Rehearse(job); },
             [this](size_t job, JobEnd end) { Take(job, std::move(end)); },
             [this](size_t done) { printer_.progress().Show(done); }});
    results_.Finish();
    end_.Write(summary_, [this](const ResultSink& sink) {
      results_.ForEach(
          [&sink](size_t, const RouterResult& result) { sink(result); });
    });
    printer_.Summarize(summary_);
    return summary_.exit_code();
  }

 private:
  FleetResults OpenResults() const {
    FleetHeader header;
    header.fleet = all_.size();
    header.routers = inputs_.size();
    header.shard = options_.shard;
    header.names = kit::host::FingerprintOf(all_);
    header.upgrade = FingerprintOf(options_, upgrade_.task());
    if (!options_.json) return FleetResults::Temporary(header);
    return options_.resume
               ? FleetResults::Resume(*options_.json, header)
               : FleetResults::Create(*options_.json, header, options_.force);
  }

  // Those that an interrupted run has done are counted and not printed again.
  void FindWork() {
    std::vector<size_t> again;
    results_.ForEach([&](size_t router, const RouterResult& result) {
      if (IsOfTheMachine(result.exit_code)) {
        again.push_back(router);
      } else {
        summary_.Add(result);
      }
    });
    for (const size_t router : again) results_.Drop(router);
    for (size_t i = 0; i < inputs_.size(); ++i) {
      if (!results_.Has(i)) work_.push_back(i);
    }
    printer_.progress().SetTotal(work_.size());
  }

  size_t IndexOf(size_t router) const {
    return options_.shard.number - 1 + router * options_.shard.of;
  }

  // In a folder beside the fleet's, so that shards may share it.
  std::string PageOf(size_t router) const {
    fs::path folder(*options_.page);
    folder.replace_filename(folder.stem().string() + "-routers");
    std::error_code error;  // said by what can't be created in it
    fs::create_directories(folder, error);
    return (folder / fmt::format("{:06}.html", IndexOf(router) + 1)).string();
  }

  // In a process of its own.
  std::string Rehearse(size_t job) const {
    const FleetInput& input = inputs_[work_[job]];
    RunOptions run;
    static_cast<UpgradeOptions&>(run) = options_;
    run.config = input.config;
    run.format = options_.format;
    run.strict = options_.strict;
    run.force = options_.force || options_.resume;
    run.quiet = true;
    if (!input.output.empty()) {
      std::error_code error;  // said by what can't be created in it
      fs::create_directories(fs::path(input.output).parent_path(), error);
      run.output = input.output;
    }
    if (options_.page) run.page = PageOf(work_[job]);
    RouterResult result = ToRouterResult(RunQuietly(run, upgrade_));
    result.index = IndexOf(work_[job]);
    return ToLine(result);
  }

  void Take(size_t job, JobEnd end) {
    const size_t router = work_[job];
    RouterResult result;
    if (end.end) {
      result = LostRouter(
          inputs_[router].config,
          {ExitCode::kInternal,
           "the process of this router " + DescribeEnd(*end.end),
           "somebody ended it, or the machine ran out of memory; --resume "
           "tries it again"});
      result.index = IndexOf(router);
    } else {
      result = ParseLine(end.result);
    }
    results_.Append(router, result);
    summary_.Add(result);
    printer_.Print(result);
  }

  const FleetOptions& options_;
  PreparedUpgrade upgrade_;
  const std::vector<FleetInput> all_;
  const std::vector<FleetInput> inputs_;  // of this shard
  const FleetEnd end_;
  FleetResults results_;
  FleetPrinter printer_;
  FleetSummary summary_;
  std::vector<size_t> work_;  // routers that have no result yet
};

// Makes one of the shards' results.
ExitCode Merge(const FleetOptions& options) {
  const MergedResults merged(options.configs);
  const FleetEnd end(options);
  std::optional<FleetResults> results;
  if (options.json) {
    results =
        FleetResults::Create(*options.json, merged.header(), options.force);
  }
  FleetPrinter printer(options, 0);
  FleetSummary summary;
  merged.ForEach([&](const RouterResult& result) {
    summary.Add(result);
    if (results) results->Append(result.index, result);
    // What they are was said by the shards.
    if (!options.only.empty()) printer.Print(result);
  });
  end.Write(summary,
            [&merged](const ResultSink& sink) { merged.ForEach(sink); });
  printer.Summarize(summary);
  const std::vector<std::string> missing = merged.Missing();
  if (missing.empty()) return summary.exit_code();
  throw FailureError({ExitCode::kBadInput,
                      fmt::format("the fleet is not complete: {} of {} routers",
                                  summary.routers(), merged.header().fleet),
                      "run what is missing, and merge again", "", 0, "",
                      missing});
}

ExitCode Fail(const Failure& failure) {
  std::fputs(RenderFailure(failure).c_str(), stderr);
  return failure.code;
}

}  // namespace

ExitCode RunFleet(const FleetOptions& options) {
  try {
    return options.merge ? Merge(options) : Fleet(options).Run();
  } catch (const FailureError& error) {
    return Fail(error.failure());
  } catch (const std::exception& error) {
    return Fail(UnexpectedFailure(error, ""));
  }
}

}  // namespace kit::host
