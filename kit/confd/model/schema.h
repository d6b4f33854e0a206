// A set of data models as the store sees it: what nodes there are, where.
#ifndef KIT_CONFD_MODEL_SCHEMA_H_
#define KIT_CONFD_MODEL_SCHEMA_H_

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kit/confd/model/leaf_type.h"
#include "kit/confd/model/value.h"

struct ly_ctx;
struct lys_module;
struct lysc_node;
struct lysc_node_choice;

namespace kit::store {

// The models can't be used; what() says where and why.
class SchemaError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class NodeKind {
  kRoot,
  kContainer,
  kPresenceContainer,
  kList,
  kLeaf,
  kLeafList,
  kAny  // anydata, anyxml: known, but never kept
};

// The most keys that a list may have: an end mark stands behind them in the
// MAXKEYLEN (confd_lib.h) values of a path's element.
constexpr size_t kMaxKeys = 8;

struct Module {
  std::string name;
  std::string prefix;
  std::string ns;
  uint32_t hash;  // of its namespace
  const lys_module* compiled;
};

struct SchemaNode;

// An order of a list's entries besides that of their keys, as the model names
// it (tailf:secondary-index): by the values of leaves.
struct SecondaryIndex {
  std::string name;
  std::vector<const SchemaNode*> leaves;
};

// One data node. Choices and cases are not nodes: what they hold stands in
// their parent.
struct SchemaNode {
  NodeKind kind;
  std::string name;
  const Module* module = nullptr;  // null for the root
  const SchemaNode* parent = nullptr;
  size_t slot = 0;  // position among the parent's children
  const lysc_node* compiled = nullptr;

  // In the model's order, a list's keys first.
  std::vector<std::unique_ptr<SchemaNode>> children;
  std::unordered_map<std::string_view, std::vector<const SchemaNode*>> by_name;

  size_t key_count = 0;                 // list
  std::vector<SecondaryIndex> indexes;  // list
  bool user_ordered = false;            // list, leaf-list
  // No configuration: it has its place, but nothing ever stands there.
  bool is_state = false;
  size_t width = 0;  // most elements of a value array of this node's children

  std::unique_ptr<LeafType> type;      // leaf, leaf-list
  std::optional<Value> default_value;  // leaf
  std::vector<Value> default_values;   // leaf-list
  bool mandatory = false;              // leaf
  // A leaf of type empty that is no key: there or not, but without a value.
  bool is_flag = false;

  // Of a list that stands in no other: constraints see one entry at a time, and
  // of an entry no more than what is set in it and the values that decide. So
  // two entries alike in these meet all constraints or none.
  bool interchangeable = false;
  bool decides = false;  // constraints may look at its value, not only for it

  // The choices among the children.
  struct Choice;
  struct Case {
    std::string name;
    const Module* module;
    const lysc_node* compiled;
    bool is_default;
    std::vector<Choice> choices;
  };
  struct Choice {
    std::string name;
    std::vector<Case> cases;
  };
  std::vector<Choice> choices;

  // The cases that this node stands in, outermost first.
  struct CaseOf {
    const lysc_node* choice;
    const lysc_node* chosen;
    bool is_default;
  };
  std::vector<CaseOf> cases;
  bool in_choice = false;  // this node or one above it stands in a case

  bool IsContainer() const {
    return kind == NodeKind::kContainer || kind == NodeKind::kPresenceContainer;
  }
  bool is_key() const {
    return parent != nullptr && parent->kind == NodeKind::kList &&
           slot < parent->key_count;
  }
  // The name, with its module's prefix where the name alone would not do or
  // the module changes.
  std::string PathName() const;
  // "/switch/spanning-tree/timers"; "/" for the root.
  std::string Path() const;
};

class Schema {
 public:
  // Loads every YANG module of a folder, and nothing from elsewhere but what
  // libyang brings. Throws SchemaError.
  // `extra_module`, if any, is the text of one more.
  Schema(const std::filesystem::path& directory,
         const LeafType::NamespaceHashes& hashes,
         const std::string& extra_module = "");
  ~Schema();
  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;

  const SchemaNode& root() const { return root_; }
  const std::filesystem::path& directory() const { return directory_; }
  const LeafType::NamespaceHashes& hashes() const { return hashes_; }
  const std::vector<std::unique_ptr<Module>>& modules() const {
    return modules_;
  }
  // No other schema of this process has or had it.
  uint64_t serial() const { return serial_; }
  ly_ctx* context() const { return context_.get(); }

  bool HasModule(const std::string& name) const;
  // Whether anything loaded has this name or namespace, what libyang brings and
  // what has no data nodes too.
  bool Knows(const std::string& module) const;
  // The module that a namespace hash belongs to, null for an unknown one.
  const Module* ModuleOfHash(uint32_t hash) const;

  // The child of `parent` that a path names. The prefix is a module's prefix or
  // name, or empty: then the parent's own module comes first, then the one
  // module that defines such a child, and between several `selected` decides.
  // Throws Error with kBadPath.
  const SchemaNode& Child(const SchemaNode& parent, std::string_view prefix,
                          std::string_view name, const Module* selected) const;
  // The same without an error; null, and the reason, where there is none.
  const SchemaNode* FindChild(const SchemaNode& parent, std::string_view prefix,
                              std::string_view name, const Module* selected,
                              std::string& reason) const;
  // The one child that a name without a prefix stands for; null where that
  // takes a closer look.
  static const SchemaNode* OnlyChild(const SchemaNode& parent,
                                     std::string_view name);

 private:
  struct ContextDeleter {
    void operator()(ly_ctx* context) const;
  };

  void LoadModules(const std::string& extra_module);
  void AddChildren(const lysc_node* first, SchemaNode& parent);
  // `choices` are those that stand where the node does.
  void AddNode(const lysc_node* compiled, SchemaNode& parent,
               std::vector<SchemaNode::CaseOf> cases,
               std::vector<SchemaNode::Choice>& choices);
  void AddChoice(const lysc_node_choice* choice, SchemaNode& parent,
                 const std::vector<SchemaNode::CaseOf>& cases,
                 std::vector<SchemaNode::Choice>& choices);
  void SetLeafDetails(SchemaNode& node);
  void FinishNode(SchemaNode& node);
  static void AddIndexes(SchemaNode& list);
  const Module* ModuleOf(const lys_module* compiled);

  const uint64_t serial_;
  const std::filesystem::path directory_;
  LeafType::NamespaceHashes hashes_;
  std::unique_ptr<ly_ctx, ContextDeleter> context_;
  std::set<std::string> brought_;  // modules that libyang has by itself
  std::vector<std::unique_ptr<Module>> modules_;
  SchemaNode root_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_SCHEMA_H_
