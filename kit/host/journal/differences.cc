#include "kit/host/journal/differences.h"

#include <algorithm>
#include <utility>

#include "kit/host/moves.h"

namespace kit::host {
namespace {

using Kind = EntryDifference::Kind;

// What the entry had under its old keys against what it has now.
std::vector<control::LeafChange> LeavesOfMove(const EntryDifference& deleted,
                                              const EntryDifference& created) {
  std::vector<control::LeafChange> leaves;
  for (const control::LeafChange& after : created.leaves) {
    const auto before =
        std::find_if(deleted.leaves.begin(), deleted.leaves.end(),
                     [&](const control::LeafChange& leaf) {
                       return leaf.leaf == after.leaf;
                     });
    if (before == deleted.leaves.end()) {
      leaves.push_back(after);
    } else if (before->before != after.after) {
      leaves.push_back({after.leaf, before->before, after.after});
    }
  }
  for (const control::LeafChange& before : deleted.leaves) {
    const bool is_left =
        std::any_of(created.leaves.begin(), created.leaves.end(),
                    [&](const control::LeafChange& leaf) {
                      return leaf.leaf == before.leaf;
                    });
    if (!is_left) leaves.push_back(before);
  }
  return leaves;
}

}  // namespace

EntryDifference ToDifference(control::EntryChange change) {
  EntryDifference difference{Kind::kChanged, std::move(change.list),
                             std::move(change.path), "",
                             std::move(change.leaves)};
  if (change.kind == control::ChangeKind::kCreated) {
    difference.kind = Kind::kCreated;
  } else if (change.kind == control::ChangeKind::kDeleted) {
    difference.kind = Kind::kDeleted;
  }
  return difference;
}

std::vector<EntryDifference> PairMoves(
    std::vector<EntryDifference> differences) {
  std::map<std::string, MoveFinder> finders;
  for (size_t i = 0; i < differences.size(); ++i) {
    const EntryDifference& d = differences[i];
    if (d.kind != Kind::kCreated && d.kind != Kind::kDeleted) continue;
    finders[d.list].Add(
        {d.kind == Kind::kCreated ? control::ChangeKind::kCreated
                                  : control::ChangeKind::kDeleted,
         d.list, d.path, d.leaves},
        i);
  }
  std::vector<bool> is_gone(differences.size(), false);
  for (const auto& [list, finder] : finders) {
    for (const auto& [deleted, created] : finder.Pairs()) {
      EntryDifference& rekeyed = differences[created];
      rekeyed.kind = Kind::kRekeyed;
      rekeyed.old_path = differences[deleted].path;
      rekeyed.leaves = LeavesOfMove(differences[deleted], rekeyed);
      is_gone[deleted] = true;
    }
  }
  std::vector<EntryDifference> kept;
  for (size_t i = 0; i < differences.size(); ++i) {
    if (!is_gone[i]) kept.push_back(std::move(differences[i]));
  }
  return kept;
}

DifferenceBuilder::Leaf& DifferenceBuilder::Entry::LeafAt(
    const std::string& name, const std::optional<std::string>& before,
    const std::optional<std::string>& default_value) {
  const auto [known, is_new] = leaves.try_emplace(name);
  if (is_new) {
    order.push_back(name);
    known->second = {before, before, {}};
  }
  if (default_value) known->second.default_value = default_value;
  return known->second;
}

DifferenceBuilder::Entry& DifferenceBuilder::EntryAt(const std::string& path,
                                                     const std::string& list) {
  Entry& entry = entries_[path];
  if (entry.list.empty()) entry.list = list;
  return entry;
}

void DifferenceBuilder::Add(const ChangeRecord& change) {
  using What = control::Change::Kind;
  switch (change.kind) {
    case What::kCreated:
      return Create(change);
    case What::kDeleted:
      return Delete(change);
    case What::kRenamed:
      return Rename(change);
    case What::kMoved:
      EntryAt(change.path, change.list).has_moved = true;
      return;
    case What::kValue:
      EntryAt(change.path, change.list)
          .LeafAt(change.leaf, change.before, change.default_value)
          .after = change.after;
      return;
  }
}

void DifferenceBuilder::Create(const ChangeRecord& change) {
  const bool is_known = entries_.count(change.path) > 0;
  Entry& entry = EntryAt(change.path, change.list);
  if (!is_known) entry.was_there = false;
  entry.is_there = true;
  for (const control::LeafChange& leaf : change.leaves) {
    entry.LeafAt(leaf.leaf, std::nullopt, leaf.default_value).after =
        leaf.after;
  }
}

void DifferenceBuilder::Delete(const ChangeRecord& change) {
  Entry& entry = EntryAt(change.path, change.list);
  entry.is_there = false;
  if (!entry.was_there) {
    entries_.erase(change.path);
    return;
  }
  for (const control::LeafChange& leaf : change.leaves) {
    entry.LeafAt(leaf.leaf, leaf.before, leaf.default_value);
  }
  for (auto& [name, leaf] : entry.leaves) leaf.after.reset();
}

void DifferenceBuilder::Rename(const ChangeRecord& change) {
  Entry renamed = std::move(EntryAt(change.old_path, change.list));
  entries_.erase(change.old_path);
  if (renamed.was_there && renamed.old_path.empty()) {
    renamed.old_path = change.old_path;
  }
  if (renamed.old_path == change.path) renamed.old_path.clear();
  entries_[change.path] = std::move(renamed);
}

std::optional<EntryDifference> DifferenceBuilder::DifferenceOf(
    const std::string& path, const Entry& entry) {
  EntryDifference difference{
      Kind::kChanged, entry.list, path, entry.old_path, {}};
  if (!entry.was_there) {
    difference.kind = Kind::kCreated;
  } else if (!entry.is_there) {
    difference.kind = Kind::kDeleted;
    if (!entry.old_path.empty()) difference.path = entry.old_path;
    difference.old_path.clear();
  } else if (!entry.old_path.empty()) {
    difference.kind = Kind::kRekeyed;
  } else if (entry.has_moved) {
    difference.kind = Kind::kMoved;
  }
  for (const std::string& name : entry.order) {
    const Leaf& leaf = entry.leaves.at(name);
    if (leaf.before == leaf.after) continue;
    difference.leaves.push_back(
        {name, leaf.before, leaf.after, leaf.default_value});
  }
  if (difference.kind == Kind::kChanged && difference.leaves.empty()) {
    return std::nullopt;
  }
  return difference;
}

std::vector<EntryDifference> DifferenceBuilder::Take() {
  std::vector<EntryDifference> differences;
  for (const auto& [path, entry] : entries_) {
    if (auto difference = DifferenceOf(path, entry)) {
      differences.push_back(std::move(*difference));
    }
  }
  entries_.clear();
  return PairMoves(std::move(differences));
}

}  // namespace kit::host
