// What the OSPF conditions know of a configuration, read once.
#ifndef KIT_HOST_FINDINGS_OSPF_TABLES_H_
#define KIT_HOST_FINDINGS_OSPF_TABLES_H_

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "kit/confd/control/control.h"

namespace kit::host {

// Two keys as one.
inline std::string Pair(std::string_view first, std::string_view second) {
  std::string both(first);
  return both.append(1, ' ').append(second);
}

// Numbers and addresses are texts here, as the tables have them.
class OspfTables {
 public:
  explicit OspfTables(const control::Database& database)
      : database_(database) {}

  // As Database::ReadTable; lists that the models lack are empty.
  void Read(control::Side side, const std::string& list,
            const std::vector<std::string>& leaves,
            const std::function<void(const control::TableRow&)>& sink) const {
    database_.ReadTable(side, list, leaves, sink);
  }

  using Keys = std::unordered_set<std::string>;

  // Two leaves of each entry, as Pair joins them.
  Keys ReadPairs(control::Side side, const std::string& list,
                 const std::vector<std::string>& leaves) const;

  // Keys of the OSPFv2 entities: process ids, or indexes after the upgrade.
  const std::vector<std::string>& Entities(control::Side side);

  // Whether the input's tables are keyed by entity index already.
  bool IsKeyedByIndex();

  // The first key that the upgrade gives to what had this one.
  std::string NewKey(const std::string& first_key);

 private:
  const control::Database& database_;
  std::optional<std::vector<std::string>> old_entities_;
  std::optional<std::vector<std::string>> new_entities_;
  std::optional<bool> is_keyed_by_index_;
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_OSPF_TABLES_H_
