// Configurations as XML and JSON text, straight from the tree of data.
#ifndef KIT_CONFD_DOCUMENT_WRITER_H_
#define KIT_CONFD_DOCUMENT_WRITER_H_

#include <functional>
#include <string_view>
#include <vector>

#include "kit/confd/document/carried.h"
#include "kit/confd/document/envelope.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

// Writes the data as indented text, in pieces of some 64 KiB: what was set,
// nodes in the order of the model, entries in the order of their list. XML
// without any node is wrapped in any case.
void WriteDocument(const Data& data, Envelope envelope,
                   const std::function<void(std::string_view)>& sink);

// What is carried along, of a text of the same syntax, comes behind the
// outermost node that it stood behind, if the models have that, and else first.
void WriteDocument(const Data& data, const std::vector<Carried>& carried,
                   Envelope envelope,
                   const std::function<void(std::string_view)>& sink);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_WRITER_H_
