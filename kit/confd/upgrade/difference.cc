#include "kit/confd/upgrade/difference.h"

namespace kit::store {
namespace {

class Comparison {
 public:
  Comparison(const std::function<void(const EntryDifference&)>& sink,
             bool all_defaults)
      : sink_(sink), all_defaults_(all_defaults) {}

  // Either side may be null: the entry is not there.
  void Entry(const Node* before, const Node* after, const std::string& path) {
    const SchemaNode& schema = *(before != nullptr ? before : after)->schema;
    EntryDifference difference{DifferenceKind::kChanged,
                               &schema,
                               path.empty() ? "/" : path,
                               after,
                               {}};
    if (before == nullptr) difference.kind = DifferenceKind::kCreated;
    if (after == nullptr) difference.kind = DifferenceKind::kDeleted;
    Leaves(schema, before, after, before != nullptr && after != nullptr,
           all_defaults_, "", difference.leaves);
    if (difference.kind != DifferenceKind::kChanged ||
        !difference.leaves.empty()) {
      sink_(difference);
    }
    Lists(schema, before, after, path);
  }

  static std::optional<std::string> LeafText(const Node* node,
                                             const SchemaNode& leaf) {
    if (node == nullptr || !node->IsSet(leaf)) return std::nullopt;
    return ValueText(*node, leaf);
  }

  // Set or by default.
  static std::string ValueText(const Node& node, const SchemaNode& leaf) {
    if (leaf.kind == NodeKind::kLeaf) {
      return leaf.type->Print(*node.LeafValue(leaf));
    }
    return PrintList(leaf, node.LeafListValues(leaf));
  }

  // What holds in the node, which may be a container without presence that was
  // never made, where the leaf is not set.
  static std::optional<std::string> DefaultText(const Node* node,
                                                const SchemaNode& leaf) {
    if (node != nullptr) {
      if (!node->HasValue(leaf)) return std::nullopt;
      return ValueText(*node, leaf);
    }
    if (leaf.in_choice) return std::nullopt;
    if (leaf.default_value) return leaf.type->Print(*leaf.default_value);
    if (leaf.default_values.empty()) return std::nullopt;
    return PrintList(leaf, leaf.default_values);
  }

  static const Node* ContainerOf(const Node* node, const SchemaNode& schema) {
    return node == nullptr ? nullptr : node->FindContainer(schema);
  }

  // both_there: neither side lacks the entry, or a presence container above.
  static void Leaves(const SchemaNode& schema, const Node* before,
                     const Node* after, bool both_there, bool all_defaults,
                     const std::string& prefix,
                     std::vector<LeafDifference>& leaves) {
    for (const auto& child : schema.children) {
      std::string name = prefix + child->PathName();
      if (child->kind == NodeKind::kLeaf ||
          child->kind == NodeKind::kLeafList) {
        if (child->is_key()) continue;
        auto old_text = LeafText(before, *child);
        auto new_text = LeafText(after, *child);
        if (old_text == new_text) continue;
        LeafDifference leaf{std::move(name), std::move(old_text),
                            std::move(new_text)};
        if (both_there && !(leaf.before && leaf.after)) {
          leaf.default_value =
              DefaultText(leaf.before ? after : before, *child);
        } else if (all_defaults) {
          leaf.default_value = DefaultText(nullptr, *child);
        }
        leaves.push_back(std::move(leaf));
      } else if (child->IsContainer()) {
        const Node* old_container = ContainerOf(before, *child);
        const Node* new_container = ContainerOf(after, *child);
        if (child->kind == NodeKind::kPresenceContainer &&
            (old_container == nullptr) != (new_container == nullptr)) {
          LeafDifference presence{name, std::nullopt, std::nullopt};
          (old_container != nullptr ? presence.before : presence.after) = "";
          leaves.push_back(std::move(presence));
        }
        if (old_container != nullptr || new_container != nullptr) {
          const bool both =
              both_there &&
              (child->kind == NodeKind::kContainer ||
               (old_container != nullptr && new_container != nullptr));
          Leaves(*child, old_container, new_container, both, all_defaults,
                 name + "/", leaves);
        }
      }
    }
  }

 private:
  void Lists(const SchemaNode& schema, const Node* before, const Node* after,
             const std::string& path) {
    for (const auto& child : schema.children) {
      std::string child_path = path + "/" + child->PathName();
      if (child->kind == NodeKind::kList) {
        ListEntries(before == nullptr ? nullptr : before->ListAt(*child),
                    after == nullptr ? nullptr : after->ListAt(*child),
                    child_path);
      } else if (child->IsContainer()) {
        const Node* old_container = ContainerOf(before, *child);
        const Node* new_container = ContainerOf(after, *child);
        if (old_container != nullptr || new_container != nullptr) {
          Lists(*child, old_container, new_container, child_path);
        }
      }
    }
  }

  // Merges the two lists by key, whatever order the user gave them.
  void ListEntries(const List* before, const List* after,
                   const std::string& path) {
    Walk old_entries(before);
    Walk new_entries(after);
    while (old_entries.entry() != nullptr || new_entries.entry() != nullptr) {
      const Node* old_side = old_entries.entry();
      const Node* new_side = new_entries.entry();
      if (old_side != nullptr && new_side != nullptr) {
        const int order = CompareKeys(*old_side, *new_side);
        if (order < 0) new_side = nullptr;
        if (order > 0) old_side = nullptr;
      }
      Entry(old_side, new_side,
            path + KeyText(old_side != nullptr ? *old_side : *new_side));
      if (old_side != nullptr) old_entries.Advance();
      if (new_side != nullptr) new_entries.Advance();
    }
  }

  // Goes through a list by key; a list that is not there is empty.
  class Walk {
   public:
    explicit Walk(const List* list) {
      if (list != nullptr) at_ = list->ByKey().begin();
    }
    const Node* entry() const { return at_.get(); }
    void Advance() { ++at_; }

   private:
    List::Iterator at_;
  };

  const std::function<void(const EntryDifference&)>& sink_;
  const bool all_defaults_;
};

}  // namespace

std::optional<std::string> DefaultOf(const SchemaNode& leaf) {
  return Comparison::DefaultText(nullptr, leaf);
}

std::vector<LeafDifference> LeavesOf(const Node& entry) {
  std::vector<LeafDifference> leaves;
  Comparison::Leaves(*entry.schema, nullptr, &entry, false, true, "", leaves);
  return leaves;
}

std::string PrintList(const SchemaNode& leaf_list,
                      const std::vector<Value>& values) {
  std::string text = "[";
  for (const Value& value : values) {
    if (text.size() > 1) text += ' ';
    text += leaf_list.type->Print(value);
  }
  return text + "]";
}

void Compare(const Data& before, const Data& after,
             const std::function<void(const EntryDifference&)>& sink,
             bool all_defaults) {
  Comparison(sink, all_defaults).Entry(&before.root(), &after.root(), "");
}

}  // namespace kit::store
