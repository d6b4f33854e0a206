// What stands at a key path that a person has written.
#ifndef KIT_CONFD_UPGRADE_PLACE_H_
#define KIT_CONFD_UPGRADE_PLACE_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/keypath/keypath.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

struct PlaceLeaf {
  std::string name;   // relative to the entry
  std::string value;  // set or by default; "" of a presence container
  bool by_default = false;
};

struct FoundPlace {
  enum class State {
    kThere,
    kNotSet,     // its entry is there, but no value and no default
    kNoEntry,    // an entry on the way is missing
    kNotInModel  // the path does not fit the models
  };
  State state = State::kNotInModel;
  // All of them "" where the path does not fit the models:
  std::string path;   // as key paths are printed; "/" for the root
  std::string list;   // of the entry, "/" outside of any list
  std::string entry;  // that it is or stands in
  std::string leaf;   // relative to the entry; "" for the entry itself
  bool is_leaf = false;
  // The leaf, or what stands in the entry or container, its lists aside.
  std::vector<PlaceLeaf> leaves;
  // Where it is not there: why, and names or keys that look alike.
  std::string reason;
  std::vector<std::string> near;
};

// Keys with blanks need no quotes where one entry alone reads like that; a
// slash at the end does not count. Throws keypath::SyntaxError.
FoundPlace LookAt(const Data& data, std::string_view path);

}  // namespace kit::store

#endif  // KIT_CONFD_UPGRADE_PLACE_H_
