// What the database does by itself before an upgrade program runs.
#ifndef KIT_CONFD_STORE_AUTOMATIC_UPGRADE_H_
#define KIT_CONFD_STORE_AUTOMATIC_UPGRADE_H_

#include "kit/confd/store/data.h"

namespace kit::store {

// The old data carried over into the new model: nodes of both models keep
// their values, a type change goes through the value's text, what does not fit
// falls back to the new default or is dropped, and a value equal to the old
// default follows the new one.
Data UpgradeAutomatically(const Data& old_data, const Schema& new_schema);

}  // namespace kit::store

#endif  // KIT_CONFD_STORE_AUTOMATIC_UPGRADE_H_
