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

  // Begins anew: whoever runs the program has loaded all, or none, as at first.
  void Start(bool found);
  // The other case of that. What the program has loaded itself stays.
  void Switch() { found_ = !found_; }

  // What the program loads: all, or one namespace by its hash.
  void Load() { all_ = true; }
  void Load(uint32_t hash) { hashes_.insert(hash); }

  bool Has(uint32_t hash) const { return found_ || HasLoaded(hash); }
  bool HasAny() const { return found_ || all_ || !hashes_.empty(); }

  // Called once: before a program is given the first text, or other answer,
  // that depends on what it found loaded. It may switch that.
  void SetWatcher(std::function<void()> watcher);
  // Something about a namespace is about to be answered, by whether its schema
  // is there.
  void NoteDependence(uint32_t hash);

 private:
  bool HasLoaded(uint32_t hash) const {
    return all_ || hashes_.count(hash) > 0;
  }

  bool found_ = false;
  bool all_ = false;
  std::set<uint32_t> hashes_;
  std::function<void()> watcher_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_SESSION_LOADED_SCHEMAS_H_
