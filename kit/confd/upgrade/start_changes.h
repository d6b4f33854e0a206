// What the automatic upgrade does to data besides carrying them over.
#ifndef KIT_CONFD_UPGRADE_START_CHANGES_H_
#define KIT_CONFD_UPGRADE_START_CHANGES_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/tree/data.h"
#include "kit/confd/upgrade/difference.h"

namespace kit::store {

// Paths are those of the new data as far as there is one.
struct StartChange {
  enum class Kind {
    kLost,     // an entry, with its leaves
    kRenamed,  // an entry that stands elsewhere or has other keys
    kValue,    // a leaf, leaf-list or container with presence of an entry
  };
  Kind kind;
  const SchemaNode* list;  // of the entry, the root's for what is in none
  std::string path;        // "/" for the root
  // Of a renamed entry; of a leaf that was in another entry, of the leaf.
  std::string old_path = {};
  // Of kValue; `default_value` is what holds where nothing is set any more.
  LeafDifference value = {};
  // Of a lost entry its leaves as `before`, of a renamed one as both.
  std::vector<LeafDifference> leaves = {};
};

// Hands each to `sink`. A leaf-list that is a leaf now, or the other way round,
// has not changed while it has the same value.
void FindStartChanges(const Data& old_data, const Schema& new_schema,
                      const std::function<void(const StartChange&)>& sink);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_START_CHANGES_H_
