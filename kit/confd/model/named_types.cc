#include "kit/confd/model/named_types.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <string_view>

namespace kit::store {
namespace {

// What stands in a model must not end up as something else there.
bool IsIdentifier(std::string_view name) {
  return !name.empty() && name.find_first_not_of(
                              "abcdefghijklmnopqrstuvwxyz"
                              "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                              "0123456789_-.") == std::string_view::npos;
}

std::string ModuleWithLeaf(const Module* module, const std::string& name) {
  std::string text =
      "module kit-named-type {\n"
      "  yang-version 1.1;\n"
      "  namespace \"urn:kit:named-type\";\n"
      "  prefix kit-named-type;\n";
  if (module != nullptr) {
    text += "  import " + module->name + " { prefix of; }\n";
  }
  return text + "  leaf kit-named-type { type " +
         (module != nullptr ? "of:" : "") + name + "; }\n}\n";
}

}  // namespace

const LeafType* NamedTypes::Find(const Module* module,
                                 const std::string& name) {
  const auto [place, is_new] = compiled_.try_emplace({module, name});
  if (is_new) place->second = Compile(module, name);
  if (place->second == nullptr) return nullptr;
  return Schema::OnlyChild(place->second->root(), "kit-named-type")->type.get();
}

std::unique_ptr<Schema> NamedTypes::Compile(const Module* module,
                                            const std::string& name) const {
  if (!IsIdentifier(name)) return nullptr;
  try {
    return std::make_unique<Schema>(schema_.directory(), schema_.hashes(),
                                    ModuleWithLeaf(module, name));
  } catch (const SchemaError&) {
    // No such type, or one that means something only where it is used.
    return nullptr;
  }
}

std::vector<const char*> IdentityNames(const Module& module) {
  std::vector<const char*> names;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(module.compiled->identities, i) {
    names.push_back(module.compiled->identities[i].name);
  }
  return names;
}

std::optional<std::string> IdentityName(const Module& module, uint32_t hash) {
  for (const char* name : IdentityNames(module)) {
    if (NameHash(name) == hash) return name;
  }
  return std::nullopt;
}

}  // namespace kit::store
