// Values that name modules, as they stand in XML: with prefixes.
#ifndef KIT_CONFD_DOCUMENT_PREFIXED_TEXT_H_
#define KIT_CONFD_DOCUMENT_PREFIXED_TEXT_H_

#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/model/schema.h"

namespace kit::store {

// Whether values of the leaf or leaf-list may name modules.
bool NamesModules(const SchemaNode& leaf);

struct PrefixedText {
  std::string text;
  std::vector<const lys_module*> modules;  // whose prefixes are in it
};

// A value in XML, from the text that the leaf's type prints for it. Throws
// Error if libyang doesn't take that text for the leaf.
PrefixedText WithPrefixes(const SchemaNode& leaf, std::string_view text);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_PREFIXED_TEXT_H_
