// What the constraints of a model look at.
#ifndef KIT_CONFD_MODEL_CONSTRAINTS_H_
#define KIT_CONFD_MODEL_CONSTRAINTS_H_

#include "kit/confd/model/schema.h"

namespace kit::store {

// Finds the lists whose entries can stand for each other, and in them the
// leaves whose values decide; sets SchemaNode::interchangeable and decides.
void MarkConstraints(SchemaNode& root);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_CONSTRAINTS_H_
