#include "config_update/ospf_rfc_4577_support_update.h"

#include <cstdint>
#include <string>
#include <vector>

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

// The internal list is read from the old data: when this very upgrade creates
// it, CDB has none yet and nothing is done.
//
// A failed assertion prints its line, by which support knows it: the lines
// that say so below must not move.
namespace config_update {

const std::string OspfV2Rfc4577Support::kOspfToProcIdList = kIndexToProcIdList;
const std::string OspfV2Rfc4577Support::krtmEntryMibList = kRedistributionList;
const std::string OspfV2Rfc4577Support::kospfv2EntryMibList = kOspfv2EntityList;

namespace {

// An entry of the internal list as cdb_get_objects gives it, its key first:
//   0  index     entity index
//   1  proc_id   OSPF process id
//   2  vrf_name  VRF that the process runs in
//   3  rtm_idx   RTM instance of the process
constexpr int kValuesPerObject = 4;

// The VRF name of the default routing instance, which is no VPN.
constexpr char kGlobalVrf[] = "global";

// Second keys of the two RTM redistribution entries that an instance needs:
// one of its own OSPF process, whose id is OR'd in, and a fixed one.
constexpr uint32_t kRtmOspfProcess = 0x02010000;
constexpr uint32_t kRtmVpn = 0x05000000;

// The address family that carries VPN routes, of the one BGP entity.
constexpr int kBgpEntity = 1;
constexpr int32_t kBgpEnabled = 1;
constexpr char kBgpVpnStatus[] =
    "/VX-BGP-MIB/bgpRmAfiSafiTable/bgpRmAfiSafiEntry"
    "{%d ipv4 mplsBgpVpn}/bgpRmAfiSafiAdminStatus";

constexpr char kVpnPeCeSupport[] = "%s{%u}/ospfPmEntVpnPeCeSupport";

int ObjectFailed(const char* operation) {
  UpdateLogger::Log("failed %s object %s error:%d '%s'", operation,
                    OspfV2Rfc4577Support::kospfv2EntryMibList.c_str(),
                    confd_errno, confd_lasterr());
  return -1;
}

// Only absence is a no: an error counts as existing.
bool HasRtmEntry(const OspfV2Rfc4577Support& pass, uint32_t rtm_idx,
                 uint32_t source) {
  return maapi_exists(pass.maapi_sock, pass.thandle, "%s{%u %u}",
                      OspfV2Rfc4577Support::krtmEntryMibList.c_str(), rtm_idx,
                      source) != 0;
}

}  // namespace

// Only an explicit false is changed: an entity that has the support already
// is left alone, and so is the log.
int OspfV2Rfc4577Support::SetRfc4577Support(int index) {
  const char* const list = kospfv2EntryMibList.c_str();
  confd_value_t myval = {};
  if (maapi_get_elem(maapi_sock, thandle, &myval, kVpnPeCeSupport, list,
                     index) != CONFD_OK) {
    return ObjectFailed("get");
  }
  // Line 74 in device logs: keep it there.
  if (CONFD_GET_ENUM_VALUE(&myval) != kTruthFalse) {
    return 0;
  }

  UpdateLogger::Log("set VpnPeCeSupport for ospfPmEntEntry{%u}",
                    static_cast<unsigned int>(index));
  confd_value_t enabled = EnumValue(kTruthTrue);
  if (maapi_set_elem(maapi_sock, thandle, &enabled, kVpnPeCeSupport, list,
                     index) != CONFD_OK) {
    return ObjectFailed("set");
  }
  return 0;
}

// An instance takes part in a VPN when its RTM redistributes for its process
// and for the VPN, and BGP has its VPN address family enabled. Both entries are
// always looked up, and before BGP's status. A status that cannot be read means
// that there is no such address family.
bool OspfV2Rfc4577Support::CanUpgrade(uint32_t rtm_idx, uint32_t proc_id) {
  const bool has_ospf = HasRtmEntry(*this, rtm_idx, proc_id | kRtmOspfProcess);
  const bool has_vpn = HasRtmEntry(*this, rtm_idx, kRtmVpn);

  // Fixed size, so nothing to release.
  confd_value_t admin_status = {};
  if (maapi_get_elem(maapi_sock, thandle, &admin_status, kBgpVpnStatus,
                     kBgpEntity) != CONFD_OK) {
    return false;
  }
  // Line 103 in device logs: keep it there.
  if (CONFD_GET_ENUM_VALUE(&admin_status) != kBgpEnabled) {
    return false;
  }
  UpdateLogger::Log("has_bgp_addr_fam_vpnv4");
  return has_ospf && has_vpn;
}

// More values than expected do no harm: the ones that count come first.
int OspfV2Rfc4577Support::Iterate(confd_value_t* cdb_objs, int object_count,
                                  int values_per_object) {
  const int fields = cdb_get_objects(cdb_sock, cdb_objs, values_per_object, 0,
                                     object_count, kOspfToProcIdList.c_str());
  if (fields > values_per_object) {
    UpdateLogger::Log(
        "there are more cdb fields (%d) on the object than expected (%d)",
        fields, values_per_object);
  }

  int result = 0;
  const int64_t size = int64_t{object_count} * values_per_object;
  for (int64_t i = 0; i < size; i += values_per_object) {
    // Lines 125 to 128 in device logs: keep them there.
    const uint32_t index = CONFD_GET_UINT32(&cdb_objs[i + 0]);
    const uint32_t proc_id = CONFD_GET_UINT32(&cdb_objs[i + 1]);
    const unsigned char* const vrf = CONFD_GET_BUFPTR(&cdb_objs[i + 2]);
    const uint32_t rtm_idx = CONFD_GET_UINT32(&cdb_objs[i + 3]);

    const std::string vrf_name = reinterpret_cast<const char*>(vrf);
    if (vrf_name == kGlobalVrf) {
      continue;
    }
    if (CanUpgrade(rtm_idx, proc_id) &&
        SetRfc4577Support(static_cast<int>(index)) != 0) {
      result = -1;
    }
  }
  return result;
}

int OspfV2Rfc4577Support::Run() {
  UpdateLogger::Log("Start OSPFv2 rfc 4577 update");
  if (cdb_exists(cdb_sock, "%s", kOspfToProcIdList.c_str()) != 1) {
    return 0;
  }
  const int entities = cdb_num_instances(cdb_sock, kospfv2EntryMibList.c_str());
  const int objects = cdb_num_instances(cdb_sock, kOspfToProcIdList.c_str());
  const int rtm_entries = cdb_num_instances(cdb_sock, krtmEntryMibList.c_str());
  if (rtm_entries == 0 || objects == 0 || entities == 0) {
    return 0;
  }
  std::vector<confd_value_t> cdb_objs = ObjectRoom(objects, kValuesPerObject);
  const int result = Iterate(cdb_objs.data(), objects, kValuesPerObject);
  FreeValues(cdb_objs);
  return result != 0 ? -1 : 0;
}

}  // namespace config_update
