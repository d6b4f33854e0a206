// A part of a fleet.
#ifndef KIT_HOST_COMMANDS_SHARD_H_
#define KIT_HOST_COMMANDS_SHARD_H_

#include <cstddef>
#include <optional>
#include <string>

namespace kit::host {

// One of `of` parts.
struct Shard {
  size_t number = 1;  // from 1
  size_t of = 1;
};

// "I/N"; of "auto" and "auto/N" what the environment says: that of a task of
// Slurm's job arrays (SLURM_ARRAY_TASK_*), of a pod of Kubernetes' indexed jobs
// (JOB_COMPLETION_INDEX, from 0, without N), of GitLab's parallel jobs
// (CI_NODE_INDEX, CI_NODE_TOTAL). None for anything else.
std::optional<Shard> FindShard(const std::string& text);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_SHARD_H_
