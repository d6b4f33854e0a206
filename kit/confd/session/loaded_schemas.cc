#include "kit/confd/session/loaded_schemas.h"

#include <utility>

namespace kit::store {

LoadedSchemas& LoadedSchemas::Instance() {
  // Never destroyed, so that calls at a process's end still find it.
  static auto& instance = *new LoadedSchemas();
  return instance;
}

void LoadedSchemas::Start(bool found) {
  found_ = found;
  all_ = false;
  hashes_.clear();
}

void LoadedSchemas::SetWatcher(std::function<void()> watcher) {
  watcher_ = std::move(watcher);
}

void LoadedSchemas::NoteDependence(uint32_t hash) {
  if (HasLoaded(hash)) return;
  if (const auto watcher = std::exchange(watcher_, nullptr)) watcher();
}

}  // namespace kit::store
