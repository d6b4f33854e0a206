#include "kit/confd/control/change_teller.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "kit/confd/upgrade/difference.h"

namespace kit::control {
namespace {

uint64_t NumberOf(const void* thing) {
  return reinterpret_cast<uintptr_t>(thing);
}

// The entry that a node stands in, or the root.
const store::Node& EntryOf(const store::Node& node) {
  const store::Node* entry = &node;
  while (!entry->is_entry() && entry->parent != nullptr) entry = entry->parent;
  return *entry;
}

class EntryTold : public Change {
 public:
  EntryTold(Kind what, const store::Node& node)
      : Change(what, NumberOf(node.schema), NumberOf(&node)), node_(node) {}

  std::string List() const override { return node_.schema->Path(); }
  std::string Path() const override {
    const std::string path = store::KeyPath(node_);
    return path.empty() ? "/" : path;
  }
  std::string OldPath() const override { return Path(); }
  std::string Leaf() const override { return ""; }
  std::optional<std::string> Before() const override { return std::nullopt; }
  std::optional<std::string> After() const override { return std::nullopt; }
  std::vector<LeafChange> Leaves() const override {
    std::vector<LeafChange> leaves;
    if (kind != Kind::kCreated && kind != Kind::kDeleted) return leaves;
    for (store::LeafDifference& leaf : store::LeavesOf(node_)) {
      LeafChange& told = leaves.emplace_back();
      told.leaf = std::move(leaf.leaf);
      (kind == Kind::kCreated ? told.after : told.before) =
          std::move(leaf.after);
      told.default_value = std::move(leaf.default_value);
    }
    return leaves;
  }
  std::optional<std::string> Default() const override { return std::nullopt; }

 protected:
  const store::Node& node_;
};

class RenameTold : public EntryTold {
 public:
  RenameTold(const store::Node& node, const std::vector<store::Value>& old_keys)
      : EntryTold(Kind::kRenamed, node), old_keys_(old_keys) {}

  std::string OldPath() const override {
    const std::string path = Path();
    const size_t keys = store::KeyText(node_).size();
    return path.substr(0, path.size() - keys) +
           store::KeyText(*node_.schema, old_keys_);
  }

 private:
  const std::vector<store::Value>& old_keys_;
};

class ValueTold : public EntryTold {
 public:
  ValueTold(const store::Node& holder, const store::SchemaNode& child,
            const store::Cell* before, const store::Cell* after)
      : EntryTold(Kind::kValue, EntryOf(holder)),
        holder_(holder),
        child_(child),
        before_(before),
        after_(after) {}

  std::string Leaf() const override {
    std::string path = child_.PathName();
    for (const store::Node* node = &holder_; node != &node_;
         node = node->parent) {
      path = node->schema->PathName() + "/" + path;
    }
    return path;
  }
  std::optional<std::string> Before() const override { return Text(before_); }
  std::optional<std::string> After() const override { return Text(after_); }
  std::optional<std::string> Default() const override {
    if (before_ != nullptr && after_ != nullptr) return std::nullopt;
    return store::DefaultOf(child_);
  }

 private:
  std::optional<std::string> Text(const store::Cell* cell) const {
    if (cell == nullptr) return std::nullopt;
    if (child_.kind == store::NodeKind::kLeaf) {
      return child_.type->Print(store::ValueOf(*child_.type, *cell));
    }
    if (child_.kind == store::NodeKind::kLeafList) {
      return store::PrintList(child_, store::ValuesOf(*child_.type, *cell));
    }
    return "";
  }

  const store::Node& holder_;
  const store::SchemaNode& child_;
  const store::Cell* before_;
  const store::Cell* after_;
};

void Tell(const Change& change) {
  if (Observer* const observer = CurrentObserver()) observer->OnChange(change);
}

}  // namespace

void ChangeTeller::OnCreated(const store::Node& entry) {
  Tell(EntryTold(Change::Kind::kCreated, entry));
}

void ChangeTeller::OnDeleted(const store::Node& entry) {
  Tell(EntryTold(Change::Kind::kDeleted, entry));
}

void ChangeTeller::OnRenamed(const store::Node& entry,
                             const std::vector<store::Value>& old_keys) {
  Tell(RenameTold(entry, old_keys));
}

void ChangeTeller::OnMoved(const store::Node& entry) {
  Tell(EntryTold(Change::Kind::kMoved, entry));
}

void ChangeTeller::OnValue(const store::Node& holder,
                           const store::SchemaNode& child,
                           const store::Cell* before,
                           const store::Cell* after) {
  Tell(ValueTold(holder, child, before, after));
}

}  // namespace kit::control
