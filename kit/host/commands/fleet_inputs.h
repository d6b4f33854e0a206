// The configurations of a fleet, and where their results go.
#ifndef KIT_HOST_COMMANDS_FLEET_INPUTS_H_
#define KIT_HOST_COMMANDS_FLEET_INPUTS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kit/host/commands/options.h"

namespace kit::host {

struct FleetInput {
  std::string config;
  std::string output;  // "" where none is wanted
};

// The files as they are named, and those of each folder and the folders in it
// whose names end in .xml or .json, by name. Throws FailureError (kBadInput)
// for a folder that can't be read or has none, a file that comes twice, and
// outputs that would meet each other or their inputs.
std::vector<FleetInput> ListFleet(const FleetOptions& options);

// Those of one shard: every `of`-th one, so that each shard has its part of
// each folder.
std::vector<FleetInput> OfShard(const std::vector<FleetInput>& fleet,
                                const Shard& shard);

// A number for the names of a fleet, in their order.
uint64_t FingerprintOf(const std::vector<FleetInput>& fleet);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_FLEET_INPUTS_H_
