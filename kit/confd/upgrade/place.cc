#include "kit/confd/upgrade/place.h"

#include <utility>

#include "kit/confd/model/error.h"
#include "kit/confd/text/nearest.h"
#include "kit/confd/upgrade/difference.h"

namespace kit::store {
namespace {

using State = FoundPlace::State;

std::string_view WithoutLastSlash(std::string_view path) {
  if (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

// The keys of an entry with a blank between each two and no quotes.
std::string PlainKeys(const Node& entry) {
  std::string text;
  const std::vector<Value> keys = entry.Keys();
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i > 0) text += ' ';
    text += entry.schema->children[i]->type->Print(keys[i]);
  }
  return text;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words)
    text += (&word == &words[0] ? "" : " ") + word;
  return text;
}

class Looker {
 public:
  explicit Looker(const Data& data)
      : data_(data), schema_(&data.schema().root()), node_(&data.root()) {
    place_.list = "/";
  }

  FoundPlace Look(const keypath::Path& path) {
    for (const keypath::Step& step : path.steps) {
      if (!Enter(step)) return Unfit();
    }
    place_.is_leaf = IsLeaf(*schema_);
    place_.path = text_.empty() ? "/" : text_;
    place_.entry = entry_.empty() ? "/" : entry_;
    if (missing_ != nullptr) {
      place_.state = State::kNoEntry;
      return std::move(place_);
    }
    if (node_ != nullptr && place_.is_leaf) {
      AddLeaf(*node_, *schema_, "");
    } else if (node_ != nullptr) {
      AddLeaves(*node_, place_.leaf.empty() ? "" : place_.leaf + "/");
    }
    const bool is_there =
        !place_.leaves.empty() || (node_ != nullptr && place_.leaf.empty());
    place_.state = is_there ? State::kThere : State::kNotSet;
    if (!is_there) place_.reason = "nothing is set, and there is no default";
    return std::move(place_);
  }

 private:
  static bool IsLeaf(const SchemaNode& node) {
    return node.kind == NodeKind::kLeaf || node.kind == NodeKind::kLeafList ||
           node.kind == NodeKind::kAny;
  }

  // What there is to say of a path that does not fit.
  FoundPlace Unfit() {
    FoundPlace place;
    place.reason = std::move(place_.reason);
    place.near = std::move(place_.near);
    return place;
  }

  bool Enter(const keypath::Step& step) {
    if (IsLeaf(*schema_)) {
      place_.reason =
          "\"" + schema_->name + "\" is a leaf and has nothing in it";
      return false;
    }
    const SchemaNode* child = data_.schema().FindChild(
        *schema_, step.prefix, step.name, nullptr, place_.reason);
    if (child == nullptr) {
      std::vector<std::string> names;
      for (const auto& one : schema_->children)
        names.push_back(one->PathName());
      place_.near = text::Nearest(step.name, names, false);
      return false;
    }
    schema_ = child;
    text_ += "/" + child->PathName();
    if (child->kind == NodeKind::kList) return EnterList(step);
    if (step.selector != keypath::Selector::kNone) {
      place_.reason = "\"" + child->name + "\" is no list and has no keys";
      return false;
    }
    place_.leaf += (place_.leaf.empty() ? "" : "/") + child->PathName();
    if (child->IsContainer() && node_ != nullptr) {
      // One without presence is made by this, which changes nothing.
      node_ = node_->Container(*child);
    }
    return true;
  }

  bool EnterList(const keypath::Step& step) {
    const List* list = node_ == nullptr ? nullptr : node_->ListAt(*schema_);
    const Node* entry = nullptr;
    if (step.selector != keypath::Selector::kKeys) {
      place_.reason =
          "\"" + schema_->name + "\" is a list; name an entry by its keys";
      AddNearKeys(list, "");
      return false;
    }
    if (!FindEntry(list, step.keys, entry)) return false;
    place_.list = schema_->Path();
    place_.leaf.clear();
    entry_ = text_;
    node_ = entry;
    if (entry == nullptr && missing_ == nullptr) {
      missing_ = schema_;
      const size_t count = list == nullptr ? 0 : list->size();
      place_.reason = schema_->Path() + " has no such entry; it has " +
                      (count == 0   ? "none"
                       : count == 1 ? "one"
                                    : std::to_string(count));
      AddNearKeys(list, Joined(step.keys));
    }
    return true;
  }

  // Appends the keys to the path. False where they are none of the list.
  bool FindEntry(const List* list, std::vector<std::string> texts,
                 const Node*& entry) {
    if (schema_->key_count == 1) texts = {Joined(texts)};
    try {
      const std::vector<Value> keys =
          Data::ParseKeys(*schema_, texts, texts.size());
      text_ += KeyText(*schema_, keys);
      if (list != nullptr) entry = list->Find({keys.data(), keys.size()});
      return true;
    } catch (const Error& error) {
      entry = FindUnquoted(list, Joined(texts));
      if (entry == nullptr) {
        place_.reason = error.what();
        AddNearKeys(list, Joined(texts));
        return false;
      }
      text_ += KeyText(*entry);
      return true;
    }
  }

  // The one entry whose keys read like that.
  static const Node* FindUnquoted(const List* list, const std::string& text) {
    const Node* found = nullptr;
    if (list == nullptr) return nullptr;
    for (const Node& entry : list->ByKey()) {
      if (PlainKeys(entry) != text) continue;
      if (found != nullptr) return nullptr;
      found = &entry;
    }
    return found;
  }

  void AddNearKeys(const List* list, const std::string& keys) {
    if (list == nullptr) return;
    std::vector<std::string> all;
    for (const Node& entry : list->ByKey()) all.push_back(KeyText(entry));
    place_.near = text::Nearest("{" + keys + "}", all, true);
  }

  void AddLeaf(const Node& holder, const SchemaNode& leaf,
               const std::string& prefix) {
    if (leaf.kind == NodeKind::kAny || !holder.HasValue(leaf)) return;
    place_.leaves.push_back(
        {place_.is_leaf ? place_.leaf : prefix + leaf.PathName(),
         leaf.kind == NodeKind::kLeaf
             ? leaf.type->Print(*holder.LeafValue(leaf))
             : PrintList(leaf, holder.LeafListValues(leaf)),
         !leaf.is_key() && !holder.IsSet(leaf)});
  }

  void AddLeaves(const Node& node, const std::string& prefix) {
    for (const auto& child : node.schema->children) {
      if (child->is_state || child->is_key()) continue;
      if (IsLeaf(*child)) {
        AddLeaf(node, *child, prefix);
      } else if (child->IsContainer()) {
        const Node* container = node.Container(*child);
        if (container == nullptr) continue;
        const std::string name = prefix + child->PathName();
        if (child->kind == NodeKind::kPresenceContainer) {
          place_.leaves.push_back({name, "", false});
        }
        AddLeaves(*container, name + "/");
      }
    }
  }

  const Data& data_;
  const SchemaNode* schema_;
  const Node* node_;  // null where an entry or container is missing
  const SchemaNode* missing_ = nullptr;  // the list of the first such entry
  std::string text_;
  std::string entry_;
  FoundPlace place_;
};

}  // namespace

FoundPlace LookAt(const Data& data, std::string_view path) {
  return Looker(data).Look(keypath::Parse(WithoutLastSlash(path)));
}

}  // namespace kit::store
