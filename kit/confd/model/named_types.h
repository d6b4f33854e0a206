// Types by name, whether or not a leaf has them.
#ifndef KIT_CONFD_MODEL_NAMED_TYPES_H_
#define KIT_CONFD_MODEL_NAMED_TYPES_H_

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/model/schema.h"

namespace kit::store {

// Of one schema. Not thread-safe.
class NamedTypes {
 public:
  explicit NamedTypes(const Schema& schema) : schema_(schema) {}

  // A typedef at the top of a module; with null a built-in type that needs
  // nothing said besides its name. Null where there is none. What it gives
  // lives as long as this.
  const LeafType* Find(const Module* module, const std::string& name);

 private:
  std::unique_ptr<Schema> Compile(const Module* module,
                                  const std::string& name) const;

  const Schema& schema_;
  // Models with a leaf of the type each.
  std::map<std::pair<const Module*, std::string>, std::unique_ptr<Schema>>
      compiled_;
};

// Of all identities that the module defines; they live as long as its schema.
std::vector<const char*> IdentityNames(const Module& module);

// Of an identity that the module defines, by the hash that values have.
std::optional<std::string> IdentityName(const Module& module, uint32_t hash);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_NAMED_TYPES_H_
