#include "config_update/ospf_area_update.h"

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {

const std::string OspfAreaUpdate::kOspfv2AreaInternalList = kAreaGlobalList;
const std::string OspfAreaUpdate::kOspfv3AreaInternalList = kV3AreaGlobalList;
const std::string OspfAreaUpdate::kOspfv2AreaMibList =
    "VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry";
const std::string OspfAreaUpdate::kOspfv3AreaMibList = kOspfv3AreaList;

namespace {

const std::string& InternalList(OspfAreaUpdate::ospf_ver ver) {
  return ver != OspfAreaUpdate::OSPF_V2
             ? OspfAreaUpdate::kOspfv3AreaInternalList
             : OspfAreaUpdate::kOspfv2AreaInternalList;
}

const std::string& MibList(OspfAreaUpdate::ospf_ver ver) {
  return ver != OspfAreaUpdate::OSPF_V2 ? OspfAreaUpdate::kOspfv3AreaMibList
                                        : OspfAreaUpdate::kOspfv2AreaMibList;
}

// Positions do not shift under the deletions: CDB shows the old data.
int Sweep(const OspfAreaUpdate& pass, OspfAreaUpdate::ospf_ver ver) {
  const int count = cdb_num_instances(pass.cdb_sock, InternalList(ver).c_str());
  for (int i = 0; i < count; ++i) {
    OspfAreaUpdate::ospf_area area{};
    if (pass.GetOspfAreaKeys(i, ver, area) != 0) {
      return -1;
    }
    pass.DeleteOspfDanglingAreaEntry(ver, area);
  }
  return 0;
}

}  // namespace

int OspfAreaUpdate::Run() {
  UpdateLogger::Log("Start OSPF dangling area update");
  if (Ospfv2DanglingAreaEntry() != 0 || Ospfv3DanglingAreaEntry() != 0) {
    return -1;
  }
  UpdateLogger::Log("Finish OSPF dangling area update");
  return 0;
}

int OspfAreaUpdate::Ospfv2DanglingAreaEntry() const {
  return Sweep(*this, OSPF_V2);
}

int OspfAreaUpdate::Ospfv3DanglingAreaEntry() const {
  return Sweep(*this, OSPF_V3);
}

int OspfAreaUpdate::GetOspfAreaKeys(int index, ospf_ver ver,
                                    ospf_area& area) const {
  const char* const list = InternalList(ver).c_str();
  if (cdb_get_u_int32(cdb_sock, &area.process_id, "%s[%d]/%s", list, index,
                      "process-id") != CONFD_OK) {
    return GetFailed("process-id");
  }
  if (cdb_get_ipv4(cdb_sock, &area.area_id, "%s[%d]/%s", list, index,
                   "area-id") != CONFD_OK) {
    return GetFailed("area-id");
  }
  area.area_id_str = AddressText(area.area_id);
  return 0;
}

bool OspfAreaUpdate::FindOspfAreaMibEntry(ospf_ver ver,
                                          const ospf_area& area) const {
  const std::string path =
      AreaEntryPath(MibList(ver), area.process_id, area.area_id_str);
  return maapi_exists(maapi_sock, thandle, "%s", path.c_str()) == 1;
}

int OspfAreaUpdate::DeleteOspfDanglingAreaEntry(ospf_ver ver,
                                                const ospf_area& area) const {
  const bool used_by_v2 = ver == OSPF_V2 && FindOspfAreaMibEntry(OSPF_V2, area);
  const bool used_by_v3 = FindOspfAreaMibEntry(OSPF_V3, area);
  if (used_by_v2 || used_by_v3) {
    return 0;
  }
  UpdateLogger::Log(
      "No corresponding interface entry for OSPFv2/v3 %u area %s. Delete it.",
      area.process_id, area.area_id_str.c_str());
  const std::string path =
      AreaEntryPath(InternalList(ver), area.process_id, area.area_id_str);
  if (maapi_delete(maapi_sock, thandle, "%s", path.c_str()) != CONFD_OK) {
    UpdateLogger::Log("Failed to delete to %s (%s).", path.c_str(),
                      confd_lasterr());
  }
  return 0;
}

}  // namespace config_update
