#include "kit/host/commands/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <memory>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "kit/host/commands/shard.h"
#include "kit/host/text.h"

#ifndef KIT_VERSION
#define KIT_VERSION "0.0.0"
#endif

namespace kit::host {
namespace {

// The value of --log without one; no file's name.
constexpr char kShowLog[] = "-";

constexpr char kExitCodes[] =
    "Exit codes:\n"
    "  0    success\n"
    "  1    the plug-in returned -1 (or anything else but 0)\n"
    "  2    the result breaks the new model\n"
    "  3    bad usage, or an unreadable, malformed or invalid configuration "
    "or\n"
    "       data model\n"
    "  4    the plug-in could not be loaded\n"
    "  5    the plug-in aborted, crashed, hung or broke what it runs in\n"
    "  6    the output, the log or the report could not be written\n"
    "  7    --strict, and there is something to look at; --fail-on-loss, and "
    "a\n"
    "       leaf of the input is dropped\n"
    "  8    explain: the path is neither in the input nor in the result\n"
    "  70   internal error of this program, or no more time, CPU time, "
    "memory,\n"
    "       processes or open files\n"
    "  128+N  ended by signal N\n"
    "Unless the exit code is 0, the file of -o is as it was before; what went\n"
    "to standard output stays there.";

constexpr char kJsonKeys[] =
    "Keys of the --json report: config, device, plugin, result (of update),\n"
    "findings (rule, severity, message, count, places, advice, section),\n"
    "passes (pass, name, calls, changes, failed_calls),\n"
    "not_rehearsed (module, leaves),\n"
    "not_carried_over (path, value, reason), log (records of the plug-in),\n"
    "calls (total, by_function, last, open_cursors,\n"
    "unreleased_values), changes (list, created,\n"
    "rekeyed, changed, deleted, moved), valid, violations (error, path, "
    "reason), schemas\n"
    "(loaded, matter, otherwise: what comes of the run the other way),\n"
    "plugin_output, exit_code, outcome, error (reason, details, advice, file,\n"
    "line, path), output, page, format; null is what does not apply or is not "
    "known.\n"
    "With --diff also entries (change, pass, list, path, old_path, leaves:\n"
    "leaf, before, after, and the default that holds where one is null), with\n"
    "--trace "
    "also events (log records, calls and what they changed, in their order).";

// The hashes that the device family's data-model compiler gave modules of the
// models that come with this program. Other models lack them, and the hashes
// are passed over.
std::map<std::string, uint32_t> DeviceNamespaceHashes() {
  return {{"VX-OSPF-MIB", 0x1AB53F7A},
          {"VX-OSPF-V3-MIB", 0x0E52B437},
          {"VX-RTM-MIB", 0x31635FA0}};
}

// A decimal number, or a hexadecimal one after 0x.
std::optional<uint32_t> ParseHash(std::string_view text) {
  const bool hex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  if (hex) text.remove_prefix(2);
  uint32_t hash = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] =
      std::from_chars(text.data(), end, hash, hex ? 16 : 10);
  if (error != std::errc() || stop != end) return std::nullopt;
  return hash;
}

std::optional<std::pair<std::string, uint32_t>> ParseNamespace(
    const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) return std::nullopt;
  const auto hash = ParseHash(text.substr(equals + 1));
  if (!hash) return std::nullopt;
  return std::make_pair(text.substr(0, equals), *hash);
}

std::string CheckNamespace(const std::string& text) {
  if (ParseNamespace(text)) return "";
  return "'" + text +
         "' is not MODULE=HASH with a 32-bit hash such as 448085882 or "
         "0x1AB53F7A";
}

std::string CheckTimeout(const std::string& text) {
  double seconds = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, seconds);
  const bool is_number = parsed.ec == std::errc() && parsed.ptr == end;
  if (is_number && std::isfinite(seconds) && seconds >= 0 && seconds <= 1e6) {
    return "";
  }
  return "'" + text + "' is not a number of seconds from 0 to 1000000";
}

std::string CheckNotEmpty(const std::string& text) {
  return text.empty() ? "an empty name names no file" : "";
}

std::string CheckPage(const std::string& text) {
  return text == "-" ? "a page needs a file of its own" : CheckNotEmpty(text);
}

// Shows how the values of options are given that may do without.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_name(const CLI::Option* option,
                               bool is_positional) const override {
    std::string name = Formatter::make_option_name(option, is_positional);
    const std::array<std::pair<std::string, std::string>, 2> values = {
        {{std::string("{") + kShowLog + "}", "[=FILE]"}, {"{run}", "[=pass]"}}};
    for (const auto& [value, shown] : values) {
      const size_t at = name.find(value);
      if (at != std::string::npos) name.replace(at, value.size(), shown);
    }
    return name;
  }
};

void AddConfig(CLI::App& command, std::string& config) {
  command
      .add_option("CONFIG", config,
                  "Pre-upgrade configuration, XML or JSON (RFC 7951), plain or "
                  "as saved or returned by NETCONF; - is standard input")
      ->required()
      ->type_name("FILE")
      ->check(CheckNotEmpty);
}

// The options that say what is upgraded, by what, and into what.
class UpgradeParser {
 public:
  explicit UpgradeParser(UpgradeOptions& options) : options_(options) {}

  void AddTo(CLI::App& command) {
    AddPlugin(command);
    AddAllButPlugin(command);
  }

  // For a command that runs several.
  void AddAllButPlugin(CLI::App& command) {
    AddRules(command);
    AddModels(command);
    AddLimits(command);
  }

  // To be called once the command line is parsed.
  void Finish() {
    options_.schemas_loaded = schemas_ != "none";
    if (unknown_ == "refuse") {
      options_.unknown_modules = control::UnknownModules::kRefuse;
    }
    options_.namespace_hashes = DeviceNamespaceHashes();
    for (const std::string& text : namespaces_) {
      const auto hash = ParseNamespace(text);
      options_.namespace_hashes[hash->first] = hash->second;
      options_.named_modules.push_back(hash->first);
    }
  }

 private:
  void AddPlugin(CLI::App& command) {
    command
        .add_option("--plugin", options_.plugin,
                    "Plug-in to run instead of the one installed beside this "
                    "program")
        ->type_name("FILE")
        ->check(CheckNotEmpty);
    command
        .add_option("--schemas", schemas_,
                    "Whether the plug-in finds ConfD's schemas loaded into its "
                    "process, which is up to a device's upgrade framework; "
                    "loaded by default")
        ->type_name("loaded|none")
        ->check(CLI::IsMember({"loaded", "none"}).description(""));
  }

  void AddRules(CLI::App& command) {
    command
        .add_option(
            "--rules", options_.rules,
            "Rules of your own for what needs a look (docs/findings.md); "
            "may be repeated")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->check(CheckNotEmpty);
    command
        .add_option(
            "--passes", options_.passes,
            "Table of the passes of another plug-in, by what it logs at "
            "their start and end (docs/findings.md)")
        ->type_name("FILE")
        ->check(CheckNotEmpty);
    command.add_flag(
        "--show-secrets", options_.show_secrets,
        "Show passwords and keys, which are **** otherwise; the output "
        "has them in any case");
  }

  void AddModels(CLI::App& command) {
    CLI::Option* from = command
                            .add_option("--from", options_.from,
                                        "Release that the configuration is of")
                            ->type_name("before|intermediate|after")
                            ->capture_default_str()
                            ->check(CLI::IsMember(std::vector<std::string>(
                                                      std::begin(kReleases),
                                                      std::end(kReleases)))
                                        .description(""));
    command
        .add_option(
            "--yang-before", options_.yang_before,
            "Folder with the data models before the upgrade, in place of "
            "--from")
        ->type_name("DIR")
        ->check(CheckNotEmpty)
        ->excludes(from);
    command
        .add_option("--yang-after", options_.yang_after,
                    "Folder with the data models after the upgrade")
        ->type_name("DIR")
        ->check(CheckNotEmpty);
    command
        .add_option("--namespace", namespaces_,
                    "Namespace hash of a module, decimal or 0x...; may be "
                    "repeated")
        ->type_name("MODULE=HASH")
        ->allow_extra_args(false)
        ->check(CheckNamespace);
    command
        .add_option(
            "--unknown", unknown_,
            "What becomes of modules that no model knows: carried through "
            "as they are, or refused")
        ->type_name("carry|refuse")
        ->capture_default_str()
        ->check(CLI::IsMember({"carry", "refuse"}).description(""));
  }

  void AddLimits(CLI::App& command) {
    command
        .add_option("--max-size", options_.max_size_mib,
                    "Refuse a configuration of more than N MiB")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(uint64_t{1}, uint64_t{1} << 20).description(""));
    command
        .add_option("--timeout", options_.timeout_s,
                    "Give up when the plug-in, or any other step of the run "
                    "(reading, parsing, validating, comparing, saving), takes "
                    "longer than S seconds; 0 is never. Time in which nobody "
                    "reads what is printed does not count")
        ->type_name("S")
        ->capture_default_str()
        ->check(CheckTimeout);
  }

  UpgradeOptions& options_;
  std::vector<std::string> namespaces_;
  std::string schemas_;
  std::string unknown_ = "carry";
};

class RunParser {
 public:
  explicit RunParser(CLI::App& app)
      : command_(
            *app.add_subcommand("run", "Run the plug-in on one configuration")),
        upgrade_(options_) {
    command_.footer(std::string(kExitCodes) + "\n\n" + kJsonKeys);
    AddConfig(command_, options_.config);
    AddOutput();
    upgrade_.AddTo(command_);
    AddViews();
    AddSeverity();
  }

  bool is_wanted() const { return command_.parsed(); }

  RunOptions Take() {
    upgrade_.Finish();
    if (!format_.empty()) {
      options_.format =
          format_ == "xml" ? control::Format::kXml : control::Format::kJson;
    }
    options_.show_log = verbose_ || log_ == kShowLog;
    if (!log_.empty() && log_ != kShowLog) options_.log = log_;
    options_.trace = options_.trace || verbose_;
    options_.details = verbose_;
    options_.diff = diff_ == "run";
    options_.diff_by_pass = diff_ == "pass";
    return std::move(options_);
  }

 private:
  void AddOutput() {
    command_
        .add_option("-o,--output", options_.output,
                    "Write the upgraded configuration to FILE; - is standard "
                    "output, the report then goes to standard error")
        ->type_name("FILE")
        ->check(CheckNotEmpty);
    command_.add_flag(
        "--force", options_.force,
        "Replace the FILE of -o, --log or --report if it exists; the new one "
        "gets its owner, group and permissions");
    command_
        .add_option("--format", format_,
                    "Format of the output; the input's by default")
        ->type_name("xml|json")
        ->check(CLI::IsMember({"xml", "json"}).description(""));
  }

  void AddViews() {
    CLI::Option* quiet =
        command_.add_flag("--quiet", options_.quiet, "Print errors only");
    command_.add_flag(
        std::string("--log{") + kShowLog + "}", log_,
        "Show the plug-in's log; --log=FILE writes it to FILE, one record per "
        "line, as they come");
    command_
        .add_option("--report", options_.page,
                    "Write all about the run to FILE, one page for a browser, "
                    "whatever comes of the upgrade")
        ->type_name("FILE")
        ->check(CheckPage);
    CLI::Option* trace = command_.add_flag(
        "--trace", options_.trace,
        "Print every ConfD call, what it changed, and every log "
        "record as they happen");
    CLI::Option* verbose =
        command_.add_flag("--verbose", verbose_,
                          "--log and --trace, and for each finding where and "
                          "what to do about it");
    CLI::Option* diff =
        command_
            .add_flag("--diff{run}", diff_,
                      "Print every entry that the plug-in created (+), deleted "
                      "(-), changed (~), gave other keys (>) or another place "
                      "(^); --diff=pass pass by pass")
            ->check(CLI::IsMember({"run", "pass"}).description(""));
    CLI::Option* ledger = command_.add_flag(
        "--ledger", options_.ledger,
        "Account for every leaf of the input: kept, moved (in an entry that "
        "got other keys), changed or dropped, and by whom");
    CLI::Option* json = command_.add_flag(
        "--json", options_.json, "Print the report as one JSON object");
    quiet->excludes(trace)
        ->excludes(verbose)
        ->excludes(diff)
        ->excludes(ledger)
        ->excludes(json);
  }

  void AddSeverity() {
    command_.add_flag(
        "--strict", options_.strict,
        "Findings that ask for a look, or to stop, are a failure (exit "
        "code 7)");
    command_.add_flag("--fail-on-loss", options_.fail_on_loss,
                      "A leaf of the input that the automatic upgrade or the "
                      "plug-in drops is a failure (exit code 7)");
  }

  RunOptions options_;
  CLI::App& command_;
  UpgradeParser upgrade_;
  std::string format_;
  std::string log_;
  std::string diff_;
  bool verbose_ = false;
};

std::string CheckShard(const std::string& text) {
  if (FindShard(text)) return "";
  if (text == "auto") {
    return "none of SLURM_ARRAY_TASK_ID and SLURM_ARRAY_TASK_COUNT, "
           "JOB_COMPLETION_INDEX (with auto/N), CI_NODE_INDEX and "
           "CI_NODE_TOTAL says which part this is";
  }
  if (text.rfind("auto/", 0) == 0) {
    return "none of SLURM_ARRAY_TASK_ID, JOB_COMPLETION_INDEX and "
           "CI_NODE_INDEX says which of " +
           text.substr(5) + " parts this is";
  }
  return "'" + text + "' is neither I/N with I from 1 to N, nor auto";
}

class FleetParser {
 public:
  explicit FleetParser(CLI::App& app)
      : command_(*app.add_subcommand("fleet",
                                     "Run the plug-in on many configurations")),
        upgrade_(options_) {
    command_.footer(kExitCodes);
    AddFiles();
    upgrade_.AddTo(command_);
    AddWork();
    AddReport();
  }

  bool is_wanted() const { return command_.parsed(); }

  FleetOptions Take() {
    upgrade_.Finish();
    if (!format_.empty()) {
      options_.format =
          format_ == "xml" ? control::Format::kXml : control::Format::kJson;
    }
    if (!shard_.empty()) options_.shard = *FindShard(shard_);
    for (const std::string& name : only_) {
      options_.only.push_back(name == "look" ? RouterVerdict::kLook
                                             : RouterVerdict::kFail);
    }
    return std::move(options_);
  }

 private:
  void AddFiles() {
    command_
        .add_option("CONFIG", options_.configs,
                    "Configurations, and folders with them (*.xml, *.json)")
        ->required()
        ->type_name("FILE|DIR")
        ->check(CheckNotEmpty);
    command_
        .add_option("-o,--output", options_.output,
                    "Write the upgraded configurations to DIR, under the names "
                    "that they have in their folders")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->check(CheckNotEmpty);
    command_.add_flag("--force", options_.force,
                      "Replace files that exist: of -o, --json and --junit");
    command_
        .add_option("--format", format_,
                    "Format of the outputs; that of each input by default")
        ->type_name("xml|json")
        ->check(CLI::IsMember({"xml", "json"}).description(""));
  }

  void AddWork() {
    options_.jobs = std::max(1U, std::thread::hardware_concurrency());
    command_
        .add_option("--jobs", options_.jobs,
                    "Run N at a time; as many as there are processors by "
                    "default")
        ->type_name("N")
        ->check(CLI::Range(size_t{1}, size_t{1024}).description(""));
    CLI::Option* shard =
        command_
            .add_option("--shard", shard_,
                        "Run the I-th of N parts of the fleet; auto, or auto/N "
                        "where it does not know N: as the job array of Slurm, "
                        "the indexed job of Kubernetes or the parallel job of "
                        "GitLab says that this is one of")
            ->type_name("I/N|auto[/N]")
            ->check(CheckShard);
    command_
        .add_flag("--merge", options_.merge,
                  "The files are what --json of a fleet's shards has written: "
                  "make one summary and report of them")
        ->excludes(shard);
    command_.add_flag("--strict", options_.strict,
                      "Findings that ask for a look, or to stop, are a failure "
                      "(exit code 7)");
  }

  void AddReport() {
    CLI::Option* json =
        command_
            .add_option("--json", options_.json,
                        "Write the results to FILE, a line of JSON for each "
                        "router, as they come")
            ->type_name("FILE")
            ->check(CheckNotEmpty);
    command_
        .add_flag("--resume", options_.resume,
                  "Go on with the FILE of --json where an interrupted run "
                  "has left it")
        ->needs(json);
    command_
        .add_option("--junit", options_.junit,
                    "Write the results to FILE as test cases (JUnit's XML)")
        ->type_name("FILE")
        ->check(CheckNotEmpty);
    command_
        .add_option("--report", options_.page,
                    "Write the results to FILE, one page for a browser, and a "
                    "page of each router to a folder beside it that is named "
                    "after it")
        ->type_name("FILE")
        ->check(CheckPage);
    CLI::Option* quiet =
        command_.add_flag("--quiet", options_.quiet, "Print errors only");
    command_
        .add_option("--only", only_,
                    "Print the lines of those routers only; may be repeated")
        ->type_name("look|fail")
        ->allow_extra_args(false)
        ->check(CLI::IsMember({"look", "fail"}).description(""))
        ->excludes(quiet);
  }

  FleetOptions options_;
  CLI::App& command_;
  UpgradeParser upgrade_;
  std::string format_;
  std::string shard_;
  std::vector<std::string> only_;
};

class CompareParser {
 public:
  explicit CompareParser(CLI::App& app)
      : command_(*app.add_subcommand(
            "compare", "Show what differs between two ways to upgrade")),
        upgrade_(options_) {
    command_.footer(
        "What to compare is one of --plugin A --plugin B, --schemas, "
        "--before.\n"
        "Only what differs is printed: verdict, findings, log, calls, result.\n"
        "The exit code is 0 where nothing differs, and 1 where something does; "
        "others\nare those of run.");
    command_.add_option("CONFIG", options_.configs, "Configurations")
        ->required()
        ->type_name("FILE")
        ->check(CheckNotEmpty);
    AddWays();
    command_.add_flag("--json", options_.json,
                      "Print a line of JSON for each configuration");
    upgrade_.AddAllButPlugin(command_);
  }

  bool is_wanted() const { return command_.parsed(); }

  // Throws CLI::ValidationError.
  CompareOptions Take() {
    upgrade_.Finish();
    const bool has_plugins = !options_.plugins.empty();
    if (has_plugins + options_.schemas + options_.before.has_value() != 1) {
      throw CLI::ValidationError(
          "one of --plugin A --plugin B, --schemas and --before FILE says what "
          "to compare");
    }
    if (has_plugins && options_.plugins.size() != 2) {
      throw CLI::ValidationError("--plugin: two are compared, not " +
                                 std::to_string(options_.plugins.size()));
    }
    if (options_.before && options_.configs.size() != 1) {
      throw CLI::ValidationError(
          "--before: a saved result is of one configuration");
    }
    return std::move(options_);
  }

 private:
  void AddWays() {
    command_
        .add_option("--plugin", options_.plugins,
                    "Two plug-ins, in two options")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->check(CheckNotEmpty);
    command_.add_flag("--schemas", options_.schemas,
                      "With ConfD's schemas loaded, and without");
    command_
        .add_option("--before", options_.before,
                    "A result that -o of a run has saved, and what the upgrade "
                    "makes of its configuration now")
        ->type_name("FILE")
        ->check(CheckNotEmpty);
  }

  CompareOptions options_;
  CLI::App& command_;
  UpgradeParser upgrade_;
};

class ExplainParser {
 public:
  explicit ExplainParser(CLI::App& app)
      : command_(*app.add_subcommand(
            "explain",
            "Say where an entry or leaf of the result comes from, or where one "
            "of the input went")),
        upgrade_(options_) {
    command_.footer(kExitCodes);
    AddConfig(command_, options_.config);
    command_
        .add_option("PATH", options_.path,
                    "Key path of an entry or leaf, as --diff prints it; keys "
                    "need no quotes where they are clear without")
        ->required()
        ->type_name("PATH")
        ->check(CheckNotEmpty);
    command_.add_flag("--json", options_.json,
                      "Print the explanation as one JSON object");
    upgrade_.AddTo(command_);
  }

  bool is_wanted() const { return command_.parsed(); }

  ExplainOptions Take() {
    upgrade_.Finish();
    return std::move(options_);
  }

 private:
  ExplainOptions options_;
  CLI::App& command_;
  UpgradeParser upgrade_;
};

// Whether a word that is no option follows --log, which would be its file if
// --log alone did not mean something else.
bool HasDetachedLogFile(int argc, const char* const* argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::string_view(argv[i]) == "--log" && *argv[i + 1] != '-') {
      return true;
    }
  }
  return false;
}

}  // namespace

std::variant<CommandOptions, ExitCode> ParseCommandLine(int argc,
                                                        const char* const* argv,
                                                        std::ostream& out,
                                                        std::ostream& err) {
  CLI::App app(
      "Rehearses the upgrade of a device's configuration: runs the upgrade "
      "plug-in on a copy of it and reports what it did. Unless others are "
      "named, plug-in and data models are those of OSPF.",
      "ospf-upgrade");
  app.set_version_flag("--version", "ospf-upgrade " KIT_VERSION);
  app.formatter(std::make_shared<HelpFormatter>());
  app.require_subcommand(0, 1);  // checked below, with a better message
  app.footer(kExitCodes);

  RunParser run(app);
  FleetParser fleet(app);
  CompareParser compare(app);
  ExplainParser explain(app);

  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return OneLine(error.what()) + "\nRun with --help for more information.\n";
  });
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error, out, err) != 0) {
      if (HasDetachedLogFile(argc, argv)) {
        err << "The file for the log is given as --log=FILE.\n";
      }
      return ExitCode::kBadInput;
    }
    return out.flush() ? ExitCode::kSuccess : ExitCode::kOutputFailed;
  }
  if (run.is_wanted()) return run.Take();
  if (fleet.is_wanted()) return fleet.Take();
  if (compare.is_wanted()) {
    try {
      return compare.Take();
    } catch (const CLI::ParseError& error) {
      app.exit(error, out, err);
      return ExitCode::kBadInput;
    }
  }
  if (explain.is_wanted()) return explain.Take();
  err << "A subcommand is required: run, fleet, compare or explain\n"
         "Run with --help for more information.\n";
  return ExitCode::kBadInput;
}

}  // namespace kit::host
