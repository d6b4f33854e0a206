#include "kit/host/findings/ospf_tables.h"

namespace kit::host {

using control::Side;
using control::TableRow;

OspfTables::Keys OspfTables::ReadPairs(
    Side side, const std::string& list,
    const std::vector<std::string>& leaves) const {
  Keys keys;
  Read(side, list, leaves, [&keys](const TableRow& row) {
    keys.insert(
        Pair(row.leaves[0].text.value_or(""), row.leaves[1].text.value_or("")));
  });
  return keys;
}

const std::vector<std::string>& OspfTables::Entities(Side side) {
  auto& entities = side == Side::kInput ? old_entities_ : new_entities_;
  if (!entities) {
    entities.emplace();
    Read(side, "/VX-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry", {"ospfPmEntIndex"},
         [&entities](const TableRow& row) {
           entities->emplace_back(*row.leaves[0].text);
         });
  }
  return *entities;
}

bool OspfTables::IsKeyedByIndex() {
  if (!is_keyed_by_index_) {
    is_keyed_by_index_ = false;
    for (const char* list : {"/internal/ospf-proc-id-to-index",
                             "/internal/ospf-index-to-proc-id"}) {
      Read(Side::kInput, list, {},
           [this](const TableRow&) { is_keyed_by_index_ = true; });
    }
  }
  return *is_keyed_by_index_;
}

std::string OspfTables::NewKey(const std::string& first_key) {
  const std::vector<std::string>& entities = Entities(Side::kInput);
  const bool moves = !IsKeyedByIndex() && entities.size() == 1 &&
                     entities.front() == first_key;
  return moves ? "1" : first_key;
}

}  // namespace kit::host
