// What differs between two states of the same models' data.
#ifndef KIT_CONFD_UPGRADE_DIFFERENCE_H_
#define KIT_CONFD_UPGRADE_DIFFERENCE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

enum class DifferenceKind { kCreated, kChanged, kDeleted };

struct LeafDifference {
  std::string leaf;  // path relative to the entry
  std::optional<std::string> before;
  std::optional<std::string> after;
  // What holds on a side of the entry where nothing is set.
  std::optional<std::string> default_value = {};
};

// One list entry, or what stands outside of any list (path "/").
struct EntryDifference {
  DifferenceKind kind;
  const SchemaNode* list;
  std::string path;
  const Node* after;  // null for a deleted one
  std::vector<LeafDifference> leaves;
};

// Hands every differing entry to `sink` in the order of the model and its
// keys. Both must have the same schema. `all_defaults`: the leaves of created
// and deleted entries have theirs too, as far as the schema alone says.
void Compare(const Data& before, const Data& after,
             const std::function<void(const EntryDifference&)>& sink,
             bool all_defaults = false);

// The default of a leaf or leaf-list, nothing where a case decides.
std::optional<std::string> DefaultOf(const SchemaNode& leaf);

// What is set in an entry, lists aside, as if all of it were new.
std::vector<LeafDifference> LeavesOf(const Node& entry);

// A leaf-list's values as a difference shows them: "[1 2]".
std::string PrintList(const SchemaNode& leaf_list,
                      const std::vector<Value>& values);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_DIFFERENCE_H_
