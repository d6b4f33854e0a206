// All constraints that data break.
#ifndef KIT_CONFD_DOCUMENT_CONSTRAINT_FAULTS_H_
#define KIT_CONFD_DOCUMENT_CONSTRAINT_FAULTS_H_

#include <string>
#include <vector>

#include "kit/confd/document/fault.h"
#include "kit/confd/document/parse_faults.h"
#include "kit/confd/document/top_level.h"
#include "kit/confd/model/schema.h"

namespace kit::store {

// What the tree of a text breaks, each with its line. Where nodes were cut out
// of the text, constraints that may miss them are passed over.
std::vector<Fault> ConstraintFaults(std::string_view text, Syntax syntax,
                                    LibyangTree tree, const Schema& schema,
                                    const std::vector<Cut>& cuts);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_CONSTRAINT_FAULTS_H_
