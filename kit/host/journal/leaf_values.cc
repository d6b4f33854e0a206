#include "kit/host/journal/leaf_values.h"

#include <map>
#include <utility>
#include <variant>

namespace kit::host {
namespace {

using What = control::Change::Kind;

// The value that a change leaves in a leaf of its entry.
void Apply(const ChangeRecord& change, const std::string& leaf,
           std::map<std::string, std::optional<std::string>>& values) {
  switch (change.kind) {
    case What::kValue:
      if (change.leaf == leaf) values[change.path] = change.after;
      return;
    case What::kCreated:
      values[change.path].reset();
      for (const control::LeafChange& one : change.leaves) {
        if (one.leaf == leaf) values[change.path] = one.after;
      }
      return;
    case What::kDeleted:
      values.erase(change.path);
      return;
    case What::kRenamed: {
      auto value = values[change.old_path];
      values.erase(change.old_path);
      values[change.path] = std::move(value);
      return;
    }
    case What::kMoved:
      return;
  }
}

// Follows a leaf's value through the passes.
class ValueTrack {
 public:
  ValueTrack(const std::string& leaf_name, const std::string& from,
             const control::Place& start, const std::vector<EntryStep>& steps)
      : leaf_(leaf_name), steps_(steps), path_(from) {
    for (const control::Place::Leaf& leaf : start.leaves) {
      if (leaf.by_default || path_.empty()) continue;
      values_[path_] = leaf.value;
      value_ = leaf.value;
    }
  }

  void Add(const Touch& touch) {
    if (touch.call.pass != pass_) EndStretch();
    pass_ = touch.call.pass;
    for (const ChangeRecord& change : touch.changes) {
      Apply(change, leaf_, values_);
      if (change.kind == What::kValue) call_ = touch.call.number;
      if (call_ == 0) call_ = touch.call.number;
    }
  }

  std::vector<ValueStep> Take() {
    EndStretch();
    return std::move(found_);
  }

 private:
  void EndStretch() {
    while (next_ < steps_.size() && steps_[next_].pass == pass_) {
      const EntryStep& step = steps_[next_++];
      path_ = step.kind == EntryDifference::Kind::kDeleted ? "" : step.path;
    }
    const auto known = values_.find(path_);
    auto after = known == values_.end() ? std::nullopt : known->second;
    if (after != value_) found_.push_back({pass_, value_, after, call_});
    value_ = std::move(after);
    call_ = 0;
  }

  const std::string& leaf_;
  const std::vector<EntryStep>& steps_;
  std::string path_;
  std::map<std::string, std::optional<std::string>> values_;  // by entry
  std::optional<std::string> value_;
  uint32_t pass_ = 0;
  uint64_t call_ = 0;
  size_t next_ = 0;
  std::vector<ValueStep> found_;
};

}  // namespace

std::vector<ValueStep> ValuesOf(const std::string& leaf,
                                const std::string& from,
                                const control::Place& start,
                                const std::vector<EntryStep>& steps,
                                const std::vector<HistoryEvent>& events) {
  ValueTrack track(leaf, from, start, steps);
  for (const HistoryEvent& event : events) {
    if (const auto* touch = std::get_if<Touch>(&event)) track.Add(*touch);
  }
  return track.Take();
}

}  // namespace kit::host
