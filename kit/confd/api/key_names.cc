#include "kit/confd/api/key_names.h"

#include "kit/confd/api/plain_text.h"
#include "kit/confd/api/resolve.h"
#include "kit/confd/api/values.h"
#include "kit/confd/keypath/keypath.h"
#include "kit/confd/model/error.h"
#include "kit/confd/session/loaded_schemas.h"
#include "kit/confd/session/session.h"

namespace kit::api {
namespace {

using store::SchemaNode;

// The node that a path leads to, whatever the keys in it; null for none. Throws
// keypath::SyntaxError.
const SchemaNode* FindNode(const store::Schema& schema,
                           const store::Module* selected,
                           std::string_view path) {
  if (path.empty()) return &schema.root();
  if (const SchemaNode* node = FindSchemaNode(schema, selected, path)) {
    return node;
  }
  const SchemaNode* node = &schema.root();
  std::string reason;
  for (const keypath::Step& step : keypath::Parse(path).steps) {
    node = schema.FindChild(*node, step.prefix, step.name, selected, reason);
    if (node == nullptr) return nullptr;
  }
  return node;
}

struct NamedKey {
  std::string text;
  const store::Module* module;
};

std::optional<NamedKey> NameKey(const store::Schema& schema,
                                const store::Module* selected,
                                std::string_view list_path, size_t key_index,
                                const confd_value_t& value) {
  try {
    const SchemaNode* list = FindNode(schema, selected, list_path);
    if (list == nullptr || list->kind != store::NodeKind::kList ||
        key_index >= list->key_count) {
      return std::nullopt;
    }
    const SchemaNode& key = *list->children[key_index];
    return NamedKey{key.type->PrintForPrograms(key.type->Check(FromC(value))),
                    key.module};
  } catch (const store::Error&) {
    // Not a value of the key's type.
    return std::nullopt;
  } catch (const keypath::SyntaxError&) {
    // The call that uses the path will say so.
    return std::nullopt;
  }
}

// Null for none.
const SchemaNode* FindTag(const store::Schema& schema,
                          const store::Module* selected, std::string_view path,
                          const xml_tag& tag) {
  try {
    const SchemaNode* parent = FindNode(schema, selected, path);
    if (parent == nullptr) return nullptr;
    for (const auto& child : parent->children) {
      if (TagOf(*child) == tag.tag && child->module->hash == tag.ns) {
        return child.get();
      }
    }
  } catch (const keypath::SyntaxError&) {
    // Without names a path may be none.
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> ModelNames::KeyText(
    std::string_view list_path, size_t key_index,
    const confd_value_t& value) const {
  const bool is_relative = !place_.empty() && list_path.substr(0, 1) != "/";
  auto key =
      is_relative
          ? NameKey(schema_, selected_, place_ + "/" + std::string(list_path),
                    key_index, value)
          : NameKey(schema_, selected_, list_path, key_index, value);
  if (!key) return std::nullopt;
  return std::move(key->text);
}

std::optional<std::string> LoadedNames::KeyText(
    std::string_view list_path, size_t key_index,
    const confd_value_t& value) const {
  if (list_path.substr(0, 1) != "/") return std::nullopt;
  auto& loaded = store::LoadedSchemas::Instance();
  for (const store::Data* data : store::Sessions::Instance().AttachedData()) {
    auto key = NameKey(data->schema(), nullptr, list_path, key_index, value);
    if (!key) continue;
    if (key->text == PlainText(value)) return std::nullopt;
    loaded.NoteDependence(key->module->hash);
    if (!loaded.Has(key->module->hash)) return std::nullopt;
    return std::move(key->text);
  }
  return std::nullopt;
}

std::optional<std::string> ModelNames::NodeName(std::string_view path,
                                                const xml_tag& tag) const {
  const SchemaNode* node = FindTag(schema_, selected_, path, tag);
  if (node == nullptr) return std::nullopt;
  return node->PathName();
}

std::optional<std::string> LoadedNames::NodeName(std::string_view path,
                                                 const xml_tag& tag) const {
  auto& loaded = store::LoadedSchemas::Instance();
  for (const store::Data* data : store::Sessions::Instance().AttachedData()) {
    const SchemaNode* node = FindTag(data->schema(), nullptr, path, tag);
    if (node == nullptr) continue;
    loaded.NoteDependence(tag.ns);
    if (!loaded.Has(tag.ns)) return std::nullopt;
    return node->PathName();
  }
  return std::nullopt;
}

}  // namespace kit::api
