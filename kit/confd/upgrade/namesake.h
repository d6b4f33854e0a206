// Which nodes of two sets of models are the same one.
#ifndef KIT_CONFD_UPGRADE_NAMESAKE_H_
#define KIT_CONFD_UPGRADE_NAMESAKE_H_

#include "kit/confd/model/schema.h"

namespace kit::store {

// The node of the other model with the same name in the same namespace; null
// for none.
const SchemaNode* Namesake(const SchemaNode& node,
                           const SchemaNode& other_parent);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_NAMESAKE_H_
