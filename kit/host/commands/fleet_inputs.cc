#include "kit/host/commands/fleet_inputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "kit/host/exit_code.h"
#include "kit/host/failure.h"
#include "kit/host/process/checksum.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& file, std::string reason,
                       std::string advice) {
  throw FailureError(
      {ExitCode::kBadInput, std::move(reason), std::move(advice), file});
}

// A link to what is not there is to fail rather than to be passed over.
bool IsConfiguration(const fs::directory_entry& entry) {
  const fs::path extension = entry.path().extension();
  if (extension != ".xml" && extension != ".json") return false;
  std::error_code error;
  const fs::file_type type = entry.status(error).type();
  return type == fs::file_type::regular || type == fs::file_type::not_found;
}

std::vector<fs::path> FilesBelow(const std::string& folder) {
  std::vector<fs::path> files;
  std::error_code error;
  fs::recursive_directory_iterator at(folder, error);
  for (; !error && at != fs::recursive_directory_iterator();
       at.increment(error)) {
    if (IsConfiguration(*at)) files.push_back(at->path());
  }
  if (error) {
    Fail(folder, "the folder cannot be read: " + error.message(),
         "make it and the folders in it readable");
  }
  if (files.empty()) {
    Fail(folder, "the folder has no configurations",
         "name one with files whose names end in .xml or .json");
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string AbsoluteName(const fs::path& path) {
  std::error_code error;
  const fs::path absolute = fs::weakly_canonical(path, error);
  return error ? path.lexically_normal().string() : absolute.string();
}

bool IsWithin(const std::string& path, const std::string& folder) {
  return path == folder || path.rfind(folder + "/", 0) == 0;
}

class Lister {
 public:
  explicit Lister(const FleetOptions& options) : options_(options) {}

  std::vector<FleetInput> List() && {
    for (const std::string& name : options_.configs) {
      std::error_code error;
      if (fs::is_directory(name, error)) {
        AddFolder(name);
      } else {
        Add(name, fs::path(name).filename());
      }
    }
    for (const FleetInput& input : fleet_) CheckIsNoInput(input);
    return std::move(fleet_);
  }

 private:
  void AddFolder(const std::string& folder) {
    if (options_.output &&
        IsWithin(AbsoluteName(*options_.output), AbsoluteName(folder))) {
      Fail(*options_.output,
           fmt::format("the folder of the outputs is in {}, whose files would "
                       "be taken for configurations the next time",
                       folder),
           "name a folder outside of it");
    }
    for (const fs::path& file : FilesBelow(folder)) {
      Add(file.string(), file.lexically_relative(folder));
    }
  }

  void Add(const std::string& config, fs::path below_output) {
    const auto [known, is_new] =
        inputs_.emplace(AbsoluteName(config), fleet_.size());
    if (!is_new) {
      Fail(config,
           "the configuration comes twice, also as " +
               fleet_[known->second].config,
           "name it once");
    }
    FleetInput input{config, ""};
    if (options_.output) {
      if (options_.format) {
        below_output.replace_extension(
            *options_.format == control::Format::kXml ? ".xml" : ".json");
      }
      input.output = (fs::path(*options_.output) / below_output).string();
      AddOutput(config, input.output);
    }
    fleet_.push_back(std::move(input));
  }

  void AddOutput(const std::string& config, const std::string& output) {
    const auto [known, is_new] =
        outputs_.emplace(AbsoluteName(output), fleet_.size());
    if (is_new) return;
    Fail(config,
         fmt::format("its output would be {}, which is that of {} too", output,
                     fleet_[known->second].config),
         "name the folder that both are in, or run them one after another");
  }

  void CheckIsNoInput(const FleetInput& input) const {
    if (input.output.empty() ||
        inputs_.count(AbsoluteName(input.output)) == 0) {
      return;
    }
    Fail(input.config,
         fmt::format("its output would be {}, which is a configuration of the "
                     "fleet and never changed",
                     input.output),
         "name another folder with -o");
  }

  const FleetOptions& options_;
  std::vector<FleetInput> fleet_;
  std::map<std::string, size_t> inputs_;   // by absolute name
  std::map<std::string, size_t> outputs_;  // likewise
};

}  // namespace

std::vector<FleetInput> ListFleet(const FleetOptions& options) {
  return Lister(options).List();
}

std::vector<FleetInput> OfShard(const std::vector<FleetInput>& fleet,
                                const Shard& shard) {
  std::vector<FleetInput> part;
  for (size_t i = shard.number - 1; i < fleet.size(); i += shard.of) {
    part.push_back(fleet[i]);
  }
  return part;
}

uint64_t FingerprintOf(const std::vector<FleetInput>& fleet) {
  Checksum checksum;
  for (const FleetInput& input : fleet) checksum.Add(input.config + '\n');
  return checksum.sum ^ (checksum.sum_of_sums << 20);
}

}  // namespace kit::host
