#include "config_update/ospf_timer_update.h"

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {
namespace {

constexpr int32_t kOldThrottle = 2;
constexpr int32_t kNewThrottle = 1;

constexpr uint32_t kSpfMaxWait = 5000;
constexpr uint32_t kSpfStartTime = 100;
constexpr uint32_t kSpfHoldTime = 500;

// The LSA timers are signed, other than those of SPF.
constexpr int32_t kMinLsArrival = 100;
constexpr int32_t kMaxLsInterval = 5000;
constexpr int32_t kMinLsInterval = 100;
constexpr int32_t kHoldLsInterval = 500;

constexpr uint32_t kOspfv2Entity = 1;

struct Field {
  const char* leaf;
  confd_value_t value;
};

// Names OSPFv2's entity whatever the entity is; operators know the line so.
void LogSetFailed(const char* list, const char* leaf) {
  UpdateLogger::Log("error setting maapi_set_elem %s{%u}/%s (error: %s)", list,
                    kOspfv2Entity, leaf, confd_lasterr());
}

// Whether the OSPFv2 entity has the old setting; a failed read is a no.
bool HasOldOspfv2Throttle(int maapi_sock, int thandle, int cdb_sock) {
  // The old entity is keyed by its process id.
  uint32_t proc_id = 0;
  if (maapi_get_u_int32_elem(maapi_sock, thandle, &proc_id,
                             "/internal/ospf-index-to-proc-id{%u}/proc_id",
                             kOspfv2Entity) != CONFD_OK) {
    return false;
  }
  int32_t throttle = kOldThrottle;
  return cdb_get_enum_value(cdb_sock, &throttle, "%s{%d}/ospfPmEntSpfThrottle",
                            kOspfv2EntityList, proc_id) == CONFD_OK &&
         throttle == kOldThrottle;
}

// Writes all timers, come what may. The throttle setting is last and the only
// one whose failure counts.
int SetOspfv2Timers(int maapi_sock, int thandle) {
  Field fields[] = {
      {"ospfPmEntSpfMaxWait", Uint32Value(kSpfMaxWait)},
      {"ospfPmEntSpfStartTime", Uint32Value(kSpfStartTime)},
      {"ospfPmEntSpfHoldTime", Uint32Value(kSpfHoldTime)},
      {"ospfPmEntMinLsArrival", Int32Value(kMinLsArrival)},
      {"ospfPmEntMaxLsInterval", Int32Value(kMaxLsInterval)},
      {"ospfPmEntMinLsInterval", Int32Value(kMinLsInterval)},
      {"ospfPmEntHoldLsInterval", Int32Value(kHoldLsInterval)},
      {"ospfPmEntSpfThrottle", EnumValue(kNewThrottle)},
  };
  int result = 0;
  for (Field& field : fields) {
    result = maapi_set_elem(maapi_sock, thandle, &field.value, "%s{%u}/%s",
                            kOspfv2EntityList, kOspfv2Entity, field.leaf);
    if (result != CONFD_OK) {
      LogSetFailed(kOspfv2EntityList, field.leaf);
    }
  }
  return result == CONFD_OK ? 0 : -1;
}

int UpdateOspfv2(int maapi_sock, int thandle, int cdb_sock) {
  if (cdb_num_instances(cdb_sock, kOspfv2EntityList) != 1) {
    return 0;
  }
  if (maapi_exists(maapi_sock, thandle, "%s{%u}", kOspfv2EntityList,
                   kOspfv2Entity) != 1) {
    return 0;
  }
  if (cdb_set_namespace(cdb_sock, kOspfNamespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }
  if (!HasOldOspfv2Throttle(maapi_sock, thandle, cdb_sock)) {
    return 0;
  }
  return SetOspfv2Timers(maapi_sock, thandle);
}

// Stops at the first failing write. The throttle setting is the first.
int SetOspfv3Timers(int maapi_sock, int thandle, uint32_t entity) {
  Field fields[] = {
      {"ospfv3PmEntSpfThrottle", EnumValue(kNewThrottle)},
      {"ospfv3PmEntSpfMaxWait", Uint32Value(kSpfMaxWait)},
      {"ospfv3PmEntSpfStartTime", Uint32Value(kSpfStartTime)},
      {"ospfv3PmEntSpfHoldTime", Uint32Value(kSpfHoldTime)},
      {"ospfv3PmEntMinLsArrival", Int32Value(kMinLsArrival)},
      {"ospfv3PmEntMaxLsInterval", Int32Value(kMaxLsInterval)},
      {"ospfv3PmEntMinLsInterval", Int32Value(kMinLsInterval)},
      {"ospfv3PmEntHoldLsInterval", Int32Value(kHoldLsInterval)},
  };
  for (Field& field : fields) {
    UpdateLogger::Log("maapi_set_elem %s{%u}/%s", kOspfv3EntityList, entity,
                      field.leaf);
    if (maapi_set_elem(maapi_sock, thandle, &field.value, "%s{%u}/%s",
                       kOspfv3EntityList, entity, field.leaf) != CONFD_OK) {
      LogSetFailed(kOspfv3EntityList, field.leaf);
      return -1;
    }
  }
  return 0;
}

int UpdateOspfv3(int maapi_sock, int thandle, int cdb_sock) {
  if (cdb_num_instances(cdb_sock, kOspfv3EntityList) != 1) {
    return 0;
  }
  if (cdb_set_namespace(cdb_sock, kOspfv3Namespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }
  int32_t throttle = kOldThrottle;
  if (cdb_get_enum_value(cdb_sock, &throttle, "%s[%d]/%s", kOspfv3EntityList, 0,
                         "ospfv3PmEntSpfThrottle") != CONFD_OK) {
    return GetFailed("ospfv3PmEntSpfThrottle");
  }
  if (throttle != kOldThrottle) {
    return 0;
  }
  uint32_t entity = 0;
  if (cdb_get_u_int32(cdb_sock, &entity, "%s[%d]/%s", kOspfv3EntityList, 0,
                      "ospfv3PmEntIndex") != CONFD_OK) {
    return GetFailed("ospfv3PmEntIndex");
  }
  return SetOspfv3Timers(maapi_sock, thandle, entity);
}

}  // namespace

int ospf_timer_update(int maapi_sock, int thandle, int cdb_sock) {
  UpdateLogger::Log("Start OSPF(v2/v3) timers update");
  if (UpdateOspfv2(maapi_sock, thandle, cdb_sock) != 0) {
    UpdateLogger::Log("failed setting OSPFv2 throttle timers");
    return -1;
  }
  if (UpdateOspfv3(maapi_sock, thandle, cdb_sock) != 0) {
    UpdateLogger::Log("failed setting OSPFv3 throttle timers");
    return -1;
  }
  UpdateLogger::Log("Finish OSPF(v2/v3) timers update");
  return 0;
}

}  // namespace config_update
