// What became of every leaf of the input, and by whom.
#ifndef KIT_HOST_JOURNAL_LEDGER_H_
#define KIT_HOST_JOURNAL_LEDGER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/events.h"
#include "kit/host/journal/differences.h"
#include "kit/host/journal/leaf_account.h"
#include "kit/host/journal/view.h"

namespace kit::host {

// A leaf that was changed or dropped.
struct LedgerLeaf {
  Fate fate = Fate::kDropped;
  Agent by;
  std::string list;      // of its entry; "/" outside of all
  std::string path;      // key path in the input
  std::string new_path;  // "" for the same, or none
  std::string before;
  std::optional<std::string> after;  // set or by default
  bool by_default = false;
};

struct LedgerList {
  std::string list;
  uint64_t input = 0;
  std::vector<LedgerRow> rows;  // their sum is `input`
  uint64_t added = 0;           // leaves that no leaf of the input became
  std::optional<uint64_t> result;
};

struct Ledger {
  bool is_whole = false;  // the upgrade came to its end
  // What nobody may doubt: both sides are counted on their own, and
  // input - dropped - by default + added = result, by list and in all.
  bool balances = true;
  uint64_t input = 0;
  std::vector<LedgerRow> rows;
  uint64_t added = 0;
  std::optional<uint64_t> result;  // none without a result
  std::vector<LedgerList> lists;   // in the order of the input
  std::vector<LedgerLeaf> leaves;  // in the order of their entries' paths

  uint64_t LeavesWith(Fate fate) const;
};

// Follows a run. Takes memory for what differs, not for calls.
class LedgerBuilder : public JournalView {
 public:
  using JournalView::Add;
  void AddStart(const ChangeRecord& change) override { builder_.Add(change); }
  void Add(const ChangeRecord& change) override { builder_.Add(change); }

  // To be called after the last change, once. `result` is null where the
  // upgrade did not come to its end.
  Ledger Take(const std::vector<control::LeafCount>& input,
              const std::vector<control::LeafCount>* result);

 private:
  DifferenceBuilder builder_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_LEDGER_H_
