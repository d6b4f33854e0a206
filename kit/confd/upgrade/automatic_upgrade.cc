#include "kit/confd/upgrade/automatic_upgrade.h"

#include <libyang/libyang.h>

#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "kit/confd/model/error.h"
#include "kit/confd/upgrade/namesake.h"

namespace kit::store {
namespace {

// The namesake if what the one holds can go to it: state is not kept.
const SchemaNode* Counterpart(const SchemaNode& node,
                              const SchemaNode& other_parent) {
  const SchemaNode* other = Namesake(node, other_parent);
  if (other == nullptr || other->is_state != node.is_state) return nullptr;
  return other;
}

// The choice of which `to` holds another case than the child's.
std::string ChoiceTaken(const SchemaNode& child, const Node& to) {
  for (const SchemaNode::CaseOf& own : child.cases) {
    for (const auto& other : to.schema->children) {
      for (const SchemaNode::CaseOf& others : other->cases) {
        if (others.choice == own.choice && others.chosen != own.chosen &&
            to.IsSet(*other)) {
          return own.choice->name;
        }
      }
    }
  }
  return "?";
}

// What becomes of a value in another type.
struct Conversion {
  std::optional<Value> value;
  std::string loss;  // why less is left than there was; "" for nothing lost
};

bool IsOf(const LeafType& type, ValueType value_type) {
  return type.value_type() == value_type;
}

// A leaf of type empty is set where a boolean is true, and keeps the value of
// no other type.
Conversion ConvertToEmpty(const Value& value, const LeafType& from) {
  const Value set = Value::Number(ValueType::kEmpty, 0);
  if (!IsOf(from, ValueType::kBool)) {
    return {set, "a leaf of type empty keeps no value"};
  }
  if (value.bits() == 0) return {};
  return {set, ""};
}

Conversion ConvertFromEmpty(const LeafType& to) {
  if (IsOf(to, ValueType::kBool)) {
    return {Value::Number(ValueType::kBool, 1), ""};
  }
  return {std::nullopt,
          "a leaf of type empty becomes nothing but a boolean or a container "
          "with presence"};
}

Conversion Convert(const Value& value, const LeafType& from,
                   const LeafType& to) {
  if (to.HasValuesOf(from)) return {value, ""};
  if (IsOf(to, ValueType::kEmpty)) return ConvertToEmpty(value, from);
  if (IsOf(from, ValueType::kEmpty)) return ConvertFromEmpty(to);
  try {
    return {to.Parse(from.Print(value)), ""};
  } catch (const Error& error) {
    return {std::nullopt, error.what()};
  }
}

bool HasValues(const SchemaNode& node) {
  return node.kind == NodeKind::kLeaf || node.kind == NodeKind::kLeafList;
}

std::vector<Value> DefaultsOf(const SchemaNode& node) {
  if (node.kind == NodeKind::kLeafList) return node.default_values;
  if (!node.default_value) return {};
  return {*node.default_value};
}

struct ByValue {
  bool operator()(const Value& a, const Value& b) const {
    return Compare(a, b) < 0;
  }
};

struct ByKeys {
  bool operator()(const std::vector<Value>& a,
                  const std::vector<Value>& b) const {
    return Compare(KeyView{a.data(), a.size()}, KeyView{b.data(), b.size()}) <
           0;
  }
};

// Whether the new list's keys tell apart what the old one's did: all of them
// are there, with the values that they had.
bool KeysStayApart(const SchemaNode& old_list, const SchemaNode& new_list) {
  for (size_t i = 0; i < old_list.key_count; ++i) {
    const SchemaNode& old_key = *old_list.children[i];
    const SchemaNode* key = Counterpart(old_key, new_list);
    if (key == nullptr || !key->is_key() ||
        !key->type->HasValuesOf(*old_key.type)) {
      return false;
    }
  }
  return true;
}

class Carrier {
 public:
  explicit Carrier(std::vector<Loss>* losses, CarryWatcher* watcher = nullptr)
      : losses_(losses), watcher_(watcher) {}

  // Whether an entry of the old list may lend its leaves to the new one: the
  // same leaves, with the same values, in the same places.
  static bool HaveSameLeaves(const SchemaNode& old_list,
                             const SchemaNode& new_list) {
    if (old_list.user_ordered || new_list.user_ordered ||
        old_list.key_count != new_list.key_count ||
        old_list.children.size() != new_list.children.size()) {
      return false;
    }
    for (size_t i = 0; i < new_list.children.size(); ++i) {
      const SchemaNode& child = *new_list.children[i];
      const SchemaNode& old_child = *old_list.children[i];
      if (Counterpart(child, old_list) != &old_child ||
          child.kind != old_child.kind || child.in_choice ||
          old_child.in_choice) {
        return false;
      }
      if (child.type != nullptr && !child.type->HasValuesOf(*old_child.type)) {
        return false;
      }
    }
    return true;
  }

  // The root, or what is an entry on one side.
  void CarryOverEntry(const Node& from, Node& to) {
    CarryOver(from, to);
    if (watcher_ != nullptr) watcher_->OnCarried(from, to);
  }

 private:
  void CarryOver(const Node& from, Node& to) {
    // What a case of a choice was given, which a later one empties.
    std::vector<std::pair<const SchemaNode*, const SchemaNode*>> in_cases;
    for (const auto& child : to.schema->children) {
      if (child->is_key()) continue;
      const SchemaNode* old_child = Counterpart(*child, *from.schema);
      if (old_child == nullptr) continue;
      CarryOverChild(from, *old_child, to, *child);
      if (!child->cases.empty() && to.IsSet(*child)) {
        in_cases.emplace_back(old_child, child.get());
      }
    }
    for (const auto& [old_child, child] : in_cases) {
      if (to.IsSet(*child)) continue;
      LoseNode(from, *old_child,
               "another case of the choice \"" + ChoiceTaken(*child, to) +
                   "\" holds in the new model");
    }
    for (const auto& old_child : from.schema->children) {
      if (Counterpart(*old_child, *to.schema) == nullptr) {
        LoseNode(from, *old_child,
                 Namesake(*old_child, *to.schema) == nullptr
                     ? "the new model has no such node"
                     : "it is state in the new model");
      }
    }
  }

  void Lose(const std::string& path, std::string value, std::string reason) {
    if (losses_ == nullptr) return;
    losses_->push_back({path, std::move(value), std::move(reason)});
  }

  void LoseNode(const Node& holder, const SchemaNode& node,
                const std::string& reason) {
    TellLostIn(holder, node);
    if (losses_ == nullptr) return;
    std::string value;
    if (node.kind == NodeKind::kLeaf) {
      const std::optional<Value> set = holder.SetValue(node);
      if (!set) return;
      value = node.type->Print(*set);
    } else if (!holder.IsSet(node)) {
      return;
    } else if (node.kind == NodeKind::kLeafList) {
      for (const Value& one : holder.LeafListValues(node)) {
        value += (value.empty() ? "" : " ") + node.type->Print(one);
      }
    }
    Lose(PathOf(holder, node), std::move(value), reason);
  }

  void TellLost(const Node& entry) {
    if (watcher_ == nullptr) return;
    watcher_->OnLost(entry);
    TellLostBelow(entry);
  }

  void TellLostBelow(const Node& node) {
    for (const auto& child : node.schema->children) TellLostIn(node, *child);
  }

  // The entries that go with a child.
  void TellLostIn(const Node& holder, const SchemaNode& child) {
    if (watcher_ == nullptr) return;
    if (child.kind == NodeKind::kList) {
      const List* const list = holder.ListAt(child);
      if (list == nullptr) return;
      for (const Node& entry : *list) TellLost(entry);
    } else if (child.IsContainer()) {
      const Node* const container = holder.FindContainer(child);
      if (container != nullptr) TellLostBelow(*container);
    }
  }

  static std::string PathOf(const Node& holder, const SchemaNode& child) {
    return KeyPath(holder) + "/" + child.PathName();
  }

  // Less, or nothing, is left of one value of a node.
  void LoseValue(const Node& holder, const SchemaNode& node, const Value& value,
                 const std::string& reason) {
    if (losses_ == nullptr) return;
    Lose(PathOf(holder, node), node.type->Print(value), reason);
  }

  // The value of a node in the new model. Nothing, without a loss, for what an
  // unset leaf says there.
  std::optional<Value> Carry(const Node& holder, const SchemaNode& node,
                             const Value& value, const SchemaNode& new_node) {
    Conversion conversion = Convert(value, *node.type, *new_node.type);
    if (!conversion.loss.empty()) {
      LoseValue(holder, node, value, conversion.loss);
    }
    return std::move(conversion.value);
  }

  // A leaf that says what its default said takes the new default.
  static bool YieldsToDefault(const Value& value, const SchemaNode& old_leaf,
                              const SchemaNode& new_leaf) {
    return old_leaf.default_value && value == *old_leaf.default_value &&
           new_leaf.default_value;
  }

  // Whether all that the entry holds is carried over as it is.
  static bool StaysAsItIs(const Node& entry, const SchemaNode& new_list) {
    if (!entry.HoldsLeavesAlone()) return false;
    for (size_t i = 0; i < new_list.children.size(); ++i) {
      const SchemaNode& old_child = *entry.schema->children[i];
      const SchemaNode& child = *new_list.children[i];
      if (!entry.IsSet(old_child)) continue;
      if (child.kind == NodeKind::kLeafList) return false;
      if (old_child.default_value &&
          YieldsToDefault(*entry.SetValue(old_child), old_child, child)) {
        return false;
      }
    }
    return true;
  }

  void CarryOverChild(const Node& from, const SchemaNode& old_child, Node& to,
                      const SchemaNode& child) {
    if (child.kind == NodeKind::kLeaf && old_child.kind == NodeKind::kLeaf) {
      CarryOverLeaf(from, old_child, to, child);
    } else if (HasValues(child) && HasValues(old_child)) {
      CarryOverLeafList(from, old_child, to, child);
    } else if (child.kind == NodeKind::kList &&
               old_child.kind == NodeKind::kList) {
      CarryOverList(from, old_child, to, child);
    } else if (child.IsContainer() && old_child.IsContainer()) {
      const Node* container = SetContainer(from, old_child);
      if (container != nullptr) CarryOver(*container, to.MakeContainer(child));
    } else if (child.kind == NodeKind::kList && old_child.IsContainer()) {
      CarryOverAsEntry(from, old_child, to, child);
    } else if (child.IsContainer() && old_child.kind == NodeKind::kList) {
      CarryOverOnlyEntry(from, old_child, to, child);
    } else if (child.kind == NodeKind::kPresenceContainer &&
               old_child.kind == NodeKind::kLeaf &&
               IsOf(*old_child.type, ValueType::kEmpty)) {
      if (from.SetValue(old_child)) to.MakeContainer(child);
    } else {
      LoseNode(from, old_child, "the new model has another kind of node");
    }
  }

  // Null for one that nothing was set in.
  static const Node* SetContainer(const Node& holder,
                                  const SchemaNode& container) {
    return holder.IsSet(container) ? holder.FindContainer(container) : nullptr;
  }

  void CarryOverAsEntry(const Node& from, const SchemaNode& old_container,
                        Node& to, const SchemaNode& new_list) {
    const Node* container = SetContainer(from, old_container);
    if (container == nullptr) return;
    auto keys = ConvertKeys(*container, new_list);
    if (!keys) return TellLost(*container);
    CarryOverEntry(
        *container,
        *to.MakeList(new_list).Insert({keys->data(), keys->size()}).first);
  }

  void CarryOverOnlyEntry(const Node& from, const SchemaNode& old_list,
                          Node& to, const SchemaNode& new_container) {
    if (!from.IsSet(old_list)) return;
    const List& list = *from.ListAt(old_list);
    if (list.size() == 1) {
      CarryOverEntry(*list.First(), to.MakeContainer(new_container));
    } else {
      LoseNode(from, old_list,
               "it has " + std::to_string(list.size()) +
                   " entries, the new model has room for one");
    }
  }

  void CarryOverLeaf(const Node& from, const SchemaNode& old_leaf, Node& to,
                     const SchemaNode& new_leaf) {
    const std::optional<Value> value = from.SetValue(old_leaf);
    if (!value || YieldsToDefault(*value, old_leaf, new_leaf)) return;
    const auto converted = Carry(from, old_leaf, *value, new_leaf);
    if (converted) to.SetLeaf(new_leaf, *converted);
  }

  // A leaf-list, or a leaf that becomes one or was one: it has one value.
  void CarryOverLeafList(const Node& from, const SchemaNode& old_node, Node& to,
                         const SchemaNode& new_node) {
    const std::vector<Value> values = SetValues(from, old_node);
    if (values.empty()) return;
    if (values == DefaultsOf(old_node) && !DefaultsOf(new_node).empty()) return;
    if (new_node.kind == NodeKind::kLeaf && values.size() > 1) {
      LoseNode(from, old_node, "the new model has room for one value");
      return;
    }
    const std::vector<Value> converted =
        ConvertAll(values, from, old_node, new_node);
    if (converted.empty()) return;
    if (new_node.kind == NodeKind::kLeaf) {
      to.SetLeaf(new_node, converted.front());
    } else {
      to.SetLeafList(new_node, converted);
    }
  }

  static std::vector<Value> SetValues(const Node& holder,
                                      const SchemaNode& node) {
    if (node.kind == NodeKind::kLeafList) {
      if (!holder.IsSet(node)) return {};
      return holder.LeafListValues(node);
    }
    const std::optional<Value> value = holder.SetValue(node);
    if (!value) return {};
    return {*value};
  }

  std::vector<Value> ConvertAll(const std::vector<Value>& values,
                                const Node& from, const SchemaNode& old_node,
                                const SchemaNode& new_node) {
    std::vector<Value> converted;
    std::set<Value, ByValue> seen;
    for (const Value& value : values) {
      auto one = Carry(from, old_node, value, new_node);
      if (!one) continue;
      if (!seen.insert(*one).second) {
        LoseValue(from, old_node, value,
                  "another value is the same in the new model");
        continue;
      }
      converted.push_back(std::move(*one));
    }
    return converted;
  }

  // The one value of a leaf or leaf-list, set or by default.
  static std::optional<Value> OnlyValue(const Node& holder,
                                        const SchemaNode& node) {
    if (node.kind == NodeKind::kLeaf) return holder.LeafValue(node);
    if (node.kind != NodeKind::kLeafList) return std::nullopt;
    std::vector<Value> values = holder.LeafListValues(node);
    if (values.size() != 1) return std::nullopt;
    return std::move(values.front());
  }

  void LoseForKey(const Node& entry, const SchemaNode& new_key) {
    if (losses_ == nullptr) return;
    Lose(KeyPath(entry), "",
         "it has not one value for the new key \"" + new_key.name + "\"");
  }

  // The keys that an entry has in the new model; nothing, and a loss of the
  // entry, if one can't be had.
  std::optional<std::vector<Value>> ConvertKeys(const Node& entry,
                                                const SchemaNode& new_list) {
    std::vector<Value> keys;
    for (size_t i = 0; i < new_list.key_count; ++i) {
      const SchemaNode& new_key = *new_list.children[i];
      const SchemaNode* old_key = Counterpart(new_key, *entry.schema);
      const std::optional<Value> value =
          old_key != nullptr ? OnlyValue(entry, *old_key) : std::nullopt;
      if (!value) {
        LoseForKey(entry, new_key);
        return std::nullopt;
      }
      Conversion key = Convert(*value, *old_key->type, *new_key.type);
      if (!key.value) {
        if (key.loss.empty()) {
          LoseForKey(entry, new_key);
        } else if (losses_ != nullptr) {
          Lose(KeyPath(entry), old_key->type->Print(*value), key.loss);
        }
        return std::nullopt;
      }
      if (!key.loss.empty()) LoseValue(entry, *old_key, *value, key.loss);
      keys.push_back(std::move(*key.value));
    }
    return keys;
  }

  void CarryOverList(const Node& from, const SchemaNode& old_list, Node& to,
                     const SchemaNode& new_list) {
    const List* list = from.ListAt(old_list);
    if (list == nullptr) return;
    if (!KeysStayApart(old_list, new_list)) {
      const auto [one, other] = FindCollision(*list, new_list);
      if (one != nullptr) {
        LoseNode(from, old_list,
                 KeyText(*one) + " and " + KeyText(*other) +
                     " have the same keys in the new model, so that all " +
                     std::to_string(list->size()) + " entries go");
        return;
      }
    }
    const bool may_share = HaveSameLeaves(old_list, new_list);
    const bool has_moved =
        watcher_ != nullptr && PathOf(from, old_list) != PathOf(to, new_list);
    for (const Node& entry : *list) {
      auto keys = ConvertKeys(entry, new_list);
      if (!keys) {
        TellLost(entry);
        continue;
      }
      const bool shares = may_share && StaysAsItIs(entry, new_list);
      Node& node =
          *to.MakeList(new_list)
               .Insert({keys->data(), keys->size()}, shares ? &entry : nullptr)
               .first;
      if (!shares) {
        CarryOverEntry(entry, node);
      } else if (has_moved) {
        watcher_->OnCarried(entry, node);
      }
    }
  }

  // Two entries that the new keys no longer tell apart; null where there are
  // none.
  static std::pair<const Node*, const Node*> FindCollision(
      const List& list, const SchemaNode& new_list) {
    Carrier silent(nullptr);
    std::map<std::vector<Value>, const Node*, ByKeys> entries;
    for (const Node& entry : list) {
      auto keys = silent.ConvertKeys(entry, new_list);
      if (!keys) continue;
      const auto [place, is_new] = entries.emplace(*std::move(keys), &entry);
      if (!is_new) return {place->second, &entry};
    }
    return {nullptr, nullptr};
  }

  std::vector<Loss>* losses_;
  CarryWatcher* watcher_;
};

}  // namespace

Data UpgradeAutomatically(const Data& old_data, const Schema& new_schema,
                          std::vector<Loss>* losses, CarryWatcher* watcher) {
  Data data(new_schema);
  old_data.ShareWith(data);
  Carrier(losses, watcher).CarryOverEntry(old_data.root(), data.root());
  return data;
}

}  // namespace kit::store
