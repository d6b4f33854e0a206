// The nodes of a libyang tree that stand in no other.
#ifndef KIT_CONFD_DOCUMENT_TOP_LEVEL_H_
#define KIT_CONFD_DOCUMENT_TOP_LEVEL_H_

#include <libyang/libyang.h>

#include <memory>
#include <vector>

#include "kit/confd/model/schema.h"

namespace kit::store {

struct TreeDeleter {
  void operator()(lyd_node* node) const { lyd_free_all(node); }
};
using LibyangTree = std::unique_ptr<lyd_node, TreeDeleter>;

// Links them all at once. libyang finds the place of each by a walk over those
// before it, which takes minutes for a long list.
class TopLevel {
 public:
  TopLevel() = default;
  TopLevel(const TopLevel&) = delete;
  TopLevel& operator=(const TopLevel&) = delete;
  ~TopLevel();

  // Takes a node and its siblings.
  void Add(LibyangTree first);

  // All that were added, in the order that libyang keeps; null for nothing.
  LibyangTree Join(const Schema& schema);

 private:
  std::vector<lyd_node*> nodes_;  // each without siblings
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_TOP_LEVEL_H_
