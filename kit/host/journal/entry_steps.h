// How the entries of one list went through the passes.
#ifndef KIT_HOST_JOURNAL_ENTRY_STEPS_H_
#define KIT_HOST_JOURNAL_ENTRY_STEPS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "kit/host/journal/differences.h"

namespace kit::host {

// An entry that is not as it was before a stretch of a pass.
struct EntryStep {
  uint32_t pass = 0;
  EntryDifference::Kind kind = EntryDifference::Kind::kChanged;
  std::string path;
  std::string old_path;  // of a re-keyed one
};

// Those of one list. Grows with the entries that change, not with the calls.
class EntrySteps {
 public:
  // Changes of other lists are passed over.
  void SetList(std::string list) { list_ = std::move(list); }
  void Add(const ChangeRecord& change);
  // In their order. To be called after the last change, once.
  std::vector<EntryStep> Take();

 private:
  void End();

  std::string list_;
  uint32_t pass_ = 0;
  DifferenceBuilder builder_;
  std::vector<EntryStep> steps_;
};

// What became of the entry that had a path at one end of the run.
struct EntryWay {
  std::vector<EntryStep> steps;  // of this entry, in their order
  // Its path at the other end, "" where it was not there yet, or is no more.
  std::string other_end;
};

// Of an entry that is there at the end.
EntryWay WayBackFrom(const std::string& path,
                     const std::vector<EntryStep>& steps);
// Of an entry that is there at the start.
EntryWay WayOnFrom(const std::string& path,
                   const std::vector<EntryStep>& steps);
// Whether an entry has the path at the end.
bool IsThereAtEnd(const std::string& path, bool was_there,
                  const std::vector<EntryStep>& steps);

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_ENTRY_STEPS_H_
