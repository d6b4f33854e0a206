#ifndef CONFIG_UPDATE_OSPF_TE_UPDATE_H_
#define CONFIG_UPDATE_OSPF_TE_UPDATE_H_

#include <string>

#include "config_update/export.h"

namespace config_update {

// Switches traffic-engineering QoS support on for every OSPFv2 PM interface,
// unless the first one has it already.
class OspfTeUpdate {
 public:
  CONFIG_UPDATE_EXPORT static const std::string kOspfv2PmIfEntrPath;
  CONFIG_UPDATE_EXPORT static const std::string kOspfQosSupport;

  // Always 0: failures are logged and passed over.
  CONFIG_UPDATE_EXPORT int Run();

  // Whether the first interface of the old data has QoS support, and so all;
  // a failed read is a no.
  CONFIG_UPDATE_EXPORT bool OspfTeIsEnabled() const;

  // Sets it on every interface that the transaction holds. Always 0.
  CONFIG_UPDATE_EXPORT int SetOspfTe() const;

  int cdb_sock;
  int maapi_sock;
  int thandle;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_TE_UPDATE_H_
