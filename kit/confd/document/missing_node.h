// Where something is missing.
#ifndef KIT_CONFD_DOCUMENT_MISSING_NODE_H_
#define KIT_CONFD_DOCUMENT_MISSING_NODE_H_

#include <string>
#include <vector>

#include "kit/confd/model/schema.h"

struct lyd_node;

namespace kit::store {

struct MissingPlace {
  std::string path;        // of what is missing; of a choice, of what holds it
  const lyd_node* holder;  // that it is missing in; null at the top
};

struct MissingPlaces {
  const lysc_node* schema = nullptr;  // null if it is not found
  std::vector<MissingPlace> places;
};

// libyang says of a missing node of `tree` only which one of the schema it is.
MissingPlaces FindMissing(const lyd_node* tree, const Schema& schema,
                          const std::string& schema_path);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_MISSING_NODE_H_
