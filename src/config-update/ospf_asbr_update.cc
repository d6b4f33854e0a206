#include "config_update/ospf_asbr_update.h"

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {
namespace {

constexpr int32_t kDestinationOspf = 0xD0000;

// RTM instances that the two versions redistribute from.
constexpr unsigned int kOspfv2FteIndex = 1;
constexpr unsigned int kOspfv3FteIndex = 2;

constexpr uint32_t kOspfv2Entity = 1;

int SetAsbrFailed() {
  UpdateLogger::Log("Failed to set ASBR (error: %s)", confd_lasterr());
  return -1;
}

int set_ospfv2_asbr_status(int maapi_sock, int thandle, unsigned int status) {
  if (maapi_set_namespace(maapi_sock, thandle, kOspfNamespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }
  if (maapi_exists(maapi_sock, thandle, "%s{%u}", kOspfv2EntityList,
                   kOspfv2Entity) != 1) {
    return 0;
  }
  confd_value_t value = EnumValue(static_cast<int32_t>(status));
  if (maapi_set_elem(maapi_sock, thandle, &value,
                     "%s{%u}/ospfPmEntASBdrRtrStatus", kOspfv2EntityList,
                     kOspfv2Entity) != CONFD_OK) {
    return SetAsbrFailed();
  }
  return 0;
}

int SetOspfv3AsbrStatus(int maapi_sock, int thandle, int cdb_sock) {
  if (maapi_set_namespace(maapi_sock, thandle, kOspfv3Namespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }
  confd_value_t value = EnumValue(kTruthTrue);
  const int count = cdb_num_instances(cdb_sock, kOspfv3EntityList);
  for (int i = 0; i < count; ++i) {
    uint32_t entity = 0;
    if (cdb_get_u_int32(cdb_sock, &entity, "%s[%d]/%s", kOspfv3EntityList, i,
                        "ospfv3PmEntIndex") != CONFD_OK) {
      return GetFailed("ospfv3PmEntIndex");
    }
    if (maapi_set_elem(maapi_sock, thandle, &value, "%s{%u}/%s",
                       kOspfv3EntityList, entity,
                       "ospfv3PmEntASBdrRtrStatus") != CONFD_OK) {
      return SetAsbrFailed();
    }
  }
  return 0;
}

}  // namespace

int has_rtm_redist_entries(int /*maapi_sock*/, int /*thandle*/, int cdb_sock,
                           unsigned int fte_index, bool& found) {
  const int count = cdb_num_instances(cdb_sock, kRedistributionList);
  for (int i = 0; i < count; ++i) {
    uint32_t entry_index = 0;
    if (cdb_get_u_int32(cdb_sock, &entry_index, "%s[%d]/rtmRedistFteIndex",
                        kRedistributionList, i) != CONFD_OK) {
      UpdateLogger::Log(
          "Failed to get rtmRedistFteIndex for instance[%d] (error: %s)", i,
          confd_lasterr());
      return -1;
    }
    if (entry_index != fte_index) {
      continue;
    }
    int32_t destination = 0;
    if (cdb_get_enum_value(cdb_sock, &destination, "%s[%d]/rtmRedistInfoDest",
                           kRedistributionList, i) != CONFD_OK) {
      UpdateLogger::Log(
          "Failed to get RedistInfoDest for instance[%d] (error: %s)", i,
          confd_lasterr());
      return -1;
    }
    if (destination == kDestinationOspf) {
      found = true;
      return 0;
    }
  }
  found = false;
  return 0;
}

int ospf_asbr_update(int maapi_sock, int thandle, int cdb_sock) {
  UpdateLogger::Log("Start OSPF(v2/v3) ASBR update");
  if (cdb_set_namespace(cdb_sock, kRtmNamespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }

  bool found = false;
  if (has_rtm_redist_entries(maapi_sock, thandle, cdb_sock, kOspfv2FteIndex,
                             found) != 0) {
    UpdateLogger::Log("failed to get OSPF redistribution from RTM (error: %s)",
                      confd_lasterr());
    return -1;
  }
  if (set_ospfv2_asbr_status(maapi_sock, thandle,
                             found ? kTruthTrue : kTruthFalse) != 0) {
    return -1;
  }

  found = false;
  if (has_rtm_redist_entries(maapi_sock, thandle, cdb_sock, kOspfv3FteIndex,
                             found) != 0) {
    UpdateLogger::Log(
        "failed to get OSPFv3 redistribution from RTM (error: %s)",
        confd_lasterr());
    return -1;
  }
  // An OSPFv3 status is only ever set, never cleared.
  if (found && SetOspfv3AsbrStatus(maapi_sock, thandle, cdb_sock) != 0) {
    UpdateLogger::Log("failed to set OSPFv3 asbr status (error: %s)",
                      confd_lasterr());
    return -1;
  }
  UpdateLogger::Log("Finish OSPF(v2/v3) ASBR update");
  return 0;
}

}  // namespace config_update
