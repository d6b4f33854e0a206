#include "kit/host/process/change_counter.h"

#include <algorithm>
#include <utility>

namespace kit::host {

void ChangeCounter::Add(const control::Change& change) {
  using Kind = control::Change::Kind;
  switch (change.kind) {
    case Kind::kCreated:
      creators_[change.entry] = pass_;
      ++TotalsOf(change).created;
      return;
    case Kind::kDeleted:
      Delete(change);
      return;
    case Kind::kRenamed:
      ++TotalsOf(change).rekeyed;
      return;
    case Kind::kMoved:
      ++TotalsOf(change).moved;
      return;
    case Kind::kValue:
      ChangeValue(change);
      return;
  }
}

void ChangeCounter::Delete(const control::Change& change) {
  ListTotals& totals = TotalsOf(change);
  // Another entry may get its number.
  if (changed_.erase(change.entry) > 0) --totals.changed;
  if (change.entry == last_changed_) last_changed_ = 0;
  const auto creator = creators_.find(change.entry);
  if (creator != creators_.end()) {
    const bool in_this_pass = creator->second == pass_;
    creators_.erase(creator);
    if (in_this_pass) {
      --totals.created;
      return;
    }
  }
  ++totals.deleted;
}

void ChangeCounter::ChangeValue(const control::Change& change) {
  // Values mostly come in rows.
  if (change.entry == last_changed_) return;
  last_changed_ = change.entry;
  const auto creator = creators_.find(change.entry);
  if (creator != creators_.end() && creator->second == pass_) return;
  if (changed_.insert(change.entry).second) ++TotalsOf(change).changed;
}

ListTotals& ChangeCounter::TotalsOf(const control::Change& change) {
  const auto [known, is_new] = index_.emplace(change.list, totals_.size());
  if (is_new) totals_.push_back({change.List()});
  return totals_[known->second];
}

std::vector<ListTotals> ChangeCounter::Take(uint32_t next_pass) {
  pass_ = next_pass;
  index_.clear();
  changed_.clear();
  last_changed_ = 0;
  std::vector<ListTotals> totals = std::exchange(totals_, {});
  const auto is_empty = [](const ListTotals& list) {
    return list.created + list.rekeyed + list.changed + list.deleted +
               list.moved ==
           0;
  };
  totals.erase(std::remove_if(totals.begin(), totals.end(), is_empty),
               totals.end());
  return totals;
}

uint32_t ChangeCounter::CreatorOf(uint64_t entry) const {
  const auto creator = creators_.find(entry);
  return creator == creators_.end() ? 0 : creator->second;
}

}  // namespace kit::host
