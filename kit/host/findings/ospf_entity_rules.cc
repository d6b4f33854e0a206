#include <string_view>
#include <vector>

#include "kit/host/findings/ospf_conditions.h"

namespace kit::host {
namespace {

using control::Side;
using control::TableRow;

constexpr char kEntities[] = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kAreas[] = "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry";
constexpr char kInternalAreas[] = "/internal/ospf-area-global";

// A list whose keys begin with that of an entity; the entities aside.
struct KeyedList {
  std::string path;
  std::vector<std::string> keys;
};

const std::vector<KeyedList>& KeyedLists() {
  static const std::vector<KeyedList> lists = {
      {"/VX-OSPF-MIB/ospfPmMjTable/ospfPmMjEntry",
       {"ospfPmMjEntIndex", "ospfPmMjPartnerType", "ospfPmMjPartnerIndex"}},
      {"/VX-OSPF-MIB/ospfNmEntTable/ospfNmEntEntry", {"ospfNmEntIndex"}},
      {kAreas, {"ospfPmAreaApplIndex", "ospfPmAreaId"}},
      {kInternalAreas, {"process-id", "area-id"}},
      {"/VX-OSPF-MIB/ospfPmAreaAggregateTable/ospfPmAreaAggregateEntry",
       {"ospfPmAreaAggregateApplIndex", "ospfPmAreaAggregateAreaID",
        "ospfPmAreaAggregateLsdbType", "ospfPmAreaAggregateNet",
        "ospfPmAreaAggregateMask"}},
      {"/VX-OSPF-MIB/ospfPmStubAreaTable/ospfPmStubAreaEntry",
       {"ospfPmStubAreaApplIndex", "ospfPmStubAreaId", "ospfPmStubAreaTOS"}},
      {"/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry",
       {"ospfPmIfApplIndex", "ospfPmIfIpAddress", "ospfPmIfAddressLessIf"}},
      {"/internal/ospf-interface-l3",
       {"ospf-pm-ent-index", "ospf-pm-area-id", "ospf-pm-if-name",
        "ospf-pm-ip-address"}},
      {"/VX-OSPF-MIB/ospfPmIfMetricTable/ospfPmIfMetricEntry",
       {"ospfPmIfMetricApplIndex", "ospfPmIfMetricIpAddress",
        "ospfPmIfMetricAddressLessIf", "ospfPmIfMetricTOS"}}};
  return lists;
}

std::string EntityPath(const std::string& entity) {
  return std::string(kEntities) + "{" + entity + "}";
}

bool HasSeveralEntities(OspfTables& tables) {
  return !tables.IsKeyedByIndex() && tables.Entities(Side::kInput).size() > 1;
}

using Keys = OspfTables::Keys;

// All but the first key.
std::string RestOf(const TableRow& row) {
  std::string rest;
  for (size_t i = 1; i < row.leaves.size(); ++i) {
    rest.append(1, ' ').append(*row.leaves[i].text);
  }
  return rest;
}

}  // namespace

void FindSeveralEntities(OspfTables& tables, HitSink& hits) {
  if (!HasSeveralEntities(tables)) return;
  std::string all;
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    all += (all.empty() ? "" : ", ") + entity;
  }
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    hits.Add({{all}, EntityPath(entity)});
  }
}

void FindEntitiesWithoutAreas(OspfTables& tables, HitSink& hits) {
  if (!HasSeveralEntities(tables)) return;
  Keys with_areas;
  tables.Read(Side::kInput, kAreas, {"ospfPmAreaApplIndex"},
              [&](const TableRow& row) { with_areas.insert(Text(row, 0)); });
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    if (with_areas.count(entity) > 0) continue;
    hits.Add({{entity}, EntityPath(entity)});
  }
}

void FindEntriesInTheWay(OspfTables& tables, HitSink& hits) {
  const std::vector<std::string>& entities = tables.Entities(Side::kInput);
  if (tables.IsKeyedByIndex() || entities.size() != 1) return;
  const std::string& process = entities.front();
  if (process == "1") return;
  for (const KeyedList& list : KeyedLists()) {
    bool is_taken = false;
    tables.Read(Side::kInput, list.path, {list.keys.front()},
                [&](const TableRow& row) {
                  is_taken = is_taken || row.leaves[0].text == "1";
                });
    if (!is_taken) continue;
    // Dangling entries of the internal list have gone by then.
    const bool is_internal = list.path == kInternalAreas;
    const Keys areas =
        is_internal ? tables.ReadPairs(Side::kInput, kAreas,
                                       {"ospfPmAreaApplIndex", "ospfPmAreaId"})
                    : Keys();
    const auto stays = [&](const TableRow& row) {
      return !is_internal ||
             areas.count(Pair(*row.leaves[0].text, *row.leaves[1].text)) > 0;
    };
    Keys moving;
    tables.Read(Side::kInput, list.path, list.keys, [&](const TableRow& row) {
      if (row.leaves[0].text == process && stays(row)) {
        moving.insert(RestOf(row));
      }
    });
    tables.Read(Side::kInput, list.path, list.keys, [&](const TableRow& row) {
      if (row.leaves[0].text == "1" && stays(row) &&
          moving.count(RestOf(row)) > 0) {
        const std::string path = row.path();
        hits.Add({{path, process}, path});
      }
    });
  }
}

void FindForeignEntries(OspfTables& tables, HitSink& hits) {
  const std::vector<std::string>& entities = tables.Entities(Side::kResult);
  if (entities.empty()) return;
  const Keys known(entities.begin(), entities.end());
  // The internal areas are those of OSPFv3 too.
  Keys known_of_areas = known;
  tables.Read(
      Side::kResult, "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
      {"ospfv3PmEntIndex"},
      [&](const TableRow& row) { known_of_areas.insert(Text(row, 0)); });
  for (const KeyedList& list : KeyedLists()) {
    const Keys& keys = list.path == kInternalAreas ? known_of_areas : known;
    // Entries of one key follow each other.
    std::string last;
    bool is_foreign = false;
    tables.Read(Side::kResult, list.path, {list.keys.front()},
                [&](const TableRow& row) {
                  const std::string_view key = *row.leaves[0].text;
                  if (key != last) {
                    last = key;
                    is_foreign = keys.count(last) == 0;
                  }
                  if (!is_foreign) return;
                  if (!hits.WantsTexts()) return hits.Add({});
                  hits.Add({{list.path.substr(list.path.rfind('/') + 1), last},
                            row.path()});
                });
  }
}

}  // namespace kit::host
