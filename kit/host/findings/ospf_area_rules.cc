#include "kit/host/findings/ospf_conditions.h"

namespace kit::host {
namespace {

using control::Side;
using control::TableRow;
using Keys = OspfTables::Keys;

constexpr char kAreas[] = "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry";
constexpr char kInternalAreas[] = "/internal/ospf-area-global";

}  // namespace

void FindAreasThatLoseTheirEntry(OspfTables& tables, HitSink& hits) {
  const Keys v3_areas = tables.ReadPairs(
      Side::kInput, "/VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry",
      {"ospfv3PmAreaApplIndex", "ospfv3PmAreaId"});
  if (v3_areas.empty()) return;
  const Keys before =
      tables.ReadPairs(Side::kInput, kInternalAreas, {"process-id", "area-id"});
  const Keys after = tables.ReadPairs(Side::kResult, kInternalAreas,
                                      {"process-id", "area-id"});
  tables.Read(Side::kInput, kAreas, {"ospfPmAreaApplIndex", "ospfPmAreaId"},
              [&](const TableRow& row) {
                const std::string process = Text(row, 0);
                const std::string area = Text(row, 1);
                const std::string key = Pair(process, area);
                if (v3_areas.count(key) == 0 || before.count(key) == 0 ||
                    after.count(Pair(tables.NewKey(process), area)) > 0) {
                  return;
                }
                hits.Add({{process, area}, row.path()});
              });
}

void FindV3AreasWithoutEntry(OspfTables& tables, HitSink& hits) {
  bool pass_runs = false;
  tables.Read(Side::kInput, "/VX-OSPF-V3-MIB/ospfv3PmEntTable/ospfv3PmEntEntry",
              {}, [&](const TableRow&) { pass_runs = true; });
  tables.Read(Side::kInput, "/internal/ospfv3-area-global", {},
              [&](const TableRow&) { pass_runs = false; });
  if (!pass_runs) return;
  const Keys entries =
      tables.ReadPairs(Side::kInput, kInternalAreas, {"process-id", "area-id"});
  tables.Read(
      Side::kInput, "/VX-OSPF-V3-MIB/ospfv3PmAreaTable/ospfv3PmAreaEntry",
      {"ospfv3PmAreaApplIndex", "ospfv3PmAreaId"}, [&](const TableRow& row) {
        const std::string instance = Text(row, 0);
        const std::string area = Text(row, 1);
        if (entries.count(Pair(instance, area)) > 0) return;
        hits.Add({{instance, area}, row.path()});
      });
}

}  // namespace kit::host
