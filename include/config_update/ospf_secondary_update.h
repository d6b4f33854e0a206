#ifndef CONFIG_UPDATE_OSPF_SECONDARY_UPDATE_H_
#define CONFIG_UPDATE_OSPF_SECONDARY_UPDATE_H_

#include <confd_lib.h>

#include <cstdint>
#include <list>
#include <string>

#include "config_update/export.h"

namespace config_update {

// What there is to know about one entry of the internal OSPF interface list.
struct ospf_v2_param {
  int32_t admin_stat;  // as the interface's PM entry had it
  in_addr area_id;
  std::string if_name;   // "l3-" and a name, or "loopback-" and a number
  int32_t metric_value;  // as the interface's PM metric entry had it
  int32_t if_type;       // as the interface's PM entry had it
  uint32_t pm_ent_idx;   // the new index once the lookup has succeeded
  confd_ipv4_prefix ip_addr;
  std::list<confd_ipv4_prefix> secondary_addrs;  // in the configured order
};

// Creates OSPF entries for the secondary IPv4 addresses of OSPFv2 interfaces,
// with the attributes of the primary address's entries, and records the prefix
// length of every address.
class OspfSecondaryUpdate {
 public:
  CONFIG_UPDATE_EXPORT static const std::string kL3Path;
  // A format that takes the name of the L3 interface.
  CONFIG_UPDATE_EXPORT static const std::string kL3IpSecPath;
  CONFIG_UPDATE_EXPORT static const std::string kLoPath;
  CONFIG_UPDATE_EXPORT static const std::string kOspfInternalList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfPmIfEntry;
  CONFIG_UPDATE_EXPORT static const std::string kOspfPmIfMetricEntry;

  // Returns -1 only when the namespace cannot be selected. Stops with 0 at the
  // first secondary address that has its PM interface entry already.
  CONFIG_UPDATE_EXPORT int32_t Run();

  // Reads the addresses of an interface from its configuration; a loopback has
  // a primary one only. An interface that does not exist is no failure and
  // leaves the addresses as they are.
  CONFIG_UPDATE_EXPORT int32_t GetIpv4AddrFromIf(
      confd_ipv4_prefix& ip_addr, std::list<confd_ipv4_prefix>& secondary_addrs,
      std::string& if_name) const;

  // Gathers what there is to know about the entry at a position of the internal
  // list, counted from 0. On -1 param holds what was read until then.
  CONFIG_UPDATE_EXPORT int32_t
  GetOspfKeysFromInternalId(int position, ospf_v2_param& param) const;

  // Creates the three entries of a secondary address. Always 0.
  CONFIG_UPDATE_EXPORT int32_t CreateSecondaryOspfEntry(
      const ospf_v2_param& param, confd_ipv4_prefix secondary) const;

  // Records the prefix length of the primary address. Always 0.
  CONFIG_UPDATE_EXPORT int32_t
  SetIpv4AddrNetmaskOspfEntry(const ospf_v2_param& param) const;

  int cdb_sock;
  int maapi_sock;
  int thandle;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_SECONDARY_UPDATE_H_
