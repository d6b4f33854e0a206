#include "kit/host/journal/pass_differences.h"

#include <utility>

namespace kit::host {

void PassDifferences::Add(const ChangeRecord& change) {
  if (change.pass != pass_) End();
  pass_ = change.pass;
  builder_.Add(change);
}

std::vector<Differences> PassDifferences::Take() {
  End();
  return std::move(differences_);
}

void PassDifferences::End() {
  std::vector<EntryDifference> entries = builder_.Take();
  if (!entries.empty()) differences_.push_back({pass_, std::move(entries)});
}

}  // namespace kit::host
