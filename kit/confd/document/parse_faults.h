// All that is wrong with single nodes of a text.
#ifndef KIT_CONFD_DOCUMENT_PARSE_FAULTS_H_
#define KIT_CONFD_DOCUMENT_PARSE_FAULTS_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/document/envelope.h"
#include "kit/confd/document/fault.h"
#include "kit/confd/model/libyang_messages.h"
#include "kit/confd/model/schema.h"

namespace kit::store {

// A node that was cut out of a text.
struct Cut {
  const SchemaNode* schema;  // null where the models have none
  size_t parent_line;        // of what it stood in, 0 for nothing
};

struct ParseFaults {
  std::vector<Fault> faults;  // in the order of the text
  std::vector<Cut> cuts;
};

// What libyang has against a text that is a document of its own; nothing where
// it can parse it.
using Parser = std::function<std::optional<Complaint>(const std::string&)>;

// Cuts every node that libyang does not take out of a text without wrappers:
// one in which nothing is wrong with what stands in it, or each of these. Takes
// time in proportion to the text, as each part of it is looked at with few
// others, and its own parts only if something is wrong with it.
ParseFaults CutFaults(std::string& text, Syntax syntax, const Schema& schema,
                      const Parser& parse);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_PARSE_FAULTS_H_
