#include "config_update/ospf_compound_idx_update.h"

#include <cstdarg>
#include <string>
#include <vector>

#include "config_update/database_access.h"
#include "config_update/update_logger.h"

namespace config_update {
namespace {

// The index that the single entity gets; its RTM index is the same.
constexpr uint32_t kNewEntityIndex = 1;

constexpr char kProcIdToIndexList[] = "/internal/ospf-proc-id-to-index";
constexpr char kIndexToProcIdList[] = "/internal/ospf-index-to-proc-id";

constexpr char kFailedDelete[] = "failed delete to compound idx:";
constexpr char kFailedCreate[] = "failed create to compound idx:";
constexpr char kFailedSetObject[] = "failed set object";

// Which entries of the old data are moved.
enum class Gate { kNone, kHeldByTransaction };

// A leaf that is set to the new entity index once its entry has moved.
struct ExtraLeaf {
  const char* path;  // nullptr: none
  confd_value_t (*value)();
  const char* failure;
};

confd_value_t UnsignedIndex() { return Uint32Value(kNewEntityIndex); }

confd_value_t SignedIndex() {
  return Int32Value(static_cast<int32_t>(kNewEntityIndex));
}

}  // namespace

// What moving the entries of one list takes.
struct CompoundKeyList {
  const char* path;
  int width;          // values read per entry, at least as many as %x in entry
  const char* entry;  // key path of an entry: the entity index, up to 4 more
  const char* create_failure = kFailedCreate;
  Gate gate = Gate::kNone;
  ExtraLeaf extra = {nullptr, nullptr, nullptr};
};

namespace {

constexpr CompoundKeyList kPmEntityList = {
    "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", 80,
    "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{%x}"};

constexpr CompoundKeyList kPmMjList = {
    "/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry", 10,
    "/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry{%x %x %x}"};

// A failing create is reported with the words of a failing delete.
constexpr CompoundKeyList kNmEntityList = {
    "/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry",
    20,
    "/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry{%x}",
    kFailedDelete,
    Gate::kNone,
    {"/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry{%x}/ospfNmMjEntityIndex",
     UnsignedIndex, "failed to set ospfNmMjEntityIndex :"}};

constexpr CompoundKeyList kPmAreaList = {
    "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry", 40,
    "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry{%x %x}"};

constexpr CompoundKeyList kPmStubAreaList = {
    "/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry", 10,
    "/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry{%x %x %x}"};

constexpr CompoundKeyList kPmAreaAggList = {
    "/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry", 10,
    "/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry"
    "{%x %x %x %x %x}"};

constexpr CompoundKeyList kPmIntfList = {
    "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry",
    100,
    "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{%x %x %x}",
    kFailedCreate,
    Gate::kNone,
    {"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry{%x %x %x}/ospfPmIfNmEntity",
     SignedIndex, "failed to set ospfPmIfNmEntity to compound idx:"}};

constexpr CompoundKeyList kPmIntfMetricList = {
    "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry", 10,
    "/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry{%x %x %x %x}"};

// The passes before this one have deleted entries that the old data still has.
constexpr CompoundKeyList kAreaGlobalList = {
    "/internal/ospf-area-global", 10, "/internal/ospf-area-global{%x %x}",
    kFailedCreate, Gate::kHeldByTransaction};

// A failing create is reported with the words of a failing delete.
constexpr CompoundKeyList kInterfaceL3List = {
    "/internal/ospf-interface-l3", 10,
    "/internal/ospf-interface-l3{%x %x %x %x}", kFailedDelete};

int32_t Fail(const char* what, const CompoundKeyList& list) {
  UpdateLogger::Log("%s %s error:%d '%s'", what, list.path, confd_errno,
                    confd_lasterr());
  return -1;
}

// Reads the first count entries into cdb_objs, which has the room for them.
int32_t ReadObjects(int cdb_sock, const CompoundKeyList& list, int count,
                    std::vector<confd_value_t>& cdb_objs) {
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

// Deletes an entry under its old key and creates it, with all its values, under
// the new entity index. k points to the entry's values, its keys first. Every
// key path is given five of them; it takes as many as the list has keys.
int32_t MoveEntry(const Ospfv2CompoundIndexUpdate& pass,
                  const CompoundKeyList& list, confd_value_t* k) {
  const int sock = pass.maapi_sock;
  const int thandle = pass.thandle;

  if (maapi_delete(sock, thandle, list.entry, k, k + 1, k + 2, k + 3, k + 4) !=
      CONFD_OK) {
    return Fail(kFailedDelete, list);
  }
  CONFD_SET_UINT32(k, kNewEntityIndex);
  if (maapi_create(sock, thandle, list.entry, k, k + 1, k + 2, k + 3, k + 4) !=
      CONFD_OK) {
    return Fail(list.create_failure, list);
  }
  const int fields = pass.GetMaapiFields(list.width, list.entry, k, k + 1,
                                         k + 2, k + 3, k + 4);
  if (maapi_set_object(sock, thandle, k, fields, list.path) != CONFD_OK) {
    return Fail(kFailedSetObject, list);
  }
  if (list.extra.path == nullptr) {
    return 0;
  }
  confd_value_t value = list.extra.value();
  if (maapi_set_elem(sock, thandle, &value, list.extra.path, k, k + 1, k + 2,
                     k + 3, k + 4) != CONFD_OK) {
    return Fail(list.extra.failure, list);
  }
  return 0;
}

// Sets a leaf of an internal ID list, whose entry key completes the path.
int32_t SetIdLeaf(const Ospfv2CompoundIndexUpdate& pass, confd_value_t value,
                  const char* path, uint32_t key) {
  if (maapi_set_elem(pass.maapi_sock, pass.thandle, &value, path, key) !=
      CONFD_OK) {
    const std::string message = std::string("error setting ") + path;
    UpdateLogger::Log(message.c_str(), key);
    return -1;
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
  if (Failed(PmEntityTable(), "ospfPmEntTable") ||
      Failed(InternalOspfIDTables(), "OSPF internal ID tables") ||
      Failed(PmMjTable(), "ospfPmMjTable") ||
      Failed(NmEntityTable(), "ospfNmEntTable") ||
      Failed(PmAreaTable(), "ospfPmAreaTable") ||
      Failed(InternalOspfAreaGlobalTable(), "ospf-area-global") ||
      Failed(PmAreaAggTable(), "ospfPmAreaAggregateTable") ||
      Failed(PmStubAreaTable(), "ospfPmStubAreaTable") ||
      Failed(PmIntfTable(), "ospfPmIfTable") ||
      Failed(InternalOspfInterfaceL3Table(), "ospf-interface-l3") ||
      Failed(PmIntfMetricTable(), "ospfPmIfMetricTable")) {
    return -1;
  }
  UpdateLogger::Log("Finish OSPFv2 update to compound idx");
  return 0;
}

int32_t Ospfv2CompoundIndexUpdate::PmEntityTable() {
  const CompoundKeyList& list = kPmEntityList;
  const int count = cdb_num_instances(cdb_sock, list.path);
  if (count != 1) {
    UpdateLogger::Log("%s have obj_num=%d and was expecting 1", list.path,
                      count);
    return -1;
  }
  UpdateLogger::Log("update to compound idx: %s", list.path);
  std::vector<confd_value_t> cdb_objs = ObjectRoom(count, list.width);
  if (ReadObjects(cdb_sock, list, count, cdb_objs) != 0) {
    return -1;
  }
  const std::size_t i = 0;
  const uint32_t old_key = CONFD_GET_UINT32(&cdb_objs[i]);
  if (MoveEntry(*this, list, &cdb_objs[i]) != 0) {
    return -1;
  }
  pm_ent_idx = old_key;
  FreeValues(cdb_objs);
  return 0;
}

int32_t Ospfv2CompoundIndexUpdate::InternalOspfIDTables() const {
  if (maapi_create(maapi_sock, thandle,
                   "/internal/ospf-proc-id-to-index{%u global}",
                   pm_ent_idx) != CONFD_OK) {
    UpdateLogger::Log("cannot create INTERNAL_OSPF_PROC_ID_TO_IDX");
    return -1;
  }
  const confd_value_t index = Uint32Value(kNewEntityIndex);
  if (SetIdLeaf(*this, index,
                "/internal/ospf-proc-id-to-index{%u global}/index",
                pm_ent_idx) != 0 ||
      SetIdLeaf(*this, index,
                "/internal/ospf-proc-id-to-index{%u global}/rtm_idx",
                pm_ent_idx) != 0) {
    return -1;
  }

  if (maapi_create(maapi_sock, thandle, "/internal/ospf-index-to-proc-id{%u}",
                   kNewEntityIndex) != CONFD_OK) {
    UpdateLogger::Log("cannot create INTERNAL_OSPF_IDX_TO_PROC_ID");
    return -1;
  }
  std::string vrf_name = "global";
  if (SetIdLeaf(*this, Uint32Value(pm_ent_idx),
                "/internal/ospf-index-to-proc-id{%u}/proc_id",
                kNewEntityIndex) != 0 ||
      SetIdLeaf(*this, index, "/internal/ospf-index-to-proc-id{%u}/rtm_idx",
                kNewEntityIndex) != 0 ||
      SetIdLeaf(*this, BufValue(vrf_name),
                "/internal/ospf-index-to-proc-id{%u}/vrf_name",
                kNewEntityIndex) != 0) {
    return -1;
  }
  return 0;
}

// The values read are released once the whole list has moved; after a failure
// what they own is left to the process.
int32_t Ospfv2CompoundIndexUpdate::MoveList(const CompoundKeyList& list) const {
  const int count = cdb_num_instances(cdb_sock, list.path);
  if (count < 1) {
    return 0;
  }
  UpdateLogger::Log("update to compound idx: %s", list.path);
  std::vector<confd_value_t> cdb_objs = ObjectRoom(count, list.width);
  if (ReadObjects(cdb_sock, list, count, cdb_objs) != 0) {
    return -1;
  }
  const std::size_t width = static_cast<std::size_t>(list.width);
  for (std::size_t i = 0; i < cdb_objs.size(); i += width) {
    if (CONFD_GET_UINT32(&cdb_objs[i]) != pm_ent_idx) {
      continue;
    }
    confd_value_t* const k = &cdb_objs[i];
    if (list.gate == Gate::kHeldByTransaction &&
        maapi_exists(maapi_sock, thandle, list.entry, k, k + 1, k + 2, k + 3,
                     k + 4) != 1) {
      continue;
    }
    if (MoveEntry(*this, list, k) != 0) {
      return -1;
    }
  }
  FreeValues(cdb_objs);
  return 0;
}

int32_t Ospfv2CompoundIndexUpdate::PmMjTable() const {
  return MoveList(kPmMjList);
}

int32_t Ospfv2CompoundIndexUpdate::NmEntityTable() const {
  return MoveList(kNmEntityList);
}

int32_t Ospfv2CompoundIndexUpdate::PmAreaTable() const {
  return MoveList(kPmAreaList);
}

int32_t Ospfv2CompoundIndexUpdate::PmStubAreaTable() const {
  return MoveList(kPmStubAreaList);
}

int32_t Ospfv2CompoundIndexUpdate::PmAreaAggTable() const {
  return MoveList(kPmAreaAggList);
}

int32_t Ospfv2CompoundIndexUpdate::PmIntfTable() const {
  return MoveList(kPmIntfList);
}

int32_t Ospfv2CompoundIndexUpdate::PmIntfMetricTable() const {
  return MoveList(kPmIntfMetricList);
}

int32_t Ospfv2CompoundIndexUpdate::InternalOspfAreaGlobalTable() const {
  return MoveList(kAreaGlobalList);
}

int32_t Ospfv2CompoundIndexUpdate::InternalOspfInterfaceL3Table() const {
  return MoveList(kInterfaceL3List);
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
