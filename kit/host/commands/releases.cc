#include "kit/host/commands/releases.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <system_error>

#include "kit/host/commands/install_paths.h"
#include "kit/host/failure.h"

namespace kit::host {
namespace {

namespace fs = std::filesystem;

bool SameFolder(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::equivalent(a, b, error) && !error;
}

// Nothing where this program has come without them.
std::optional<fs::path> ShippedModels(const std::string& release) {
  try {
    return DefaultModels(release);
  } catch (const FailureError&) {
    return std::nullopt;
  }
}

class Finder {
 public:
  explicit Finder(const UpgradeOptions& options) : options_(options) {
    found_.before = options.yang_before ? fs::path(*options.yang_before)
                                        : DefaultModels(options.from);
    found_.after = options.yang_after ? fs::path(*options.yang_after)
                                      : DefaultModels(kLast);
    found_.own = options.yang_before ? "the models of --yang-before"
                                     : fmt::format("`{}`", options.from);
  }

  Releases Find() && {
    for (const std::string name : kReleases) {
      const auto models = ShippedModels(name);
      if (!models || SameFolder(*models, found_.after)) continue;
      Add(fmt::format("`{}`", name), *models,
          fmt::format("use --from {}", name),
          fmt::format(
              "run again with --from {}{}", name,
              options_.yang_before ? " in place of --yang-before" : ""));
    }
    Add(options_.yang_after ? "the models of --yang-after"
                            : fmt::format("`{}`", kLast),
        found_.after, "upgraded already",
        "rehearse with a configuration that was saved before the upgrade");
    return std::move(found_);
  }

 private:
  static constexpr char kLast[] = "after";

  void Add(const std::string& name, const fs::path& models,
           const std::string& meaning, const std::string& advice) {
    if (SameFolder(models, found_.before)) return;
    found_.others.push_back({{name, models}, meaning, advice});
  }

  const UpgradeOptions& options_;
  Releases found_;
};

}  // namespace

Releases FindReleases(const UpgradeOptions& options) {
  return Finder(options).Find();
}

}  // namespace kit::host
