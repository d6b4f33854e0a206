#include "config_update/ospf_compound_idx_update.h"

#include <cstdarg>
#include <initializer_list>
#include <string>
#include <vector>

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

// A failed assertion prints its line, by which support knows it: the lines
// that say so below must not move.
namespace config_update {
namespace {

// The index that the single entity gets; its RTM index is the same.
constexpr uint32_t kNewEntityIndex = 1;

constexpr char kProcIdToIndexList[] = "/internal/ospf-proc-id-to-index";

constexpr char kFailedDelete[] = "failed delete to compound idx:";
constexpr char kFailedCreate[] = "failed create to compound idx:";
constexpr char kFailedSetObject[] = "failed set object";

// Which entries of the old data are moved.
enum class Gate { kNone, kHeldByTransaction };

// A leaf that is set to the new entity index once its entry has moved.
struct ExtraLeaf {
  const char* leaf;
  confd_value_t (*value)();
  const char* failure;
};

constexpr ExtraLeaf kNmMjEntityIndex = {
    "ospfNmMjEntityIndex", [] { return Uint32Value(kNewEntityIndex); },
    "failed to set ospfNmMjEntityIndex :"};
constexpr ExtraLeaf kPmIfNmEntity = {
    "ospfPmIfNmEntity", [] { return Int32Value(kNewEntityIndex); },
    "failed to set ospfPmIfNmEntity to compound idx:"};

}  // namespace

// What moving the entries of one list takes.
struct CompoundKeyList {
  const char* name;  // as the failure line of the pass has it
  const char* path;
  const char* keys;  // of an entry, as formats: the entity index, up to 4 more
  int width;         // values read per entry, at least as many as keys
  const char* create_failure = kFailedCreate;
  Gate gate = Gate::kNone;
  const ExtraLeaf* extra = nullptr;
};

namespace {

// The entity itself, by whose old key the other entries are found.
constexpr CompoundKeyList kPmEntity = {"ospfPmEntTable", kOspfv2EntityList,
                                       "{%x}", 80};

// The lists that follow the entity, in the order in which they are moved, with
// all keys of their entries in the order of the model.
constexpr CompoundKeyList kMovedLists[] = {
    {"ospfPmMjTable", "/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry", "{%x %x %x}",
     10},
    // A failing create is reported with the words of a failing delete.
    {"ospfNmEntTable", kOspfv2NmEntityList, "{%x}", 20, kFailedDelete,
     Gate::kNone, &kNmMjEntityIndex},
    {"ospfPmAreaTable", "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry",
     "{%x %x}", 40},
    // Earlier passes have deleted entries that the old data still has.
    {"ospf-area-global", kAreaGlobalList, "{%x %x}", 10, kFailedCreate,
     Gate::kHeldByTransaction},
    {"ospfPmAreaAggregateTable",
     "/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry",
     "{%x %x %x %x %x}", 10},
    {"ospfPmStubAreaTable",
     "/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry", "{%x %x %x}", 10},
    {"ospfPmIfTable", kOspfv2InterfaceList, "{%x %x %x}", 100, kFailedCreate,
     Gate::kNone, &kPmIfNmEntity},
    // A failing create is reported with the words of a failing delete.
    {"ospf-interface-l3", kInterfaceL3List, "{%x %x %x %x}", 10, kFailedDelete},
    {"ospfPmIfMetricTable", kOspfv2InterfaceMetricList, "{%x %x %x %x}", 10},
};

// The same rows by name.
const auto& [kPmMj, kNmEntity, kPmArea, kAreaGlobal, kPmAreaAgg, kPmStubArea,
             kPmIntf, kInterfaceL3, kPmIntfMetric] = kMovedLists;

int32_t Fail(const char* what, const CompoundKeyList& list) {
  UpdateLogger::Log("%s %s error:%d '%s'", what, list.path, confd_errno,
                    confd_lasterr());
  return -1;
}

// Reads the first count entries of a list that is about to be moved, and says
// so in the log.
int32_t ReadObjects(int cdb_sock, const CompoundKeyList& list, int count,
                    std::vector<confd_value_t>& cdb_objs) {
  UpdateLogger::Log("update to compound idx: %s", list.path);
  cdb_objs = ObjectRoom(count, list.width);
  const int fields = cdb_get_objects(cdb_sock, cdb_objs.data(), list.width, 0,
                                     count, list.path);
  if (fields > list.width) {
    UpdateLogger::Log(
        "there are more cdb fields (%d) on the object than on maapi (%d)",
        fields, list.width);
    return -1;
  }
  return 0;
}

// The key path of an entry as a format, which takes the entry's first values.
std::string EntryFormat(const CompoundKeyList& list) {
  return std::string(list.path) + list.keys;
}

// Deletes an entry under its old key and creates it, with all its values, under
// the new entity index. k points to the entry's values, its keys first. The
// format is given five of them; it takes as many as the list has keys.
int32_t MoveEntry(const Ospfv2CompoundIndexUpdate& pass,
                  const CompoundKeyList& list, const std::string& format,
                  confd_value_t* k) {
  const int sock = pass.maapi_sock;
  const int thandle = pass.thandle;
  const char* const entry = format.c_str();

  if (maapi_delete(sock, thandle, entry, k, k + 1, k + 2, k + 3, k + 4) !=
      CONFD_OK) {
    return Fail(kFailedDelete, list);
  }
  CONFD_SET_UINT32(k, kNewEntityIndex);
  if (maapi_create(sock, thandle, entry, k, k + 1, k + 2, k + 3, k + 4) !=
      CONFD_OK) {
    return Fail(list.create_failure, list);
  }
  const int fields =
      pass.GetMaapiFields(list.width, entry, k, k + 1, k + 2, k + 3, k + 4);
  if (maapi_set_object(sock, thandle, k, fields, list.path) != CONFD_OK) {
    return Fail(kFailedSetObject, list);
  }
  if (list.extra == nullptr) {
    return 0;
  }
  const std::string leaf = format + "/" + list.extra->leaf;
  confd_value_t value = list.extra->value();
  if (maapi_set_elem(sock, thandle, &value, leaf.c_str(), k, k + 1, k + 2,
                     k + 3, k + 4) != CONFD_OK) {
    return Fail(list.extra->failure, list);
  }
  return 0;
}

bool Failed(int32_t result, const char* table) {
  if (result != 0) {
    UpdateLogger::Log("failed upgrade of %s (error: %s)", table,
                      confd_lasterr());
  }
  return result != 0;
}

}  // namespace

int32_t Ospfv2CompoundIndexUpdate::Run() {
  if (maapi_set_namespace(maapi_sock, thandle, kOspfNamespace) != CONFD_OK) {
    return SetNamespaceFailed();
  }
  const int by_proc_id = cdb_num_instances(cdb_sock, kProcIdToIndexList);
  const int by_index = cdb_num_instances(cdb_sock, kIndexToProcIdList);
  if (by_proc_id > 0 || by_index > 0) {
    return 0;
  }
  UpdateLogger::Log("Start OSPFv2 update to compound idx");

  // The entity comes first: it tells which key the other entries had.
  if (Failed(PmEntityTable(), kPmEntity.name) ||
      Failed(InternalOspfIDTables(), "OSPF internal ID tables")) {
    return -1;
  }
  for (const CompoundKeyList& list : kMovedLists) {
    if (Failed(MoveList(list), list.name)) {
      return -1;
    }
  }
  UpdateLogger::Log("Finish OSPFv2 update to compound idx");
  return 0;
}

int Ospfv2CompoundIndexUpdate::GetMaapiFields(int expected_fields,
                                              const char* fmt, ...) const {
  char path[1024] = {};
  va_list args;
  va_start(args, fmt);
  confd_vformat_keypath(path, sizeof(path), fmt, args);
  va_end(args);

  // One value is enough room: the result counts all that the entry needs.
  confd_value_t value = {};
  const int maapi_fields =
      maapi_get_object(maapi_sock, thandle, &value, 1, "%s", path);
  confd_free_value(&value);
  if (maapi_fields <= expected_fields) {
    return maapi_fields;
  }
  UpdateLogger::Log(
      "Warning new database have more fields than collected from cdb "
      "maapi_fields=%d, expected_fields=%d",
      maapi_fields, expected_fields);
  return expected_fields;
}

int32_t Ospfv2CompoundIndexUpdate::PmEntityTable() {
  const int count = cdb_num_instances(cdb_sock, kPmEntity.path);
  if (count != 1) {
    UpdateLogger::Log("%s have obj_num=%d and was expecting 1", kPmEntity.path,
                      count);
    return -1;
  }
  std::vector<confd_value_t> cdb_objs;
  if (ReadObjects(cdb_sock, kPmEntity, count, cdb_objs) != 0) {
    return -1;
  }
  const std::size_t i = 0;
  // Line 225 in device logs: keep it there.
  const uint32_t old_key = CONFD_GET_UINT32(&cdb_objs[i]);
  if (MoveEntry(*this, kPmEntity, EntryFormat(kPmEntity), &cdb_objs[i]) != 0) {
    return -1;
  }
  pm_ent_idx = old_key;
  FreeValues(cdb_objs);
  return 0;
}

// The lists one by one, for whoever runs a step by itself.
int32_t Ospfv2CompoundIndexUpdate::PmMjTable() const { return MoveList(kPmMj); }

int32_t Ospfv2CompoundIndexUpdate::NmEntityTable() const {
  return MoveList(kNmEntity);
}

int32_t Ospfv2CompoundIndexUpdate::PmAreaTable() const {
  return MoveList(kPmArea);
}

int32_t Ospfv2CompoundIndexUpdate::PmStubAreaTable() const {
  return MoveList(kPmStubArea);
}

int32_t Ospfv2CompoundIndexUpdate::PmAreaAggTable() const {
  return MoveList(kPmAreaAgg);
}

int32_t Ospfv2CompoundIndexUpdate::PmIntfTable() const {
  return MoveList(kPmIntf);
}

int32_t Ospfv2CompoundIndexUpdate::PmIntfMetricTable() const {
  return MoveList(kPmIntfMetric);
}

int32_t Ospfv2CompoundIndexUpdate::InternalOspfAreaGlobalTable() const {
  return MoveList(kAreaGlobal);
}

int32_t Ospfv2CompoundIndexUpdate::InternalOspfInterfaceL3Table() const {
  return MoveList(kInterfaceL3);
}

// The values read are released once the whole list has moved; after a failure
// what they own is left to the process.
int32_t Ospfv2CompoundIndexUpdate::MoveList(const CompoundKeyList& list) const {
  const int count = cdb_num_instances(cdb_sock, list.path);
  if (count < 1) {
    return 0;
  }
  std::vector<confd_value_t> cdb_objs;
  if (ReadObjects(cdb_sock, list, count, cdb_objs) != 0) {
    return -1;
  }
  const std::string format = EntryFormat(list);
  const std::size_t width = static_cast<std::size_t>(list.width);
  for (std::size_t i = 0; i < cdb_objs.size(); i += width) {
    // Line 284 in device logs: keep it there.
    if (CONFD_GET_UINT32(&cdb_objs[i]) != pm_ent_idx) {
      continue;
    }
    confd_value_t* const k = &cdb_objs[i];
    if (list.gate == Gate::kHeldByTransaction &&
        maapi_exists(maapi_sock, thandle, format.c_str(), k, k + 1, k + 2,
                     k + 3, k + 4) != 1) {
      continue;
    }
    if (MoveEntry(*this, list, format, k) != 0) {
      return -1;
    }
  }
  FreeValues(cdb_objs);
  return 0;
}

namespace {

// A leaf of an internal ID list.
struct IdLeaf {
  const char* name;
  confd_value_t value;
};

// Creates an entry of an internal ID list; keys is a format that takes key. Its
// failure lines are without ConfD's error.
int32_t CreateIdEntry(const Ospfv2CompoundIndexUpdate& pass, const char* name,
                      const char* list, const char* keys, uint32_t key,
                      std::initializer_list<IdLeaf> leaves) {
  const std::string entry = std::string(list) + keys;
  if (maapi_create(pass.maapi_sock, pass.thandle, entry.c_str(), key) !=
      CONFD_OK) {
    UpdateLogger::Log("cannot create %s", name);
    return -1;
  }
  for (IdLeaf leaf : leaves) {
    const std::string path = entry + "/" + leaf.name;
    if (maapi_set_elem(pass.maapi_sock, pass.thandle, &leaf.value, path.c_str(),
                       key) != CONFD_OK) {
      UpdateLogger::Log(("error setting " + path).c_str(), key);
      return -1;
    }
  }
  return 0;
}

}  // namespace

int32_t Ospfv2CompoundIndexUpdate::InternalOspfIDTables() const {
  const confd_value_t index = Uint32Value(kNewEntityIndex);
  std::string vrf_name = "global";
  if (CreateIdEntry(*this, "INTERNAL_OSPF_PROC_ID_TO_IDX", kProcIdToIndexList,
                    "{%u global}", pm_ent_idx,
                    {{"index", index}, {"rtm_idx", index}}) != 0) {
    return -1;
  }
  return CreateIdEntry(*this, "INTERNAL_OSPF_IDX_TO_PROC_ID",
                       kIndexToProcIdList, "{%u}", kNewEntityIndex,
                       {{"proc_id", Uint32Value(pm_ent_idx)},
                        {"rtm_idx", index},
                        {"vrf_name", BufValue(vrf_name)}});
}

int Ospfv2CompoundIndexUpdate::GetMaapiPmEntIdx(int maapi_socket,
                                                int transaction,
                                                int /*cdb_socket*/,
                                                uint32_t old_idx,
                                                uint32_t& new_idx) {
  uint32_t proc_id = 0;
  if (maapi_get_u_int32_elem(maapi_socket, transaction, &proc_id,
                             "%s{%u}/proc_id", kIndexToProcIdList,
                             old_idx) == CONFD_OK) {
    new_idx = old_idx;
    return 0;
  }
  if (maapi_get_u_int32_elem(maapi_socket, transaction, &new_idx,
                             "%s{%u global}/index", kProcIdToIndexList,
                             old_idx) == CONFD_OK) {
    return 0;
  }
  UpdateLogger::Log("Failed to get ospf-pm-ent-index (error: %s)",
                    confd_lasterr());
  return -1;
}

}  // namespace config_update
