#ifndef CONFIG_UPDATE_OSPF_BFD_IDX_UPDATE_H_
#define CONFIG_UPDATE_OSPF_BFD_IDX_UPDATE_H_

#include "config_update/export.h"

namespace config_update {

// Binds every OSPFv2 NM entity that the transaction holds to BFD entity 1.
// Always 0: failing writes are logged and passed over. The CDB socket is not
// used.
CONFIG_UPDATE_EXPORT int ospf_bfd_idx_update(int maapi_sock, int thandle,
                                             int cdb_sock);

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_BFD_IDX_UPDATE_H_
