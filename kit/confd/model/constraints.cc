#include "kit/confd/model/constraints.h"

#include <libyang/libyang.h>

#include <limits>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kit/confd/model/expression.h"
#include "kit/confd/model/memory.h"

namespace kit::store {
namespace {

// The node that holds this one in data, or null.
const lysc_node* Holder(const lysc_node* node) {
  const lysc_node* above = node->parent;
  while (above != nullptr && (above->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
    above = above->parent;
  }
  return above;
}

// A list that stands in no other is looked at as one with all that its entries
// hold. They are interchangeable unless something speaks against it.
class Marker {
 public:
  void Run(SchemaNode& root) {
    Enter(root, nullptr);
    for (SchemaNode* node : nodes_) Examine(*node);
    if (is_clear_) return;
    for (SchemaNode* node : nodes_) node->interchangeable = false;
  }

 private:
  struct Place {
    SchemaNode* node;
    SchemaNode* list;  // the outermost one that it is or stands in, or null
  };
  struct Condition {
    const lysc_node* context;  // null for the root
    const lys_module* module;
    const lyxp_expr* expression;
    const lysc_prefix* prefixes;
  };

  void Enter(SchemaNode& parent, SchemaNode* list) {
    for (const auto& child : parent.children) {
      const bool is_outermost =
          list == nullptr && child->kind == NodeKind::kList;
      if (is_outermost) child->interchangeable = true;
      SchemaNode* around = is_outermost ? child.get() : list;
      nodes_.push_back(child.get());
      places_.emplace(child->compiled, Place{child.get(), around});
      Enter(*child, around);
    }
  }

  SchemaNode* ListAround(const lysc_node* node) const {
    auto known = places_.find(node);
    return known != places_.end() ? known->second.list : nullptr;
  }

  void Examine(const SchemaNode& node) {
    SchemaNode* list = ListAround(node.compiled);
    // Choices and cases are no nodes of ours and have conditions too.
    const lysc_node* end = Holder(node.compiled);
    for (const lysc_node* one = node.compiled; one != end; one = one->parent) {
      ExamineConditions(one, list);
      ExamineExtensions(one);
    }
    if (node.kind == NodeKind::kList) ExamineList(node);
    if (node.compiled->nodetype == LYS_LEAF) {
      ExamineType(node,
                  reinterpret_cast<const lysc_node_leaf*>(node.compiled)->type);
    } else if (node.compiled->nodetype == LYS_LEAFLIST) {
      ExamineType(
          node,
          reinterpret_cast<const lysc_node_leaflist*>(node.compiled)->type);
    }
  }

  void ExamineConditions(const lysc_node* node, SchemaNode* list) {
    const lysc_must* musts = lysc_node_musts(node);
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(musts, i) {
      ExamineCondition({node, node->module, musts[i].cond, musts[i].prefixes},
                       list);
    }
    lysc_when* const* whens = lysc_node_when(node);
    LY_ARRAY_FOR(whens, i) {
      const lysc_when& when = *whens[i];
      ExamineCondition({when.context, node->module, when.cond, when.prefixes},
                       list);
    }
  }

  // What an extension's implementation checks is not known.
  void ExamineExtensions(const lysc_node* node) {
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(node->exts, i) {
      if (node->exts[i].def->plugin != nullptr) is_clear_ = false;
    }
  }

  void ExamineList(const SchemaNode& node) {
    const auto* list = reinterpret_cast<const lysc_node_list*>(node.compiled);
    SchemaNode* around = ListAround(node.compiled);
    if (around == &node) {
      // These look at several entries.
      const bool is_bounded =
          list->max != 0 && list->max != std::numeric_limits<uint32_t>::max();
      if (list->min > 1 || is_bounded || list->uniques != nullptr) {
        around->interchangeable = false;
      }
      return;
    }
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_COUNT_TYPE j;
    LY_ARRAY_FOR(list->uniques, i) {
      LY_ARRAY_FOR(list->uniques[i], j) {
        places_.at(&list->uniques[i][j]->node).node->decides = true;
      }
    }
  }

  void ExamineType(const SchemaNode& node, const lysc_type* type) {
    if (type->basetype == LY_TYPE_UNION) {
      lysc_type* const* members =
          reinterpret_cast<const lysc_type_union*>(type)->types;
      LY_ARRAY_COUNT_TYPE i;
      LY_ARRAY_FOR(members, i) ExamineType(node, members[i]);
    } else if (type->basetype == LY_TYPE_LEAFREF) {
      const auto* leafref = reinterpret_cast<const lysc_type_leafref*>(type);
      if (leafref->require_instance == 0) return;
      const Condition path = {node.compiled, node.compiled->module,
                              leafref->path, leafref->prefixes};
      // Without predicates it goes to leaves, whatever else there is on its
      // way.
      const std::string_view text = lyxp_get_expr(leafref->path);
      const bool is_plain = text.find_first_of("[(") == std::string_view::npos;
      MarkFar(path, ListAround(node.compiled), is_plain);
    } else if (type->basetype == LY_TYPE_INST) {
      const auto* path = reinterpret_cast<const lysc_type_instanceid*>(type);
      if (path->require_instance != 0) is_clear_ = false;  // of what, it tells
    }
  }

  void ExamineCondition(const Condition& condition, SchemaNode* list) {
    if (list == nullptr || !MarkNear(condition, *list)) {
      MarkFar(condition, list);
    }
  }

  // A condition that sees nothing outside of the entry it stands in; false if
  // it may.
  bool MarkNear(const Condition& condition, SchemaNode& list) {
    ExpressionContext around;
    const lysc_node* node = condition.context;
    for (; node != nullptr && node != list.compiled; node = Holder(node)) {
      around.names.emplace_back(node->name);
    }
    if (node == nullptr) return false;
    around.names.push_back(list.name);
    around.is_leaf =
        (condition.context->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0;
    const ExpressionUse use =
        LookAtExpression(lyxp_get_expr(condition.expression), around);
    if (!use.stays_inside) return false;
    std::vector<SchemaNode*> seen;
    for (const lysc_node* atom : Atoms(condition)) {
      auto known = places_.find(atom);
      if (known == places_.end() || known->second.list != &list) return false;
      if (!IsAround(atom, condition.context)) {
        seen.push_back(known->second.node);
      }
    }
    if (around.is_leaf) seen.push_back(places_.at(condition.context).node);
    if (use.reads_values) {
      for (SchemaNode* one : seen) MarkValues(*one);
    }
    return true;
  }

  // Any other condition. `leaves_alone`: it looks at no containers.
  void MarkFar(const Condition& condition, SchemaNode* list,
               bool leaves_alone = false) {
    if (list != nullptr) list->interchangeable = false;
    for (const lysc_node* atom : Atoms(condition)) {
      auto known = places_.find(atom);
      if (known == places_.end()) {
        is_clear_ = false;
        return;
      }
      if (known->second.list != nullptr) {
        known->second.list->interchangeable = false;
      } else if (!leaves_alone) {
        MarkListsBelow(*known->second.node);
      }
    }
  }

  static bool IsAround(const lysc_node* node, const lysc_node* context) {
    for (context = Holder(context); context != nullptr;
         context = Holder(context)) {
      if (context == node) return true;
    }
    return false;
  }

  // The text of a node that is no leaf is made of the leaves below.
  static void MarkValues(SchemaNode& node) {
    node.decides = true;
    for (const auto& child : node.children) MarkValues(*child);
  }
  static void MarkListsBelow(SchemaNode& node) {
    node.interchangeable = false;
    for (const auto& child : node.children) MarkListsBelow(*child);
  }

  // The nodes of the model that the expression touches, on its way too.
  std::vector<const lysc_node*> Atoms(const Condition& condition) {
    ly_set* atoms = nullptr;
    const LibyangMemory memory;
    LY_ERR result = lys_find_expr_atoms(condition.context, condition.module,
                                        condition.expression,
                                        condition.prefixes, 0, &atoms);
    memory.Require(result);
    if (result != LY_SUCCESS) {
      ly_err_clean(condition.module->ctx, nullptr);
      is_clear_ = false;
      return {};
    }
    std::vector<const lysc_node*> nodes(atoms->snodes,
                                        atoms->snodes + atoms->count);
    ly_set_free(atoms, nullptr);
    return nodes;
  }

  std::vector<SchemaNode*> nodes_;
  std::unordered_map<const lysc_node*, Place> places_;
  bool is_clear_ = true;  // nothing speaks against all lists
};

}  // namespace

void MarkConstraints(SchemaNode& root) { Marker().Run(root); }

}  // namespace kit::store
