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

// How a program wants to read.
struct ReadRules {
  // A default that holds is told apart from a value that was set.
  bool no_defaults = false;
  // State nodes have one empty element each in value arrays, whatever they are.
  bool config_only = false;
};

// One element of a value array: a leaf, a leaf-list or the start of a container
// that has something to read, or nothing.
struct Element {
  const Node* holder = nullptr;
  const SchemaNode* schema = nullptr;
  // Only the default holds, and the program wants to know.
  bool by_default = false;
  bool exists() const { return schema != nullptr; }
  // Of a leaf, of a leaf-list.
  Value value() const { return *holder->LeafValue(*schema); }
  std::vector<Value> items() const { return holder->LeafListValues(*schema); }
};

// A writer's value array element: what Element has, owned.
struct NewElement {
  std::optional<Value> value;
  std::optional<std::vector<Value>> items;
  bool is_present = false;  // a container or a leaf of type empty
};

// What a leaf or leaf-list holds; nothing without a value.
Element ElementOf(const Node& holder, const SchemaNode& leaf, ReadRules rules);

// Whether an element can be written to a child of `holder`, which may be null
// for one that is yet to be made; fills in what a program can't know. `number`
// is that of the element, for the Error: kBadType, kNotWritable.
void CheckElement(const SchemaNode& child, NewElement& element,
                  const Node* holder, size_t number);
// Writes an element that was checked.
void WriteElement(const SchemaNode& child, const NewElement& element,
                  Node& holder);

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

// A step of a path as the data has it: a node, and the keys of an entry.
struct PathElement {
  const SchemaNode* schema = nullptr;
  std::vector<Value> keys;
};

// The key path in its shortest form that leads there whatever namespace is
// selected; "" for the root.
std::string TextOf(const std::vector<PathElement>& elements);

// Goes to a target step by step; the target is that of the steps so far. It
// must outlive the walk.
class PathWalk {
 public:
  PathWalk(const class Data& data, Target& target);

  // To a child of where the walk stands.
  void Enter(const SchemaNode& child);
  // From the root to a node below containers alone.
  void EnterFromRoot(const SchemaNode& node);
  // From the root to an entry, which has the target's keys.
  void EnterEntry(Node& entry);
  // To an entry of the list just entered: by the target's keys, by position.
  void ChooseByKeys();
  void ChooseByPosition(uint64_t position);

 private:
  Node* Reach(const SchemaNode& container);
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

  // From here on tells of every change; null for nobody. Not owned.
  void SetWatcher(TreeWatcher* watcher);

  // kBadPath: the path does not fit the model.
  Target Find(const keypath::Path& path, const PathRules& rules) const;
  std::optional<Refusal> TryFind(const keypath::Path& path,
                                 const PathRules& rules, Target& target) const;

  // The steps of a path to something that may hold nodes, whether that is there
  // or not. kBadPath: it can't hold any, or a position past the end.
  std::vector<PathElement> ElementsOf(const keypath::Path& path,
                                      const PathRules& rules) const;

  // Keys of a list by their texts, of which there may be fewer than `given`,
  // the number that the list must have. kBadPath: they do not fit the list.
  static std::vector<Value> ParseKeys(const SchemaNode& list,
                                      const std::vector<std::string>& texts,
                                      size_t given);

  // The root, the container or the entry. kBadPath: another node; kNoExists: it
  // is not there.
  const Node& NodeAt(const Target& target) const;

  bool Exists(const Target& target) const;
  // Of entries, of values. kBadPath: neither a list nor a leaf-list.
  size_t Count(const Target& target) const;
  // kNoExists: no value and no default, or no such entry; kBadPath: not a leaf
  // or leaf-list.
  Element Get(const Target& target) const;
  Element TryGet(const Target& target, ReadRules rules,
                 std::optional<Refusal>& refusal) const;
  // kBadPath: neither a list entry nor a container.
  std::vector<Element> GetObject(const Target& target,
                                 ReadRules rules = {}) const;
  // The elements of an entry that is at hand.
  static void ReadObject(const Node& entry, ReadRules rules,
                         std::vector<Element>& elements);
  // Whether a leaf has no value but its default. kNoExists: neither; kBadPath:
  // not a leaf or leaf-list.
  bool IsDefault(const Target& target) const;

  void Create(const Target& target);
  std::optional<Refusal> TryCreate(const Target& target);
  void Delete(const Target& target);
  std::optional<Refusal> TryDelete(const Target& target);
  void Set(const Target& target, NewElement element);
  // The same with the value's text.
  void SetText(const Target& target, std::string_view text);
  // Gives an entry other keys. kNoExists: there is no such entry;
  // kAlreadyExists: one with these keys; kNotMovable: not keys of the list.
  void Move(const Target& target, const std::vector<Value>& keys);
  // Moves an entry within the order that the user gave the list; `keys` are
  // those of the entry to stand before or behind. kNoExists: one of them is not
  // there; kNotMovable: not such a list, or not its keys.
  enum class Where { kFirst, kBefore, kAfter, kLast };
  void MoveWithin(const Target& target, Where where,
                  const std::vector<Value>& keys);
  // Leaves the elements as they were checked.
  void SetObject(const Target& target, std::vector<NewElement>& elements);
  // Writes single nodes of an entry or container, which are created if they are
  // missing. Of a list as a whole `keys` pick the entry.
  void SetTagged(const Target& target, std::vector<Value> keys,
                 std::vector<struct TagStep> steps);
  // Whether SetObject may be given so many elements. kBadPath: no list, entry
  // or container; kBadType: too few or too many; kNotWritable: state data.
  static void RequireObjectSize(const Target& target, size_t count);

  // The list that a path without keys names; null when it has no entries.
  // kBadPath: not a list.
  static List* ListOf(const Target& target);

  Arena::Version version() const { return arenas_.front()->version(); }

 private:
  friend class PathWalk;

  const Schema* schema_;
  // Its own, and those that others share with it.
  std::vector<std::shared_ptr<Arena>> arenas_;
  Node* root_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_DATA_H_
