#include "kit/confd/api/resolve.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/values.h"
#include "kit/confd/keypath/key_text.h"

namespace kit::api {
namespace {

using store::SchemaNode;
using store::Value;

// Paths without keys that programs have used, which are few: programs write
// them out.
class KnownPaths {
 public:
  struct Key {
    uint64_t schema;  // its serial number: addresses come again
    const store::Module* selected;
    std::string_view path;
  };
  const SchemaNode* Find(const Key& key) const {
    const Entry& entry = entries_[PlaceOf(key)];
    const bool same = entry.schema == key.schema &&
                      entry.selected == key.selected && entry.path == key.path;
    return same ? entry.node : nullptr;
  }
  void Add(const Key& key, const SchemaNode& node) {
    entries_[PlaceOf(key)] = {key.schema, key.selected, std::string(key.path),
                              &node};
  }

 private:
  struct Entry {
    uint64_t schema = 0;
    const store::Module* selected = nullptr;
    std::string path;
    const SchemaNode* node = nullptr;
  };
  static constexpr size_t kEntries = 256;

  // Paths differ in their last words.
  static size_t PlaceOf(const Key& key) {
    uint64_t tail = 0;
    const size_t size = std::min(key.path.size(), sizeof(tail));
    std::memcpy(&tail, key.path.data() + key.path.size() - size, size);
    const uint64_t mixed =
        (tail + key.path.size() + key.schema) * 0x9E3779B97F4A7C15;
    return mixed >> 32 & (kEntries - 1);
  }

  std::array<Entry, kEntries> entries_;
};

// The entry whose keys were last read: programs make several calls on one.
struct LastEntry {
  uint64_t schema = 0;
  const store::Module* selected = nullptr;
  std::string path;  // with its braces
  const SchemaNode* list = nullptr;
  std::vector<Value> keys;
  // Where it was found.
  store::Arena::Version version{};
  store::Node* entry = nullptr;
};

LastEntry& TheLastEntry() {
  static auto& last = *new LastEntry();
  return last;
}

constexpr bool IsNameChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
}

// Looks characters up instead of comparing each with all.
class CharacterSet {
 public:
  template <typename IsMember>
  constexpr explicit CharacterSet(IsMember is_member) {
    for (int byte = 0; byte < 256; ++byte) {
      has_[byte] = is_member(static_cast<char>(byte));
    }
  }
  bool Has(char c) const { return has_[static_cast<unsigned char>(c)]; }

 private:
  bool has_[256] = {};
};
constexpr CharacterSet kName(IsNameChar);
constexpr CharacterSet kPlainKey(keypath::IsPlainKeyChar);

// Whether a child may be looked for below the node.
bool HasChildren(const SchemaNode& node) {
  return node.kind == store::NodeKind::kRoot || node.IsContainer();
}

class Resolver {
 public:
  Resolver(const store::Data& data, const store::PathRules& rules,
           const PathDraft& draft, store::Target& target)
      : data_(data),
        rules_(rules),
        text_(draft.text),
        draft_(draft),
        target_(target),
        walk_(data, target) {}

  bool Run() {
    if (!TakeLastEntry() && !TakeKnownPath()) return false;
    while (at_ < text_.size()) {
      const char c = text_[at_++];
      const bool found = c == '{'   ? TakeKeys()
                         : c == '[' ? TakePosition()
                         : c == '/' ? TakeName()
                                    : false;
      if (!found) return false;
    }
    return true;
  }

 private:
  // Names alone, up to the first key.
  bool TakeKnownPath() {
    size_t end = std::min(text_.find('{'), text_.size());
    end = std::min(text_.substr(0, end).find('['), end);
    const SchemaNode* node =
        FindSchemaNode(data_.schema(), rules_.selected, text_.substr(0, end));
    if (node == nullptr) return false;
    walk_.EnterFromRoot(*node);
    at_ = end;
    return at_ == text_.size() || text_[at_] != '{' || TakeFirstKeys();
  }

  bool TakeFirstKeys() {
    ++at_;
    if (!TakeKeys()) return false;
    if (next_slot_ > 0) return true;
    LastEntry& last = TheLastEntry();
    last.schema = 0;  // until all of it is there
    last.selected = rules_.selected;
    last.path = text_.substr(0, at_);
    last.list = target_.schema;
    last.keys = target_.keys;
    last.version = data_.version();
    last.entry = target_.entry;
    last.schema = data_.schema().serial();
    return true;
  }

  bool TakeLastEntry() {
    LastEntry& last = TheLastEntry();
    const size_t size = last.path.size();
    const bool is_same = last.schema == data_.schema().serial() &&
                         last.selected == rules_.selected &&
                         text_.substr(0, size) == last.path;
    // What stands in for a value may look like a key.
    if (!is_same ||
        (!draft_.values.empty() && draft_.values.front().begin < size)) {
      return false;
    }
    at_ = size;
    if (last.entry != nullptr && last.version == data_.version()) {
      target_.keys = last.keys;
      walk_.EnterEntry(*last.entry);
      return true;
    }
    walk_.EnterFromRoot(*last.list);
    target_.keys = last.keys;
    walk_.ChooseByKeys();
    last.version = data_.version();
    last.entry = target_.entry;
    return true;
  }

  bool TakeName() {
    const SchemaNode& parent = *target_.schema;
    if (!target_.is_entry && !HasChildren(parent)) return false;
    const std::string_view name = Take(kName);
    const SchemaNode* child = at_ < text_.size() && text_[at_] == ':'
                                  ? TakePrefixed(parent, name)
                                  : store::Schema::OnlyChild(parent, name);
    if (child == nullptr) return false;
    walk_.Enter(*child);
    return true;
  }

  const SchemaNode* TakePrefixed(const SchemaNode& parent,
                                 std::string_view prefix) {
    if (prefix.empty()) return nullptr;
    ++at_;
    std::string reason;
    return data_.schema().FindChild(parent, prefix, Take(kName), nullptr,
                                    reason);
  }

  bool MayChoose() const {
    return target_.schema->kind == store::NodeKind::kList && !target_.is_entry;
  }

  bool TakePosition() {
    if (!MayChoose() || !rules_.positions_allowed) return false;
    uint64_t position = 0;
    const char* const begin = text_.data() + at_;
    const auto [stop, error] =
        std::from_chars(begin, text_.data() + text_.size(), position);
    if (error != std::errc()) return false;
    at_ += static_cast<size_t>(stop - begin);
    if (!Accept(']')) return false;
    walk_.ChooseByPosition(position);
    return true;
  }

  bool TakeKeys() {
    if (!MayChoose()) return false;
    const SchemaNode& list = *target_.schema;
    for (size_t i = 0; i < list.key_count; ++i) {
      if (i > 0 && !Accept(' ')) return false;
      if (!TakeKey(*list.children[i]->type)) return false;
    }
    if (!Accept('}')) return false;
    walk_.ChooseByKeys();
    return true;
  }

  bool TakeKey(const store::LeafType& type) {
    const bool is_value = next_slot_ < draft_.values.size() &&
                          draft_.values[next_slot_].begin == at_;
    if (is_value) {
      const PathDraft::Slot& slot = draft_.values[next_slot_++];
      at_ = slot.end;
      Value& value = target_.keys.emplace_back(FromC(*slot.value));
      if (type.HasPlainly(value)) return true;
      // One of another type may still be written as the key is. Among those of
      // a union the value counts with its type.
      if (type.value_type() && type.value_type() != value.type()) return false;
      value = type.Check(std::move(value));
      return true;
    }
    const std::string_view key = Take(kPlainKey);
    if (key.empty()) return false;
    Value& value = target_.keys.emplace_back();
    if (!type.ParsePlainKey(key, value)) value = type.ParseKey(key);
    return true;
  }

  // As many characters as are of the set.
  std::string_view Take(const CharacterSet& set) {
    const size_t begin = at_;
    while (at_ < text_.size() && set.Has(text_[at_])) ++at_;
    return text_.substr(begin, at_ - begin);
  }

  bool Accept(char c) {
    if (at_ == text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  const store::Data& data_;
  const store::PathRules& rules_;
  const std::string_view text_;
  const PathDraft& draft_;
  store::Target& target_;
  store::PathWalk walk_;
  size_t at_ = 0;
  size_t next_slot_ = 0;
};

}  // namespace

const SchemaNode* FindSchemaNode(const store::Schema& schema,
                                 const store::Module* selected,
                                 std::string_view path) {
  static auto& known = *new KnownPaths();
  const KnownPaths::Key key{schema.serial(), selected, path};
  if (const SchemaNode* node = known.Find(key)) return node;
  const SchemaNode* node = &schema.root();
  size_t at = 0;
  while (at < path.size()) {
    if (path[at] != '/' || !HasChildren(*node)) return nullptr;
    const size_t end = std::min(path.find('/', at + 1), path.size());
    std::string_view name = path.substr(at + 1, end - at - 1);
    const size_t colon = std::min(name.find(':'), name.size());
    std::string_view prefix;
    if (colon < name.size()) {
      prefix = name.substr(0, colon);
      name.remove_prefix(colon + 1);
      if (prefix.empty()) return nullptr;
    }
    std::string reason;
    node = schema.FindChild(*node, prefix, name, selected, reason);
    if (node == nullptr) return nullptr;
    at = end;
  }
  if (node->parent == nullptr) return nullptr;
  known.Add(key, *node);
  return node;
}

bool ResolveDraft(const store::Data& data, const store::PathRules& rules,
                  const PathDraft& draft, store::Target& target) {
  try {
    return Resolver(data, rules, draft, target).Run();
  } catch (const store::Error&) {
    // The long way says what is wrong with a key.
    return false;
  }
}

}  // namespace kit::api
