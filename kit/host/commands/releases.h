// The data models of a run, and those that its configuration may be of instead.
#ifndef KIT_HOST_COMMANDS_RELEASES_H_
#define KIT_HOST_COMMANDS_RELEASES_H_

#include <filesystem>
#include <string>
#include <vector>

#include "kit/host/commands/options.h"
#include "kit/host/process/misfit.h"

namespace kit::host {

struct Releases {
  std::filesystem::path before;
  std::filesystem::path after;
  std::string own;  // how messages call `before`
  std::vector<KnownRelease> others;
};

// Throws FailureError (kBadInput) where models that are needed are missing.
Releases FindReleases(const UpgradeOptions& options);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RELEASES_H_
