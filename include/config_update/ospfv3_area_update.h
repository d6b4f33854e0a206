#ifndef CONFIG_UPDATE_OSPFV3_AREA_UPDATE_H_
#define CONFIG_UPDATE_OSPFV3_AREA_UPDATE_H_

#include <netinet/in.h>

#include <cstdint>
#include <string>

#include "config_update/export.h"

namespace config_update {

// One OSPFv3 area.
struct ospfv3_area {
  uint32_t appl_index;  // the OSPF instance that the area belongs to
  in_addr area_id;
  std::string area_id_str;  // area_id as a dotted quad
  bool area_id_integer_format;
};

// Gives every OSPFv3 PM area its own entry in the OSPFv3 internal area list,
// with the area-identifier format of the entry that it had in the OSPFv2 list;
// deletes that one unless an OSPFv2 interface uses the area.
class Ospfv3AreaUpdate {
 public:
  CONFIG_UPDATE_EXPORT static const std::string kOspfv2AreaInternalList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfv2IntfInternalList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfv3AreaInternalList;
  CONFIG_UPDATE_EXPORT static const std::string kOspfv3IntfInternalList;
  // Relative to the session's position, which is always the root.
  CONFIG_UPDATE_EXPORT static const std::string kOspfv3AreaMibList;

  // Returns 0 without a change when the old data has an OSPFv3 internal area
  // entry already, and -1 on the first failing step.
  CONFIG_UPDATE_EXPORT int Run();

  // Reads the key at a position of the PM area table, counted from 0.
  CONFIG_UPDATE_EXPORT int GetOspfv3AreaKeys(int index,
                                             ospfv3_area& area) const;

  // Whether the area has its OSPFv3 internal entry; a failed test is a no.
  CONFIG_UPDATE_EXPORT bool Ospfv3AreaExists(const ospfv3_area& area) const;

  // Reads the format from the OSPFv2 internal entry of the given key.
  CONFIG_UPDATE_EXPORT int GetOspfv3AreaIntegerFormat(
      uint32_t proc_id, const std::string& area_id, ospfv3_area& area) const;

  CONFIG_UPDATE_EXPORT int CreateOspfv3AreaEntry(const ospfv3_area& area) const;

  // Deletes the OSPFv2 internal entry unless an OSPFv2 interface of the same
  // instance is in the area. Returns 0 whatever happens.
  CONFIG_UPDATE_EXPORT int DeleteOspfAreaEntry(const ospfv3_area& area) const;

  int cdb_sock;
  int maapi_sock;
  int thandle;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPFV3_AREA_UPDATE_H_
