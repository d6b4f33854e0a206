// What the database does by itself before an upgrade program runs.
#ifndef KIT_CONFD_UPGRADE_AUTOMATIC_UPGRADE_H_
#define KIT_CONFD_UPGRADE_AUTOMATIC_UPGRADE_H_

#include <string>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

// Something of the old data that the new models have no place for.
struct Loss {
  std::string path;   // key path of the node in the old data
  std::string value;  // of a leaf, "" for an entry or a container
  std::string reason;
};

// Told of what becomes of the old data on their way.
class CarryWatcher {
 public:
  virtual ~CarryWatcher() = default;
  // The root, or an entry, with what is left of it; lists that stand in it
  // aside. Either side may be a container that became an entry or was one. Not
  // told of are entries that are the same in the same place.
  virtual void OnCarried(const Node& from, const Node& to) = 0;
  // An entry, or a container that becomes none, with all that stands in it, but
  // for the entries of its lists, which are told of too.
  virtual void OnLost(const Node& entry) = 0;
};

// The old data carried over into the new model: nodes of both models keep
// their values, a type change goes through the value's text, what does not fit
// falls back to the new default or is dropped, and a value equal to the old
// default follows the new one. Entries that the new keys no longer tell apart
// take their whole list with them. What is dropped is added to `losses`, unless
// it is null; `watcher` may be null too.
Data UpgradeAutomatically(const Data& old_data, const Schema& new_schema,
                          std::vector<Loss>* losses,
                          CarryWatcher* watcher = nullptr);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_AUTOMATIC_UPGRADE_H_
