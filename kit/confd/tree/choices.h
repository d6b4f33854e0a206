// Which case of a choice holds.
#ifndef KIT_CONFD_TREE_CHOICES_H_
#define KIT_CONFD_TREE_CHOICES_H_

#include <string_view>

#include "kit/confd/tree/tree.h"

namespace kit::store {

struct HoldingCase {
  const SchemaNode::Case* holds = nullptr;
  bool by_default = false;
};

// The case that holds of a choice of the node: "choice", or of one that stands
// in a case: "choice/case/choice". Throws Error: kBadPath, there is no such
// choice; kNoExists, no case of it holds, or it stands in one that does not.
HoldingCase FindCase(const Node& node, std::string_view choice);

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_CHOICES_H_
