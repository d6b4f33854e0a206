// The entries of one list, wherever it stands, as rows of chosen leaves.
#ifndef KIT_CONFD_TREE_TABLE_H_
#define KIT_CONFD_TREE_TABLE_H_

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/model/schema.h"
#include "kit/confd/tree/tree.h"

namespace kit::store {

class Table {
 public:
  // `list` is a path as SchemaNode::Path gives it; `leaves` are relative to an
  // entry, with ".." for what is around it ("../../name"). Nothing where the
  // models have no such list or one of the leaves is none.
  static std::optional<Table> Find(const Schema& schema,
                                   const std::string& list,
                                   const std::vector<std::string>& leaves);

  // Every entry below `root`, in the order of the lists.
  void ForEachEntry(const Node& root,
                    const std::function<void(const Node&)>& visit) const;

  struct Cell {
    std::optional<Value> value;  // set or by default
    bool by_default = false;
  };
  Cell Read(const Node& entry, size_t leaf) const;
  const LeafType& TypeOf(size_t leaf) const {
    return *leaves_[leaf].node->type;
  }

 private:
  // From an entry to the holder of a leaf.
  struct LeafPlace {
    size_t levels_up = 0;
    std::vector<const SchemaNode*> containers;
    const SchemaNode* node = nullptr;
  };

  static std::optional<LeafPlace> FindLeaf(const Schema& schema,
                                           const SchemaNode& list,
                                           const std::string& path);
  void Walk(const Node& node, size_t step,
            const std::function<void(const Node&)>& visit) const;

  std::vector<const SchemaNode*> steps_;  // from the root to the list
  std::vector<LeafPlace> leaves_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_TABLE_H_
