// Leaves that say something else after the upgrade because their default moved.
#ifndef KIT_CONFD_UPGRADE_MOVED_DEFAULTS_H_
#define KIT_CONFD_UPGRADE_MOVED_DEFAULTS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/tree/data.h"

namespace kit::store {

struct MovedDefault {
  // Where a new default holds that was not asked for.
  struct Places {
    static constexpr size_t kMostExamples = 10;
    uint64_t count = 0;
    std::vector<std::string> examples;  // key paths of the leaf's holder
  };
  const SchemaNode* leaf;  // of the new model
  std::optional<std::string> before;
  std::optional<std::string> after;
  Places unset;           // nobody had set it
  Places set_to_default;  // it had been set to what was the default
};

// The leaves of both models whose default is another one, or is there on one
// side alone. Counted is what stands under the same keys in both data, and in
// the new data holds the new default without being set.
std::vector<MovedDefault> FindMovedDefaults(const Data& old_data,
                                            const Data& new_data);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_MOVED_DEFAULTS_H_
