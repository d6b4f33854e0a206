// How many leaves data have.
#ifndef KIT_CONFD_TREE_LEAF_COUNT_H_
#define KIT_CONFD_TREE_LEAF_COUNT_H_

#include <cstdint>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

// The entries of one list, wherever it stands; of the root, what stands outside
// of any list.
struct LeafCount {
  const SchemaNode* list;
  uint64_t entries = 0;
  uint64_t leaves = 0;
};

// By list, in the order in which they are first met; those without entries are
// left out. Counted is what is set: leaves, keys among them, leaf-lists (each
// once, whatever it holds) and containers with presence.
std::vector<LeafCount> CountLeaves(const Data& data);

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_LEAF_COUNT_H_
