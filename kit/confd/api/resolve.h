// The short way from a drafted path to its target.
#ifndef KIT_CONFD_API_RESOLVE_H_
#define KIT_CONFD_API_RESOLVE_H_

#include <string_view>

#include "kit/confd/api/path_format.h"
#include "kit/confd/tree/data.h"

namespace kit::api {

// The node that an absolute path without keys names; null where that takes a
// closer look.
const store::SchemaNode* FindSchemaNode(const store::Schema& schema,
                                        const store::Module* selected,
                                        std::string_view path);

// Finds what a path leads to without taking it apart first. Values that stand
// for keys are taken as they are. False for a path that is wrong or unusual:
// then parse it. Not thread-safe.
bool ResolveDraft(const store::Data& data, const store::PathRules& rules,
                  const PathDraft& draft, store::Target& target);

}  // namespace kit::api

#endif  // KIT_CONFD_API_RESOLVE_H_
