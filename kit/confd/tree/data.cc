#include "kit/confd/tree/data.h"

#include <string>
#include <utility>

#include "kit/confd/model/error.h"
#include "kit/confd/tree/tagged.h"

namespace kit::store {
namespace {

[[noreturn]] void Fail(ErrorCode code, const std::string& reason) {
  throw Error(code, reason);
}

void ThrowIf(const std::optional<Refusal>& refusal) {
  if (refusal) Fail(refusal->code, refusal->reason);
}

bool IsLeafKind(const SchemaNode& node) {
  return node.kind == NodeKind::kLeaf || node.kind == NodeKind::kLeafList;
}

std::string Count(size_t number, const char* noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

bool IsByDefault(const Node& holder, const SchemaNode& leaf) {
  return !leaf.is_key() && !holder.IsSet(leaf);
}

void AppendChildren(const Node& node, ReadRules rules,
                    std::vector<Element>& elements) {
  for (const auto& child : node.schema->children) {
    const bool is_shown = !child->is_state || !rules.config_only;
    const Node* container =
        child->IsContainer() && is_shown ? node.Container(*child) : nullptr;
    if (container != nullptr) {
      elements.push_back({&node, child.get()});
      AppendChildren(*container, rules, elements);
    } else {
      elements.push_back(IsLeafKind(*child) ? ElementOf(node, *child, rules)
                                            : Element{});
    }
  }
}

// A leaf of type empty has none to be read or set.
bool HasAValue(const SchemaNode& leaf) {
  return leaf.kind == NodeKind::kLeaf && !leaf.is_flag;
}

Value Checked(const SchemaNode& leaf, Value value) {
  try {
    return leaf.type->Check(std::move(value));
  } catch (const Error& error) {
    Fail(error.code(), "leaf \"" + leaf.name + "\": " + error.what());
  }
}

std::vector<Value> Checked(const SchemaNode& leaf_list,
                           const std::vector<Value>& values) {
  std::vector<Value> checked;
  checked.reserve(values.size());
  for (const Value& value : values) {
    checked.push_back(Checked(leaf_list, value));
  }
  return checked;
}

std::string PlaceInArray(size_t number) {
  return "value " + std::to_string(number) + " of the array";
}

// Walks a value array alongside the model: once to check it, so that one bad
// value leaves the entry as it was, and once to write it.
class ObjectWriter {
 public:
  explicit ObjectWriter(std::vector<NewElement>& elements)
      : elements_(elements) {}

  // `entry` is null where it is yet to be created.
  void Check(const SchemaNode& schema, Node* entry) {
    writes_ = false;
    next_ = schema.key_count;
    Walk(schema, entry);
    for (; next_ < elements_.size(); ++next_) {
      const NewElement& left = elements_[next_];
      if (left.value || left.items || left.is_present) {
        Fail(ErrorCode::kBadType, PlaceInArray(next_) +
                                      " stands behind the last node of what "
                                      "is written");
      }
    }
  }
  void Write(Node& entry) {
    writes_ = true;
    next_ = entry.schema->key_count;
    Walk(*entry.schema, &entry);
  }

 private:
  void Walk(const SchemaNode& schema, Node* node) {
    for (size_t i = schema.key_count;
         i < schema.children.size() && next_ < elements_.size(); ++i) {
      const SchemaNode& child = *schema.children[i];
      NewElement& element = elements_[next_++];
      if (writes_) {
        WriteElement(child, element, *node);
      } else {
        CheckElement(child, element, node, next_ - 1);
      }
      if (element.is_present && !child.is_flag) {
        Walk(child, node == nullptr ? nullptr : node->Container(child));
      }
    }
  }

  std::vector<NewElement>& elements_;
  bool writes_ = false;
  size_t next_ = 0;
};

// What to say where nothing holds the target.
Refusal NoHolder(const Target& target) {
  const bool is_entry = target.missing->kind == NodeKind::kList;
  return {ErrorCode::kNoExists,
          (is_entry ? std::string("the entry")
                    : "the container \"" + target.missing->name + "\"") +
              " above it does not exist"};
}

Refusal StateRefusal() {
  return {ErrorCode::kNotWritable, "it is state data, no configuration"};
}

void RequireHolder(const Target& target) {
  if (target.holder == nullptr) ThrowIf(NoHolder(target));
}

// The list of an entry that is to move.
List& ListOfEntry(const Target& target) {
  if (target.schema->is_state) ThrowIf(StateRefusal());
  if (!target.is_entry) {
    Fail(ErrorCode::kNotMovable, "it is no list entry");
  }
  RequireHolder(target);
  if (target.entry == nullptr) {
    Fail(ErrorCode::kNoExists, "the list entry does not exist");
  }
  return *target.holder->ListAt(*target.schema);
}

std::vector<Value> KeysToMoveTo(const SchemaNode& list,
                                const std::vector<Value>& keys) {
  if (keys.size() != list.key_count) {
    Fail(ErrorCode::kNotMovable, Count(keys.size(), "key") +
                                     " for a list with " +
                                     std::to_string(list.key_count));
  }
  std::vector<Value> checked;
  for (size_t i = 0; i < keys.size(); ++i) {
    try {
      checked.push_back(list.children[i]->type->Check(keys[i]));
    } catch (const Error& error) {
      Fail(ErrorCode::kNotMovable,
           "key \"" + list.children[i]->name + "\": " + error.what());
    }
  }
  return checked;
}

// Whether a leaf or leaf-list may be given a value.
void RequireSettable(const Target& target) {
  const SchemaNode& schema = *target.schema;
  if (schema.is_state) ThrowIf(StateRefusal());
  if (!IsLeafKind(schema)) {
    Fail(ErrorCode::kNotWritable, "it is not a leaf and takes no value");
  }
  if (schema.is_key()) {
    Fail(ErrorCode::kNotWritable, "it is a key, set when its entry is created");
  }
  RequireHolder(target);
}

}  // namespace

Element ElementOf(const Node& holder, const SchemaNode& leaf, ReadRules rules) {
  if (!holder.HasValue(leaf)) return {};
  return {&holder, &leaf, rules.no_defaults && IsByDefault(holder, leaf)};
}

void CheckElement(const SchemaNode& child, NewElement& element,
                  const Node* holder, size_t number) {
  const bool deletes = !element.value && !element.items && !element.is_present;
  if (deletes && !child.mandatory && child.kind != NodeKind::kContainer) {
    return;
  }
  if (child.is_state) {
    if (deletes) return;
    Fail(ErrorCode::kNotWritable, PlaceInArray(number) + " is for \"" +
                                      child.name + "\", which is state data");
  }
  bool is_leaf_list = child.kind == NodeKind::kLeafList;
  bool is_container = child.kind == NodeKind::kContainer;
  // A list inside takes one empty element and is written by itself.
  if ((element.value && !HasAValue(child)) ||
      (element.items && !is_leaf_list) ||
      (element.is_present && !child.IsContainer() && !child.is_flag) ||
      (is_container && !element.is_present)) {
    Fail(
        ErrorCode::kBadType,
        PlaceInArray(number) + " does not fit the node \"" + child.name + "\"");
  }
  if (element.value && !child.type->HasPlainly(*element.value)) {
    *element.value = Checked(child, *std::move(element.value));
  }
  if (element.items) element.items = Checked(child, *element.items);
  if (deletes && child.mandatory && holder != nullptr && holder->IsSet(child)) {
    Fail(ErrorCode::kBadType, PlaceInArray(number) + " deletes \"" +
                                  child.name + "\", which is mandatory");
  }
}

void WriteElement(const SchemaNode& child, const NewElement& element,
                  Node& holder) {
  if (element.value) {
    holder.SetLeaf(child, *element.value);
  } else if (element.items) {
    holder.SetLeafList(child, *element.items);
  } else if (element.is_present && child.is_flag) {
    holder.SetLeaf(child, Value::Number(ValueType::kEmpty, 0));
  } else if (element.is_present) {
    holder.MakeContainer(child);
  } else if (child.kind != NodeKind::kList && !child.is_state) {
    holder.Clear(child);
  }
}

Data::Data(const Schema& schema) : schema_(&schema) {
  arenas_.push_back(std::make_shared<Arena>());
  root_ = Node::Make(*arenas_.front(), schema.root(), nullptr, 0);
}

void Data::ShareWith(Data& other) const {
  // Nothing of what a reader sees changes.
  arenas_.front()->Freeze();
  other.arenas_.insert(other.arenas_.end(), arenas_.begin(), arenas_.end());
}

void Data::SetWatcher(TreeWatcher* watcher) {
  root_->arena().SetWatcher(watcher);
}

std::vector<Value> Data::ParseKeys(const SchemaNode& list,
                                   const std::vector<std::string>& keys,
                                   size_t given) {
  if (given != list.key_count) {
    Fail(ErrorCode::kBadPath, "list \"" + list.name + "\" has " +
                                  store::Count(list.key_count, "key") +
                                  ", the path gives " + std::to_string(given));
  }
  std::vector<Value> values;
  values.reserve(keys.size());
  for (size_t i = 0; i < keys.size(); ++i) {
    const SchemaNode& key = *list.children[i];
    try {
      values.push_back(key.type->ParseKey(keys[i]));
    } catch (const Error& error) {
      Fail(ErrorCode::kBadPath, "key \"" + key.name + "\": " + error.what());
    }
  }
  return values;
}

PathWalk::PathWalk(const Data& data, Target& target)
    : target_(target), current_(data.root_) {
  target_.schema = &data.schema().root();
  target_.holder = nullptr;
  target_.missing = nullptr;
  target_.keys.clear();
  target_.entry = nullptr;
  target_.is_entry = false;
}

void PathWalk::Enter(const SchemaNode& child) {
  if (current_ == nullptr && target_.missing == nullptr) {
    target_.missing = target_.schema;
  }
  target_.schema = &child;
  target_.holder = current_;
  target_.keys.clear();
  target_.entry = nullptr;
  target_.is_entry = false;
  if (current_ == nullptr) return;
  if (child.IsContainer()) {
    current_ = current_->Container(child);
  } else if (child.kind == NodeKind::kList) {
    current_ = nullptr;  // until an entry is chosen
  }
}

void PathWalk::EnterFromRoot(const SchemaNode& node) {
  current_ = Reach(*node.parent);
  Enter(node);
}

void PathWalk::EnterEntry(Node& entry) {
  target_.schema = entry.schema;
  target_.holder = entry.parent;
  Choose(&entry);
}

// The root or a container, while the walk stands at the root; null where one on
// the way is not there.
Node* PathWalk::Reach(const SchemaNode& container) {
  if (container.parent == nullptr) return current_;
  Node* above = Reach(*container.parent);
  if (above == nullptr) return nullptr;
  Node* here = above->Container(container);
  if (here == nullptr) target_.missing = &container;
  return here;
}

void PathWalk::ChooseByKeys() {
  const List* list = ListHere();
  Choose(list == nullptr
             ? nullptr
             : list->Find({target_.keys.data(), target_.keys.size()}));
}

void PathWalk::ChooseByPosition(uint64_t position) {
  const List* list = ListHere();
  Choose(list == nullptr ? nullptr : list->At(static_cast<size_t>(position)));
}

const List* PathWalk::ListHere() const {
  return target_.holder == nullptr ? nullptr
                                   : target_.holder->ListAt(*target_.schema);
}

void PathWalk::Choose(Node* entry) {
  target_.is_entry = true;
  target_.entry = entry;
  current_ = entry;
}

Target Data::Find(const keypath::Path& path, const PathRules& rules) const {
  Target target;
  ThrowIf(TryFind(path, rules, target));
  return target;
}

std::optional<Refusal> Data::TryFind(const keypath::Path& path,
                                     const PathRules& rules,
                                     Target& target) const {
  auto bad_path = [](std::string reason) {
    return Refusal{ErrorCode::kBadPath, std::move(reason)};
  };
  PathWalk walk(*this, target);
  for (const keypath::Step& step : path.steps) {
    const SchemaNode& parent = *target.schema;
    if (parent.kind == NodeKind::kList && !target.is_entry) {
      return bad_path("list \"" + parent.name + "\" needs its keys before \"" +
                      step.name + "\"");
    }
    if (IsLeafKind(parent)) {
      return bad_path("\"" + parent.name + "\" is a leaf, nothing is below");
    }
    std::string reason;
    const SchemaNode* child = schema_->FindChild(parent, step.prefix, step.name,
                                                 rules.selected, reason);
    if (child == nullptr) return bad_path(std::move(reason));
    walk.Enter(*child);
    if (step.selector == keypath::Selector::kNone) continue;
    if (child->kind != NodeKind::kList) {
      return bad_path("\"" + child->name + "\" is not a list");
    }
    if (step.selector == keypath::Selector::kKeys) {
      target.keys = ParseKeys(*child, step.keys, step.keys.size());
      walk.ChooseByKeys();
      continue;
    }
    if (!rules.positions_allowed) {
      return bad_path(
          "a list entry can't be addressed by position in a transaction");
    }
    walk.ChooseByPosition(step.position);
  }
  return std::nullopt;
}

std::vector<PathElement> Data::ElementsOf(const keypath::Path& path,
                                          const PathRules& rules) const {
  std::vector<PathElement> elements;
  keypath::Path start{path.absolute, {}};
  for (const keypath::Step& step : path.steps) {
    start.steps.push_back(step);
    const Target target = Find(start, rules);
    PathElement element{target.schema, target.keys};
    if (target.is_entry && element.keys.empty()) {
      if (target.entry == nullptr) {
        Fail(ErrorCode::kBadPath,
             "there is no entry at position " + std::to_string(step.position));
      }
      element.keys = target.entry->Keys();
    }
    elements.push_back(std::move(element));
  }
  if (!elements.empty()) {
    const PathElement& last = elements.back();
    if (!last.schema->IsContainer() && last.keys.empty()) {
      Fail(ErrorCode::kBadPath, "it names neither a container nor an entry");
    }
  }
  return elements;
}

std::string TextOf(const std::vector<PathElement>& elements) {
  std::string path;
  for (const PathElement& element : elements) {
    path += "/" + element.schema->PathName();
    if (!element.keys.empty()) path += KeyText(*element.schema, element.keys);
  }
  return path;
}

bool Data::Exists(const Target& target) const {
  const SchemaNode& schema = *target.schema;
  if (schema.kind == NodeKind::kRoot) return true;
  if (schema.kind == NodeKind::kList) {
    // Without keys the question is whether the model has the list.
    return !target.is_entry || target.entry != nullptr;
  }
  if (target.holder == nullptr) return false;
  switch (schema.kind) {
    case NodeKind::kLeaf:
    case NodeKind::kLeafList:
      return target.holder->HasValue(schema);
    case NodeKind::kPresenceContainer:
      return target.holder->Container(schema) != nullptr;
    default:
      return schema.kind == NodeKind::kContainer;
  }
}

List* Data::ListOf(const Target& target) {
  if (target.schema->kind != NodeKind::kList || target.is_entry) {
    Fail(ErrorCode::kBadPath,
         "it names " +
             std::string(target.is_entry ? "a list entry" : "no list") +
             " where a list is needed");
  }
  return target.holder == nullptr ? nullptr
                                  : target.holder->ListAt(*target.schema);
}

size_t Data::Count(const Target& target) const {
  if (target.schema->kind == NodeKind::kLeafList) {
    return target.holder == nullptr
               ? 0
               : target.holder->LeafListValues(*target.schema).size();
  }
  const List* list = ListOf(target);
  return list == nullptr ? 0 : list->size();
}

Element Data::Get(const Target& target) const {
  std::optional<Refusal> refusal;
  const Element element = TryGet(target, {}, refusal);
  ThrowIf(refusal);
  return element;
}

Element Data::TryGet(const Target& target, ReadRules rules,
                     std::optional<Refusal>& refusal) const {
  const SchemaNode& schema = *target.schema;
  if (!IsLeafKind(schema)) {
    refusal = {ErrorCode::kBadPath, "it is not a leaf and has no value"};
  } else if (target.holder == nullptr) {
    refusal = NoHolder(target);
  } else if (schema.is_flag) {
    refusal = {ErrorCode::kBadType,
               "a leaf of type empty is there or not, it has no value"};
  } else if (const Element element = ElementOf(*target.holder, schema, rules);
             element.exists()) {
    return element;
  } else {
    refusal = {ErrorCode::kNoExists, "the leaf has no value and no default"};
  }
  return {};
}

bool Data::IsDefault(const Target& target) const {
  if (target.schema->is_flag) {
    if (!Exists(target)) Fail(ErrorCode::kNoExists, "the leaf is not there");
    return false;
  }
  Get(target);
  return IsByDefault(*target.holder, *target.schema);
}

void Data::ReadObject(const Node& entry, ReadRules rules,
                      std::vector<Element>& elements) {
  AppendChildren(entry, rules, elements);
}

const Node& Data::NodeAt(const Target& target) const {
  const SchemaNode& schema = *target.schema;
  if (schema.kind == NodeKind::kRoot) return *root_;
  const bool is_container = schema.IsContainer();
  if (!target.is_entry && !is_container) {
    Fail(ErrorCode::kBadPath, "it names neither a list entry nor a container");
  }
  const Node* node = target.entry;
  if (is_container && target.holder != nullptr) {
    node = target.holder->Container(schema);
  }
  if (node == nullptr) Fail(ErrorCode::kNoExists, "it does not exist");
  return *node;
}

std::vector<Element> Data::GetObject(const Target& target,
                                     ReadRules rules) const {
  if (target.schema->kind == NodeKind::kRoot) {
    Fail(ErrorCode::kBadPath, "it names neither a list entry nor a container");
  }
  const Node& node = NodeAt(target);
  std::vector<Element> elements;
  elements.reserve(node.schema->width);
  ReadObject(node, rules, elements);
  return elements;
}

void Data::Create(const Target& target) { ThrowIf(TryCreate(target)); }

std::optional<Refusal> Data::TryCreate(const Target& target) {
  const SchemaNode& schema = *target.schema;
  if (schema.is_state) return StateRefusal();
  if (!target.is_entry && schema.kind != NodeKind::kPresenceContainer &&
      !schema.is_flag) {
    return Refusal{ErrorCode::kNotCreatable,
                   "only list entries, presence containers and leaves of type "
                   "empty can be created"};
  }
  if (target.holder == nullptr) return NoHolder(target);
  if (Exists(target)) {
    return Refusal{ErrorCode::kAlreadyExists, "it exists already"};
  }
  if (target.is_entry) {
    target.holder->MakeList(schema).Insert(
        {target.keys.data(), target.keys.size()});
  } else if (schema.is_flag) {
    target.holder->SetLeaf(schema, Value::Number(ValueType::kEmpty, 0));
  } else {
    target.holder->MakeContainer(schema);
  }
  return std::nullopt;
}

void Data::Delete(const Target& target) { ThrowIf(TryDelete(target)); }

std::optional<Refusal> Data::TryDelete(const Target& target) {
  const SchemaNode& schema = *target.schema;
  if (schema.is_state) return StateRefusal();
  if (schema.kind == NodeKind::kList) {
    if (!target.is_entry) {
      return Refusal{ErrorCode::kNotDeletable,
                     "a list is deleted entry by entry"};
    }
    if (target.holder == nullptr) return NoHolder(target);
    if (target.entry == nullptr) {
      return Refusal{ErrorCode::kNoExists, "the list entry does not exist"};
    }
    target.holder->ListAt(schema)->Erase(
        {target.keys.data(), target.keys.size()});
    return std::nullopt;
  }
  if (schema.kind == NodeKind::kContainer || schema.kind == NodeKind::kRoot) {
    return Refusal{ErrorCode::kNotDeletable,
                   "a container without presence is always there"};
  }
  if (schema.is_key() || schema.mandatory) {
    return Refusal{ErrorCode::kNotDeletable,
                   schema.is_key() ? "it is a key" : "the leaf is mandatory"};
  }
  if (target.holder == nullptr) return NoHolder(target);
  if (!target.holder->IsSet(schema)) {
    return Refusal{ErrorCode::kNoExists, "it does not exist"};
  }
  target.holder->Clear(schema);
  return std::nullopt;
}

void Data::Set(const Target& target, NewElement element) {
  const SchemaNode& schema = *target.schema;
  RequireSettable(target);
  if (HasAValue(schema) && element.value) {
    target.holder->SetLeaf(schema, Checked(schema, *element.value));
  } else if (schema.kind == NodeKind::kLeafList && element.items) {
    target.holder->SetLeafList(schema, Checked(schema, *element.items));
  } else {
    Fail(ErrorCode::kBadType, "the value given is not one for this node");
  }
}

void Data::SetText(const Target& target, std::string_view text) {
  RequireSettable(target);
  if (!HasAValue(*target.schema)) {
    Fail(ErrorCode::kBadType,
         "a leaf-list or a leaf of type empty is not set by a text");
  }
  target.holder->SetLeaf(*target.schema,
                         target.schema->type->ParseToStore(text));
}

void Data::Move(const Target& target, const std::vector<Value>& keys) {
  List& list = ListOfEntry(target);
  const std::vector<Value> checked = KeysToMoveTo(list.schema(), keys);
  const KeyView view{checked.data(), checked.size()};
  if (list.Find(view) != nullptr) {
    Fail(ErrorCode::kAlreadyExists,
         "the entry " + KeyText(list.schema(), checked) + " exists already");
  }
  list.Rename(*target.entry, view);
}

void Data::MoveWithin(const Target& target, Where where,
                      const std::vector<Value>& keys) {
  List& list = ListOfEntry(target);
  if (!list.schema().user_ordered) {
    Fail(ErrorCode::kNotMovable, "the list is ordered by its keys");
  }
  if (where == Where::kFirst || where == Where::kLast) {
    list.MoveBefore(*target.entry,
                    where == Where::kFirst ? list.First() : nullptr);
    return;
  }
  const std::vector<Value> checked = KeysToMoveTo(list.schema(), keys);
  const Node* other = list.Find({checked.data(), checked.size()});
  if (other == nullptr) {
    Fail(ErrorCode::kNoExists, "there is no entry " +
                                   KeyText(list.schema(), checked) +
                                   " to move it to");
  }
  if (where == Where::kAfter) {
    other = list.At(list.RankOf(*other) + 1);
  }
  list.MoveBefore(*target.entry, other);
}

void Data::RequireObjectSize(const Target& target, size_t count) {
  const SchemaNode& schema = *target.schema;
  if (schema.kind != NodeKind::kList && !schema.IsContainer()) {
    Fail(ErrorCode::kBadPath, "it names no list, list entry or container");
  }
  if (schema.is_state) ThrowIf(StateRefusal());
  if (count < schema.key_count) {
    Fail(ErrorCode::kBadType, store::Count(count, "value") +
                                  " can't hold the list's " +
                                  store::Count(schema.key_count, "key"));
  }
  if (count > schema.width) {
    Fail(ErrorCode::kBadType,
         store::Count(count, "value") +
             (schema.IsContainer() ? " for a container" : " for an entry") +
             " that takes " + std::to_string(schema.width));
  }
}

void Data::SetObject(const Target& target, std::vector<NewElement>& elements) {
  const SchemaNode& schema = *target.schema;
  RequireObjectSize(target, elements.size());
  RequireHolder(target);
  ObjectWriter writer(elements);
  if (schema.IsContainer()) {
    writer.Check(schema, target.holder->Container(schema));
    writer.Write(target.holder->MakeContainer(schema));
    return;
  }
  std::vector<Value> keys;
  KeyView view{target.keys.data(), target.keys.size()};
  Node* entry = target.entry;
  if (!target.is_entry) {
    keys.reserve(schema.key_count);
    for (size_t i = 0; i < schema.key_count; ++i) {
      if (!elements[i].value) {
        Fail(ErrorCode::kBadType, "value " + std::to_string(i) +
                                      " of the array is not the key \"" +
                                      schema.children[i]->name + "\"");
      }
      keys.push_back(Checked(*schema.children[i], *elements[i].value));
    }
    view = {keys.data(), keys.size()};
    const List* list = target.holder->ListAt(schema);
    entry = list == nullptr ? nullptr : list->Find(view);
  }
  writer.Check(schema, entry);
  if (entry == nullptr) {
    entry = target.holder->MakeList(schema).Insert(view).first;
  }
  writer.Write(*entry);
}

void Data::SetTagged(const Target& target, std::vector<Value> keys,
                     std::vector<TagStep> steps) {
  const SchemaNode& schema = *target.schema;
  if (schema.is_state) ThrowIf(StateRefusal());
  if (schema.kind == NodeKind::kRoot) {
    CheckTagged(root_, steps);
    WriteTagged(*root_, steps);
    return;
  }
  if (schema.kind != NodeKind::kList && !schema.IsContainer()) {
    Fail(ErrorCode::kBadPath, "it names no list, list entry or container");
  }
  RequireHolder(target);
  if (schema.IsContainer()) {
    CheckTagged(target.holder->Container(schema), steps);
    WriteTagged(target.holder->MakeContainer(schema), steps);
    return;
  }
  if (target.is_entry) keys = target.keys;
  const KeyView view{keys.data(), keys.size()};
  const List* list = target.holder->ListAt(schema);
  CheckTagged(list == nullptr ? nullptr : list->Find(view), steps);
  WriteTagged(*target.holder->MakeList(schema).Insert(view).first, steps);
}

}  // namespace kit::store
