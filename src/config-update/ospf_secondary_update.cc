#include "config_update/ospf_secondary_update.h"

#include <cstdio>

#include "config_update/database_access.h"
#include "config_update/ospf_compound_idx_update.h"
#include "config_update/update_logger.h"

namespace config_update {

const std::string OspfSecondaryUpdate::kL3Path = "/config/interface/ipapp:l3";
const std::string OspfSecondaryUpdate::kL3IpSecPath =
    "/config/interface/ipapp:l3{%s}/ipv4/address/secondary";
const std::string OspfSecondaryUpdate::kLoPath =
    "/config/interface/ipapp:loopback";
const std::string OspfSecondaryUpdate::kOspfInternalList = kInterfaceL3List;
const std::string OspfSecondaryUpdate::kOspfPmIfEntry = kOspfv2InterfaceList;
const std::string OspfSecondaryUpdate::kOspfPmIfMetricEntry =
    kOspfv2InterfaceMetricList;

namespace {

// What a string read can deliver at most, its terminator included.
constexpr int kNameSize = 256;

std::string PmIfEntryPath(uint32_t pm_ent_idx, const in_addr& address) {
  return OspfSecondaryUpdate::kOspfPmIfEntry + "{" +
         std::to_string(pm_ent_idx) + " " + AddressText(address) + " 0}";
}

std::string PmIfMetricEntryPath(uint32_t pm_ent_idx, const in_addr& address) {
  return OspfSecondaryUpdate::kOspfPmIfMetricEntry + "{" +
         std::to_string(pm_ent_idx) + " " + AddressText(address) + " 0 0}";
}

std::string InternalEntryPath(const ospf_v2_param& param,
                              const in_addr& address) {
  return OspfSecondaryUpdate::kOspfInternalList + "{" +
         std::to_string(param.pm_ent_idx) + " " + AddressText(param.area_id) +
         " " + param.if_name + " " + AddressText(address) + "}";
}

// Writes a leaf of an entry; fmt appends the leaf to the entry's path. As for
// every write of this pass, the result is not looked at.
void SetLeaf(const OspfSecondaryUpdate& pass, confd_value_t value,
             const char* fmt, const std::string& entry) {
  maapi_set_elem(pass.maapi_sock, pass.thandle, &value, fmt, entry.c_str());
}

int32_t GetL3Addresses(int cdb_sock, const std::string& if_name,
                       confd_ipv4_prefix& ip_addr,
                       std::list<confd_ipv4_prefix>& secondary_addrs) {
  const char* const list = OspfSecondaryUpdate::kL3Path.c_str();
  char name[kNameSize] = "";
  std::sscanf(if_name.c_str(), "l3-%255s", name);
  static_assert(kNameSize == 256, "the scan's width leaves the terminator");
  if (cdb_exists(cdb_sock, "%s{%s}", list, name) != 1) {
    UpdateLogger::Log("L3 Interface does not exist: %s{%s}", list, name);
    return 0;
  }
  if (cdb_get_ipv4_and_plen(cdb_sock, &ip_addr, "%s{%s}/ipv4/address/ip", list,
                            name) != CONFD_OK) {
    UpdateLogger::Log(
        "Failed to get primary IPv4 address from L3 interface (error: %s)",
        confd_lasterr());
    return -1;
  }
  const int count = cdb_num_instances(
      cdb_sock, OspfSecondaryUpdate::kL3IpSecPath.c_str(), name);
  for (int i = 0; i < count; ++i) {
    confd_ipv4_prefix secondary = {};
    if (cdb_get_ipv4_and_plen(
            cdb_sock, &secondary,
            "/config/interface/ipapp:l3{%s}/ipv4/address/secondary[%d]/ip",
            name, i) != CONFD_OK) {
      UpdateLogger::Log(
          "Failed to get secondary IPv4 address from L3 interface (error: %s)",
          confd_lasterr());
      return -1;
    }
    secondary_addrs.push_back(secondary);
  }
  return 0;
}

int32_t GetLoopbackAddress(int cdb_sock, const std::string& if_name,
                           confd_ipv4_prefix& ip_addr) {
  const char* const list = OspfSecondaryUpdate::kLoPath.c_str();
  unsigned int number = 0;  // stays so for a name of another kind
  std::sscanf(if_name.c_str(), "loopback-%u", &number);
  if (cdb_exists(cdb_sock, "%s{%u}", list, number) != 1) {
    // Signed here and unsigned in the key, as operators know the line.
    UpdateLogger::Log("Loopback Interface does not exist: %s{%d}", list,
                      static_cast<int>(number));
    return 0;
  }
  if (cdb_get_ipv4_and_plen(cdb_sock, &ip_addr, "%s{%u}/ipv4/address[0]/ip",
                            list, number) != CONFD_OK) {
    UpdateLogger::Log(
        "Failed to get IPv4 address from Loopback interface (error: %s)",
        confd_lasterr());
    return -1;
  }
  return 0;
}

}  // namespace

int32_t OspfSecondaryUpdate::GetIpv4AddrFromIf(
    confd_ipv4_prefix& ip_addr, std::list<confd_ipv4_prefix>& secondary_addrs,
    std::string& if_name) const {
  if (if_name.find("l3-") != std::string::npos) {
    return GetL3Addresses(cdb_sock, if_name, ip_addr, secondary_addrs);
  }
  return GetLoopbackAddress(cdb_sock, if_name, ip_addr);
}

// The PM tables are old data and so are read with the old entity index; it is
// mapped at the very end, for the writes.
int32_t OspfSecondaryUpdate::GetOspfKeysFromInternalId(
    int position, ospf_v2_param& param) const {
  const char* const list = kOspfInternalList.c_str();
  char if_name[kNameSize] = "";
  if (cdb_get_str(cdb_sock, if_name, kNameSize, "%s[%d]/%s", list, position,
                  "ospf-pm-if-name") != CONFD_OK) {
    return GetFailed("ospf-pm-if-name");
  }
  param.if_name = if_name;
  if (cdb_get_u_int32(cdb_sock, &param.pm_ent_idx, "%s[%d]/%s", list, position,
                      "ospf-pm-ent-index") != CONFD_OK) {
    return GetFailed("ospf-pm-ent-index");
  }
  if (cdb_get_ipv4(cdb_sock, &param.area_id, "%s[%d]/%s", list, position,
                   "ospf-pm-area-id") != CONFD_OK) {
    return GetFailed("ospf-pm-area-id");
  }
  in_addr key_address = {};
  if (cdb_get_ipv4(cdb_sock, &key_address, "%s[%d]/%s", list, position,
                   "ospf-pm-ip-address") != CONFD_OK) {
    return GetFailed("ospf-pm-ip-address");
  }

  const std::string key = AddressText(key_address);
  if (cdb_get_enum_value(cdb_sock, &param.if_type, "%s{%u %s 0}/ospfPmIfType",
                         kOspfPmIfEntry.c_str(), param.pm_ent_idx,
                         key.c_str()) != CONFD_OK) {
    return GetFailed("ospfPmIfType");
  }
  if (cdb_get_enum_value(
          cdb_sock, &param.admin_stat, "%s{%u %s 0}/ospfPmIfAdminStat",
          kOspfPmIfEntry.c_str(), param.pm_ent_idx, key.c_str()) != CONFD_OK) {
    return GetFailed("ospfPmIfAdminStat");
  }
  if (cdb_get_int32(cdb_sock, &param.metric_value,
                    "%s{%u %s 0 0}/ospfPmIfMetricValue",
                    kOspfPmIfMetricEntry.c_str(), param.pm_ent_idx,
                    key.c_str()) != CONFD_OK) {
    return GetFailed("ospfPmIfMetricValue");
  }

  if (GetIpv4AddrFromIf(param.ip_addr, param.secondary_addrs, param.if_name) !=
      0) {
    return -1;
  }
  if (Ospfv2CompoundIndexUpdate::GetMaapiPmEntIdx(maapi_sock, thandle, cdb_sock,
                                                  param.pm_ent_idx,
                                                  param.pm_ent_idx) != 0) {
    UpdateLogger::Log("Failed to get maapi pm-ent-idx (error: %s)",
                      confd_lasterr());
    return -1;
  }
  return 0;
}

int32_t OspfSecondaryUpdate::CreateSecondaryOspfEntry(
    const ospf_v2_param& param, confd_ipv4_prefix secondary) const {
  const std::string pm_if = PmIfEntryPath(param.pm_ent_idx, secondary.ip);
  maapi_create(maapi_sock, thandle, pm_if.c_str());
  SetLeaf(*this, EnumValue(1), "%s/ospfPmIfPassive", pm_if);
  SetLeaf(*this, EnumValue(param.admin_stat), "%s/ospfPmIfAdminStat", pm_if);
  SetLeaf(*this, EnumValue(param.if_type), "%s/ospfPmIfType", pm_if);

  const std::string metric =
      PmIfMetricEntryPath(param.pm_ent_idx, secondary.ip);
  maapi_create(maapi_sock, thandle, "%s", metric.c_str());
  SetLeaf(*this, Int32Value(param.metric_value), "%s/ospfPmIfMetricValue",
          metric);

  const std::string internal = InternalEntryPath(param, secondary.ip);
  UpdateLogger::Log("Creating entry %s", internal.c_str());
  maapi_create(maapi_sock, thandle, "%s", internal.c_str());
  SetLeaf(*this, BoolValue(true), "%s/ospf-pm-ip-address-secondary", internal);
  SetLeaf(*this, Uint8Value(secondary.len), "%s/ospf-pm-ip-netmask", internal);
  return 0;
}

int32_t OspfSecondaryUpdate::SetIpv4AddrNetmaskOspfEntry(
    const ospf_v2_param& param) const {
  SetLeaf(*this, Uint8Value(param.ip_addr.len), "%s/ospf-pm-ip-netmask",
          InternalEntryPath(param, param.ip_addr.ip));
  return 0;
}

// Best effort: a lookup that failed leaves a partly filled param, which is used
// as it stands.
int32_t OspfSecondaryUpdate::Run() {
  UpdateLogger::Log("Start OSPFv2 interface secondary IPv4 update");
  if (maapi_set_namespace(maapi_sock, thandle, kOspfNamespace) != CONFD_OK) {
    UpdateLogger::Log("OSPF: maapi_set_namespace err=%s\n", confd_lasterr());
    return -1;
  }
  const int count = cdb_num_instances(cdb_sock, kOspfInternalList.c_str());
  for (int position = 0; position < count; ++position) {
    ospf_v2_param param{};
    GetOspfKeysFromInternalId(position, param);
    for (const confd_ipv4_prefix& secondary : param.secondary_addrs) {
      const std::string path = PmIfEntryPath(param.pm_ent_idx, secondary.ip);
      if (cdb_exists(cdb_sock, path.c_str()) == 1) {
        UpdateLogger::Log(
            "Entry already create for secondary: %s. No need to continue.",
            path.c_str());
        return 0;
      }
      CreateSecondaryOspfEntry(param, secondary);
    }
    SetIpv4AddrNetmaskOspfEntry(param);
  }
  UpdateLogger::Log("Finish OSPFv2 interface secondary IPv4 update");
  return 0;
}

}  // namespace config_update
