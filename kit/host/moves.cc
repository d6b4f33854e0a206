#include "kit/host/moves.h"

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_map>

namespace kit::host {
namespace {

// How many entries one is compared with that have the same other keys.
constexpr size_t kMostCandidates = 16;

uint32_t Hash(std::string_view text) {
  return static_cast<uint32_t>(std::hash<std::string_view>()(text));
}

const std::string& ValueOf(const control::LeafChange& leaf) {
  return leaf.before ? *leaf.before : *leaf.after;
}

uint32_t HashOf(const control::LeafChange& leaf) {
  return Hash(leaf.leaf) * 31 + Hash(ValueOf(leaf));
}

}  // namespace

std::vector<std::string_view> KeysOf(std::string_view path) {
  std::vector<std::string_view> keys;
  // A quoted key may hold braces: the last entry's keys begin where, from the
  // start, the last group outside of quotes begins.
  size_t open = std::string_view::npos;
  bool quoted = false;
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '\\' && quoted) {
      ++i;
    } else if (path[i] == '"') {
      quoted = !quoted;
    } else if (path[i] == '{' && !quoted) {
      open = i;
    }
  }
  if (open == std::string_view::npos || path.back() != '}') return keys;
  path = path.substr(open + 1, path.size() - open - 2);
  size_t start = 0;
  quoted = false;
  for (size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '\\' && quoted) {
      ++i;
    } else if (path[i] == '"') {
      quoted = !quoted;
    } else if (path[i] == ' ' && !quoted) {
      keys.push_back(path.substr(start, i - start));
      start = i + 1;
    }
  }
  keys.push_back(path.substr(start));
  return keys;
}

MoveFinder::Entry& MoveFinder::Begin(control::ChangeKind kind,
                                     const std::vector<std::string_view>& keys,
                                     uint64_t id) {
  auto& entries = kind == control::ChangeKind::kCreated ? created_ : deleted_;
  entries.push_back(
      {id, hashes_.size(), static_cast<uint32_t>(keys.size()), 0, 0});
  for (const std::string_view key : keys) hashes_.push_back(Hash(key));
  return entries.back();
}

void MoveFinder::AddLeaf(const control::LeafChange& leaf, Entry& entry) {
  if (!leaf.before && !leaf.after) return;
  hashes_.push_back(HashOf(leaf));
  ++entry.leaves;
}

void MoveFinder::AddRepeat(const control::LeafChange& leaf,
                           std::string_view key, Entry& entry) {
  if (!(leaf.before || leaf.after) || ValueOf(leaf) != key) return;
  hashes_.push_back(Hash(leaf.leaf));
  ++entry.repeats;
}

class MoveFinder::Matching {
 public:
  explicit Matching(const MoveFinder& finder)
      : finder_(finder),
        created_is_free_(finder.created_.size(), true),
        deleted_is_free_(finder.deleted_.size(), true) {}

  std::vector<std::pair<uint64_t, uint64_t>> Run() {
    const size_t keys =
        finder_.created_.empty() ? 0 : finder_.created_.front().keys;
    for (size_t i = 0; i < keys && keys > 1 && IsOpen(); ++i) {
      MatchBy([this, i](const Entry& entry) { return OtherKeys(entry, i); });
    }
    if (IsOpen()) {
      MatchBy([this](const Entry& entry) { return Content(entry); }, 1);
    }
    if (IsOpen()) MatchInOrder();
    return std::move(pairs_);
  }

 private:
  // Whether both sides have entries left.
  bool IsOpen() const {
    return pairs_.size() < finder_.created_.size() &&
           pairs_.size() < finder_.deleted_.size();
  }

  static uint64_t Mix(uint64_t hash, uint64_t more) {
    return (hash ^ more) * 0x9E3779B97F4A7C15 + (hash >> 29);
  }

  uint64_t OtherKeys(const Entry& entry, size_t without) const {
    uint64_t hash = without;
    for (size_t i = 0; i < entry.keys; ++i) {
      if (i != without) hash = Mix(hash, finder_.hashes_[entry.first + i]);
    }
    return hash;
  }

  uint64_t Content(const Entry& entry) const {
    uint64_t hash = entry.leaves;
    const uint32_t* leaf = &finder_.hashes_[0] + entry.first + entry.keys;
    for (size_t i = 0; i < entry.leaves; ++i) hash = Mix(hash, leaf[i]);
    return hash;
  }

  // How many hashes are in both, in the same order.
  static size_t InCommon(const uint32_t* a, size_t a_size, const uint32_t* b,
                         size_t b_size) {
    const uint32_t* const end = b + b_size;
    size_t same = 0;
    for (size_t i = 0; i < a_size; ++i) {
      const uint32_t* const found = std::find(b, end, a[i]);
      if (found == end) continue;
      ++same;
      b = found + 1;
    }
    return same;
  }

  // Leaves come in the order of the model on both sides. Those that repeat the
  // same first key have the same value, and are counted already.
  size_t SameLeaves(const Entry& a, const Entry& b) const {
    const uint32_t* const a_hash = finder_.hashes_.data() + a.first;
    const uint32_t* const b_hash = finder_.hashes_.data() + b.first;
    size_t same =
        InCommon(a_hash + a.keys, a.leaves, b_hash + b.keys, b.leaves);
    if (a.repeats > 0 && b.repeats > 0 && *a_hash != *b_hash) {
      same += InCommon(a_hash + a.keys + a.leaves, a.repeats,
                       b_hash + b.keys + b.leaves, b.repeats);
    }
    return same;
  }

  bool AreAlike(const Entry& a, const Entry& b) const {
    return 2 * SameLeaves(a, b) >= std::min(a.leaves, b.leaves);
  }

  void Pair(size_t deleted, size_t created) {
    pairs_.emplace_back(finder_.deleted_[deleted].id,
                        finder_.created_[created].id);
    deleted_is_free_[deleted] = false;
    created_is_free_[created] = false;
  }

  // Of entries with so many leaves or more.
  template <typename HashOfEntry>
  void MatchBy(const HashOfEntry& hash, size_t least_leaves = 0) {
    std::unordered_multimap<uint64_t, size_t> candidates;
    candidates.reserve(finder_.deleted_.size());
    for (size_t i = finder_.deleted_.size(); i > 0; --i) {
      const Entry& deleted = finder_.deleted_[i - 1];
      if (deleted_is_free_[i - 1] && deleted.leaves >= least_leaves) {
        candidates.emplace(hash(deleted), i - 1);
      }
    }
    for (size_t i = 0; i < finder_.created_.size(); ++i) {
      if (!created_is_free_[i]) continue;
      auto [at, end] = candidates.equal_range(hash(finder_.created_[i]));
      auto best = end;
      size_t most = 0;
      for (size_t tries = 0; at != end && tries < kMostCandidates;
           ++at, ++tries) {
        const Entry& deleted = finder_.deleted_[at->second];
        if (!AreAlike(deleted, finder_.created_[i])) continue;
        const size_t same = SameLeaves(deleted, finder_.created_[i]);
        if (best != end &&
            (same < most || (same == most && at->second > best->second))) {
          continue;
        }
        best = at;
        most = same;
      }
      if (best == end) continue;
      Pair(best->second, i);
      candidates.erase(best);
    }
  }

  // Entries that neither keep a key nor all of their content.
  void MatchInOrder() {
    size_t next = 0;
    for (size_t i = 0; i < finder_.created_.size(); ++i) {
      if (!created_is_free_[i]) continue;
      while (next < finder_.deleted_.size() && !deleted_is_free_[next]) ++next;
      if (next == finder_.deleted_.size()) return;
      // Entries without a leaf have nothing that could be the same.
      if (finder_.created_[i].leaves == 0 ||
          !AreAlike(finder_.deleted_[next], finder_.created_[i])) {
        continue;
      }
      Pair(next, i);
    }
  }

  const MoveFinder& finder_;
  std::vector<bool> created_is_free_;
  std::vector<bool> deleted_is_free_;
  std::vector<std::pair<uint64_t, uint64_t>> pairs_;
};

std::vector<std::pair<uint64_t, uint64_t>> MoveFinder::Pairs() const {
  return Matching(*this).Run();
}

}  // namespace kit::host
