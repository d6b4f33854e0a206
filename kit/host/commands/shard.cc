#include "kit/host/commands/shard.h"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace kit::host {
namespace {

std::optional<size_t> ParseNumber(std::string_view text) {
  size_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::optional<size_t> FromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : ParseNumber(value);
}

std::optional<Shard> ShardOf(std::optional<size_t> number,
                             std::optional<size_t> of) {
  if (!number || !of || *number == 0 || *number > *of) return std::nullopt;
  return Shard{*number, *of};
}

std::optional<Shard> FromSlurm(std::optional<size_t> of) {
  const auto id = FromEnvironment("SLURM_ARRAY_TASK_ID");
  if (!id) return std::nullopt;
  // The ids of an array may begin anywhere and leave some out.
  const size_t first = FromEnvironment("SLURM_ARRAY_TASK_MIN").value_or(1);
  const size_t step = FromEnvironment("SLURM_ARRAY_TASK_STEP").value_or(1);
  if (*id < first || step == 0) return std::nullopt;
  if (!of) of = FromEnvironment("SLURM_ARRAY_TASK_COUNT");
  return ShardOf((*id - first) / step + 1, of);
}

std::optional<Shard> FromKubernetes(std::optional<size_t> of) {
  const auto index = FromEnvironment("JOB_COMPLETION_INDEX");
  if (!index) return std::nullopt;
  return ShardOf(*index + 1, of);
}

std::optional<Shard> FromGitlab(std::optional<size_t> of) {
  if (!of) of = FromEnvironment("CI_NODE_TOTAL");
  return ShardOf(FromEnvironment("CI_NODE_INDEX"), of);
}

}  // namespace

std::optional<Shard> FindShard(const std::string& text) {
  const size_t slash = text.find('/');
  const std::string_view first = std::string_view(text).substr(0, slash);
  std::optional<size_t> of;
  if (slash != std::string::npos) {
    of = ParseNumber(std::string_view(text).substr(slash + 1));
    if (!of) return std::nullopt;
  }
  if (first != "auto") return ShardOf(ParseNumber(first), of);
  if (const auto shard = FromSlurm(of)) return shard;
  if (const auto shard = FromKubernetes(of)) return shard;
  return FromGitlab(of);
}

}  // namespace kit::host
