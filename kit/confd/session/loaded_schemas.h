// Which schemas the process has loaded: what a program reads as text has names
// only by them. Calls find their nodes and types without.
#ifndef KIT_CONFD_SESSION_LOADED_SCHEMAS_H_
#define KIT_CONFD_SESSION_LOADED_SCHEMAS_H_

#include <cstdint>
#include <functional>
#include <set>

namespace kit::store {

// The process's one. For calls under way and for whoever knows that there are
// none.
class LoadedSchemas {
 public:
  static LoadedSchemas& Instance();

  // All of them, or none, as at first.
  void Load() { all_ = true; }
  void Unload();
  // Those of one namespace, by its hash.
  void Load(uint32_t hash) { hashes_.insert(hash); }

  bool all() const { return all_; }
  bool Has(uint32_t hash) const { return all_ || hashes_.count(hash) > 0; }

  // Called once: before a program is given the first text, or other answer,
  // that depends on what is loaded. It may change that.
  void SetWatcher(std::function<void()> watcher);
  void NoteDependence();

 private:
  bool all_ = false;
  std::set<uint32_t> hashes_;
  std::function<void()> watcher_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_SESSION_LOADED_SCHEMAS_H_
