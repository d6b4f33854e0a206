#ifndef CONFIG_UPDATE_UPDATE_H_
#define CONFIG_UPDATE_UPDATE_H_

#include "config_update/export.h"

// Converts the OSPF configuration to the new data model; called once per
// upgrade by the host, which owns the transaction and all three handles:
//   maapi_sock  connected MAAPI socket
//   thandle     the upgrade transaction on it
//   cdb_sock    CDB socket with a read session on the pre-upgrade data
// Returns 0 when there is no OSPF or every conversion succeeded, and -1 as soon
// as one failed. What was written until then stays in the transaction.
extern "C" CONFIG_UPDATE_EXPORT int update(int maapi_sock, int thandle,
                                           int cdb_sock);

#endif  // CONFIG_UPDATE_UPDATE_H_
