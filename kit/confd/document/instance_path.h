// Places in data as the rest of the kit writes them.
#ifndef KIT_CONFD_DOCUMENT_INSTANCE_PATH_H_
#define KIT_CONFD_DOCUMENT_INSTANCE_PATH_H_

#include <string>
#include <string_view>

#include "kit/confd/model/schema.h"

namespace kit::store {

// The key path of an instance path of libyang's:
// "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{7}" for
// "/VX-OSPF-MIB:VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry[ospfPmEntIndex='7']".
// A key that the path lacks is "?"; a path that the schema does not know stays
// as it is.
std::string KeyPathOf(const Schema& schema, std::string_view instance_path);

// A sentence with each instance path that stands in quotes as a key path.
std::string WithKeyPaths(const Schema& schema, std::string_view sentence);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_INSTANCE_PATH_H_
