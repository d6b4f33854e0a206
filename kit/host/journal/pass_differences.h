// What differs after each stretch of a pass.
#ifndef KIT_HOST_JOURNAL_PASS_DIFFERENCES_H_
#define KIT_HOST_JOURNAL_PASS_DIFFERENCES_H_

#include <cstdint>
#include <optional>
#include <vector>

#include "kit/host/journal/differences.h"
#include "kit/host/journal/view.h"

namespace kit::host {

// Of a stretch of a pass, or, without its number, of a whole run.
struct Differences {
  std::optional<uint32_t> pass;
  std::vector<EntryDifference> entries;
};

class PassDifferences : public JournalView {
 public:
  using JournalView::Add;
  void Add(const ChangeRecord& change) override;

  // In their order, those without a difference left out. To be called after the
  // last change, once.
  std::vector<Differences> Take();

 private:
  void End();

  uint32_t pass_ = 0;
  DifferenceBuilder builder_;
  std::vector<Differences> differences_;
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_PASS_DIFFERENCES_H_
