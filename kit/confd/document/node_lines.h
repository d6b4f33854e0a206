// Where nodes of libyang's tree, which knows no lines, stand in the text.
#ifndef KIT_CONFD_DOCUMENT_NODE_LINES_H_
#define KIT_CONFD_DOCUMENT_NODE_LINES_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "kit/confd/document/envelope.h"

struct lyd_node;

namespace kit::store {

// The lines of nodes of `tree`, which is what the text holds; 0 for a null node
// and for one that is not found. Takes one look at the text for each node of
// the schema.
std::vector<uint64_t> LinesOfNodes(std::string_view text, Syntax syntax,
                                   const lyd_node* tree,
                                   const std::vector<const lyd_node*>& wanted);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_NODE_LINES_H_
