#include "kit/confd/model/schema.h"

#include <libyang/libyang.h>
#include <libyang/version.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <sstream>

#include "kit/confd/model/constraints.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/libyang_messages.h"
#include "kit/confd/model/memory.h"
#include "kit/confd/model/module_folder.h"
#include "kit/confd/model/text_dates.h"

namespace kit::store {
namespace {

NodeKind KindOf(const lysc_node* node) {
  switch (node->nodetype) {
    case LYS_CONTAINER:
      return (node->flags & LYS_PRESENCE) != 0 ? NodeKind::kPresenceContainer
                                               : NodeKind::kContainer;
    case LYS_LIST:
      return NodeKind::kList;
    case LYS_LEAF:
      return NodeKind::kLeaf;
    case LYS_LEAFLIST:
      return NodeKind::kLeafList;
    default:
      return NodeKind::kAny;
  }
}

// The first error names the cause, later ones what followed from it.
std::string FirstMessage(ly_ctx* context) {
  std::vector<Complaint> complaints = TakeComplaints(context);
  // It has a reason for everything, unless there was no memory to note it.
  if (complaints.empty()) throw std::bad_alloc();
  const Complaint& first = complaints.front();
  return first.reason + (first.place.empty() ? "" : " (" + first.place + ")");
}

uint64_t NewSerial() {
  static std::atomic<uint64_t> last{0};
  return ++last;
}

// Of "prefix:name".
std::string_view LocalName(std::string_view name) {
  return name.substr(name.find(':') + 1);
}

// The words of a text, which blanks separate.
std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

// From release 3 on libyang sorts the instances of what the model leaves to the
// system to order. Leaf-lists are to come as they were written, and faults are
// looked for in the text by their place in that order.
void KeepOrderOfText(const lysc_node* compiled) {
  auto* node = const_cast<lysc_node*>(compiled);
  node->flags &= static_cast<uint16_t>(~LYS_ORDBY_SYSTEM);
  node->flags |= LYS_ORDBY_USER;
}

}  // namespace

std::string SchemaNode::PathName() const {
  bool at_top = parent->parent == nullptr;
  bool needs_prefix =
      at_top ? parent->by_name.at(name).size() > 1 : module != parent->module;
  return needs_prefix ? module->prefix + ":" + name : name;
}

std::string SchemaNode::Path() const {
  if (parent == nullptr) return "/";
  return (parent->parent == nullptr ? "" : parent->Path()) + "/" + PathName();
}

void Schema::ContextDeleter::operator()(ly_ctx* context) const {
  ly_ctx_destroy(context);
}

Schema::Schema(const std::filesystem::path& directory,
               const LeafType::NamespaceHashes& hashes,
               const std::string& extra_module)
    : serial_(NewSerial()), directory_(directory), hashes_(hashes) {
  LoadModules(extra_module);
  KeepDatesAsText(context_.get());

  root_.kind = NodeKind::kRoot;
  uint32_t index = 0;
  while (const lys_module* module =
             ly_ctx_get_module_iter(context_.get(), &index)) {
    const bool is_asked_for = brought_.count(module->name) == 0;
    if (is_asked_for && module->implemented && module->compiled != nullptr) {
      ModuleOf(module);
      AddChildren(module->compiled->data, root_);
    }
  }
  FinishNode(root_);
  MarkConstraints(root_);
}

Schema::~Schema() = default;

void Schema::LoadModules(const std::string& extra_module) {
  const ModuleFolder folder(directory_);
  const LibyangMemory memory;
  ly_ctx* context = nullptr;
  LY_ERR result = ly_ctx_new(nullptr,
                             LY_CTX_NO_YANGLIBRARY | LY_CTX_SET_PRIV_PARSED |
                                 LY_CTX_DISABLE_SEARCHDIRS,
                             &context);
  context_.reset(context);
  memory.Require(result);
  if (result != LY_SUCCESS) throw SchemaError("libyang can't be set up");
  // libyang's own modules are no models of the device, unless they are named.
  uint32_t index = 0;
  while (const lys_module* own = ly_ctx_get_module_iter(context, &index)) {
    brought_.insert(own->name);
  }
  for (const ModuleFile& file : folder.files()) brought_.erase(file.name);
  folder.ServeImports(context);
  static const char* all_features[] = {"*", nullptr};
  for (const ModuleFile& file : folder.files()) {
    if (file.is_submodule) continue;
    ly_err_clean(context, nullptr);
    const lys_module* module = ly_ctx_load_module(
        context, file.name.c_str(),
        file.revision.empty() ? nullptr : file.revision.c_str(), all_features);
    memory.Require(LY_SUCCESS);
    if (module == nullptr) {
      throw SchemaError(file.path.string() + ": " + FirstMessage(context));
    }
  }
  if (!extra_module.empty()) {
    result = lys_parse_mem(context, extra_module.c_str(), LYS_IN_YANG, nullptr);
    memory.Require(result);
    if (result != LY_SUCCESS) throw SchemaError(FirstMessage(context));
  }
  ly_ctx_set_module_imp_clb(context, nullptr, nullptr);
}

const Module* Schema::ModuleOf(const lys_module* compiled) {
  for (const auto& module : modules_) {
    if (module->compiled == compiled) return module.get();
  }
  auto known = hashes_.find(compiled->name);
  uint32_t hash =
      known != hashes_.end() ? known->second : NameHash(compiled->ns);
  modules_.push_back(std::make_unique<Module>(
      Module{compiled->name, compiled->prefix, compiled->ns, hash, compiled}));
  return modules_.back().get();
}

void Schema::AddChildren(const lysc_node* first, SchemaNode& parent) {
  for (const lysc_node* node = first; node != nullptr; node = node->next) {
    AddNode(node, parent, {}, parent.choices);
  }
}

void Schema::AddChoice(const lysc_node_choice* choice, SchemaNode& parent,
                       const std::vector<SchemaNode::CaseOf>& cases,
                       std::vector<SchemaNode::Choice>& choices) {
  const lysc_node* first =
      choice->cases != nullptr ? &choice->cases->node : nullptr;
  const lysc_node* by_default =
      choice->dflt != nullptr ? &choice->dflt->node : nullptr;
  SchemaNode::Choice added{choice->name, {}};
  for (const lysc_node* one = first; one != nullptr; one = one->next) {
    auto inner = cases;
    inner.push_back({&choice->node, one, one == by_default});
    added.cases.push_back(
        {one->name, ModuleOf(one->module), one, one == by_default, {}});
    for (const lysc_node* node = lysc_node_child(one); node != nullptr;
         node = node->next) {
      AddNode(node, parent, inner, added.cases.back().choices);
    }
  }
  choices.push_back(std::move(added));
}

void Schema::AddNode(const lysc_node* compiled, SchemaNode& parent,
                     std::vector<SchemaNode::CaseOf> cases,
                     std::vector<SchemaNode::Choice>& choices) {
  if ((compiled->flags & LYS_CONFIG_MASK) == 0) return;
  if (compiled->nodetype == LYS_CHOICE) {
    AddChoice(reinterpret_cast<const lysc_node_choice*>(compiled), parent,
              cases, choices);
    return;
  }
  if ((compiled->nodetype & (LYS_CONTAINER | LYS_LIST | LYS_LEAF |
                             LYS_LEAFLIST | LYS_ANYDATA)) == 0) {
    return;
  }
  auto node = std::make_unique<SchemaNode>();
  node->kind = KindOf(compiled);
  node->name = compiled->name;
  node->module = ModuleOf(compiled->module);
  node->parent = &parent;
  node->compiled = compiled;
  node->is_state = (compiled->flags & LYS_CONFIG_R) != 0;
  node->cases = std::move(cases);
  if (node->kind == NodeKind::kLeaf || node->kind == NodeKind::kLeafList) {
    node->type = std::make_unique<LeafType>(compiled, hashes_);
    SetLeafDetails(*node);
  }
  if (node->kind == NodeKind::kList || node->kind == NodeKind::kLeafList) {
    node->user_ordered = lysc_is_userordered(compiled);
    KeepOrderOfText(compiled);
  }
  AddChildren(lysc_node_child(compiled), *node);
  parent.children.push_back(std::move(node));
}

void Schema::SetLeafDetails(SchemaNode& node) {
  if (node.is_state) return;
  node.mandatory = (node.compiled->flags & LYS_MAND_TRUE) != 0;
  auto parse = [&](const lyd_value* value) {
    const LibyangMemory memory;
    const char* text = lyd_value_get_canonical(context_.get(), value);
    memory.Require(LY_SUCCESS);
    try {
      return node.type->Parse(text);
    } catch (const Error& error) {
      throw SchemaError("module " + node.module->name + ": default of \"" +
                        node.name + "\": " + error.what());
    }
  };
  if (node.kind == NodeKind::kLeaf) {
    const auto* leaf = reinterpret_cast<const lysc_node_leaf*>(node.compiled);
    if (leaf->dflt != nullptr) node.default_value = parse(leaf->dflt);
    return;
  }
  const auto* list = reinterpret_cast<const lysc_node_leaflist*>(node.compiled);
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(list->dflts, i) {
    node.default_values.push_back(parse(list->dflts[i]));
  }
}

void Schema::FinishNode(SchemaNode& node) {
  if (node.kind == NodeKind::kList) {
    // libyang puts keys first, in the order of the key statement.
    for (const auto& child : node.children) {
      if (lysc_is_key(child->compiled)) ++node.key_count;
    }
    const bool can_hold = node.key_count > 0 && node.key_count <= kMaxKeys;
    if (!can_hold && !node.is_state) {
      throw SchemaError(
          "list " + node.Path() + " has " + std::to_string(node.key_count) +
          " keys; a configuration list has 1 to " + std::to_string(kMaxKeys));
    }
  }
  for (size_t i = 0; i < node.children.size(); ++i) {
    SchemaNode& child = *node.children[i];
    child.slot = i;
    child.in_choice = node.in_choice || !child.cases.empty();
    child.is_flag = child.kind == NodeKind::kLeaf && !child.is_key() &&
                    child.type->value_type() == ValueType::kEmpty;
    node.by_name[child.name].push_back(&child);
  }
  if (node.kind == NodeKind::kList) AddIndexes(node);
  for (const auto& child_node : node.children) {
    SchemaNode& child = *child_node;
    FinishNode(child);
    node.width += 1;
    if (child.IsContainer()) node.width += child.width;
  }
}

template <typename Take>
void ForEachStatementIn(const lysp_ext_instance& one, const Take& take) {
  for (const lysp_stmt* stmt = one.child; stmt; stmt = stmt->next) {
    take(stmt->stmt, stmt->arg);
  }
#if LY_VERSION_MAJOR >= 3
  // Those of extensions stand apart there.
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(one.exts, i) { take(one.exts[i].name, one.exts[i].argument); }
#endif
}

// libyang does not know the statements, which count by name in any module. An
// index over what is no leaf of the list is none.
void Schema::AddIndexes(SchemaNode& list) {
  const auto* parsed = static_cast<const lysp_node*>(list.compiled->priv);
  if (parsed == nullptr) return;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(parsed->exts, i) {
    const lysp_ext_instance& one = parsed->exts[i];
    if (LocalName(one.name) != "secondary-index") continue;
    SecondaryIndex index{one.argument != nullptr ? one.argument : "", {}};
    bool is_whole = true;
    ForEachStatementIn(one, [&](const char* statement, const char* argument) {
      if (LocalName(statement) != "index-leafs") return;
      for (const std::string& name : WordsOf(argument)) {
        const SchemaNode* leaf = OnlyChild(list, name);
        is_whole &= leaf != nullptr && leaf->kind == NodeKind::kLeaf;
        index.leaves.push_back(leaf);
      }
    });
    if (is_whole && !index.leaves.empty()) {
      list.indexes.push_back(std::move(index));
    }
  }
}

bool Schema::HasModule(const std::string& name) const {
  return std::any_of(modules_.begin(), modules_.end(),
                     [&](const auto& module) { return module->name == name; });
}

bool Schema::Knows(const std::string& module) const {
  return ly_ctx_get_module_latest_ns(context_.get(), module.c_str()) !=
             nullptr ||
         ly_ctx_get_module_latest(context_.get(), module.c_str()) != nullptr;
}

const Module* Schema::ModuleOfHash(uint32_t hash) const {
  for (const auto& module : modules_) {
    if (module->hash == hash) return module.get();
  }
  return nullptr;
}

const SchemaNode* Schema::OnlyChild(const SchemaNode& parent,
                                    std::string_view name) {
  auto found = parent.by_name.find(name);
  if (found == parent.by_name.end() || found->second.size() != 1) {
    return nullptr;
  }
  return found->second.front();
}

const SchemaNode& Schema::Child(const SchemaNode& parent,
                                std::string_view prefix, std::string_view name,
                                const Module* selected) const {
  std::string reason;
  const SchemaNode* child = FindChild(parent, prefix, name, selected, reason);
  if (child == nullptr) throw Error(ErrorCode::kBadPath, reason);
  return *child;
}

const SchemaNode* Schema::FindChild(const SchemaNode& parent,
                                    std::string_view prefix,
                                    std::string_view name,
                                    const Module* selected,
                                    std::string& reason) const {
  auto unknown = [&] {
    reason = "the model has no \"" + std::string(prefix);
    if (!prefix.empty()) reason += ':';
    reason.append(name).append("\" in ").append(parent.Path());
    return nullptr;
  };
  auto found = parent.by_name.find(name);
  if (found == parent.by_name.end()) return unknown();
  const auto& candidates = found->second;
  if (!prefix.empty()) {
    for (const SchemaNode* node : candidates) {
      if (node->module->prefix == prefix || node->module->name == prefix) {
        return node;
      }
    }
    return unknown();
  }
  if (candidates.size() == 1) return candidates.front();
  for (const Module* preferred : {parent.module, selected}) {
    for (const SchemaNode* node : candidates) {
      if (node->module == preferred && preferred != nullptr) return node;
    }
  }
  reason = "several modules define \"" + std::string(name) + "\" in " +
           parent.Path() + "; give a prefix or select a namespace";
  return nullptr;
}

}  // namespace kit::store
