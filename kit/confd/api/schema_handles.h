// What programs are given as parts of loaded schemas: the model's own.
#ifndef KIT_CONFD_API_SCHEMA_HANDLES_H_
#define KIT_CONFD_API_SCHEMA_HANDLES_H_

#include <confd_lib.h>

#include "kit/confd/model/leaf_type.h"
#include "kit/confd/model/schema.h"

namespace kit::api {

inline confd_type* HandleOf(const store::LeafType* type) {
  return reinterpret_cast<confd_type*>(const_cast<store::LeafType*>(type));
}
inline const store::LeafType* TypeOf(const confd_type* handle) {
  return reinterpret_cast<const store::LeafType*>(handle);
}

inline confd_cs_node* HandleOf(const store::SchemaNode* node) {
  return reinterpret_cast<confd_cs_node*>(const_cast<store::SchemaNode*>(node));
}
inline const store::SchemaNode* NodeOf(const confd_cs_node* handle) {
  return reinterpret_cast<const store::SchemaNode*>(handle);
}

}  // namespace kit::api

#endif  // KIT_CONFD_API_SCHEMA_HANDLES_H_
