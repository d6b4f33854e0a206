#include "kit/confd/document/export.h"

#include <cstdint>
#include <string>

#include "kit/confd/model/error.h"

namespace kit::store {
namespace {

class Exporter {
 public:
  explicit Exporter(const Schema& schema)
      : schema_(schema), context_(schema.context()) {}

  LibyangTree Export(const Node& root) {
    Children(root, nullptr);
    return top_.Join(schema_);
  }

 private:
  void Check(LY_ERR result, const SchemaNode& schema) {
    if (result == LY_SUCCESS) return;
    const char* why = ly_errmsg(context_);
    throw Error(ErrorCode::kInternal,
                "libyang does not take " + schema.Path() + ": " +
                    (why != nullptr ? why : "unknown reason"));
  }

  // Nodes at the top hang on each other, not on a parent.
  void Adopt(lyd_node* node, lyd_node* parent) {
    if (parent == nullptr) top_.Add(LibyangTree(node));
  }

  void Children(const Node& node, lyd_node* out) {
    for (const auto& child : node.schema->children) {
      if (child->is_key() || !node.IsSet(*child)) continue;
      Child(node, *child, out);
    }
  }

  void Term(const SchemaNode& schema, const Value& value, lyd_node* out) {
    lyd_node* term = nullptr;
    Check(lyd_new_term(out, schema.module->compiled, schema.name.c_str(),
                       schema.type->Print(value).c_str(), 0, &term),
          schema);
    Adopt(term, out);
  }

  void Child(const Node& node, const SchemaNode& schema, lyd_node* out) {
    switch (schema.kind) {
      case NodeKind::kLeaf:
        Term(schema, *node.SetValue(schema), out);
        return;
      case NodeKind::kLeafList:
        for (const Value& value : node.LeafListValues(schema)) {
          Term(schema, value, out);
        }
        return;
      case NodeKind::kContainer:
      case NodeKind::kPresenceContainer: {
        lyd_node* inner = nullptr;
        Check(lyd_new_inner(out, schema.module->compiled, schema.name.c_str(),
                            0, &inner),
              schema);
        Adopt(inner, out);
        Children(*node.FindContainer(schema), inner);
        return;
      }
      case NodeKind::kList:
        for (const Node& entry : *node.ListAt(schema)) Entry(entry, out);
        return;
      default:
        return;
    }
  }

  void Entry(const Node& entry, lyd_node* out) {
    const SchemaNode& schema = *entry.schema;
    // libyang takes as many arguments as the list has keys.
    std::string keys[9];
    for (size_t i = 0; i < schema.key_count; ++i) {
      keys[i] = schema.children[i]->type->Print(entry.Key(i));
    }
    lyd_node* list = nullptr;
    Check(lyd_new_list(out, schema.module->compiled, schema.name.c_str(), 0,
                       &list, keys[0].c_str(), keys[1].c_str(), keys[2].c_str(),
                       keys[3].c_str(), keys[4].c_str(), keys[5].c_str(),
                       keys[6].c_str(), keys[7].c_str(), keys[8].c_str()),
          schema);
    // A list has no two entries of the same keys. Where they stand in no other
    // node, libyang would compare each with all others.
    if (out == nullptr) list->flags &= ~uint32_t{LYD_NEW};
    Adopt(list, out);
    Children(entry, list);
  }

  const Schema& schema_;
  ly_ctx* context_;
  TopLevel top_;
};

}  // namespace

LibyangTree Export(const Data& data) {
  return Exporter(data.schema()).Export(data.root());
}

}  // namespace kit::store
