#include "config_update/ospf_te_update.h"

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {

const std::string OspfTeUpdate::kOspfv2PmIfEntrPath = kOspfv2InterfaceList;
const std::string OspfTeUpdate::kOspfQosSupport = "ospfPmIfQOSSupport";

int OspfTeUpdate::Run() {
  UpdateLogger::Log("Start OSPF TE update");
  if (cdb_num_instances(cdb_sock, kOspfv2PmIfEntrPath.c_str()) == 0) {
    UpdateLogger::Log("No entries for OSPF TE! No need to continue.");
    return 0;
  }
  if (OspfTeIsEnabled()) {
    UpdateLogger::Log("OSPF TE already updated! No need to continue.");
    return 0;
  }
  SetOspfTe();
  UpdateLogger::Log("Finish OSPF TE update");
  return 0;
}

bool OspfTeUpdate::OspfTeIsEnabled() const {
  int32_t enabled = 0;
  if (cdb_get_enum_value(cdb_sock, &enabled, "%s[%d]/%s",
                         kOspfv2PmIfEntrPath.c_str(), 0,
                         kOspfQosSupport.c_str()) != CONFD_OK) {
    UpdateLogger::Log("Failed to get OSPF %s (error: %s)",
                      kOspfQosSupport.c_str(), confd_lasterr());
    return false;
  }
  return enabled == kTruthTrue;
}

int OspfTeUpdate::SetOspfTe() const {
  confd_value_t value = EnumValue(kTruthTrue);
  ForEachEntry(
      maapi_sock, thandle, kOspfv2PmIfEntrPath, [&](confd_value_t* keys) {
        if (maapi_set_elem(maapi_sock, thandle, &value, "%s{%x %x %x}/%s",
                           kOspfv2PmIfEntrPath.c_str(), &keys[0], &keys[1],
                           &keys[2], kOspfQosSupport.c_str()) != CONFD_OK) {
          UpdateLogger::Log("Failed to set OSPF %s to %d (error: %s)",
                            kOspfQosSupport.c_str(), kTruthTrue,
                            confd_lasterr());
        }
      });
  return 0;
}

}  // namespace config_update
