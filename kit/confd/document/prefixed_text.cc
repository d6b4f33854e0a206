#include "kit/confd/document/prefixed_text.h"

#include <libyang/libyang.h>
#include <libyang/plugins_types.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "kit/confd/model/error.h"

namespace kit::store {
namespace {

const lysc_type* TypeOf(const SchemaNode& leaf) {
  return leaf.kind == NodeKind::kLeaf
             ? reinterpret_cast<const lysc_node_leaf*>(leaf.compiled)->type
             : reinterpret_cast<const lysc_node_leaflist*>(leaf.compiled)->type;
}

bool TypeNamesModules(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_IDENT:
    case LY_TYPE_INST:
      return true;
    case LY_TYPE_STRING:
      // Expressions do; that of addresses is of no importance.
      return type->plugin->print != lyplg_type_print_simple;
    case LY_TYPE_LEAFREF:
      return TypeNamesModules(
          reinterpret_cast<const lysc_type_leafref*>(type)->realtype);
    case LY_TYPE_UNION: {
      const auto* types = reinterpret_cast<const lysc_type_union*>(type)->types;
      return std::any_of(types, types + LY_ARRAY_COUNT(types),
                         TypeNamesModules);
    }
    default:
      return false;
  }
}

// A value as libyang keeps it, which knows where in it there are modules.
class StoredValue {
 public:
  StoredValue(const SchemaNode& leaf, std::string_view text)
      : leaf_(leaf), type_(TypeOf(leaf)), context_(leaf.compiled->module->ctx) {
    ly_err_item* error = nullptr;
    const LY_ERR result = type_->plugin->store(
        context_, type_, text.data(), text.size(), 0, LY_VALUE_JSON, nullptr,
        LYD_HINT_DATA, leaf.compiled, &value_, nullptr, &error);
    ly_err_free(error);
    if (result != LY_SUCCESS && result != LY_EINCOMPLETE) {
      Refuse(leaf);
    }
  }
  ~StoredValue() { type_->plugin->free(context_, &value_); }
  StoredValue(const StoredValue&) = delete;
  StoredValue& operator=(const StoredValue&) = delete;

  PrefixedText Print() const {
    ly_set modules{};
    // First the module whose nodes have no prefix: none.
    if (ly_set_add(&modules, nullptr, 1, nullptr) != LY_SUCCESS) {
      throw std::bad_alloc();
    }
    ly_bool is_ours = 0;
    const auto* text = static_cast<const char*>(type_->plugin->print(
        context_, &value_, LY_VALUE_XML, &modules, &is_ours, nullptr));
    PrefixedText printed;
    for (uint32_t i = 1; i < modules.count; ++i) {
      printed.modules.push_back(
          static_cast<const lys_module*>(modules.objs[i]));
    }
    ly_set_erase(&modules, nullptr);
    // It names a module that there is not.
    if (text == nullptr) Refuse(leaf_);
    printed.text = text;
    if (is_ours != 0) std::free(const_cast<char*>(text));
    return printed;
  }

 private:
  [[noreturn]] static void Refuse(const SchemaNode& leaf) {
    throw Error(ErrorCode::kInternal,
                "libyang does not take the value of " + leaf.Path());
  }

  const SchemaNode& leaf_;
  const lysc_type* const type_;
  const ly_ctx* const context_;
  lyd_value value_{};
};

}  // namespace

bool NamesModules(const SchemaNode& leaf) {
  return TypeNamesModules(TypeOf(leaf));
}

PrefixedText WithPrefixes(const SchemaNode& leaf, std::string_view text) {
  return StoredValue(leaf, text).Print();
}

}  // namespace kit::store
