#include "kit/host/findings/ospf_rules.h"

#include <string>
#include <unordered_set>

#include "kit/host/findings/ospf_tables.h"

namespace kit::host {
namespace {

using control::Side;
using control::TableRow;

constexpr char kEntities[] = "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry";
constexpr char kAreas[] = "/VX-OSPF-MIB/ospfPmAreaTable/ospfPmAreaEntry";

std::string Text(const TableRow& row, size_t leaf) {
  return std::string(row.leaves[leaf].text.value_or(""));
}

bool HasSeveralEntities(OspfTables& tables) {
  return !tables.IsKeyedByIndex() && tables.Entities(Side::kInput).size() > 1;
}

void SeveralEntities(OspfTables& tables, HitSink& hits) {
  if (!HasSeveralEntities(tables)) return;
  std::string all;
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    all += (all.empty() ? "" : ", ") + entity;
  }
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    hits.Add({{all}, std::string(kEntities) + "{" + entity + "}"});
  }
}

void EntitiesWithoutAreas(OspfTables& tables, HitSink& hits) {
  if (!HasSeveralEntities(tables)) return;
  std::unordered_set<std::string> with_areas;
  tables.Read(Side::kInput, kAreas, {"ospfPmAreaApplIndex"},
              [&](const TableRow& row) { with_areas.insert(Text(row, 0)); });
  for (const std::string& entity : tables.Entities(Side::kInput)) {
    if (with_areas.count(entity) > 0) continue;
    hits.Add({{entity}, std::string(kEntities) + "{" + entity + "}"});
  }
}

}  // namespace

const std::vector<CodeRule>& OspfCodeRules() {
  static const std::vector<CodeRule> rules = {
      {"ospfv2-several-entities", Side::kInput, {"entities"}, SeveralEntities},
      {"ospfv2-entities-without-areas",
       Side::kInput,
       {"entity"},
       EntitiesWithoutAreas},
  };
  return rules;
}

}  // namespace kit::host
