// Questions about data, in XPath.
#ifndef KIT_CONFD_DOCUMENT_QUERY_H_
#define KIT_CONFD_DOCUMENT_QUERY_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

// Module names are the prefixes of expressions; a name without one is of the
// module of the node before it.
struct Query {
  std::string select;              // nodes, from the root
  std::string when;                // of each of them, "" for all
  std::vector<std::string> texts;  // leaves, from each of them
};

// An expression that can't be evaluated; what() says why.
class QueryFault : public std::runtime_error {
 public:
  QueryFault(std::string faulty, const std::string& reason)
      : std::runtime_error(reason), expression(std::move(faulty)) {}
  const std::string expression;
};

// What the models lack of the nodes that the query names; "" for nothing.
// Throws QueryFault.
std::string LackOf(const Schema& schema, const Query& query);

struct QueryMatch {
  size_t query;  // its index
  // Of the first leaf that each text leads to.
  const std::vector<std::optional<std::string>>& texts;
  // Makes the key path of the selected node.
  const std::function<std::string()>& path;
};

// Hands the nodes that fit to `sink`, query by query, in the order of the data.
// Queries that name nodes that the models lack fit none. Throws QueryFault.
void Evaluate(const Data& data, const std::vector<Query>& queries,
              const std::function<void(const QueryMatch&)>& sink);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_QUERY_H_
