#ifndef CONFIG_UPDATE_OSPF_COMPOUND_IDX_UPDATE_H_
#define CONFIG_UPDATE_OSPF_COMPOUND_IDX_UPDATE_H_

#include <cstdint>

#include "config_update/export.h"

namespace config_update {

struct CompoundKeyList;

// Moves the single OSPFv2 PM entity from its process id to entity index 1,
// creates the two internal lists that map one to the other, and re-keys every
// OSPFv2 table and internal list whose key began with the process id.
class Ospfv2CompoundIndexUpdate {
 public:
  // Returns 0 when all is moved, or silently when the old data has one of the
  // internal ID lists already; -1 at the first failing step.
  CONFIG_UPDATE_EXPORT int32_t Run();

  // Fails unless there is exactly one entity. Sets pm_ent_idx on success.
  CONFIG_UPDATE_EXPORT int32_t PmEntityTable();

  // Creates the entry of the migrated entity in both internal ID lists.
  CONFIG_UPDATE_EXPORT int32_t InternalOspfIDTables() const;

  // Each moves the entries of one list whose first key is pm_ent_idx to first
  // key 1, everything else of them unchanged; 0 for an empty list.
  CONFIG_UPDATE_EXPORT int32_t PmMjTable() const;
  CONFIG_UPDATE_EXPORT int32_t NmEntityTable() const;
  CONFIG_UPDATE_EXPORT int32_t PmAreaTable() const;
  CONFIG_UPDATE_EXPORT int32_t PmStubAreaTable() const;
  CONFIG_UPDATE_EXPORT int32_t PmAreaAggTable() const;
  CONFIG_UPDATE_EXPORT int32_t PmIntfTable() const;
  CONFIG_UPDATE_EXPORT int32_t PmIntfMetricTable() const;
  CONFIG_UPDATE_EXPORT int32_t InternalOspfAreaGlobalTable() const;
  CONFIG_UPDATE_EXPORT int32_t InternalOspfInterfaceL3Table() const;

  // How many values to write to the entry that the key path (fmt and its
  // arguments) names: as many as it has in the new model, but no more than
  // expected_fields. An error result of ConfD is returned as it is.
  CONFIG_UPDATE_EXPORT int GetMaapiFields(int expected_fields, const char* fmt,
                                          ...) const;

  // Maps an entity index as old data has it, which is a new one already or the
  // process id of the VRF "global", to the entity index of the new data. On -1
  // new_idx is unspecified. The CDB socket is not used.
  CONFIG_UPDATE_EXPORT static int GetMaapiPmEntIdx(int maapi_socket,
                                                   int transaction,
                                                   int cdb_socket,
                                                   uint32_t old_idx,
                                                   uint32_t& new_idx);

  int maapi_sock;
  int thandle;
  int cdb_sock;
  // First key of the entity's entries in the old data, its process id; 0 until
  // PmEntityTable has moved the entity.
  uint32_t pm_ent_idx;

 private:
  int32_t MoveList(const CompoundKeyList& list) const;
};

}  // namespace config_update

#endif  // CONFIG_UPDATE_OSPF_COMPOUND_IDX_UPDATE_H_
