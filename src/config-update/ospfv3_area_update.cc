#include "config_update/ospfv3_area_update.h"

#include <cstring>
#include <string>

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

// Before the upgrade the settings of an OSPFv3 area stand in the OSPFv2
// internal list, keyed by the same pair of OSPF instance and area. This pass
// runs while all internal lists still carry these keys, so that one key, as
// text, finds the area in either list.
//
// A failed assertion prints its line, by which support knows it: the lines
// that say so below must not move.
namespace config_update {

const std::string Ospfv3AreaUpdate::kOspfv2AreaInternalList = kAreaGlobalList;
const std::string Ospfv3AreaUpdate::kOspfv2IntfInternalList = kInterfaceL3List;
const std::string Ospfv3AreaUpdate::kOspfv3AreaInternalList = kV3AreaGlobalList;
// For the users of this class; none of its own operations needs it.
const std::string Ospfv3AreaUpdate::kOspfv3IntfInternalList =
    "/internal/ospfv3-interface-l3";
const std::string Ospfv3AreaUpdate::kOspfv3AreaMibList = kOspfv3AreaList;

namespace {

// Both are in network byte order, so that equal addresses are equal bytes.
bool SameAddress(const in_addr& left, const in_addr& right) {
  return std::memcmp(&left, &right, sizeof(left)) == 0;
}

}  // namespace

// The table is read from the old data, where creating and deleting entries of
// the transaction never shifts a position.
int Ospfv3AreaUpdate::GetOspfv3AreaKeys(int index, ospfv3_area& area) const {
  const char* const list = kOspfv3AreaMibList.c_str();
  if (cdb_get_u_int32(cdb_sock, &area.appl_index, "%s[%d]/%s", list, index,
                      "ospfv3PmAreaApplIndex") != CONFD_OK) {
    return GetFailed("ospfv3PmAreaApplIndex");
  }
  if (cdb_get_ipv4(cdb_sock, &area.area_id, "%s[%d]/%s", list, index,
                   "ospfv3PmAreaId") != CONFD_OK) {
    return GetFailed("ospfv3PmAreaId");
  }
  area.area_id_str = AddressText(area.area_id);
  return 0;
}

// An error counts as absence: should the entry be there all the same, then its
// creation fails and is reported.
bool Ospfv3AreaUpdate::Ospfv3AreaExists(const ospfv3_area& area) const {
  const std::string path =
      AreaEntryPath(kOspfv3AreaInternalList, area.appl_index, area.area_id_str);
  if (maapi_exists(maapi_sock, thandle, "%s", path.c_str()) != 1) {
    return false;
  }
  UpdateLogger::Log("OSPFv3 area entry (%s) already created", path.c_str());
  return true;
}

// The transaction is read, not CDB: it holds what the removal of dangling areas
// has left, and every area that an OSPFv3 PM area entry names is among it.
int Ospfv3AreaUpdate::GetOspfv3AreaIntegerFormat(uint32_t proc_id,
                                                 const std::string& area_id,
                                                 ospfv3_area& area) const {
  const std::string path =
      AreaEntryPath(kOspfv2AreaInternalList, proc_id, area_id);
  confd_value_t vl_set = {};
  if (maapi_get_elem(maapi_sock, thandle, &vl_set, "%s/areaIdIntegerFormat",
                     path.c_str()) != CONFD_OK) {
    return GetFailed("areaIdIntegerFormat");
  }
  // Line 76 in device logs: keep it there.
  area.area_id_integer_format = CONFD_GET_ENUM_VALUE(&vl_set) == kTruthTrue;
  return 0;
}

// Both keys come from the path and the format is the only other leaf that the
// old data has a value for, so nothing else is written.
int Ospfv3AreaUpdate::CreateOspfv3AreaEntry(const ospfv3_area& area) const {
  const std::string path =
      AreaEntryPath(kOspfv3AreaInternalList, area.appl_index, area.area_id_str);
  UpdateLogger::Log("Creating OSPFv3 area entry %s", path.c_str());
  if (maapi_create(maapi_sock, thandle, "%s", path.c_str()) != CONFD_OK) {
    UpdateLogger::Log("Failed to create OSPFv3 area entry (error: %s)",
                      confd_lasterr());
    return -1;
  }

  // Whatever was read that is not true is written as the enumeration's false.
  const bool integer_format = area.area_id_integer_format;
  confd_value_t value = EnumValue(integer_format ? kTruthTrue : kTruthFalse);
  UpdateLogger::Log("Setting OSPFv3 area areaIdIntegerFormat %s",
                    integer_format ? "true" : "false");
  if (maapi_set_elem(maapi_sock, thandle, &value, "%s/areaIdIntegerFormat",
                     path.c_str()) != CONFD_OK) {
    UpdateLogger::Log(
        "Failed to set OSPFv3 area areaIdIntegerFormat (error: %s)",
        confd_lasterr());
    return -1;
  }
  return 0;
}

// Interface entries are keyed by instance, area, interface name and address. A
// search for the first two keys alone therefore lands on the first interface
// of the area, if it has one, and else on whatever follows.
//
// The cursor is released where the entry is kept and where its deletion
// succeeded; after a failure it is left to the host's transaction.
//
// No failure is one of the pass: the area has its new entry by now, and an old
// one too many does no harm.
int Ospfv3AreaUpdate::DeleteOspfAreaEntry(const ospfv3_area& area) const {
  maapi_cursor mc = {};
  if (maapi_init_cursor(maapi_sock, thandle, &mc,
                        kOspfv2IntfInternalList.c_str()) != CONFD_OK) {
    UpdateLogger::Log("Failed to init cursor for %s.",
                      kOspfv2IntfInternalList.c_str());
    return 0;
  }

  confd_value_t keys[] = {Uint32Value(area.appl_index),
                          Ipv4Value(area.area_id)};
  if (maapi_find_next(&mc, CONFD_FIND_SAME_OR_NEXT, keys, 2) != CONFD_OK) {
    UpdateLogger::Log("Failed to find next (%s).", confd_lasterr());
    return 0;
  }

  // Without a key the search ran past the end of the list. The second key is
  // looked at only under the same instance: in any other the area is not used.
  // Lines 135 and 136 in device logs: keep them there.
  if (mc.n != 0 && CONFD_GET_UINT32(&mc.keys[0]) == area.appl_index &&
      SameAddress(CONFD_GET_IPV4(&mc.keys[1]), area.area_id)) {
    UpdateLogger::Log("OSPFv2 %u uses area %s. Keep it.", area.appl_index,
                      area.area_id_str.c_str());
    maapi_destroy_cursor(&mc);
    return 0;
  }

  UpdateLogger::Log("No entry for OSPFv2 %u area %s. Delete it.",
                    area.appl_index, area.area_id_str.c_str());
  const std::string path =
      AreaEntryPath(kOspfv2AreaInternalList, area.appl_index, area.area_id_str);
  if (maapi_delete(maapi_sock, thandle, "%s", path.c_str()) != CONFD_OK) {
    UpdateLogger::Log("Failed to delete to %s (%s).", path.c_str(),
                      confd_lasterr());
    return 0;
  }
  maapi_destroy_cursor(&mc);
  return 0;
}

int Ospfv3AreaUpdate::Run() {
  UpdateLogger::Log("Start OSPFv3 area update");
  const int areas = cdb_num_instances(cdb_sock, kOspfv3AreaMibList.c_str());
  if (areas == 0) {
    UpdateLogger::Log("No OSPFv3 router! No need to continue.");
    return 0;
  }
  const int updated =
      cdb_num_instances(cdb_sock, kOspfv3AreaInternalList.c_str());
  if (areas > 0 && updated > 0) {
    UpdateLogger::Log("OSPFv3 area already updated! No need to continue.");
    return 0;
  }
  UpdateLogger::Log("Updating %d interfaces(s) of OSPFv3 router.", areas);
  for (int i = 0; i < areas; ++i) {
    ospfv3_area area{};
    if (GetOspfv3AreaKeys(i, area) != 0) {
      return -1;
    }
    if (Ospfv3AreaExists(area)) {
      continue;
    }
    if (GetOspfv3AreaIntegerFormat(area.appl_index, area.area_id_str, area) !=
            0 ||
        CreateOspfv3AreaEntry(area) != 0 || DeleteOspfAreaEntry(area) != 0) {
      return -1;
    }
  }
  UpdateLogger::Log("Finish OSPFv3 area update");
  return 0;
}

}  // namespace config_update
