// Configuration data that follows a schema.
#ifndef KIT_CONFD_TREE_TREE_H_
#define KIT_CONFD_TREE_TREE_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "kit/confd/model/schema.h"
#include "kit/confd/model/value.h"

namespace kit::store {

struct Node;
class List;

// What stands in one child of a node: nothing, a leaf's value, a leaf-list's
// values, a container, or a list's entries.
using Slot =
    std::variant<std::monostate, Value, std::unique_ptr<std::vector<Value>>,
                 std::unique_ptr<Node>, std::unique_ptr<List>>;

// The root, a container, or a list entry: one slot for each child of the
// schema node. Only what was set takes a slot, and containers without presence,
// which are always there; defaults stand in the schema.
struct Node {
  Node(const SchemaNode& schema_node, Node* parent_node);

  // The value of a leaf, set or by default; null without one.
  const Value* LeafValue(const SchemaNode& leaf) const;
  // The value that was set; null without one.
  const Value* SetValue(const SchemaNode& leaf) const;
  const std::vector<Value>* LeafListValues(const SchemaNode& leaf_list) const;
  Node* Container(const SchemaNode& container) const;
  List* ListAt(const SchemaNode& list) const;

  // Creates an empty one where there is none.
  Node& MakeContainer(const SchemaNode& container);
  List& MakeList(const SchemaNode& list);
  void SetLeaf(const SchemaNode& leaf, Value value);
  void SetLeafList(const SchemaNode& leaf_list, std::vector<Value> values);
  void AddToLeafList(const SchemaNode& leaf_list, Value value);

  // Empties the slot; containers and lists with all they hold.
  void Clear(const SchemaNode& child);
  bool IsSet(const SchemaNode& child) const;
  // Whether nothing below is set. A presence container counts as set.
  bool IsEmpty() const;

  // The keys of a list entry.
  KeyView Keys() const { return {keys.data(), keys.size()}; }

  const SchemaNode* schema;
  Node* parent;  // the node that holds this one or its list; null for the root
  std::vector<Value> keys;  // list entries only; their slots stay empty
  uint64_t place = 0;       // among the entries that the user orders
  Node* next = nullptr;     // the entry that follows in the list's order
  std::vector<Slot> slots;

 private:
  bool DefaultApplies(const SchemaNode& child) const;
  // Empties what stands in other cases of the choices that `child`, or a node
  // above it, is in.
  void ClearOtherCases(const SchemaNode& child);
};

// "{1 10.0.0.1}" for an entry, as it stands in a key path.
std::string KeyText(const Node& entry);
// The key path of a node: "/a/b{1}/c", "" for the root.
std::string KeyPath(const Node& node);

// The entries of one list, in its order: by key, or as they were added where
// the model says that the user orders them.
class List {
 public:
  List(const SchemaNode& schema, Node* holder)
      : schema_(&schema), holder_(holder) {}
  List(const List&) = delete;
  List& operator=(const List&) = delete;

  size_t size() const { return entries_.size(); }
  Node* Find(KeyView keys) const;
  // The entry and whether it is new.
  std::pair<Node*, bool> Insert(std::vector<Value> keys);
  bool Erase(KeyView keys);

  // Null past the end.
  Node* First() const;
  // The entry that follows the one with these keys, which need not exist in a
  // list ordered by key; `or_same` takes that entry itself too. A prefix of
  // the keys stands before every entry that begins with it.
  Node* Next(KeyView keys, bool or_same) const;
  // Where a walk stands; it may go on when the entry is gone.
  struct Place {
    const Node* entry = nullptr;
    std::vector<Value> keys;
    uint64_t order = 0;
    uint64_t stamp = 0;
  };
  Place PlaceOf(const Node& entry) const;
  // The entry that follows; takes the same time in a list of any size unless
  // an entry was erased since.
  Node* After(const Place& place) const;
  // The same in the order of the keys, also where the user orders the entries.
  Node* FirstByKey() const;
  Node* NextByKey(KeyView keys) const;
  // The entry at a position from 0, null past the end. The first call after a
  // change takes time in proportion to the list.
  Node* At(size_t position) const;

 private:
  struct ByKeys {
    using is_transparent = void;
    using Entry = std::unique_ptr<Node>;
    bool operator()(const Entry& a, const Entry& b) const {
      return Compare(a->Keys(), b->Keys()) < 0;
    }
    bool operator()(const Entry& a, KeyView b) const {
      return Compare(a->Keys(), b) < 0;
    }
    bool operator()(KeyView a, const Entry& b) const {
      return Compare(a, b->Keys()) < 0;
    }
  };

  // A number that no list had before.
  static uint64_t NewStamp();

  const SchemaNode* schema_;
  Node* holder_;
  // Changes with every erasure, so that a place can tell that its entry lives.
  uint64_t stamp_ = NewStamp();
  std::set<std::unique_ptr<Node>, ByKeys> entries_;
  // Only where the user orders the entries: by place. New ones go to the end.
  std::map<uint64_t, Node*> order_;
  uint64_t last_place_ = 0;
  // Positions, made when first asked for and dropped by a change.
  mutable std::vector<Node*> positions_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_TREE_H_
