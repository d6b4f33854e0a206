#include "kit/host/commands/fleet_merge.h"

#include <fmt/format.h>

#include <utility>

#include "kit/host/failure.h"

namespace kit::host {
namespace {

// A file's first line can claim anything.
constexpr size_t kMostShards = 1'000'000;

[[noreturn]] void Fail(const std::string& file, std::string reason,
                       std::string advice) {
  throw FailureError(
      {ExitCode::kBadInput, std::move(reason), std::move(advice), file});
}

}  // namespace

MergedResults::MergedResults(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    FleetResults results = FleetResults::Read(file);
    const FleetHeader header = results.header();
    if (header.shard.of > kMostShards) {
      Fail(file,
           fmt::format("says that it is one of {} shards", header.shard.of),
           "name the files that --json of a fleet's shards has written");
    }
    if (parts_.empty()) {
      header_ = header;
      parts_.resize(header.shard.of);
    }
    if (header.names != header_.names || header.fleet != header_.fleet ||
        header.shard.of != header_.shard.of) {
      Fail(file,
           fmt::format("is not of the fleet that {} is of", files.front()),
           "merge the shards of one fleet, made by the same command but for "
           "--shard");
    }
    if (header.upgrade != header_.upgrade) {
      Fail(file,
           fmt::format("was made with another plug-in, other models, rules or "
                       "settings than {}",
                       files.front()),
           "run the shards with the same ones");
    }
    std::optional<Part>& part = parts_[header.shard.number - 1];
    if (part) {
      Fail(file,
           fmt::format("has shard {}/{}, as {} has", header.shard.number,
                       header.shard.of, part->file),
           "name each shard once");
    }
    part.emplace(Part{file, std::move(results)});
  }
  header_.shard = Shard();
  header_.routers = header_.fleet;
}

void MergedResults::ForEach(
    const std::function<void(const RouterResult&)>& sink) const {
  for (size_t i = 0; i < header_.fleet; ++i) {
    const std::optional<Part>& part = parts_[i % parts_.size()];
    const size_t router = i / parts_.size();
    if (part && part->results.Has(router)) sink(part->results.At(router));
  }
}

std::vector<std::string> MergedResults::Missing() const {
  std::vector<std::string> missing;
  for (size_t i = 0; i < parts_.size(); ++i) {
    const std::string name = fmt::format("shard {}/{}", i + 1, parts_.size());
    if (!parts_[i]) {
      missing.push_back(name + " is missing");
      continue;
    }
    const FleetResults& results = parts_[i]->results;
    if (results.count() == results.header().routers) continue;
    missing.push_back(fmt::format(
        "{} has {} of {} routers: go on with "
        "--resume --json {}",
        name, results.count(), results.header().routers, parts_[i]->file));
  }
  return missing;
}

}  // namespace kit::host
