#ifndef CONFIG_UPDATE_OSPF_AREA_UPDATE_H_
#define CONFIG_UPDATE_OSPF_AREA_UPDATE_H_

#include <netinet/in.h>

#include <cstdint>
#include <string>

#include "config_update/export.h"

namespace config_update {

// Removes dangling entries from the internal OSPF area lists: those whose key
// no PM area entry has. The OSPFv2 list holds the areas of OSPFv3 processes
// too, so its entries are kept for a PM area entry of either version.
class OspfAreaUpdate {
 public:
  enum ospf_ver { OSPF_V2 = 0, OSPF_V3 = 1 };

  // The key of one internal area entry.
  struct ospf_area {
    uint32_t process_id;
    in_addr area_id;
    std::string area_id_str;      // area_id as a dotted quad
    bool area_id_integer_format;  // not used by this pass
  };

  CONFIG_UPDATE_EXPORT static const std::string kOspfv2AreaInternalList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfv3AreaInternalList;
  // Relative to the session's position, which is always the root.
  CONFIG_UPDATE_EXPORT static const std::string kOspfv2AreaMibList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfv3AreaMibList;

  // Returns -1 when the key of an entry cannot be read, else 0.
  CONFIG_UPDATE_EXPORT int Run();

  CONFIG_UPDATE_EXPORT int Ospfv2DanglingAreaEntry() const;
  CONFIG_UPDATE_EXPORT int Ospfv3DanglingAreaEntry() const;

  // Reads the key at a position of the internal list, counted from 0.
  CONFIG_UPDATE_EXPORT int GetOspfAreaKeys(int index, ospf_ver ver,
                                           ospf_area& area) const;

  // Whether the PM area table of that version has the area; a failed test
  // counts as no.
  CONFIG_UPDATE_EXPORT bool FindOspfAreaMibEntry(ospf_ver ver,
                                                 const ospf_area& area) const;

  // Deletes the internal entry when it is dangling. Returns 0 even when the
  // deletion fails, which is only logged.
  CONFIG_UPDATE_EXPORT int DeleteOspfDanglingAreaEntry(
      ospf_ver ver, const ospf_area& area) const;

  int cdb_sock;
  int maapi_sock;
  int thandle;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_AREA_UPDATE_H_
