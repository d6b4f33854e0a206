// Conventions that every pass follows when it reads the old configuration (CDB)
// and writes the new one (MAAPI): namespaces, values, key paths, failure lines.
//
// Results are ints, 0 for success and -1 for failure. A pass logs one line for
// the step that it cannot go on without and returns -1; nothing is undone.
#ifndef CONFIG_UPDATE_DATABASE_ACCESS_H_
#define CONFIG_UPDATE_DATABASE_ACCESS_H_

// confd_lib.h comes first: an SDK's other headers rely on it.
// clang-format off
#include <confd_lib.h>
#include <confd_cdb.h>
#include <confd_maapi.h>
// clang-format on

#include <arpa/inet.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "config_update/update_logger.h"

namespace config_update {

// ---- Namespaces: hashes that the data-model compiler gave the modules -------

inline constexpr int kOspfNamespace = 0x1AB53F7A;    // VX-OSPF-MIB
inline constexpr int kOspfv3Namespace = 0x0E52B437;  // VX-OSPF-V3-MIB
inline constexpr int kRtmNamespace = 0x31635FA0;     // VX-RTM-MIB

// ---- Lists that several passes use ------------------------------------------

inline constexpr char kOspfv2EntityList[] =
    "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
inline constexpr char kOspfv2NmEntityList[] =
    "/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry";
inline constexpr char kOspfv2InterfaceList[] =
    "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
inline constexpr char kOspfv2InterfaceMetricList[] =
    "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry";
inline constexpr char kOspfv3EntityList[] =
    "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry";
// Relative to the session's position, which is always the root.
inline constexpr char kOspfv3AreaList[] =
    "VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry";
inline constexpr char kRedistributionList[] =
    "/VX-RTM-MIB/rtmRedistTable/rtmRedistEntry";

inline constexpr char kAreaGlobalList[] = "/internal/ospf-area-global";
inline constexpr char kV3AreaGlobalList[] = "/internal/ospfv3-area-global";
inline constexpr char kInterfaceL3List[] = "/internal/ospf-interface-l3";
inline constexpr char kIndexToProcIdList[] = "/internal/ospf-index-to-proc-id";

// ---- Values -----------------------------------------------------------------

// Truth values of the MIB tables and the internal lists.
inline constexpr int32_t kTruthTrue = 1;
inline constexpr int32_t kTruthFalse = 2;

inline confd_value_t Int32Value(int32_t number) {
  confd_value_t value = {};
  CONFD_SET_INT32(&value, number);
  return value;
}

inline confd_value_t Uint32Value(uint32_t number) {
  confd_value_t value = {};
  CONFD_SET_UINT32(&value, number);
  return value;
}

inline confd_value_t Uint8Value(uint8_t number) {
  confd_value_t value = {};
  CONFD_SET_UINT8(&value, number);
  return value;
}

inline confd_value_t BoolValue(bool flag) {
  confd_value_t value = {};
  CONFD_SET_BOOL(&value, flag ? 1 : 0);
  return value;
}

inline confd_value_t EnumValue(int32_t number) {
  confd_value_t value = {};
  CONFD_SET_ENUM_VALUE(&value, number);
  return value;
}

inline confd_value_t Ipv4Value(const in_addr& address) {
  confd_value_t value = {};
  CONFD_SET_IPV4(&value, address);
  return value;
}

// A string without its terminator. The value borrows the text, which has to
// outlive it, and must not be released.
inline confd_value_t BufValue(std::string& text) {
  confd_value_t value = {};
  CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(text.data()),
                static_cast<unsigned int>(text.size()));
  return value;
}

// Room for cdb_get_objects, all C_NOEXISTS: a slot that the read leaves alone
// stands for a leaf without a value and is safe to release. A count below zero,
// as a failed count gives, takes no room.
inline std::vector<confd_value_t> ObjectRoom(int count, int width) {
  confd_value_t none = {};
  CONFD_SET_NOEXISTS(&none);
  const std::size_t objects = count > 0 ? static_cast<std::size_t>(count) : 0;
  return std::vector<confd_value_t>(objects * static_cast<std::size_t>(width),
                                    none);
}

inline void FreeValues(std::vector<confd_value_t>& values) {
  for (confd_value_t& value : values) {
    confd_free_value(&value);
  }
}

// ---- Key paths --------------------------------------------------------------

// The address as a dotted quad.
inline std::string AddressText(const in_addr& address) {
  const uint32_t bits = ntohl(address.s_addr);
  // Written out by hand: the passes need one for nearly every path.
  char text[] = "255.255.255.255";
  char* end = text;
  for (int at = 24; at >= 0; at -= 8) {
    const uint32_t byte = bits >> at & 255;
    if (byte >= 100) *end++ = static_cast<char>('0' + byte / 100);
    if (byte >= 10) *end++ = static_cast<char>('0' + byte / 10 % 10);
    *end++ = static_cast<char>('0' + byte % 10);
    *end++ = '.';
  }
  return std::string(text, end - 1);  // without the last dot
}

// The entry of an area list, keyed by an OSPF instance and an area.
inline std::string AreaEntryPath(const std::string& list, uint32_t instance,
                                 const std::string& area_id) {
  return list + "{" + std::to_string(instance) + " " + area_id + "}";
}

// Visits every entry that the transaction holds in a list, in order; visit
// takes the cursor's array of keys. Neither the start of the cursor nor its
// steps are checked: a cursor without keys is the end, whatever the reason.
template <typename Visitor>
void ForEachEntry(int maapi_sock, int thandle, const std::string& list,
                  Visitor visit) {
  maapi_cursor mc = {};
  maapi_init_cursor(maapi_sock, thandle, &mc, list.c_str());
  while (mc.n != 0) {
    maapi_get_next(&mc);
    if (mc.n == 0) {
      break;
    }
    visit(&mc.keys[0]);
  }
  maapi_destroy_cursor(&mc);
}

// ---- Failure lines; each gives the result for the caller to return ----------

inline int GetFailed(const char* leaf) {
  UpdateLogger::Log("Failed to get %s (error: %s)", leaf, confd_lasterr());
  return -1;
}

// The line names the CDB call for the MAAPI one too; operators know it so.
inline int SetNamespaceFailed() {
  UpdateLogger::Log("OSPF: cdb_set_namespace (error: %s)", confd_lasterr());
  return -1;
}

}  // namespace config_update

#endif  // CONFIG_UPDATE_DATABASE_ACCESS_H_
