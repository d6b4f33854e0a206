#include "kit/confd/model/typedef_chain.h"

#include <libyang/libyang.h>

#include <string_view>

namespace kit::store {
namespace {

struct WellKnownTypedef {
  std::string_view name;
  ValueType type;
  TextForm text;
  std::string_view hash_method = "";
};

// In any module. Typedefs that are not here are what they are made of.
constexpr WellKnownTypedef kWellKnownTypedefs[] = {
    {"ipv4-address", ValueType::kIpv4, TextForm::kAddress},
    {"ipv4-address-no-zone", ValueType::kIpv4, TextForm::kAddress},
    {"ipv6-address", ValueType::kIpv6, TextForm::kAddress},
    {"ipv6-address-no-zone", ValueType::kIpv6, TextForm::kAddress},
    {"ipv4-prefix", ValueType::kIpv4Prefix, TextForm::kPrefix},
    {"ipv6-prefix", ValueType::kIpv6Prefix, TextForm::kPrefix},
    {"ipv4-address-and-prefix-length", ValueType::kIpv4AndPlen,
     TextForm::kAddressAndLength},
    {"ipv6-address-and-prefix-length", ValueType::kIpv6AndPlen,
     TextForm::kAddressAndLength},
    {"dotted-quad", ValueType::kDquad, TextForm::kAddress},
    {"date-and-time", ValueType::kDatetime, TextForm::kDateTime},
    {"date", ValueType::kDate, TextForm::kDate},
    {"time", ValueType::kTime, TextForm::kTime},
    {"duration", ValueType::kDuration, TextForm::kDuration},
    {"QName", ValueType::kQname, TextForm::kQname},
    {"decimal", ValueType::kDouble, TextForm::kPlainDouble},
    {"float", ValueType::kDouble, TextForm::kDouble},
    {"double", ValueType::kDouble, TextForm::kDouble},
    {"size", ValueType::kUint64, TextForm::kSize},
    {"object-identifier", ValueType::kOid, TextForm::kOid},
    {"object-identifier-128", ValueType::kOid, TextForm::kOid},
    {"hex-string", ValueType::kHexstr, TextForm::kHex},
    {"phys-address", ValueType::kBinary, TextForm::kHex},
    {"mac-address", ValueType::kBinary, TextForm::kHex},
    {"hex-list", ValueType::kBinary, TextForm::kUpperHex},
    {"hexBinary", ValueType::kBinary, TextForm::kBareHex},
    {"octet-list", ValueType::kBinary, TextForm::kOctets},
    {"crypt-hash", ValueType::kBuf, TextForm::kPlain, "$6$"},
    {"md5-digest-string", ValueType::kBuf, TextForm::kPlain, "$1$"},
    {"sha-256-digest-string", ValueType::kBuf, TextForm::kPlain, "$5$"},
    {"sha-512-digest-string", ValueType::kBuf, TextForm::kPlain, "$6$"},
};

std::optional<WellKnownType> WellKnown(std::string_view name) {
  for (const WellKnownTypedef& known : kWellKnownTypedefs) {
    if (name == known.name) {
      return WellKnownType{known.type, known.text, known.hash_method};
    }
  }
  return std::nullopt;
}

const lysp_tpdf* FindIn(const lysp_tpdf* typedefs, std::string_view name) {
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(typedefs, i) {
    if (name == typedefs[i].name) return &typedefs[i];
  }
  return nullptr;
}

const lysp_tpdf* FindInModule(const lysp_module* module,
                              std::string_view name) {
  if (module == nullptr) return nullptr;
  if (const lysp_tpdf* found = FindIn(module->typedefs, name)) return found;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(module->includes, i) {
    const lysp_submodule* submodule = module->includes[i].submodule;
    if (submodule == nullptr) continue;
    if (const lysp_tpdf* found = FindIn(submodule->typedefs, name)) {
      return found;
    }
  }
  // A submodule sees what its module and the other submodules define.
  if (module->is_submod && module->mod != nullptr) {
    return FindInModule(module->mod->parsed, name);
  }
  return nullptr;
}

const lysp_module* ImportedModule(const lysp_module* module,
                                  std::string_view prefix) {
  // A submodule has a prefix of its own for the module that it belongs to.
  const char* own =
      module->is_submod
          ? reinterpret_cast<const lysp_submodule*>(module)->prefix
          : module->mod->prefix;
  if (own != nullptr && prefix == own) return module;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(module->imports, i) {
    if (prefix == module->imports[i].prefix) {
      const lys_module* imported = module->imports[i].module;
      return imported == nullptr ? nullptr : imported->parsed;
    }
  }
  return nullptr;
}

}  // namespace

TypedefChain FollowTypedefs(const lysp_type* type, const lysp_node* scope) {
  TypedefChain chain{std::nullopt, false, type, scope};
  while (true) {
    chain.last = type;
    chain.scope = scope;
    std::string_view name = type->name;
    std::string_view prefix;
    if (size_t colon = name.find(':'); colon != std::string_view::npos) {
      prefix = name.substr(0, colon);
      name.remove_prefix(colon + 1);
    }
    if (!chain.well_known) {
      chain.restricted |= type->length != nullptr || type->patterns != nullptr;
      chain.well_known = WellKnown(name);
    }

    const lysp_module* module = type->pmod;
    if (module == nullptr) return chain;
    const lysp_tpdf* next = nullptr;
    if (!prefix.empty()) module = ImportedModule(module, prefix);
    if (prefix.empty() || module == type->pmod) {
      for (; scope != nullptr && next == nullptr; scope = scope->parent) {
        next = FindIn(lysp_node_typedefs(scope), name);
        if (next != nullptr) break;
      }
    }
    if (next == nullptr) {
      scope = nullptr;
      next = FindInModule(module, name);
    }
    if (next == nullptr) return chain;
    type = &next->type;
  }
}

}  // namespace kit::store
