// What programs can ask of loaded schemas.
#include <confd_lib.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/call.h"
#include "kit/confd/api/key_names.h"
#include "kit/confd/api/loaded_names.h"
#include "kit/confd/api/path_format.h"
#include "kit/confd/api/schema_handles.h"
#include "kit/confd/api/values.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/named_types.h"
#include "kit/confd/session/loaded_schemas.h"
#include "kit/confd/session/session.h"

namespace kit::api {
namespace {

using store::Schema;
using store::SchemaNode;

// Something that a schema has, and the namespace by which it is loaded.
template <typename Answer>
struct Found {
  Answer answer;
  uint32_t ns;
};

// The first that `find(schema)` has among the models of open sessions, those of
// transactions first; the empty answer if there is none, or if it is not
// loaded.
template <typename Find>
auto Ask(const Find& find) {
  auto& loaded = store::LoadedSchemas::Instance();
  for (const store::Data* data : store::Sessions::Instance().AttachedData()) {
    const auto found = find(data->schema());
    if (!found) continue;
    loaded.NoteDependence(found->ns);
    if (loaded.Has(found->ns)) return found->answer;
  }
  return decltype(find(std::declval<const Schema&>())->answer){};
}

// A query has no errors but its empty answer.
template <typename Answer, typename Body>
Answer Query(const char* function, const Body& body) {
  Answer answer{};
  RunCall(
      function, [](Call&) {},
      [&](Call&) {
        answer = body();
        return CONFD_OK;
      });
  return answer;
}

// A name with its number: of a node, a case or an identity, or the namespace of
// a module.
struct NamedNumber {
  const char* name = nullptr;
  uint32_t number = 0;
};
using FoundName = std::optional<Found<NamedNumber>>;

NamedNumber NameOf(const char* name) { return {name, store::NameHash(name)}; }

template <typename Fits>
FoundName FindCase(const std::vector<SchemaNode::Choice>& choices,
                   const Fits& fits) {
  for (const SchemaNode::Choice& choice : choices) {
    for (const SchemaNode::Case& one : choice.cases) {
      const NamedNumber named = NameOf(one.name.c_str());
      if (fits(named)) return Found<NamedNumber>{named, one.module->hash};
      if (const auto found = FindCase(one.choices, fits)) return found;
    }
  }
  return std::nullopt;
}

template <typename Fits>
FoundName FindNode(const SchemaNode& parent, const Fits& fits) {
  for (const auto& node : parent.children) {
    const NamedNumber named{node->name.c_str(), TagOf(*node)};
    if (fits(named)) return Found<NamedNumber>{named, node->module->hash};
    if (const auto found = FindNode(*node, fits)) return found;
  }
  return FindCase(parent.choices, fits);
}

template <typename Fits>
NamedNumber FindName(const Fits& fits) {
  return Ask([&](const Schema& schema) -> FoundName {
    for (const auto& module : schema.modules()) {
      const NamedNumber named{module->ns.c_str(), module->hash};
      if (fits(named)) return Found<NamedNumber>{named, module->hash};
    }
    if (const auto found = FindNode(schema.root(), fits)) return found;
    for (const auto& module : schema.modules()) {
      for (const char* name : store::IdentityNames(*module)) {
        const NamedNumber named = NameOf(name);
        if (fits(named)) return Found<NamedNumber>{named, module->hash};
      }
    }
    return std::nullopt;
  });
}

char* TextOf(const char* text) { return const_cast<char*>(text); }

// Those of models that no session has any more are let go.
store::NamedTypes& NamedTypesOf(const Schema& schema) {
  static auto& all =
      *new std::map<uint64_t, std::unique_ptr<store::NamedTypes>>();
  const auto attached = store::Sessions::Instance().AttachedData();
  for (auto types = all.begin(); types != all.end();) {
    const bool is_attached = std::any_of(
        attached.begin(), attached.end(), [&](const store::Data* data) {
          return data->schema().serial() == types->first;
        });
    types = is_attached ? std::next(types) : all.erase(types);
  }
  auto& types = all[schema.serial()];
  if (types == nullptr) types = std::make_unique<store::NamedTypes>(schema);
  return *types;
}

const store::LeafType* FindType(uint32_t ns, const std::string& name) {
  using FoundType = Found<const store::LeafType*>;
  return Ask([&](const Schema& schema) -> std::optional<FoundType> {
    const store::Module* module = schema.ModuleOfHash(ns);
    if (ns != 0 && module == nullptr) return std::nullopt;
    const auto* type =
        NamedTypesOf(schema).Find(ns != 0 ? module : nullptr, name);
    if (type == nullptr) return std::nullopt;
    return FoundType{type, ns};
  });
}

// Null where the path leads to none.
const SchemaNode* Walk(const Schema& schema, const SchemaNode& start,
                       const keypath::Path& path) {
  const SchemaNode* node = path.absolute ? &schema.root() : &start;
  std::string reason;
  for (const keypath::Step& step : path.steps) {
    node = schema.FindChild(*node, step.prefix, step.name, nullptr, reason);
    if (node == nullptr) return nullptr;
  }
  return node->parent == nullptr ? nullptr : node;
}

const SchemaNode& RootOf(const SchemaNode& node) {
  return node.parent == nullptr ? node : RootOf(*node.parent);
}

const SchemaNode* FindByPath(const SchemaNode* start,
                             const keypath::Path& path) {
  using FoundNode = Found<const SchemaNode*>;
  if (start == nullptr && !path.absolute) return nullptr;
  return Ask([&](const Schema& schema) -> std::optional<FoundNode> {
    if (start != nullptr && &RootOf(*start) != &schema.root()) {
      return std::nullopt;
    }
    const SchemaNode* node =
        Walk(schema, start != nullptr ? *start : schema.root(), path);
    if (node == nullptr) return std::nullopt;
    return FoundNode{node, node->module->hash};
  });
}

std::optional<Found<std::string>> FindIdentity(
    const Schema& schema, const confd_identityref& identity) {
  const store::Module* module = schema.ModuleOfHash(identity.ns);
  if (module == nullptr) return std::nullopt;
  const auto name = store::IdentityName(*module, identity.id);
  if (!name) return std::nullopt;
  return Found<std::string>{module->prefix + ":" + *name, identity.ns};
}

const SchemaNode* FindTag(const SchemaNode& parent, const xml_tag& tag) {
  for (const auto& node : parent.children) {
    if (TagOf(*node) == tag.tag && node->module->hash == tag.ns) {
      return node.get();
    }
    if (const SchemaNode* found = FindTag(*node, tag)) return found;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> LoadedNameOf(const confd_value_t& value) {
  using FoundText = Found<std::string>;
  std::string name = Ask([&](const Schema& schema) -> std::optional<FoundText> {
    if (TypeNumber(value) == C_IDENTITYREF) {
      return FindIdentity(schema, value.val.idref);
    }
    if (TypeNumber(value) != C_XMLTAG) return std::nullopt;
    const SchemaNode* node = FindTag(schema.root(), value.val.xmltag);
    if (node == nullptr) return std::nullopt;
    return FoundText{node->name, value.val.xmltag.ns};
  });
  if (name.empty()) return std::nullopt;
  return name;
}

}  // namespace kit::api

using kit::api::Call;
using kit::api::Query;
using kit::api::RunCall;
using kit::store::Error;
using kit::store::ErrorCode;

extern "C" {

char* confd_hash2str(uint32_t hash) {
  return Query<char*>("confd_hash2str", [&] {
    return kit::api::TextOf(kit::api::FindName([&](const auto& named) {
                              return named.number == hash;
                            }).name);
  });
}

uint32_t confd_str2hash(const char* str) {
  return Query<uint32_t>("confd_str2hash", [&]() -> uint32_t {
    if (str == nullptr) return 0;
    const std::string_view wanted = str;
    return kit::api::FindName(
               [&](const auto& named) { return named.name == wanted; })
        .number;
  });
}

char* confd_ns2prefix(uint32_t ns) {
  return Query<char*>("confd_ns2prefix", [&] {
    using FoundText = kit::api::Found<const char*>;
    return kit::api::TextOf(kit::api::Ask(
        [&](const kit::store::Schema& schema) -> std::optional<FoundText> {
          const kit::store::Module* module = schema.ModuleOfHash(ns);
          if (module == nullptr) return std::nullopt;
          return FoundText{module->prefix.c_str(), ns};
        }));
  });
}

struct confd_type* confd_find_ns_type(uint32_t nshash, const char* name) {
  return Query<confd_type*>("confd_find_ns_type", [&]() -> confd_type* {
    if (name == nullptr) return nullptr;
    return kit::api::HandleOf(kit::api::FindType(nshash, name));
  });
}

struct confd_cs_node* confd_cs_node_cd(const struct confd_cs_node* start,
                                       const char* fmt, ...) {
  const kit::store::SchemaNode* node = nullptr;
  va_list args;
  va_start(args, fmt);
  RunCall(
      "confd_cs_node_cd",
      [&](Call& call) {
        call.SetPath(kit::api::FormatText(fmt, args, kit::api::LoadedNames()));
      },
      [&](Call& call) {
        node = kit::api::FindByPath(kit::api::NodeOf(start),
                                    kit::keypath::Parse(call.path()));
        if (node != nullptr) return CONFD_OK;
        throw Error(ErrorCode::kBadPath, "no loaded schema has such a node");
      });
  va_end(args);
  return kit::api::HandleOf(node);
}

int confd_max_object_size(struct confd_cs_node* object) {
  return Query<int>("confd_max_object_size", [&] {
    return object == nullptr
               ? 0
               : static_cast<int>(kit::api::NodeOf(object)->width);
  });
}

int confd_get_decimal64_fraction_digits(struct confd_type* type) {
  return Query<int>("confd_get_decimal64_fraction_digits", [&] {
    return type == nullptr ? 0 : int{kit::api::TypeOf(type)->fraction_digits()};
  });
}

}  // extern "C"
