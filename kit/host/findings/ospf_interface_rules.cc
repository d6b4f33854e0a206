#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kit/host/findings/ospf_conditions.h"

namespace kit::host {
namespace {

using control::Side;
using control::TableRow;

constexpr char kInterfaces[] = "/internal/ospf-interface-l3";
constexpr char kPmInterfaces[] = "/VX-OSPF-MIB/ospfPmIfTable/ospfPmIfEntry";
constexpr char kNoAddress[] = "0.0.0.0";  // of unnumbered interfaces
constexpr char kBackbone[] = "0.0.0.0";
constexpr std::string_view kLoopback = "loopback-";

using Keys = OspfTables::Keys;

// Entity and address of the secondary addresses that the input knows already.
Keys KnownSecondaries(const OspfTables& tables) {
  Keys known;
  tables.Read(Side::kInput, kInterfaces,
              {"ospf-pm-ip-address-secondary", "ospf-pm-ent-index",
               "ospf-pm-ip-address"},
              [&known](const TableRow& row) {
                if (row.leaves[0].text != "true") return;
                known.insert(Pair(*row.leaves[1].text, *row.leaves[2].text));
              });
  return known;
}

// The entries of secondary addresses that the upgrade has made: address,
// interface, area, entity.
void ForEachNewSecondary(OspfTables& tables,
                         const std::function<void(const TableRow&)>& visit) {
  const Keys known = KnownSecondaries(tables);
  tables.Read(Side::kResult, kInterfaces,
              {"ospf-pm-ip-address", "ospf-pm-if-name", "ospf-pm-area-id",
               "ospf-pm-ent-index", "ospf-pm-ip-address-secondary"},
              [&](const TableRow& row) {
                if (row.leaves[4].text != "true") return;
                const std::string_view address = *row.leaves[0].text;
                const std::string_view entity = *row.leaves[3].text;
                if (!known.empty() && known.count(Pair(entity, address)) > 0) {
                  return;
                }
                visit(row);
              });
}

}  // namespace

void FindNewSecondaryInterfaces(OspfTables& tables, HitSink& hits) {
  ForEachNewSecondary(tables, [&hits](const TableRow& row) {
    if (!hits.WantsTexts()) return hits.Add({});
    hits.Add({{Text(row, 0), Text(row, 1)}, row.path()});
  });
}

void FindSecondariesInAnotherArea(OspfTables& tables, HitSink& hits) {
  struct Secondary {
    std::string interface;
    std::string area;
  };
  // By entity and address.
  std::unordered_map<std::string, Secondary> elsewhere;
  ForEachNewSecondary(tables, [&elsewhere](const TableRow& row) {
    if (row.leaves[2].text == kBackbone) return;
    elsewhere.emplace(Pair(*row.leaves[3].text, *row.leaves[0].text),
                      Secondary{Text(row, 1), Text(row, 2)});
  });
  if (elsewhere.empty()) return;
  tables.Read(
      Side::kResult, kPmInterfaces,
      {"ospfPmIfAreaId", "ospfPmIfApplIndex", "ospfPmIfIpAddress"},
      [&](const TableRow& row) {
        if (row.leaves[0].text != kBackbone) return;
        const auto known =
            elsewhere.find(Pair(*row.leaves[1].text, *row.leaves[2].text));
        if (known == elsewhere.end()) return;
        if (!hits.WantsTexts()) return hits.Add({});
        hits.Add({{Text(row, 2), known->second.interface, known->second.area},
                  row.path()});
      });
}

void FindFurtherLoopbackAddresses(OspfTables& tables, HitSink& hits) {
  if (tables.Entities(Side::kInput).empty()) return;
  Keys loopbacks;
  Keys addresses;
  tables.Read(Side::kInput, kInterfaces,
              {"ospf-pm-if-name", "ospf-pm-ip-address"},
              [&](const TableRow& row) {
                const std::string_view name = *row.leaves[0].text;
                if (!BeginsWith(name, kLoopback)) return;
                loopbacks.emplace(name.substr(kLoopback.size()));
                addresses.insert(Text(row, 1));
              });
  if (loopbacks.empty()) return;
  std::string last;
  tables.Read(Side::kInput, "/config/interface/loopback/ipv4/address",
              {"../../id", "ip"}, [&](const TableRow& row) {
                const std::string loopback = Text(row, 0);
                const std::string address = WithoutLength(Text(row, 1));
                const bool is_first = std::exchange(last, loopback) != loopback;
                if (is_first || loopbacks.count(loopback) == 0 ||
                    addresses.count(address) > 0) {
                  return;
                }
                hits.Add({{address, loopback}, row.path()});
              });
}

void FindUnnumberedInterfaces(OspfTables& tables, HitSink& hits) {
  if (tables.Entities(Side::kInput).empty()) return;
  tables.Read(Side::kInput, kInterfaces,
              {"ospf-pm-ip-address", "ospf-pm-if-name"},
              [&hits](const TableRow& row) {
                if (row.leaves[0].text != kNoAddress) return;
                if (!hits.WantsTexts()) return hits.Add({});
                hits.Add({{Text(row, 1)}, row.path()});
              });
}

void FindUnnumberedWithPrefixLength(OspfTables& tables, HitSink& hits) {
  const std::vector<std::string> leaves = {
      "ospf-pm-ip-address", "ospf-pm-ip-netmask", "ospf-pm-ent-index",
      "ospf-pm-if-name"};
  const auto is_set = [](const TableRow& row) {
    return row.leaves[0].text == kNoAddress && row.leaves[1].text.has_value();
  };
  Keys before;
  tables.Read(Side::kInput, kInterfaces, leaves, [&](const TableRow& row) {
    if (is_set(row)) before.insert(Pair(Text(row, 2), Text(row, 3)));
  });
  tables.Read(Side::kResult, kInterfaces, leaves, [&](const TableRow& row) {
    if (!is_set(row) || before.count(Pair(Text(row, 2), Text(row, 3))) > 0) {
      return;
    }
    if (!hits.WantsTexts()) return hits.Add({});
    hits.Add({{Text(row, 3)}, row.path()});
  });
}

}  // namespace kit::host
