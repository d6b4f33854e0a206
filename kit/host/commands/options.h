// The command line.
#ifndef KIT_HOST_COMMANDS_OPTIONS_H_
#define KIT_HOST_COMMANDS_OPTIONS_H_

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/commands/shard.h"
#include "kit/host/exit_code.h"
#include "kit/host/report/router_result.h"

namespace kit::host {

// The releases whose data models come with this program, the oldest first.
inline constexpr const char* kReleases[] = {"before", "intermediate", "after"};

// Of the commands that run upgrades.
struct UpgradeOptions {
  uint64_t max_size_mib = 1024;  // of a configuration
  std::optional<std::string> plugin;
  std::string from = "before";             // one of kReleases
  std::optional<std::string> yang_before;  // in its place
  std::optional<std::string> yang_after;
  control::UnknownModules unknown_modules = control::UnknownModules::kCarry;
  std::map<std::string, uint32_t> namespace_hashes;  // by module name
  std::vector<std::string> named_modules;  // of them, those of the command line
  bool schemas_loaded = true;
  double timeout_s = 60;  // of the plug-in and of each other step; 0: none
  std::vector<std::string> rules;     // files with a site's own
  std::optional<std::string> passes;  // file with the table of passes
  bool show_secrets = false;
};

struct RunOptions : UpgradeOptions {
  std::string config;                 // "-" is standard input
  std::optional<std::string> output;  // "-" is standard output
  bool force = false;
  std::optional<control::Format> format;  // none: the input's
  std::optional<std::string> log;         // file that takes the records
  std::optional<std::string> page;        // file that takes all as HTML
  bool strict = false;                    // what needs a look is a failure
  bool fail_on_loss = false;              // a dropped leaf is a failure
  // What is shown besides the first screen.
  bool quiet = false;
  bool show_log = false;
  bool trace = false;
  bool details = false;
  bool diff = false;  // of the whole run
  bool diff_by_pass = false;
  bool ledger = false;
  bool json = false;
};

struct FleetOptions : UpgradeOptions {
  std::vector<std::string> configs;   // files and folders
  std::optional<std::string> output;  // folder
  bool force = false;
  std::optional<control::Format> format;  // none: each input's
  size_t jobs = 1;                        // at a time
  Shard shard;
  bool resume = false;
  bool strict = false;
  bool merge = false;               // the configs are files of results
  std::optional<std::string> json;  // file of results
  std::optional<std::string> junit;
  std::optional<std::string> page;  // which those of the routers are beside
  bool quiet = false;
  std::vector<RouterVerdict> only;  // lines of these; none: of all
};

struct CompareOptions : UpgradeOptions {
  std::vector<std::string> configs;
  std::vector<std::string> plugins;   // two, or
  bool schemas = false;               // loaded against not loaded, or
  std::optional<std::string> before;  // a saved result, of one configuration
  bool json = false;
};

struct ExplainOptions : UpgradeOptions {
  std::string config;  // "-" is standard input
  std::string path;    // of an entry or leaf
  bool json = false;
};

// The options of one command.
using CommandOptions =
    std::variant<RunOptions, FleetOptions, CompareOptions, ExplainOptions>;

// What to do; or the code to exit with at once, after help, version
// or a usage error was printed to `out` or `err`.
std::variant<CommandOptions, ExitCode> ParseCommandLine(int argc,
                                                        const char* const* argv,
                                                        std::ostream& out,
                                                        std::ostream& err);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_OPTIONS_H_
