// Which entries of a list constraints can't tell from each other.
#ifndef KIT_CONFD_DOCUMENT_LIKENESS_H_
#define KIT_CONFD_DOCUMENT_LIKENESS_H_

#include <string>
#include <unordered_set>

#include "kit/confd/tree/tree.h"

namespace kit::store {

// Remembers the entries of a list whose schema says that they are
// interchangeable.
class Likeness {
 public:
  // Whether no entry like this one has been seen.
  bool IsNew(const Node& entry);

 private:
  std::unordered_set<std::string> seen_;
  std::string description_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_LIKENESS_H_
