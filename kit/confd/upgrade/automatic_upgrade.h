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

// The old data carried over into the new model: nodes of both models keep
// their values, a type change goes through the value's text, what does not fit
// falls back to the new default or is dropped, and a value equal to the old
// default follows the new one. Entries that the new keys no longer tell apart
// take their whole list with them. What is dropped is added to `losses`, unless
// it is null.
Data UpgradeAutomatically(const Data& old_data, const Schema& new_schema,
                          std::vector<Loss>* losses);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_AUTOMATIC_UPGRADE_H_
