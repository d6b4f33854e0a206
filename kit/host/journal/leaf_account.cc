#include "kit/host/journal/leaf_account.h"

namespace kit::host {
namespace {

uint64_t OrderOf(Agent by) {
  if (!by) return 0;
  return *by == kAutomaticUpgrade ? 1 : uint64_t{*by} + 2;
}

}  // namespace

void LeafAccount::Add(Fate fate, Agent by, uint64_t leaves, bool by_default) {
  if (leaves == 0) return;
  LedgerRow& row = rows_[{fate, OrderOf(by)}];
  row.fate = fate;
  row.by = by;
  row.leaves += leaves;
  if (by_default) row.by_default += leaves;
}

void LeafAccount::Add(const LeafAccount& other) {
  for (const auto& [key, row] : other.rows_) {
    Add(row.fate, row.by, row.leaves - row.by_default);
    Add(row.fate, row.by, row.by_default, true);
  }
  added += other.added;
}

uint64_t LeafAccount::total() const {
  uint64_t sum = 0;
  for (const auto& [key, row] : rows_) sum += row.leaves;
  return sum;
}

std::vector<LedgerRow> LeafAccount::Rows() const {
  std::vector<LedgerRow> rows;
  for (const auto& [key, row] : rows_) rows.push_back(row);
  return rows;
}

}  // namespace kit::host
