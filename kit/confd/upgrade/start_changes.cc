#include "kit/confd/upgrade/start_changes.h"

#include <map>
#include <utility>

#include "kit/confd/upgrade/automatic_upgrade.h"
#include "kit/confd/upgrade/namesake.h"

namespace kit::store {
namespace {

std::string PathOf(const Node& node) {
  std::string path = KeyPath(node);
  return path.empty() ? "/" : path;
}

// What is set in a leaf, leaf-list or container with presence.
struct Setting {
  std::vector<std::string> values;
  std::string text;
};

using Settings = std::map<std::string, Setting>;  // by path in the entry

class Watcher : public CarryWatcher {
 public:
  explicit Watcher(const std::function<void(const StartChange&)>& sink)
      : sink_(sink) {}

  void OnCarried(const Node& from, const Node& to) override {
    if (from.is_entry() && to.schema->IsContainer()) {
      TellOnlyEntry(from, to);
      return;
    }
    const std::string path = PathOf(to);
    if (PathOf(from) != path) TellRenamed(from, to);
    const Settings before = SettingsOf(from, to.schema, "");
    const Settings after = SettingsOf(to, from.schema, "");
    for (const auto& [leaf, setting] : before) {
      const auto now = after.find(leaf);
      if (now == after.end()) {
        Tell(path, to, {leaf, setting.text, {}, WhatHolds(to, leaf, setting)});
      } else if (now->second.values != setting.values) {
        Tell(path, to, {leaf, setting.text, now->second.text});
      }
    }
    for (const auto& [leaf, setting] : after) {
      if (before.count(leaf) == 0) Tell(path, to, {leaf, {}, setting.text});
    }
  }

  void OnLost(const Node& entry) override {
    StartChange change{StartChange::Kind::kLost, entry.schema, PathOf(entry)};
    for (const auto& [leaf, setting] : SettingsOf(entry, nullptr, "")) {
      change.leaves.push_back({leaf, setting.text, {}});
    }
    sink_(change);
  }

 private:
  // Of an entry, lists and keys aside. What of it is an entry on the other
  // side, or was one, is told of by itself.
  static Settings SettingsOf(const Node& node, const SchemaNode* other_side,
                             const std::string& prefix) {
    Settings settings;
    for (const auto& child : node.schema->children) {
      const std::string name = prefix + child->PathName();
      if (child->IsContainer()) {
        const Node* const container = node.FindContainer(*child);
        const SchemaNode* const other =
            other_side == nullptr ? nullptr : Namesake(*child, *other_side);
        const bool is_entry_there =
            other != nullptr && other->kind == NodeKind::kList;
        if (container == nullptr || is_entry_there) continue;
        if (child->kind == NodeKind::kPresenceContainer) {
          settings[name] = {{""}, ""};
        }
        settings.merge(SettingsOf(*container, other, name + "/"));
      } else if (child->kind != NodeKind::kList && node.IsSet(*child)) {
        settings[name] = SettingOf(node, *child);
      }
    }
    return settings;
  }

  static Setting SettingOf(const Node& node, const SchemaNode& leaf) {
    if (leaf.kind == NodeKind::kLeaf) {
      const std::string text = leaf.type->Print(*node.LeafValue(leaf));
      return {{text}, text};
    }
    const std::vector<Value> values = node.LeafListValues(leaf);
    Setting setting{{}, PrintList(leaf, values)};
    for (const Value& value : values) {
      setting.values.push_back(leaf.type->Print(value));
    }
    return setting;
  }

  // What is to be said of a leaf that is not set any more.
  static std::optional<std::string> WhatHolds(const Node& entry,
                                              const std::string& path,
                                              const Setting& before) {
    const Node* holder = &entry;
    const SchemaNode* schema = entry.schema;
    for (size_t start = 0;;) {
      const size_t slash = path.find('/', start);
      const SchemaNode* const child =
          ChildOf(*schema, path.substr(start, slash - start));
      if (child == nullptr || child->is_state || child->is_key()) {
        return std::nullopt;
      }
      if (slash == std::string::npos) {
        return WhatHoldsIn(holder, *child, before);
      }
      if (!child->IsContainer()) return std::nullopt;
      schema = child;
      if (holder != nullptr) holder = holder->FindContainer(*child);
      start = slash + 1;
    }
  }

  static const SchemaNode* ChildOf(const SchemaNode& schema,
                                   const std::string& path_name) {
    for (const auto& child : schema.children) {
      if (child->PathName() == path_name) return child.get();
    }
    return nullptr;
  }

  // `holder` is null for a container that was never made.
  static std::optional<std::string> WhatHoldsIn(const Node* holder,
                                                const SchemaNode& child,
                                                const Setting& before) {
    // A container is there without presence too.
    if (child.kind == NodeKind::kContainer) return "";
    if (child.kind != NodeKind::kLeaf && child.kind != NodeKind::kLeafList) {
      return std::nullopt;
    }
    // One of type empty that is not there says that it is false.
    if (child.is_flag && before.text == "false") return before.text;
    if (holder == nullptr) return DefaultOf(child);
    if (!holder->HasValue(child)) return std::nullopt;
    return SettingOf(*holder, child).text;
  }

  static void AppendLeaves(const Node& entry, StartChange& change) {
    for (const auto& [leaf, setting] : SettingsOf(entry, nullptr, "")) {
      change.leaves.push_back({leaf, setting.text, setting.text});
    }
  }

  void TellRenamed(const Node& from, const Node& to) {
    StartChange change{StartChange::Kind::kRenamed, to.schema, PathOf(to),
                       PathOf(from)};
    AppendLeaves(from, change);
    sink_(change);
  }

  void Tell(const std::string& path, const Node& entry, LeafDifference leaf) {
    sink_({StartChange::Kind::kValue, entry.schema, path, "", std::move(leaf)});
  }

  // An entry whose leaves stand in a container of another entry now.
  void TellOnlyEntry(const Node& from, const Node& container) {
    const Node* entry = &container;
    std::string prefix;
    while (!entry->is_entry() && entry->parent != nullptr) {
      prefix = entry->schema->PathName() + "/" + prefix;
      entry = entry->parent;
    }
    Settings before = SettingsOf(from, container.schema, "");
    for (size_t i = 0; i < from.schema->key_count; ++i) {
      const SchemaNode& key = *from.schema->children[i];
      const std::string text = key.type->Print(from.Key(i));
      before[key.PathName()] = {{text}, text};
    }
    Settings after = SettingsOf(container, from.schema, "");
    for (const auto& [leaf, setting] : before) {
      StartChange change{StartChange::Kind::kValue, entry->schema,
                         PathOf(*entry), KeyPath(from) + "/" + leaf};
      change.value = {prefix + leaf, setting.text, {}};
      const auto now = after.find(leaf);
      if (now == after.end()) {
        change.value.default_value = WhatHolds(container, leaf, setting);
      } else {
        const bool is_same = now->second.values == setting.values;
        change.value.after = is_same ? setting.text : now->second.text;
        after.erase(now);
      }
      sink_(change);
    }
    for (const auto& [leaf, setting] : after) {
      Tell(PathOf(*entry), *entry, {prefix + leaf, {}, setting.text});
    }
  }

  const std::function<void(const StartChange&)>& sink_;
};

}  // namespace

void FindStartChanges(const Data& old_data, const Schema& new_schema,
                      const std::function<void(const StartChange&)>& sink) {
  Watcher watcher(sink);
  UpgradeAutomatically(old_data, new_schema, nullptr, &watcher);
}

}  // namespace kit::store
