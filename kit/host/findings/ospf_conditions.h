// The conditions that the rules of OSPF name, one function each.
#ifndef KIT_HOST_FINDINGS_OSPF_CONDITIONS_H_
#define KIT_HOST_FINDINGS_OSPF_CONDITIONS_H_

#include <string>
#include <string_view>

#include "kit/confd/control/control.h"
#include "kit/host/findings/code_rules.h"
#include "kit/host/findings/ospf_tables.h"

namespace kit::host {

// Entities and the keys that begin with theirs.
void FindSeveralEntities(OspfTables& tables, HitSink& hits);
void FindEntitiesWithoutAreas(OspfTables& tables, HitSink& hits);
void FindEntriesInTheWay(OspfTables& tables, HitSink& hits);
void FindForeignEntries(OspfTables& tables, HitSink& hits);

// Areas.
void FindAreasThatLoseTheirEntry(OspfTables& tables, HitSink& hits);
void FindV3AreasWithoutEntry(OspfTables& tables, HitSink& hits);

// Interfaces and their addresses.
void FindNewSecondaryInterfaces(OspfTables& tables, HitSink& hits);
void FindSecondariesInAnotherArea(OspfTables& tables, HitSink& hits);
void FindFurtherLoopbackAddresses(OspfTables& tables, HitSink& hits);
void FindInterfacesThatWereMissed(OspfTables& tables, HitSink& hits);
void FindUnnumberedInterfaces(OspfTables& tables, HitSink& hits);
void FindUnnumberedWithPrefixLength(OspfTables& tables, HitSink& hits);

inline bool BeginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

// "10.0.0.1" of "10.0.0.1/24".
inline std::string WithoutLength(std::string_view address) {
  return std::string(address.substr(0, address.find('/')));
}

// The text of a leaf, "" without a value.
inline std::string Text(const control::TableRow& row, size_t leaf) {
  return std::string(row.leaves[leaf].text.value_or(""));
}

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_OSPF_CONDITIONS_H_
