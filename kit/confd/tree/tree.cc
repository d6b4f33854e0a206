#include "kit/confd/tree/tree.h"

#include <algorithm>
#include <atomic>
#include <iterator>

#include "kit/confd/keypath/key_text.h"

namespace kit::store {
namespace {

template <typename T>
T* Held(const Slot& slot) {
  const auto* held = std::get_if<std::unique_ptr<T>>(&slot);
  return held == nullptr ? nullptr : held->get();
}

bool IsSetSlot(const Slot& slot) {
  if (const Node* node = Held<Node>(slot)) {
    return node->schema->kind == NodeKind::kPresenceContainer ||
           !node->IsEmpty();
  }
  if (const List* list = Held<List>(slot)) return list->size() > 0;
  return !std::holds_alternative<std::monostate>(slot);
}

}  // namespace

Node::Node(const SchemaNode& schema_node, Node* parent_node)
    : schema(&schema_node),
      parent(parent_node),
      slots(schema_node.children.size()) {
  for (const auto& child : schema_node.children) {
    if (child->kind == NodeKind::kContainer) Clear(*child);
  }
}

void Node::Clear(const SchemaNode& child) {
  if (child.kind == NodeKind::kContainer) {
    slots[child.slot] = std::make_unique<Node>(child, this);
  } else {
    slots[child.slot] = std::monostate();
  }
}

void Node::SetLeaf(const SchemaNode& leaf, Value value) {
  ClearOtherCases(leaf);
  slots[leaf.slot] = std::move(value);
}

void Node::SetLeafList(const SchemaNode& leaf_list, std::vector<Value> values) {
  ClearOtherCases(leaf_list);
  slots[leaf_list.slot] =
      std::make_unique<std::vector<Value>>(std::move(values));
}

void Node::AddToLeafList(const SchemaNode& leaf_list, Value value) {
  if (auto* values = Held<std::vector<Value>>(slots[leaf_list.slot])) {
    values->push_back(std::move(value));
  } else {
    SetLeafList(leaf_list, {std::move(value)});
  }
}

const Value* Node::SetValue(const SchemaNode& leaf) const {
  if (leaf.is_key() && !keys.empty()) return &keys[leaf.slot];
  return std::get_if<Value>(&slots[leaf.slot]);
}

const Value* Node::LeafValue(const SchemaNode& leaf) const {
  if (const Value* value = SetValue(leaf)) return value;
  if (!leaf.default_value || !DefaultApplies(leaf)) return nullptr;
  return &*leaf.default_value;
}

const std::vector<Value>* Node::LeafListValues(
    const SchemaNode& leaf_list) const {
  if (const auto* values = Held<std::vector<Value>>(slots[leaf_list.slot])) {
    return values;
  }
  if (leaf_list.default_values.empty() || !DefaultApplies(leaf_list)) {
    return nullptr;
  }
  return &leaf_list.default_values;
}

Node* Node::Container(const SchemaNode& container) const {
  return Held<Node>(slots[container.slot]);
}

List* Node::ListAt(const SchemaNode& list) const {
  return Held<List>(slots[list.slot]);
}

Node& Node::MakeContainer(const SchemaNode& container) {
  Slot& slot = slots[container.slot];
  if (Held<Node>(slot) == nullptr) {
    ClearOtherCases(container);
    slot = std::make_unique<Node>(container, this);
  }
  return *Held<Node>(slot);
}

List& Node::MakeList(const SchemaNode& list) {
  Slot& slot = slots[list.slot];
  if (Held<List>(slot) == nullptr) {
    ClearOtherCases(list);
    slot = std::make_unique<List>(list, this);
  }
  return *Held<List>(slot);
}

bool Node::IsSet(const SchemaNode& child) const {
  return IsSetSlot(slots[child.slot]);
}

bool Node::IsEmpty() const {
  return std::none_of(slots.begin(), slots.end(), IsSetSlot);
}

void Node::ClearOtherCases(const SchemaNode& child) {
  if (parent != nullptr) parent->ClearOtherCases(*schema);
  for (const auto& own : child.cases) {
    for (const auto& other : schema->children) {
      for (const auto& others : other->cases) {
        if (others.choice == own.choice && others.chosen != own.chosen) {
          Clear(*other);
        }
      }
    }
  }
}

bool Node::DefaultApplies(const SchemaNode& child) const {
  // A container without presence is there for the model's sake only: what it
  // holds by default hangs on the choice that it stands in.
  if (schema->kind == NodeKind::kContainer &&
      !parent->DefaultApplies(*schema)) {
    return false;
  }
  for (const auto& own : child.cases) {
    bool own_case_set = false;
    bool other_case_set = false;
    for (const auto& other : schema->children) {
      for (const auto& others : other->cases) {
        if (others.choice != own.choice || !IsSet(*other)) continue;
        (others.chosen == own.chosen ? own_case_set : other_case_set) = true;
      }
    }
    if (other_case_set || (!own_case_set && !own.is_default)) return false;
  }
  return true;
}

std::string KeyText(const Node& entry) {
  std::string text;
  for (size_t i = 0; i < entry.keys.size(); ++i) {
    text += i == 0 ? '{' : ' ';
    text += keypath::QuoteKey(
        entry.schema->children[i]->type->Print(entry.keys[i]));
  }
  return text + "}";
}

std::string KeyPath(const Node& node) {
  if (node.parent == nullptr) return "";
  std::string path = KeyPath(*node.parent) + "/" + node.schema->PathName();
  return node.keys.empty() ? path : path + KeyText(node);
}

Node* List::Find(KeyView keys) const {
  auto it = entries_.find(keys);
  return it == entries_.end() ? nullptr : it->get();
}

std::pair<Node*, bool> List::Insert(std::vector<Value> keys) {
  KeyView view{keys.data(), keys.size()};
  auto place = entries_.lower_bound(view);
  if (place != entries_.end() && Compare((*place)->Keys(), view) == 0) {
    return {place->get(), false};
  }
  auto entry = std::make_unique<Node>(*schema_, holder_);
  entry->keys = std::move(keys);
  auto inserted = entries_.insert(place, std::move(entry));
  Node* node = inserted->get();
  Node* before = nullptr;
  if (schema_->user_ordered) {
    if (!order_.empty()) before = order_.rbegin()->second;
    node->place = ++last_place_;
    order_.emplace_hint(order_.end(), node->place, node);
  } else {
    if (inserted != entries_.begin()) before = std::prev(inserted)->get();
    if (place != entries_.end()) node->next = place->get();
  }
  if (before != nullptr) before->next = node;
  positions_.clear();
  return {node, true};
}

bool List::Erase(KeyView keys) {
  auto it = entries_.find(keys);
  if (it == entries_.end()) return false;
  Node* before = nullptr;
  if (schema_->user_ordered) {
    auto in_order = order_.find((*it)->place);
    if (in_order != order_.begin()) before = std::prev(in_order)->second;
    order_.erase(in_order);
  } else if (it != entries_.begin()) {
    before = std::prev(it)->get();
  }
  if (before != nullptr) before->next = (*it)->next;
  entries_.erase(it);
  positions_.clear();
  stamp_ = NewStamp();
  return true;
}

uint64_t List::NewStamp() {
  static std::atomic<uint64_t> last{0};
  return ++last;
}

Node* List::First() const {
  if (!schema_->user_ordered) return FirstByKey();
  return order_.empty() ? nullptr : order_.begin()->second;
}

Node* List::Next(KeyView keys, bool or_same) const {
  auto it = entries_.lower_bound(keys);
  bool same = it != entries_.end() && Compare((*it)->Keys(), keys) == 0;
  if (!schema_->user_ordered) {
    if (same && !or_same) ++it;
    return it == entries_.end() ? nullptr : it->get();
  }
  if (keys.size < schema_->key_count) {
    // The user's order says nothing of keys: take the first that fits.
    Node* node = First();
    while (node != nullptr &&
           Compare({node->keys.data(), keys.size}, keys) != 0) {
      node = node->next;
    }
    return node;
  }
  if (!same) return nullptr;
  return or_same ? it->get() : (*it)->next;
}

List::Place List::PlaceOf(const Node& entry) const {
  return {&entry, entry.keys, entry.place, stamp_};
}

Node* List::After(const Place& place) const {
  if (place.stamp == stamp_) return place.entry->next;
  if (!schema_->user_ordered) {
    return NextByKey({place.keys.data(), place.keys.size()});
  }
  auto next = order_.upper_bound(place.order);
  return next == order_.end() ? nullptr : next->second;
}

Node* List::FirstByKey() const {
  return entries_.empty() ? nullptr : entries_.begin()->get();
}

Node* List::NextByKey(KeyView keys) const {
  auto it = entries_.upper_bound(keys);
  return it == entries_.end() ? nullptr : it->get();
}

Node* List::At(size_t position) const {
  if (position >= size()) return nullptr;
  if (positions_.empty()) {
    positions_.reserve(size());
    for (Node* node = First(); node != nullptr; node = node->next) {
      positions_.push_back(node);
    }
  }
  return positions_[position];
}

}  // namespace kit::store
