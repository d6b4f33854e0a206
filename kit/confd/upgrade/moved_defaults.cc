#include "kit/confd/upgrade/moved_defaults.h"

#include <utility>

#include "kit/confd/model/error.h"
#include "kit/confd/upgrade/namesake.h"

namespace kit::store {
namespace {

std::optional<std::string> DefaultOf(const SchemaNode& leaf) {
  if (!leaf.default_value) return std::nullopt;
  return leaf.type->Print(*leaf.default_value);
}

void Count(const Node& holder, MovedDefault::Places& places) {
  ++places.count;
  if (places.examples.size() == MovedDefault::Places::kMostExamples) return;
  std::string path = KeyPath(holder);
  places.examples.push_back(path.empty() ? "/" : std::move(path));
}

// A node of both models.
struct Step {
  const SchemaNode* before;
  const SchemaNode* after;
};

// Looks at all instances of one leaf.
class LeafWalk {
 public:
  // `steps` lead from the root to the leaf.
  LeafWalk(const std::vector<Step>& steps, const Node& old_root,
           MovedDefault& moved)
      : steps_(steps), old_root_(old_root), moved_(moved) {}

  void Run(const Node& new_root) { Walk(new_root, 0); }

 private:
  void Walk(const Node& node, size_t depth) {
    const SchemaNode& schema = *steps_[depth].after;
    if (depth + 1 == steps_.size()) {
      Look(node);
    } else if (schema.IsContainer()) {
      const Node* container = node.Container(schema);
      if (container != nullptr) Walk(*container, depth + 1);
    } else if (const List* list = node.ListAt(schema)) {
      for (const Node& entry : *list) Walk(entry, depth + 1);
    }
  }

  void Look(const Node& holder) {
    const SchemaNode& leaf = *steps_.back().after;
    if (holder.IsSet(leaf) || HasDefault(leaf) != holder.HasValue(leaf)) return;
    const Node* old_holder = OldNode(holder, steps_.size() - 1);
    if (old_holder == nullptr) return;
    const SchemaNode& old_leaf = *steps_.back().before;
    const std::optional<Value> set = old_holder->SetValue(old_leaf);
    if (set) {
      if (set == old_leaf.default_value) Count(holder, moved_.set_to_default);
    } else if (HasDefault(old_leaf) == old_holder->HasValue(old_leaf)) {
      Count(holder, moved_.unset);
    }
  }

  static bool HasDefault(const SchemaNode& leaf) {
    return leaf.default_value.has_value();
  }

  // What stands in the old data where `node`, so deep, stands in the new ones;
  // null for nothing.
  const Node* OldNode(const Node& node, size_t depth) const {
    if (depth == 0) return &old_root_;
    const Node* holder = OldNode(*node.parent, depth - 1);
    if (holder == nullptr) return nullptr;
    const SchemaNode& old_schema = *steps_[depth - 1].before;
    if (old_schema.IsContainer()) return holder->Container(old_schema);
    const List* list = holder->ListAt(old_schema);
    return list == nullptr ? nullptr : OldEntry(*list, node);
  }

  static const Node* OldEntry(const List& list, const Node& entry) {
    std::vector<Value> keys = entry.Keys();
    for (size_t i = 0; i < keys.size(); ++i) {
      const LeafType& type = *entry.schema->children[i]->type;
      const LeafType& old_type = *list.schema().children[i]->type;
      if (old_type.HasValuesOf(type)) continue;
      try {
        keys[i] = old_type.Parse(type.Print(keys[i]));
      } catch (const Error&) {
        return nullptr;
      }
    }
    return list.Find({keys.data(), keys.size()});
  }

  const std::vector<Step>& steps_;
  const Node& old_root_;
  MovedDefault& moved_;
};

class Search {
 public:
  Search(const Data& old_data, const Data& new_data)
      : old_data_(old_data), new_data_(new_data) {}

  std::vector<MovedDefault> Run() {
    Below({&old_data_.schema().root(), &new_data_.schema().root()});
    return std::move(found_);
  }

 private:
  void Below(Step parents) {
    for (const auto& child : parents.after->children) {
      const SchemaNode* old_child = Namesake(*child, *parents.before);
      if (old_child == nullptr || child->is_state || old_child->is_state) {
        continue;
      }
      steps_.push_back({old_child, child.get()});
      if (child->kind == NodeKind::kLeaf &&
          old_child->kind == NodeKind::kLeaf) {
        Leaf();
      } else if (AreAlike(*old_child, *child)) {
        Below(steps_.back());
      }
      steps_.pop_back();
    }
  }

  // Containers, or lists with the same keys.
  static bool AreAlike(const SchemaNode& before, const SchemaNode& after) {
    if (before.IsContainer() && after.IsContainer()) return true;
    if (before.kind != NodeKind::kList || after.kind != NodeKind::kList ||
        before.key_count != after.key_count) {
      return false;
    }
    for (size_t i = 0; i < after.key_count; ++i) {
      if (Namesake(*after.children[i], before) != before.children[i].get()) {
        return false;
      }
    }
    return true;
  }

  void Leaf() {
    const Step& leaf = steps_.back();
    MovedDefault moved{
        leaf.after, DefaultOf(*leaf.before), DefaultOf(*leaf.after), {}, {}};
    if (moved.before == moved.after) return;
    LeafWalk(steps_, old_data_.root(), moved).Run(new_data_.root());
    if (moved.unset.count + moved.set_to_default.count > 0) {
      found_.push_back(std::move(moved));
    }
  }

  const Data& old_data_;
  const Data& new_data_;
  std::vector<Step> steps_;
  std::vector<MovedDefault> found_;
};

}  // namespace

std::vector<MovedDefault> FindMovedDefaults(const Data& old_data,
                                            const Data& new_data) {
  return Search(old_data, new_data).Run();
}

}  // namespace kit::store
