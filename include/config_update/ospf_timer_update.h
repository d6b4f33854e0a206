#ifndef CONFIG_UPDATE_OSPF_TIMER_UPDATE_H_
#define CONFIG_UPDATE_OSPF_TIMER_UPDATE_H_

#include "config_update/export.h"

namespace config_update {

// Gives the OSPFv2 entity 1 and the single OSPFv3 entity throttle setting 1 and
// fixed SPF and LSA timers, each where its old throttle setting is 2. 0 or -1.
CONFIG_UPDATE_EXPORT int ospf_timer_update(int maapi_sock, int thandle,
                                           int cdb_sock);

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_TIMER_UPDATE_H_
