// What is wrong with a text.
#ifndef KIT_CONFD_DOCUMENT_FAULT_H_
#define KIT_CONFD_DOCUMENT_FAULT_H_

#include <cstdint>
#include <string>

namespace kit::store {

struct Fault {
  uint64_t line = 0;  // 0 when unknown
  std::string path;   // of the node at fault, "" when unknown
  std::string reason;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_FAULT_H_
