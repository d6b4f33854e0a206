#include "kit/host/journal/ledger.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "kit/host/journal/leaf_account.h"
#include "kit/host/moves.h"
#include "kit/host/secrets.h"

namespace kit::host {
namespace {

using Kind = EntryDifference::Kind;

// The list of the entry that a key path leads into; "/" for none.
std::string ListAround(const std::string& path) {
  const size_t end = path.rfind('}');
  return end == std::string::npos ? "/" : WithoutKeys(path.substr(0, end + 1));
}

std::string PathOfLeaf(const std::string& entry, const std::string& leaf) {
  return (entry == "/" ? "" : entry) + "/" + leaf;
}

using Counts = std::map<std::string, const control::LeafCount*>;

Counts ByList(const std::vector<control::LeafCount>& counts) {
  Counts by_list;
  for (const control::LeafCount& count : counts) {
    by_list[count.list] = &count;
  }
  return by_list;
}

uint64_t LeavesOf(const Counts& counts, const std::string& list) {
  const auto found = counts.find(list);
  return found == counts.end() ? 0 : found->second->leaves;
}

// The keys of an entry by their names.
std::map<std::string, std::string> NamedKeys(
    const std::vector<const Counts*>& sides, const std::string& list,
    const std::string& path) {
  std::map<std::string, std::string> named;
  const std::vector<std::string_view> keys = KeysOf(path);
  const std::vector<std::string>* names = nullptr;
  for (const Counts* side : sides) {
    const auto found = side->find(list);
    if (names == nullptr && found != side->end()) names = &found->second->keys;
  }
  for (size_t i = 0; i < keys.size(); ++i) {
    // Of a list that neither side has any more.
    std::string name = "key " + std::to_string(i + 1);
    if (names != nullptr && i < names->size()) name = (*names)[i];
    named[std::move(name)] = keys[i];
  }
  return named;
}

class LedgerMaker {
 public:
  LedgerMaker(const std::vector<control::LeafCount>& input,
              const std::vector<control::LeafCount>* result)
      : input_(input), input_counts_(ByList(input)) {
    if (result != nullptr) result_counts_ = ByList(*result);
    ledger_.is_whole = result != nullptr;
  }

  Ledger Make(const std::vector<EntryDifference>& differences) {
    for (const EntryDifference& entry : differences) Enter(entry);
    for (const control::LeafCount& count : input_) FinishList(count.list);
    for (const auto& [list, account] : accounts_) {
      if (input_counts_.count(list) == 0) FinishList(list);
    }
    for (const auto& [list, count] : result_counts_) {
      const bool is_known =
          input_counts_.count(list) > 0 || accounts_.count(list) > 0;
      if (!is_known) FinishList(list);
    }
    ledger_.rows = sum_.Rows();
    ledger_.added = sum_.added;
    return std::move(ledger_);
  }

 private:
  void Enter(const EntryDifference& entry) {
    switch (entry.kind) {
      case Kind::kCreated:
        accounts_[entry.list].added +=
            KeysOf(entry.path).size() + entry.leaves.size();
        return;
      case Kind::kDeleted:
        EnterDeleted(entry);
        return;
      case Kind::kRekeyed:
        EnterRekeyed(entry);
        return;
      case Kind::kChanged:
      case Kind::kMoved:
        for (const LeafDifference& leaf : entry.leaves) {
          EnterLeaf(entry, entry.list, leaf, Fate::kKept);
        }
        return;
    }
  }

  void EnterDeleted(const EntryDifference& entry) {
    const std::string list = ListAround(entry.path);
    for (const auto& [name, key] :
         NamedKeys({&input_counts_, &result_counts_}, list, entry.path)) {
      Drop(list, entry.pass, PathOfLeaf(entry.path, name), key);
    }
    for (const LeafDifference& leaf : entry.leaves) {
      Drop(list, entry.pass, PathOfLeaf(entry.path, leaf.leaf), *leaf.before);
    }
  }

  void EnterRekeyed(const EntryDifference& entry) {
    const std::string list = ListAround(entry.old_path);
    LeafAccount& from = accounts_[list];
    LeafAccount& to = accounts_[entry.list];
    auto old_keys =
        NamedKeys({&input_counts_, &result_counts_}, list, entry.old_path);
    auto new_keys =
        NamedKeys({&result_counts_, &input_counts_}, entry.list, entry.path);
    // A key may have been another leaf, or be one now.
    const auto take = [](std::map<std::string, std::string>& keys,
                         const std::string& name) {
      return keys.erase(name) > 0;
    };
    uint64_t moved = entry.same_leaves;
    for (const LeafDifference& leaf : entry.leaves) {
      const bool was_key = !leaf.before && take(old_keys, leaf.leaf);
      const bool is_key =
          leaf.before && !leaf.after && take(new_keys, leaf.leaf);
      if (was_key || is_key) {
        if (was_key) take(new_keys, leaf.leaf);
        ++moved;
      } else {
        EnterLeaf(entry, list, leaf, Fate::kMoved);
      }
    }
    for (const auto& [name, key] : old_keys) {
      if (take(new_keys, name)) {
        ++moved;
      } else {
        Drop(list, entry.pass, PathOfLeaf(entry.old_path, name), key);
      }
    }
    to.added += new_keys.size();
    from.Add(Fate::kMoved, entry.pass, moved);
    from.gone += moved;
    to.arrived += moved;
  }

  // One that is there on both sides of its entry, or on one. `unchanged`: its
  // fate where it keeps its value.
  void EnterLeaf(const EntryDifference& entry, const std::string& list,
                 const LeafDifference& leaf, Fate unchanged) {
    if (!leaf.before) {
      if (leaf.after) ++accounts_[entry.list].added;
      return;
    }
    const std::string& holder =
        entry.old_path.empty() ? entry.path : entry.old_path;
    LedgerLeaf told;
    told.by = leaf.pass;
    told.list = leaf.old_path.empty() ? list : ListAround(leaf.old_path);
    told.path =
        leaf.old_path.empty() ? PathOfLeaf(holder, leaf.leaf) : leaf.old_path;
    told.before = *leaf.before;
    if (!leaf.after && !leaf.default_value) {
      Drop(told.list, leaf.pass, told.path, told.before);
      return;
    }
    if (!leaf.old_path.empty()) unchanged = Fate::kMoved;
    told.by_default = !leaf.after;
    told.after = leaf.after ? leaf.after : leaf.default_value;
    told.fate = told.after == told.before ? unchanged : Fate::kChanged;
    const std::string new_path = PathOfLeaf(entry.path, leaf.leaf);
    if (new_path != told.path) told.new_path = new_path;
    LeafAccount& account = accounts_[told.list];
    const bool is_kept = told.fate == Fate::kKept;
    account.Add(told.fate, is_kept ? Agent() : told.by, 1, told.by_default);
    ++account.gone;
    if (leaf.after) ++accounts_[entry.list].arrived;
    if (told.fate == Fate::kChanged) ledger_.leaves.push_back(std::move(told));
  }

  void Drop(const std::string& list, uint32_t by, std::string path,
            std::string value) {
    LeafAccount& account = accounts_[list];
    account.Add(Fate::kDropped, by);
    ++account.gone;
    LedgerLeaf leaf;
    leaf.by = by;
    leaf.list = list;
    leaf.path = std::move(path);
    leaf.before = std::move(value);
    ledger_.leaves.push_back(std::move(leaf));
  }

  void FinishList(const std::string& name) {
    LeafAccount& account = accounts_[name];
    LedgerList list;
    list.list = name;
    list.input = LeavesOf(input_counts_, name);
    const uint64_t touched = account.total();
    if (touched > list.input) ledger_.balances = false;
    account.Add(Fate::kKept, {}, list.input - std::min(touched, list.input));
    if (ledger_.is_whole) {
      list.result = LeavesOf(result_counts_, name);
      if (list.input + account.arrived + account.added !=
          *list.result + account.gone) {
        ledger_.balances = false;
      }
      ledger_.result = ledger_.result.value_or(0) + *list.result;
    }
    list.rows = account.Rows();
    list.added = account.added;
    ledger_.input += list.input;
    sum_.Add(account);
    if (list.input > 0 || list.added > 0 || list.result.value_or(0) > 0) {
      ledger_.lists.push_back(std::move(list));
    }
  }

  const std::vector<control::LeafCount>& input_;
  const Counts input_counts_;
  Counts result_counts_;
  std::map<std::string, LeafAccount> accounts_;
  LeafAccount sum_;
  Ledger ledger_;
};

}  // namespace

uint64_t Ledger::LeavesWith(Fate fate) const {
  uint64_t sum = 0;
  for (const LedgerRow& row : rows) {
    if (row.fate == fate) sum += row.leaves;
  }
  return sum;
}

Ledger LedgerBuilder::Take(const std::vector<control::LeafCount>& input,
                           const std::vector<control::LeafCount>* result) {
  return LedgerMaker(input, result).Make(builder_.Take());
}

}  // namespace kit::host
