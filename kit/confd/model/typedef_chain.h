// Finds the typedefs that a leaf's type is made from. libyang's compiled
// schema forgets their names, but ConfD gives some of them types of their own.
#ifndef KIT_CONFD_MODEL_TYPEDEF_CHAIN_H_
#define KIT_CONFD_MODEL_TYPEDEF_CHAIN_H_

#include <optional>
#include <string_view>

#include "kit/confd/model/value.h"

struct lysp_node;
struct lysp_type;

namespace kit::store {

// What values of a typedef that is known by its name are and look like.
struct WellKnownType {
  ValueType type;
  TextForm text;
  // How crypt(3) marks the hashes that they are, "" for what is no hash.
  std::string_view hash_method;
};

struct TypedefChain {
  // The first well-known typedef on the way to the built-in type.
  std::optional<WellKnownType> well_known;
  // Whether lengths or patterns are added to that typedef.
  bool restricted;
  // The built-in type's use (or the last one that could be followed) and the
  // node in whose scope it stands, which is null for a module's typedef.
  const lysp_type* last;
  const lysp_node* scope;
};

// Follows `type` as used at `scope` (null: at the top of its module).
TypedefChain FollowTypedefs(const lysp_type* type, const lysp_node* scope);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_TYPEDEF_CHAIN_H_
