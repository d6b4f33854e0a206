// Reading and writing a tree by key path, as strictly as a device does.
#ifndef KIT_CONFD_TREE_DATA_H_
#define KIT_CONFD_TREE_DATA_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/keypath/keypath.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/schema.h"
#include "kit/confd/model/value.h"
#include "kit/confd/tree/tree.h"

namespace kit::store {

// What a path says besides its text: positions are for CDB only, and the
// selected namespace decides between modules.
struct PathRules {
  bool positions_allowed = false;
  const Module* selected = nullptr;
};

// One element of a value array: a leaf, a leaf-list or the start of a container
// that has something to read, or nothing.
struct Element {
  const Node* holder = nullptr;
  const SchemaNode* schema = nullptr;
  bool exists() const { return schema != nullptr; }
  // Of a leaf, of a leaf-list.
  Value value() const { return *holder->LeafValue(*schema); }
  std::vector<Value> items() const { return holder->LeafListValues(*schema); }
};

// A writer's value array element: what Element has, owned.
struct NewElement {
  std::optional<Value> value;
  std::optional<std::vector<Value>> items;
  bool is_container = false;
};

// Where a path leads.
struct Target {
  const SchemaNode* schema = nullptr;
  // The node that holds the target; null when an entry or presence container
  // on the way is missing.
  Node* holder = nullptr;
  // That entry's list, or that container.
  const SchemaNode* missing = nullptr;
  // Keys of the entry that the path ends in; empty for the list as a whole and
  // for an entry addressed by position.
  std::vector<Value> keys;
  // That entry, if it is there.
  Node* entry = nullptr;
  bool is_entry = false;
};

// Goes to a target step by step; the target is that of the steps so far. It
// must outlive the walk.
class PathWalk {
 public:
  PathWalk(const class Data& data, Target& target);

  // To a child of where the walk stands.
  void Enter(const SchemaNode& child);
  // To an entry of the list just entered: by the target's keys, by position.
  void ChooseByKeys();
  void ChooseByPosition(uint64_t position);

 private:
  const List* ListHere() const;
  void Choose(Node* entry);

  Target& target_;
  Node* current_;
};

// Why an operation was not carried out.
struct Refusal {
  ErrorCode code;
  std::string reason;
};

// One tree under its schema. Every operation throws Error, save for those that
// say what they refuse: programs ask for much that is not there.
class Data {
 public:
  explicit Data(const Schema& schema);

  const Schema& schema() const { return *schema_; }
  Node& root() { return *root_; }
  const Node& root() const { return *root_; }

  // Lets entries of `other` begin with leaves of this one.
  void ShareWith(Data& other) const;

  // kBadPath: the path does not fit the model.
  Target Find(const keypath::Path& path, const PathRules& rules) const;
  std::optional<Refusal> TryFind(const keypath::Path& path,
                                 const PathRules& rules, Target& target) const;

  bool Exists(const Target& target) const;
  // kBadPath: not a list.
  size_t Count(const Target& target) const;
  // kNoExists: no value and no default, or no such entry; kUnavailable: not a
  // leaf.
  Element Get(const Target& target) const;
  Element TryGet(const Target& target, std::optional<Refusal>& refusal) const;
  // kBadPath: not a list entry.
  std::vector<Element> GetObject(const Target& target) const;
  // The elements of an entry that is at hand.
  static void ReadObject(const Node& entry, std::vector<Element>& elements);

  void Create(const Target& target);
  std::optional<Refusal> TryCreate(const Target& target);
  void Delete(const Target& target);
  std::optional<Refusal> TryDelete(const Target& target);
  void Set(const Target& target, NewElement element);
  void SetObject(const Target& target, std::vector<NewElement> elements);
  // Whether SetObject may be given so many elements. kBadPath: neither a list
  // nor an entry; kProtoUsage: too few or too many.
  static void RequireObjectSize(const Target& target, size_t count);

  // The list that a path without keys names; null when it has no entries.
  // kBadPath: not a list.
  static List* ListOf(const Target& target);

 private:
  friend class PathWalk;

  std::vector<Value> ParseKeys(const SchemaNode& list,
                               const std::vector<std::string>& keys) const;

  const Schema* schema_;
  // Its own, and those that others share with it.
  std::vector<std::shared_ptr<Arena>> arenas_;
  Node* root_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_DATA_H_
