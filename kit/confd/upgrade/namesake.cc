#include "kit/confd/upgrade/namesake.h"

namespace kit::store {

const SchemaNode* Namesake(const SchemaNode& node,
                           const SchemaNode& other_parent) {
  auto found = other_parent.by_name.find(node.name);
  if (found == other_parent.by_name.end()) return nullptr;
  for (const SchemaNode* other : found->second) {
    if (other->module->ns == node.module->ns) return other;
  }
  return nullptr;
}

}  // namespace kit::store
