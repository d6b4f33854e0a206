#include "kit/confd/tree/tree.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

#include "kit/confd/keypath/key_text.h"

namespace kit::store {
namespace {

// Cells that a new record has room for besides its keys.
constexpr size_t kFirstCells = 4;

template <typename T>
T* Held(const Cell* cell) {
  return cell == nullptr ? nullptr : reinterpret_cast<T*>(*cell);
}

Cell CellOf(const void* held) { return reinterpret_cast<Cell>(held); }

// Not the builtin, which is a function call where the processor's instruction
// can't be taken for granted.
size_t BitCount(uint64_t word) {
  word -= word >> 1 & 0x5555555555555555;
  word = (word & 0x3333333333333333) + (word >> 2 & 0x3333333333333333);
  word = (word + (word >> 4)) & 0x0f0f0f0f0f0f0f0f;
  return static_cast<size_t>(word * 0x0101010101010101 >> 56);
}

// Whether the cell itself says something, and not only what it leads to.
bool HoldsValue(const SchemaNode& child) {
  return child.kind == NodeKind::kLeaf || child.kind == NodeKind::kLeafList ||
         child.kind == NodeKind::kPresenceContainer;
}

bool AreEqualCells(const SchemaNode& child, Cell a, Cell b) {
  if (child.kind == NodeKind::kLeaf) return AreEqual(*child.type, a, b);
  return ValuesOf(*child.type, a) == ValuesOf(*child.type, b);
}

}  // namespace

// ---- Node -----------------------------------------------------------------

Node::Node(Arena& arena, const SchemaNode& schema_node, Node* parent_node,
           size_t cells, uint64_t* shared)
    : schema(&schema_node),
      parent(parent_node),
      record_(shared),
      capacity_(cells) {
  if (shared != nullptr) return;
  const size_t words = header_words() + capacity_;
  record_ = static_cast<uint64_t*>(arena.Allocate(words * sizeof(uint64_t)));
  std::fill(record_, record_ + header_words(), 0);
}

Node* Node::Make(Arena& arena, const SchemaNode& schema, Node* parent,
                 size_t cells, uint64_t* shared) {
  void* memory = arena.Allocate(sizeof(Node));
  try {
    return new (memory) Node(arena, schema, parent, cells, shared);
  } catch (...) {
    arena.Free(memory, sizeof(Node));
    throw;
  }
}

void Node::Destroy(Node* node, bool tell_values) {
  Arena& arena = node->arena();
  arena.NoteLoss();
  TreeWatcher* const watcher = arena.watcher();
  if (watcher != nullptr && node->is_entry()) {
    watcher->OnDeleted(*node);
    tell_values = false;
  }
  for (const auto& child : node->schema->children) {
    if (const Cell* cell = node->Find(*child)) {
      if (watcher != nullptr && tell_values && HoldsValue(*child)) {
        watcher->OnValue(*node, *child, cell, nullptr);
      }
      node->FreeContent(*child, *cell, tell_values);
    }
  }
  if (arena.MayChange(node->record_)) {
    arena.Free(node->record_,
               (node->header_words() + node->capacity_) * sizeof(uint64_t));
  }
  arena.Free(node, sizeof(Node));
}

size_t Node::CellIndex(size_t slot) const {
  const uint64_t below = (uint64_t{1} << slot % 64) - 1;
  size_t index = BitCount(record_[slot / 64] & below);
  for (size_t word = slot / 64; word > 0; --word) {
    index += BitCount(record_[word - 1]);
  }
  return index;
}

size_t Node::CellCount() const {
  size_t count = 0;
  for (size_t word = 0; word < bitmap_words(); ++word) {
    count += BitCount(record_[word]);
  }
  return count;
}

void Node::MoveRecord(size_t capacity) {
  Arena& own = arena();
  const size_t used = header_words() + CellCount();
  const size_t old_words = header_words() + capacity_;
  auto* moved = static_cast<uint64_t*>(
      own.Allocate((header_words() + capacity) * sizeof(uint64_t)));
  std::memcpy(moved, record_, used * sizeof(uint64_t));
  if (own.MayChange(record_)) own.Free(record_, old_words * sizeof(uint64_t));
  record_ = moved;
  capacity_ = capacity;
}

// The child's cell, new ones with nothing in it.
Cell& Node::CellFor(const SchemaNode& child) {
  const size_t index = CellIndex(child.slot);
  if (Has(child.slot)) {
    if (!arena().MayChange(record_)) MoveRecord(capacity_);
    return cells()[index];
  }
  const size_t count = CellCount();
  if (count == capacity_) {
    MoveRecord(std::max(kFirstCells, capacity_ + capacity_ / 2));
  } else if (!arena().MayChange(record_)) {
    MoveRecord(capacity_);
  }
  Cell* const first = cells();
  std::copy_backward(first + index, first + count, first + count + 1);
  first[index] = 0;
  record_[child.slot / 64] |= uint64_t{1} << child.slot % 64;
  return first[index];
}

// Replaces what the child holds.
void Node::Put(const SchemaNode& child, Cell cell) {
  const Cell* held = Find(child);
  const Cell before = held != nullptr ? *held : 0;
  const bool had = held != nullptr;
  CellFor(child) = cell;
  if (TreeWatcher* const told = watcher()) {
    if (!child.is_key() && !(had && AreEqualCells(child, before, cell))) {
      told->OnValue(*this, child, had ? &before : nullptr, &cell);
    }
  }
  if (had) FreeContent(child, before);
}

void Node::FreeContent(const SchemaNode& child, Cell cell,
                       bool tell_values) const {
  switch (child.kind) {
    case NodeKind::kLeaf:
      FreeCell(arena(), *child.type, cell);
      return;
    case NodeKind::kLeafList:
      FreeListCell(arena(), *child.type, cell);
      return;
    case NodeKind::kContainer:
    case NodeKind::kPresenceContainer:
      Destroy(Held<Node>(&cell), tell_values);
      return;
    case NodeKind::kList:
      List::Destroy(Held<List>(&cell));
      return;
    default:
      return;
  }
}

void Node::Clear(const SchemaNode& child) {
  const Cell* held = Find(child);
  if (held == nullptr) return;
  const Cell cell = *held;
  if (!arena().MayChange(record_)) MoveRecord(capacity_);
  const size_t index = CellIndex(child.slot);
  Cell* const first = cells();
  std::copy(first + index + 1, first + CellCount(), first + index);
  record_[child.slot / 64] &= ~(uint64_t{1} << child.slot % 64);
  TreeWatcher* const told = watcher();
  if (told != nullptr && HoldsValue(child)) {
    told->OnValue(*this, child, &cell, nullptr);
  }
  FreeContent(child, cell);
}

void Node::SetLeaf(const SchemaNode& leaf, const Value& value) {
  ClearOtherCases(leaf);
  Put(leaf, MakeCell(arena(), *leaf.type, value));
}

void Node::SetLeafList(const SchemaNode& leaf_list,
                       const std::vector<Value>& values) {
  ClearOtherCases(leaf_list);
  Put(leaf_list, MakeListCell(arena(), *leaf_list.type, values));
}

std::optional<Value> Node::SetValue(const SchemaNode& leaf) const {
  const Cell* cell = Find(leaf);
  if (cell == nullptr) return std::nullopt;
  return ValueOf(*leaf.type, *cell);
}

std::optional<Value> Node::LeafValue(const SchemaNode& leaf) const {
  if (const Cell* cell = Find(leaf)) return ValueOf(*leaf.type, *cell);
  if (!leaf.default_value || !DefaultApplies(leaf)) return std::nullopt;
  return leaf.default_value;
}

std::vector<Value> Node::LeafListValues(const SchemaNode& leaf_list) const {
  if (const Cell* cell = Find(leaf_list)) {
    return ValuesOf(*leaf_list.type, *cell);
  }
  if (!DefaultApplies(leaf_list)) return {};
  return leaf_list.default_values;
}

bool Node::HasValue(const SchemaNode& leaf) const {
  if (Has(leaf.slot)) return true;
  const bool has_default = leaf.kind == NodeKind::kLeaf
                               ? leaf.default_value.has_value()
                               : !leaf.default_values.empty();
  return has_default && DefaultApplies(leaf);
}

const Node* Node::FindContainer(const SchemaNode& container) const {
  return Held<Node>(Find(container));
}

Node* Node::Container(const SchemaNode& container) const {
  const Cell* cell = Find(container);
  if (cell != nullptr) return Held<Node>(cell);
  if (container.kind != NodeKind::kContainer) return nullptr;
  // What is always there changes nothing by being made.
  auto* self = const_cast<Node*>(this);
  Node* made = Make(arena(), container, self, 0);
  self->CellFor(container) = CellOf(made);
  return made;
}

List* Node::ListAt(const SchemaNode& list) const {
  return Held<List>(Find(list));
}

Node& Node::MakeContainer(const SchemaNode& container) {
  if (const Cell* cell = Find(container)) return *Held<Node>(cell);
  // One without presence says nothing of the case until something is set in it.
  if (container.kind == NodeKind::kPresenceContainer) {
    ClearOtherCases(container);
  }
  Node* made = Make(arena(), container, this, kFirstCells);
  const Cell cell = CellFor(container) = CellOf(made);
  TreeWatcher* const told = watcher();
  if (told != nullptr && HoldsValue(container)) {
    told->OnValue(*this, container, nullptr, &cell);
  }
  return *made;
}

List& Node::MakeList(const SchemaNode& list) {
  if (const Cell* cell = Find(list)) return *Held<List>(cell);
  ClearOtherCases(list);
  auto* made = new (arena().Allocate(sizeof(List))) List(list, this);
  CellFor(list) = CellOf(made);
  return *made;
}

bool Node::IsSetCell(const SchemaNode& child, Cell cell) const {
  switch (child.kind) {
    case NodeKind::kContainer:
      return !Held<Node>(&cell)->IsEmpty();
    case NodeKind::kList:
      return Held<List>(&cell)->size() > 0;
    default:
      return !child.is_key();
  }
}

bool Node::IsSet(const SchemaNode& child) const {
  const Cell* cell = Find(child);
  return cell != nullptr && IsSetCell(child, *cell);
}

bool Node::IsEmpty() const {
  if (CellCount() == 0) return true;
  return std::none_of(schema->children.begin(), schema->children.end(),
                      [this](const auto& child) { return IsSet(*child); });
}

bool Node::HoldsLeavesAlone() const {
  return std::none_of(schema->children.begin(), schema->children.end(),
                      [this](const auto& child) {
                        return child->kind != NodeKind::kLeaf &&
                               child->kind != NodeKind::kLeafList &&
                               Has(child->slot);
                      });
}

Value Node::Key(size_t number) const {
  // Keys come first and are always there.
  return ValueOf(*schema->children[number]->type, cells()[number]);
}

std::vector<Value> Node::Keys() const {
  std::vector<Value> keys;
  if (!is_entry()) return keys;
  keys.reserve(schema->key_count);
  for (size_t i = 0; i < schema->key_count; ++i) keys.push_back(Key(i));
  return keys;
}

void Node::ClearOtherCases(const SchemaNode& child) {
  if (!child.in_choice) return;
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
  if (!child.in_choice) return true;
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

std::string KeyText(const SchemaNode& list, const std::vector<Value>& keys) {
  std::string text;
  for (size_t i = 0; i < keys.size(); ++i) {
    text += i == 0 ? '{' : ' ';
    text += keypath::QuoteKey(list.children[i]->type->Print(keys[i]));
  }
  return text + "}";
}

std::string KeyText(const Node& entry) {
  return KeyText(*entry.schema, entry.Keys());
}

std::string KeyPath(const Node& node) {
  if (node.parent == nullptr) return "";
  std::string path = KeyPath(*node.parent) + "/" + node.schema->PathName();
  return node.is_entry() ? path + KeyText(node) : path;
}

int CompareKeys(const Node& a, const Node& b) {
  const std::vector<Value> keys_of_a = a.Keys();
  const std::vector<Value> keys_of_b = b.Keys();
  return Compare(KeyView{keys_of_a.data(), keys_of_a.size()},
                 KeyView{keys_of_b.data(), keys_of_b.size()});
}

// ---- List -----------------------------------------------------------------

void List::Destroy(List* list) {
  Arena& arena = list->arena();
  for (Node& entry : list->ByKey()) Node::Destroy(&entry, false);
  list->by_key_.Release(arena);
  list->by_place_.Release(arena);
  arena.Free(list, sizeof(List));
}

List::Found List::Search(KeyView keys) const {
  const KeyPrefixBuilder builder = PrefixOf(*schema_, keys);
  const bool is_full = keys.size == schema_->key_count;
  const bool decides = is_full && builder.is_whole();
  // Programs make several calls on one entry.
  Node* const last = is_full ? by_key_.AtLast(builder.prefix()) : nullptr;
  if (last != nullptr &&
      (decides || HasKeys(*last, keys, builder.whole_keys()))) {
    return {by_key_.Last(), builder.prefix(), last};
  }
  auto compare = [&](const Node& node) {
    if (decides) return 0;
    for (size_t i = builder.whole_keys(); i < keys.size; ++i) {
      const int order =
          Compare(*schema_->children[i]->type, node.cells()[i], keys.data[i]);
      if (order != 0) return order;
    }
    return keys.size < schema_->key_count ? 1 : 0;
  };
  Found found{by_key_.LowerBound(builder.prefix(), compare), builder.prefix(),
              nullptr};
  if (decides) {
    found.node = by_key_.At(found.position, found.prefix);
    return found;
  }
  Node* node = by_key_.At(found.position);
  if (node == nullptr || !is_full) return found;
  if (HasKeys(*node, keys, 0)) found.node = node;
  return found;
}

bool List::HasKeys(const Node& entry, KeyView keys, size_t known) const {
  const Cell* const cells = entry.cells();
  // Neighbours differ in their last keys.
  for (size_t i = keys.size; i-- > known;) {
    if (!Holds(*schema_->children[i]->type, cells[i], keys.data[i])) {
      return false;
    }
  }
  return true;
}

EntryIndex::Position List::PositionOfPlace(uint64_t place) const {
  return by_place_.LowerBound({place, 0}, [](const Node&) { return 0; });
}

EntryIndex::Position List::PositionOf(const Node& entry) const {
  if (schema_->user_ordered) return PositionOfPlace(entry.place());
  const std::vector<Value> keys = entry.Keys();
  return Search({keys.data(), keys.size()}).position;
}

Node* List::Find(KeyView keys) const { return Search(keys).node; }

std::pair<Node*, bool> List::Insert(KeyView keys, const Node* like) {
  const Found found = Search(keys);
  if (found.node != nullptr) return {found.node, false};
  Arena& own = arena();
  const size_t cells =
      like != nullptr ? like->capacity_ : schema_->key_count + kFirstCells;
  Node* node = Node::Make(own, *schema_, holder_, cells,
                          like != nullptr ? like->record_ : nullptr);
  if (like == nullptr) {
    for (size_t i = 0; i < keys.size; ++i) {
      const SchemaNode& key = *schema_->children[i];
      node->CellFor(key) = MakeCell(own, *key.type, keys.data[i]);
    }
  }
  by_key_.Insert(own, found.position, found.prefix, node);
  if (schema_->user_ordered) PutAt(*node, last_place_ += kPlaceStep);
  stamp_ = NewStamp();
  if (TreeWatcher* const told = own.watcher()) told->OnCreated(*node);
  return {node, true};
}

bool List::Erase(KeyView keys) {
  const Found found = Search(keys);
  if (found.node == nullptr) return false;
  by_key_.Erase(arena(), found.position);
  if (schema_->user_ordered) {
    by_place_.Erase(arena(), PositionOfPlace(found.node->place()));
  }
  Node::Destroy(found.node, false);
  stamp_ = NewStamp();
  return true;
}

void List::Rename(Node& entry, KeyView keys) {
  Arena& own = arena();
  const std::vector<Value> before = entry.Keys();
  own.NoteLoss();
  by_key_.Erase(own, Search({before.data(), before.size()}).position);
  for (size_t i = 0; i < keys.size; ++i) {
    const SchemaNode& key = *schema_->children[i];
    entry.Put(key, MakeCell(own, *key.type, keys.data[i]));
  }
  const Found found = Search(keys);
  by_key_.Insert(own, found.position, found.prefix, &entry);
  stamp_ = NewStamp();
  if (TreeWatcher* const told = watcher()) told->OnRenamed(entry, before);
}

void List::PutAt(Node& entry, uint64_t place) {
  entry.record_[entry.bitmap_words()] = place;
  by_place_.Insert(arena(), PositionOfPlace(place), {place, 0}, &entry);
}

std::optional<uint64_t> List::PlaceBefore(const Node& next) const {
  const size_t rank = by_place_.RankOf(PositionOfPlace(next.place()));
  if (rank == 0) return next.place() - kPlaceStep;
  const uint64_t previous = by_place_.AtRank(rank - 1)->place();
  if (next.place() - previous < 2) return std::nullopt;
  return previous + (next.place() - previous) / 2;
}

void List::MakeRoomBefore(const Node& next) {
  size_t rank = RankOf(next);
  std::vector<Node*> crowded;
  uint64_t low = 0;
  size_t gaps = 1;
  do {
    crowded.push_back(At(--rank));
    ++gaps;
    low = rank == 0 ? next.place() - gaps * kPlaceStep : At(rank - 1)->place();
  } while (rank > 0 && next.place() - low < gaps * kLeastGap);
  for (const Node* entry : crowded) {
    by_place_.Erase(arena(), PositionOfPlace(entry->place()));
  }
  const uint64_t gap = (next.place() - low) / gaps;
  uint64_t place = next.place();
  for (Node* entry : crowded) PutAt(*entry, place -= gap);
}

void List::MoveBefore(Node& entry, const Node* next) {
  if (next == &entry) return;
  by_place_.Erase(arena(), PositionOfPlace(entry.place()));
  std::optional<uint64_t> place;
  if (next == nullptr) {
    place = last_place_ += kPlaceStep;
  } else if (place = PlaceBefore(*next); !place) {
    MakeRoomBefore(*next);
    place = PlaceBefore(*next);
  }
  PutAt(entry, *place);
  stamp_ = NewStamp();
  if (TreeWatcher* const told = watcher()) told->OnMoved(entry);
}

uint64_t List::NewStamp() {
  static std::atomic<uint64_t> last{0};
  return ++last;
}

Node* List::Next(KeyView keys, bool or_same) const {
  const Found found = Search(keys);
  if (!schema_->user_ordered) {
    const bool skip = found.node != nullptr && !or_same;
    return by_key_.At(skip ? by_key_.After(found.position) : found.position);
  }
  if (keys.size < schema_->key_count) {
    // The user's order says nothing of keys: take the first that fits.
    for (Node& entry : *this) {
      const std::vector<Value> own = entry.Keys();
      if (Compare(KeyView{own.data(), keys.size}, keys) == 0) return &entry;
    }
    return nullptr;
  }
  if (found.node == nullptr || or_same) return found.node;
  return by_place_.At(by_place_.After(PositionOfPlace(found.node->place())));
}

void List::SetPlace(const Node& entry, Place& place) const {
  place.keys = entry.Keys();
  place.order = schema_->user_ordered ? entry.place() : 0;
  place.position = PositionOf(entry);
  place.stamp = stamp_;
}

Node* List::After(const Place& place) const {
  if (place.stamp == stamp_) {
    return order().At(order().After(place.position));
  }
  if (!schema_->user_ordered) {
    return Next({place.keys.data(), place.keys.size()}, false);
  }
  return by_place_.At(PositionOfPlace(place.order + 1));
}

}  // namespace kit::store
