// Our data as a tree of libyang's.
#ifndef KIT_CONFD_DOCUMENT_EXPORT_H_
#define KIT_CONFD_DOCUMENT_EXPORT_H_

#include <unordered_map>
#include <vector>

#include "kit/confd/document/top_level.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

enum class Extent {
  kAll,
  kSpecimens  // of entries that meet the same constraints, the first
};

// What was set; null for empty data. Throws Error for a value that libyang does
// not take.
LibyangTree Export(const Data& data, Extent extent = Extent::kAll);

// Some nodes of a model. Keys of chosen lists go without saying.
class Selection {
 public:
  // With all that holds it.
  void Add(const SchemaNode& node);
  // The chosen ones of a node's children, the last of the model first.
  const std::vector<const SchemaNode*>& ChildrenOf(
      const SchemaNode& node) const;

 private:
  std::unordered_map<const SchemaNode*, std::vector<const SchemaNode*>>
      children_;
};

// What holds in the chosen nodes, set or by default, with the containers that
// are always there.
LibyangTree ExportSelection(const Data& data, const Selection& selection);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_EXPORT_H_
