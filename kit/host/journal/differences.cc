#include "kit/host/journal/differences.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "kit/host/moves.h"

namespace kit::host {
namespace {

using Kind = EntryDifference::Kind;

// Fills in what the entry had under its old keys against what it has now.
void CompareMoved(const EntryDifference& deleted, EntryDifference& rekeyed) {
  std::vector<LeafDifference> leaves;
  for (LeafDifference& after : rekeyed.leaves) {
    const auto before = std::find_if(
        deleted.leaves.begin(), deleted.leaves.end(),
        [&](const LeafDifference& leaf) { return leaf.leaf == after.leaf; });
    if (before == deleted.leaves.end()) {
      leaves.push_back(after);
    } else if (before->before != after.after) {
      leaves.push_back({{after.leaf, before->before, after.after},
                        after.pass,
                        before->old_path});
    } else {
      ++rekeyed.same_leaves;
    }
  }
  for (const LeafDifference& before : deleted.leaves) {
    const bool is_left = std::any_of(
        rekeyed.leaves.begin(), rekeyed.leaves.end(),
        [&](const LeafDifference& leaf) { return leaf.leaf == before.leaf; });
    if (is_left) continue;
    leaves.push_back(before);
    leaves.back().pass = rekeyed.pass;
  }
  rekeyed.leaves = std::move(leaves);
}

// In the same order on both sides of a move, whatever order they came in.
std::vector<std::reference_wrapper<const LeafDifference>> ByName(
    const std::vector<LeafDifference>& leaves) {
  std::vector<std::reference_wrapper<const LeafDifference>> sorted(
      leaves.begin(), leaves.end());
  std::sort(sorted.begin(), sorted.end(),
            [](const LeafDifference& a, const LeafDifference& b) {
              return a.leaf < b.leaf;
            });
  return sorted;
}

}  // namespace

EntryDifference ToDifference(control::EntryChange change) {
  EntryDifference difference{Kind::kChanged, std::move(change.list),
                             std::move(change.path), ""};
  for (control::LeafChange& leaf : change.leaves) {
    difference.leaves.push_back({std::move(leaf)});
  }
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
    finders[d.list].Add(d.kind == Kind::kCreated
                            ? control::ChangeKind::kCreated
                            : control::ChangeKind::kDeleted,
                        d.path, ByName(d.leaves), i);
  }
  std::vector<bool> is_gone(differences.size(), false);
  for (const auto& [list, finder] : finders) {
    for (const auto& [deleted, created] : finder.Pairs()) {
      EntryDifference& rekeyed = differences[created];
      rekeyed.kind = Kind::kRekeyed;
      rekeyed.old_path = differences[deleted].path;
      CompareMoved(differences[deleted], rekeyed);
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
    const std::optional<std::string>& default_value, uint32_t by) {
  const auto [known, is_new] = leaves.try_emplace(name);
  Leaf& leaf = known->second;
  if (is_new) {
    order.push_back(name);
    leaf.before = leaf.after = before;
  }
  if (default_value) leaf.default_value = default_value;
  leaf.pass = by;
  return leaf;
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
    case What::kMoved: {
      Entry& entry = EntryAt(change.path, change.list);
      entry.has_moved = true;
      entry.pass = change.pass;
      return;
    }
    case What::kValue:
      return ChangeValue(change);
  }
}

void DifferenceBuilder::ChangeValue(const ChangeRecord& change) {
  Leaf& leaf = EntryAt(change.path, change.list)
                   .LeafAt(change.leaf, change.before, change.default_value,
                           change.pass);
  leaf.after = change.after;
  if (!change.old_path.empty()) leaf.old_path = change.old_path;
}

void DifferenceBuilder::Create(const ChangeRecord& change) {
  const bool is_known = entries_.count(change.path) > 0;
  Entry& entry = EntryAt(change.path, change.list);
  if (!is_known) entry.was_there = false;
  entry.is_there = true;
  entry.pass = change.pass;
  for (const control::LeafChange& leaf : change.leaves) {
    entry.LeafAt(leaf.leaf, std::nullopt, leaf.default_value, change.pass)
        .after = leaf.after;
  }
}

void DifferenceBuilder::Delete(const ChangeRecord& change) {
  Entry& entry = EntryAt(change.path, change.list);
  entry.is_there = false;
  entry.pass = change.pass;
  if (!entry.was_there) {
    entries_.erase(change.path);
    return;
  }
  for (const control::LeafChange& leaf : change.leaves) {
    entry.LeafAt(leaf.leaf, leaf.before, leaf.default_value, change.pass);
  }
  for (auto& [name, leaf] : entry.leaves) leaf.after.reset();
}

void DifferenceBuilder::Rename(const ChangeRecord& change) {
  Entry renamed = std::move(EntryAt(change.old_path, change.list));
  entries_.erase(change.old_path);
  renamed.pass = change.pass;
  if (renamed.was_there) {
    if (renamed.old_path.empty()) renamed.old_path = change.old_path;
    // They are counted, whether anything becomes of them or not.
    for (const control::LeafChange& leaf : change.leaves) {
      if (renamed.leaves.count(leaf.leaf) > 0) continue;
      renamed.LeafAt(leaf.leaf, leaf.before, std::nullopt, change.pass);
    }
  }
  if (renamed.old_path == change.path) renamed.old_path.clear();
  RenameBelow(change);
  entries_[change.path] = std::move(renamed);
}

// What stands in a renamed entry has another path from then on.
void DifferenceBuilder::RenameBelow(const ChangeRecord& change) {
  const std::string prefix = change.old_path + "/";
  for (auto at = entries_.lower_bound(prefix);
       at != entries_.end() && at->first.compare(0, prefix.size(), prefix) == 0;
       at = entries_.lower_bound(prefix)) {
    auto below = entries_.extract(at);
    Entry& entry = below.mapped();
    entry.pass = change.pass;
    if (entry.was_there && entry.old_path.empty()) {
      entry.old_path = below.key();
    }
    below.key() = change.path + below.key().substr(change.old_path.size());
    if (entry.old_path == below.key()) entry.old_path.clear();
    entries_.insert(std::move(below));
  }
}

std::optional<EntryDifference> DifferenceBuilder::DifferenceOf(
    const std::string& path, const Entry& entry) {
  EntryDifference difference{Kind::kChanged, entry.list, path, entry.old_path};
  difference.pass = entry.pass;
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
    if (leaf.before == leaf.after && leaf.old_path.empty()) {
      if (leaf.before) ++difference.same_leaves;
      continue;
    }
    difference.leaves.push_back(
        {{name, leaf.before, leaf.after, leaf.default_value},
         leaf.pass,
         leaf.old_path});
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
