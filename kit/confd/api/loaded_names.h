// Names that loaded schemas have for values by themselves.
#ifndef KIT_CONFD_API_LOADED_NAMES_H_
#define KIT_CONFD_API_LOADED_NAMES_H_

#include <confd_lib.h>

#include <optional>
#include <string>

namespace kit::api {

// Of an identity, "PREFIX:NAME", or of the node of a C_XMLTAG; nullopt for
// other values and for what no loaded schema has.
std::optional<std::string> LoadedNameOf(const confd_value_t& value);

}  // namespace kit::api

#endif  // KIT_CONFD_API_LOADED_NAMES_H_
