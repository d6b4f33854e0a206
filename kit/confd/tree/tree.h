// Configuration data that follows a schema.
#ifndef KIT_CONFD_TREE_TREE_H_
#define KIT_CONFD_TREE_TREE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/confd/model/schema.h"
#include "kit/confd/model/value.h"
#include "kit/confd/tree/arena.h"
#include "kit/confd/tree/cell.h"
#include "kit/confd/tree/entry_index.h"

namespace kit::store {

class List;
class Node;

// Told of what happens to a tree, in the middle of it: it must neither change
// the tree nor throw. What stands in an entry or container that goes, goes with
// it: of an entry only the entries of its lists are told of besides.
class TreeWatcher {
 public:
  virtual ~TreeWatcher() = default;
  // A new entry, which has its keys and maybe more.
  virtual void OnCreated(const Node& entry) = 0;
  // An entry that is about to go, still with all it holds.
  virtual void OnDeleted(const Node& entry) = 0;
  // An entry that has other keys than it had.
  virtual void OnRenamed(const Node& entry,
                         const std::vector<Value>& old_keys) = 0;
  // An entry that has another place in a list that the user orders.
  virtual void OnMoved(const Node& entry) = 0;
  // A leaf, leaf-list or presence container has been given what `after` says
  // and not had it before, or lost it. Null for nothing; of a container only
  // that matters. `holder` may be about to go.
  virtual void OnValue(const Node& holder, const SchemaNode& child,
                       const Cell* before, const Cell* after) = 0;
};

// The root, a container, or a list entry: a record of what was set in the
// children of the schema node, defaults aside, which stand in the schema.
//
// The record is a bitmap with a bit for each child that holds something and,
// packed in the order of the children, a cell for each of these: a leaf's
// value, or where a leaf-list, container or list stands.
class Node {
 public:
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  // The value of a leaf, set or by default.
  std::optional<Value> LeafValue(const SchemaNode& leaf) const;
  // The value that was set.
  std::optional<Value> SetValue(const SchemaNode& leaf) const;
  // Set or by default; nothing without either, see HasValue.
  std::vector<Value> LeafListValues(const SchemaNode& leaf_list) const;
  // Whether LeafValue or LeafListValues has something to give.
  bool HasValue(const SchemaNode& leaf) const;
  // A container without presence is there always, and made when asked for.
  Node* Container(const SchemaNode& container) const;
  // Null where nothing was ever set in it.
  const Node* FindContainer(const SchemaNode& container) const;
  List* ListAt(const SchemaNode& list) const;

  // Creates an empty one where there is none.
  Node& MakeContainer(const SchemaNode& container);
  List& MakeList(const SchemaNode& list);
  void SetLeaf(const SchemaNode& leaf, const Value& value);
  void SetLeafList(const SchemaNode& leaf_list,
                   const std::vector<Value>& values);

  // Empties the child; containers and lists with all they hold.
  void Clear(const SchemaNode& child);
  bool IsSet(const SchemaNode& child) const;
  // Whether nothing below is set. A presence container counts as set.
  bool IsEmpty() const;

  // Whether no container and no list was made in it.
  bool HoldsLeavesAlone() const;

  // Bytes that are the same for two nodes of one schema node in which the same
  // children hold something. A container or list may have been made and hold
  // nothing.
  std::string_view Shape() const {
    return {reinterpret_cast<const char*>(record_),
            bitmap_words() * sizeof *record_};
  }

  // The keys of a list entry; nothing for other nodes.
  std::vector<Value> Keys() const;
  Value Key(size_t number) const;
  bool is_entry() const { return schema->kind == NodeKind::kList; }

  const SchemaNode* const schema;
  // The node that holds this one or its list; null for the root.
  Node* const parent;

 private:
  friend class List;
  friend class Data;

  Node(Arena& arena, const SchemaNode& schema_node, Node* parent_node,
       size_t cells, uint64_t* shared);
  static Node* Make(Arena& arena, const SchemaNode& schema, Node* parent,
                    size_t cells, uint64_t* shared = nullptr);
  // Gives back the node with all it holds.
  // The watcher is told of its values, save those of an entry.
  static void Destroy(Node* node, bool tell_values);

  Arena& arena() const { return Arena::Of(this); }
  size_t bitmap_words() const { return schema->children.size() / 64 + 1; }
  Cell* cells() const { return record_ + header_words(); }
  // The bitmap and, in a list that the user orders, the entry's place.
  size_t header_words() const {
    return bitmap_words() + (schema->user_ordered ? 1 : 0);
  }
  size_t CellCount() const;
  size_t CellIndex(size_t slot) const;
  bool Has(size_t slot) const {
    return (record_[slot / 64] >> slot % 64 & 1) != 0;
  }
  // Null for a child that holds nothing.
  const Cell* Find(const SchemaNode& child) const {
    return Has(child.slot) ? cells() + CellIndex(child.slot) : nullptr;
  }
  Cell& CellFor(const SchemaNode& child);
  void MoveRecord(size_t capacity);
  void Put(const SchemaNode& child, Cell cell);
  void FreeContent(const SchemaNode& child, Cell cell,
                   bool tell_values = true) const;
  TreeWatcher* watcher() const { return arena().watcher(); }
  bool IsSetCell(const SchemaNode& child, Cell cell) const;
  uint64_t place() const { return record_[bitmap_words()]; }

  bool DefaultApplies(const SchemaNode& child) const;
  // Empties what stands in other cases of the choices that `child`, or a node
  // above it, is in.
  void ClearOtherCases(const SchemaNode& child);

  uint64_t* record_;
  size_t capacity_;  // of cells
};

// "{1 10.0.0.1}" for an entry, as it stands in a key path.
std::string KeyText(const Node& entry);
std::string KeyText(const SchemaNode& list, const std::vector<Value>& keys);
// The key path of a node: "/a/b{1}/c", "" for the root.
std::string KeyPath(const Node& node);

// How the keys of two entries, of one list or of lists of equal keys, stand to
// each other.
int CompareKeys(const Node& a, const Node& b);

// The entries of one list, in its order: by key, or as they were added where
// the model says that the user orders them.
class List {
 public:
  List(const List&) = delete;
  List& operator=(const List&) = delete;

  const SchemaNode& schema() const { return *schema_; }
  size_t size() const { return by_key_.size(); }
  Node* Find(KeyView keys) const;
  // The entry and whether it is new. A new one begins with the leaves of
  // `like`, if there is one: an entry with these keys that holds leaves alone,
  // of a list whose schema has the same leaves in the same places. It shares
  // their memory until either side changes, so what holds `like` must be frozen
  // and outlive this list. Not for lists that the user orders.
  std::pair<Node*, bool> Insert(KeyView keys, const Node* like = nullptr);
  bool Erase(KeyView keys);
  // Gives an entry other keys, which no entry has.
  void Rename(Node& entry, KeyView keys);
  // Puts an entry in front of another one, at the end without one. Only where
  // the user orders the entries.
  void MoveBefore(Node& entry, const Node* next);

  // Entries in one of the list's orders. Ends with a change of the list.
  class Iterator {
   public:
    Iterator() = default;
    Node& operator*() const { return *index_->At(position_); }
    // Null at the end.
    Node* get() const {
      return index_ == nullptr ? nullptr : index_->At(position_);
    }
    Iterator& operator++() {
      position_ = index_->After(position_);
      return *this;
    }
    bool operator!=(const Iterator&) const { return get() != nullptr; }

   private:
    friend class List;
    explicit Iterator(const EntryIndex& index) : index_(&index) {}
    const EntryIndex* index_ = nullptr;
    EntryIndex::Position position_;
  };
  struct Range {
    Iterator first;
    Iterator begin() const { return first; }
    Iterator end() const { return first; }  // not looked at
  };
  Iterator begin() const { return Iterator(order()); }
  Iterator end() const { return begin(); }
  Range ByKey() const { return {Iterator(by_key_)}; }

  // Null past the end.
  Node* First() const { return order().At(order().Begin()); }
  // The entry that follows the one with these keys, which need not exist in a
  // list ordered by key; `or_same` takes that entry itself too. A prefix of
  // the keys stands before every entry that begins with it.
  Node* Next(KeyView keys, bool or_same) const;
  // Where a walk stands; it may go on when the entry is gone.
  struct Place {
    std::vector<Value> keys;
    uint64_t order = 0;
    EntryIndex::Position position;
    uint64_t stamp = 0;
  };
  void SetPlace(const Node& entry, Place& place) const;
  // The entry that follows; takes the same time in a list of any size unless
  // the list has changed since.
  Node* After(const Place& place) const;
  // The entry at a position from 0, null past the end.
  Node* At(size_t position) const {
    return position < size() ? order().AtRank(position) : nullptr;
  }
  // The position of an entry, from 0.
  size_t RankOf(const Node& entry) const {
    return order().RankOf(PositionOf(entry));
  }

 private:
  friend class Node;

  List(const SchemaNode& schema, Node* holder)
      : schema_(&schema), holder_(holder) {}
  static void Destroy(List* list);

  Arena& arena() const { return Arena::Of(this); }
  TreeWatcher* watcher() const { return arena().watcher(); }
  const EntryIndex& order() const {
    return schema_->user_ordered ? by_place_ : by_key_;
  }
  struct Found {
    EntryIndex::Position position;
    KeyPrefix prefix;
    Node* node;  // null if there is no such entry
  };
  Found Search(KeyView keys) const;
  // Whether the entry has all these keys, the first `known` of which it has.
  bool HasKeys(const Node& entry, KeyView keys, size_t known) const;
  EntryIndex::Position PositionOf(const Node& entry) const;
  EntryIndex::Position PositionOfPlace(uint64_t place) const;

  const SchemaNode* schema_;
  Node* holder_;
  EntryIndex by_key_;
  // Only where the user orders the entries. New ones go to the end.
  EntryIndex by_place_;
  // Places are wide apart, so that entries can be moved in between.
  static constexpr uint64_t kPlaceStep = uint64_t{1} << 20;
  static constexpr uint64_t kLeastGap = uint64_t{1} << 10;
  static constexpr uint64_t kFirstPlace = uint64_t{1} << 62;
  uint64_t last_place_ = kFirstPlace;
  void PutAt(Node& entry, uint64_t place);
  // A place in front of the entry, or nothing where there is no room.
  std::optional<uint64_t> PlaceBefore(const Node& next) const;
  // Moves the places of those in front of the entry further to the front, of as
  // few as there must be. Those behind keep theirs, for walks that get there.
  void MakeRoomBefore(const Node& next);
  // Changes with every change, so that a place can tell that it still holds.
  uint64_t stamp_ = NewStamp();
  static uint64_t NewStamp();
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_TREE_H_
