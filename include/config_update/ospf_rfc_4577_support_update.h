#ifndef CONFIG_UPDATE_OSPF_RFC_4577_SUPPORT_UPDATE_H_
#define CONFIG_UPDATE_OSPF_RFC_4577_SUPPORT_UPDATE_H_

#include <confd_lib.h>

#include <cstdint>
#include <string>

#include "config_update/export.h"

namespace config_update {

// Switches RFC 4577 support (OSPF between provider and customer edge) on for
// the OSPFv2 instances of VRFs that take part in a BGP/MPLS VPN. Acts only on
// old data that had the internal list of entity indexes already.
class OspfV2Rfc4577Support {
 public:
  CONFIG_UPDATE_EXPORT static const std::string kOspfToProcIdList;
  CONFIG_UPDATE_EXPORT static const std::string krtmEntryMibList;
  CONFIG_UPDATE_EXPORT static const std::string kospfv2EntryMibList;

  // Returns -1 when an entity could not be read or written.
  CONFIG_UPDATE_EXPORT int Run();

  // Walks the internal list. cdb_objs is room for object_count entries of
  // values_per_object values each, which the caller releases. Returns -1 when
  // an entity could not be read or written; the others are handled even so.
  CONFIG_UPDATE_EXPORT int Iterate(confd_value_t* cdb_objs, int object_count,
                                   int values_per_object);

  // Whether the instance's RTM redistributes between OSPF and BGP and BGP
  // serves VPNs.
  CONFIG_UPDATE_EXPORT bool CanUpgrade(uint32_t rtm_idx, uint32_t proc_id);

  // Switches the support on for an entity that has it switched off. 0 or -1.
  CONFIG_UPDATE_EXPORT int SetRfc4577Support(int index);

  int cdb_sock;
  int maapi_sock;
  int thandle;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_RFC_4577_SUPPORT_UPDATE_H_
