#include "kit/confd/document/export.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "kit/confd/document/likeness.h"
#include "kit/confd/document/tree_access.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

// libyang puts a new node in front of the nodes that follow it in the model, of
// which it looks for the first: last to first, that one is found at once.
class Exporter {
 public:
  Exporter(const Schema& schema, Extent extent)
      : schema_(schema), context_(schema.context()), extent_(extent) {}

  Exporter(const Schema& schema, const Selection& selection)
      : schema_(schema),
        context_(schema.context()),
        extent_(Extent::kAll),
        selection_(&selection) {}

  LibyangTree Export(const Node& root) {
    Children(root, nullptr);
    return top_.Join(schema_);
  }

 private:
  void Check(LY_ERR result, const SchemaNode& schema) const {
    memory_.Require(result);
    if (result == LY_SUCCESS) return;
    const char* why = ly_errmsg(context_);
    throw Error(ErrorCode::kInternal,
                "libyang does not take " + schema.Path() + ": " +
                    (why != nullptr ? why : "unknown reason"));
  }

  // Nodes without a parent hang on each other. For each list entry among them
  // libyang would walk through all when it validates, to see that it is not
  // there twice. Our lists have no entry twice.
  void Adopt(lyd_node* node, const lyd_node* parent) {
    if (parent != nullptr) return;
    if (node->schema->nodetype == LYS_LIST) {
      node->flags &= ~static_cast<uint32_t>(LYD_NEW);
    }
    top_.Add(LibyangTree(node));
  }

  void Children(const Node& node, lyd_node* out) {
    if (selection_ != nullptr) {
      for (const SchemaNode* child : selection_->ChildrenOf(*node.schema)) {
        Child(node, *child, out);
      }
      return;
    }
    const auto& children = node.schema->children;
    std::for_each(children.rbegin(), children.rend(), [&](const auto& child) {
      if (!child->is_key()) Child(node, *child, out);
    });
  }

  void Child(const Node& node, const SchemaNode& schema, lyd_node* out) {
    switch (schema.kind) {
      case NodeKind::kLeaf:
        if (const auto value = selection_ != nullptr
                                   ? node.LeafValue(schema)
                                   : SetLeafOf(node, schema)) {
          Term(schema, *value, out);
        }
        return;
      case NodeKind::kLeafList:
        if (selection_ != nullptr) {
          for (const Value& value : node.LeafListValues(schema)) {
            Term(schema, value, out);
          }
          return;
        }
        ForEachSetValue(node, schema,
                        [&](const Value& value) { Term(schema, value, out); });
        return;
      case NodeKind::kContainer:
      case NodeKind::kPresenceContainer:
        if (const Node* container = ContainerToShow(node, schema)) {
          Container(*container, out);
        }
        return;
      case NodeKind::kList:
        List(node, schema, out);
        return;
      default:
        return;
    }
  }

  const Node* ContainerToShow(const Node& node, const SchemaNode& schema) {
    if (node.IsSet(schema)) return ContainerOf(node, schema);
    // What stands in a case is not there always.
    if (selection_ == nullptr || schema.in_choice) return nullptr;
    return node.Container(schema);
  }

  void Term(const SchemaNode& schema, const Value& value, lyd_node* out) {
    lyd_node* term = nullptr;
    Check(lyd_new_term(out, schema.module->compiled, schema.name.c_str(),
                       schema.type->Print(value).c_str(), 0, &term),
          schema);
    Adopt(term, out);
  }

  void Container(const Node& container, lyd_node* out) {
    const SchemaNode& schema = *container.schema;
    lyd_node* inner = nullptr;
    Check(lyd_new_inner(out, schema.module->compiled, schema.name.c_str(), 0,
                        &inner),
          schema);
    Adopt(inner, out);
    Children(container, inner);
  }

  void List(const Node& node, const SchemaNode& schema, lyd_node* out) {
    const bool takes_all = extent_ == Extent::kAll || !schema.interchangeable;
    Likeness likeness;
    ForEachEntry(node, schema, [&](const Node& entry) {
      if (takes_all || likeness.IsNew(entry)) Entry(entry, out);
    });
  }

  void Entry(const Node& entry, lyd_node* out) {
    const SchemaNode& schema = *entry.schema;
    // libyang takes as many arguments as the list has keys.
    std::string keys[9];
    for (size_t i = 0; i < schema.key_count; ++i) {
      const SchemaNode& key = *schema.children[i];
      keys[i] = key.type->Print(*SetLeafOf(entry, key));
    }
    lyd_node* list = nullptr;
    Check(lyd_new_list(out, schema.module->compiled, schema.name.c_str(), 0,
                       &list, keys[0].c_str(), keys[1].c_str(), keys[2].c_str(),
                       keys[3].c_str(), keys[4].c_str(), keys[5].c_str(),
                       keys[6].c_str(), keys[7].c_str(), keys[8].c_str()),
          schema);
    Adopt(list, out);
    Children(entry, list);
  }

  const Schema& schema_;
  ly_ctx* context_;
  const Extent extent_;
  const Selection* selection_ = nullptr;  // null for all that was set
  const LibyangMemory memory_;
  TopLevel top_;
};

}  // namespace

LibyangTree Export(const Data& data, Extent extent) {
  return Exporter(data.schema(), extent).Export(data.root());
}

void Selection::Add(const SchemaNode& node) {
  if (node.parent == nullptr || node.is_state) return;
  if (node.is_key()) return Add(*node.parent);
  auto& siblings = children_[node.parent];
  const auto place = std::lower_bound(
      siblings.begin(), siblings.end(), &node,
      [](const auto* a, const auto* b) { return a->slot > b->slot; });
  if (place != siblings.end() && *place == &node) return;
  siblings.insert(place, &node);
  Add(*node.parent);
}

const std::vector<const SchemaNode*>& Selection::ChildrenOf(
    const SchemaNode& node) const {
  static const std::vector<const SchemaNode*> kNone;
  auto known = children_.find(&node);
  return known != children_.end() ? known->second : kNone;
}

LibyangTree ExportSelection(const Data& data, const Selection& selection) {
  return Exporter(data.schema(), selection).Export(data.root());
}

}  // namespace kit::store
