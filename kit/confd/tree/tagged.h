// Nodes of an entry or container that are named one by one, any of them at any
// depth.
#ifndef KIT_CONFD_TREE_TAGGED_H_
#define KIT_CONFD_TREE_TAGGED_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

// A step through an array of such nodes.
struct TagStep {
  enum class Kind {
    kContainer,  // into a container
    kEntry,      // into the entry with the keys
    kPosition,   // into the entry at the position
    kDelete,     // delete the entry with the keys
    kLeave,      // back out of what was entered
    kNode,       // read or write a leaf, leaf-list or presence container
  };
  Kind kind;
  size_t number;  // in the array
  const SchemaNode* schema = nullptr;
  std::vector<Value> keys;
  size_t position = 0;
  NewElement element;  // what is to be written
};

// What stands where the steps lead, by the numbers of the kNode steps. In what
// is not there nothing is. Throws Error: kNoExists, an entry is missing.
std::vector<std::pair<size_t, Element>> ReadTagged(
    const Node& start, const std::vector<TagStep>& steps, ReadRules rules);

// Writes them, and creates what is missing on the way; all of them, or none
// with an Error. `start` is null where the node is yet to be made.
void CheckTagged(const Node* start, std::vector<TagStep>& steps);
void WriteTagged(Node& start, const std::vector<TagStep>& steps);

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_TAGGED_H_
