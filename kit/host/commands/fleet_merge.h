// The results of a fleet's shards as those of the whole.
#ifndef KIT_HOST_COMMANDS_FLEET_MERGE_H_
#define KIT_HOST_COMMANDS_FLEET_MERGE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/host/commands/fleet_results.h"

namespace kit::host {

class MergedResults {
 public:
  // Throws FailureError (kBadInput) for files that can't be read, are of
  // different fleets or upgrades, or have the same shard.
  explicit MergedResults(const std::vector<std::string>& files);

  // Of the whole fleet.
  const FleetHeader& header() const { return header_; }

  // In the order of the fleet.
  void ForEach(const std::function<void(const RouterResult&)>& sink) const;

  // What is not there, in lines: shards, and routers of shards that were not
  // run to their end.
  std::vector<std::string> Missing() const;

 private:
  struct Part {
    std::string file;
    FleetResults results;
  };

  FleetHeader header_;
  std::vector<std::optional<Part>> parts_;  // by shard
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_FLEET_MERGE_H_
