#ifndef CONFIG_UPDATE_OSPF_ASBR_UPDATE_H_
#define CONFIG_UPDATE_OSPF_ASBR_UPDATE_H_

#include "config_update/export.h"

namespace config_update {

// Writes the AS boundary router status, derived from the old RTM redistribution
// table: true or false on the OSPFv2 entity 1 if there is one, and true on
// every OSPFv3 entity if anything is redistributed into OSPFv3. 0 or -1.
CONFIG_UPDATE_EXPORT int ospf_asbr_update(int maapi_sock, int thandle,
                                          int cdb_sock);

// Whether the old RTM instance fte_index redistributes into OSPF. Returns -1,
// with found as it was, when an entry cannot be read. The MAAPI socket and the
// transaction are not used.
CONFIG_UPDATE_EXPORT int has_rtm_redist_entries(int maapi_sock, int thandle,
                                                int cdb_sock,
                                                unsigned int fte_index,
                                                bool& found);

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_ASBR_UPDATE_H_
