// Instance identifiers: text in the store, paths in the C API.
#ifndef KIT_CONFD_API_OBJECT_REF_H_
#define KIT_CONFD_API_OBJECT_REF_H_

#include <confd_lib.h>

#include <string>
#include <string_view>

#include "kit/confd/model/schema.h"

namespace kit::api {

// The path that a text such as "/m:list[k='a']/leaf" leads along, in the model
// that `place` is a node of. The caller owns it (confd_free_hkeypath). Throws
// std::bad_alloc, and Error with kUnavailable for a text that a path can't
// carry: one with positions, with values of leaf-lists, or too deep.
confd_hkeypath_t* PathOfReference(std::string_view text,
                                  const store::SchemaNode& place);

// The other way. Throws Error with kBadType for what is no path of the model.
std::string ReferenceOfPath(const confd_hkeypath_t& path,
                            const store::SchemaNode& place);

}  // namespace kit::api

#endif  // KIT_CONFD_API_OBJECT_REF_H_
