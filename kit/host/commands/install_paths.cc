#include "kit/host/commands/install_paths.h"

#include <fmt/format.h>

#include <string>
#include <system_error>
#include <vector>

#include "kit/host/failure.h"

// CMAKE_INSTALL_LIBDIR, relative to the install prefix.
#ifndef KIT_INSTALL_LIBDIR
#define KIT_INSTALL_LIBDIR "lib"
#endif

namespace kit::host {
namespace {

namespace fs = std::filesystem;

constexpr char kPluginName[] = "libquellix_ext_ospf_prot_update.so";

fs::path ExecutableFolder() {
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  if (error) {
    throw FailureError(
        {ExitCode::kInternal,
         "cannot find this program's own folder: " + error.message(),
         "name the files with --plugin, --yang-before and "
         "--yang-after"});
  }
  return executable.parent_path();
}

fs::path FirstExisting(const std::vector<fs::path>& candidates, ExitCode code,
                       const std::string& what, const std::string& advice) {
  std::string looked_at;
  for (const fs::path& candidate : candidates) {
    fs::path path = candidate.lexically_normal();
    std::error_code error;
    if (fs::exists(path, error)) return path;
    looked_at += (looked_at.empty() ? "" : ", ") + path.string();
  }
  throw FailureError(
      {code, fmt::format("{} not found; looked at {}", what, looked_at),
       advice});
}

}  // namespace

fs::path DefaultPlugin() {
  const fs::path bin = ExecutableFolder();
  const fs::path prefix = bin.parent_path();
  std::vector<fs::path> candidates = {prefix / "lib" / kPluginName};
  if (std::string(KIT_INSTALL_LIBDIR) != "lib") {
    candidates.push_back(prefix / KIT_INSTALL_LIBDIR / kPluginName);
  }
  candidates.push_back(bin / kPluginName);
  return FirstExisting(candidates, ExitCode::kNotLoaded, "the plug-in was",
                       "name it with --plugin FILE");
}

fs::path DefaultRules(const char* file) {
  return FirstExisting(
      {ExecutableFolder().parent_path() / "share/ospf-upgrade/rules" / file},
      ExitCode::kBadInput, fmt::format("the file {} was", file),
      "install the program together with its files");
}

fs::path DefaultModels(const std::string& release) {
  return FirstExisting(
      {ExecutableFolder().parent_path() / "share/ospf-upgrade/yang" / release},
      ExitCode::kBadInput, fmt::format("the data models of `{}` were", release),
      "name them with --yang-before DIR and --yang-after DIR");
}

}  // namespace kit::host
