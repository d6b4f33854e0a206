#include "kit/host/journal/entry_steps.h"

#include <algorithm>
#include <utility>

namespace kit::host {
namespace {

using Kind = EntryDifference::Kind;

}  // namespace

void EntrySteps::Add(const ChangeRecord& change) {
  if (change.pass != pass_) End();
  pass_ = change.pass;
  if (change.list == list_) builder_.Add(change);
}

std::vector<EntryStep> EntrySteps::Take() {
  End();
  return std::move(steps_);
}

void EntrySteps::End() {
  for (EntryDifference& difference : builder_.Take()) {
    steps_.push_back({pass_, difference.kind, std::move(difference.path),
                      std::move(difference.old_path)});
  }
}

EntryWay WayBackFrom(const std::string& path,
                     const std::vector<EntryStep>& steps) {
  EntryWay way;
  way.other_end = path;
  for (size_t i = steps.size(); i > 0; --i) {
    const EntryStep& step = steps[i - 1];
    if (step.path != way.other_end) continue;
    way.steps.insert(way.steps.begin(), step);
    if (step.kind == Kind::kCreated) {
      way.other_end.clear();
      break;
    }
    if (step.kind != Kind::kRekeyed) continue;
    way.other_end = step.old_path;
    // Another entry may have been given these keys in the same stretch.
    while (i > 1 && steps[i - 2].pass == step.pass) --i;
  }
  return way;
}

EntryWay WayOnFrom(const std::string& path,
                   const std::vector<EntryStep>& steps) {
  EntryWay way;
  way.other_end = path;
  for (size_t i = 0; i < steps.size(); ++i) {
    const EntryStep& step = steps[i];
    const bool rekeyed =
        step.kind == Kind::kRekeyed && step.old_path == way.other_end;
    const bool changed = step.path == way.other_end &&
                         step.kind != Kind::kRekeyed &&
                         step.kind != Kind::kCreated;
    if (!rekeyed && !changed) continue;
    way.steps.push_back(step);
    if (rekeyed) way.other_end = step.path;
    if (step.kind == Kind::kDeleted) {
      way.other_end.clear();
      break;
    }
    if (!rekeyed) continue;
    // Another entry of the same stretch may have had these keys before it.
    while (i + 1 < steps.size() && steps[i + 1].pass == step.pass) ++i;
  }
  return way;
}

bool IsThereAtEnd(const std::string& path, bool was_there,
                  const std::vector<EntryStep>& steps) {
  bool is_there = was_there;
  for (size_t i = 0; i < steps.size();) {
    // What comes to a path in a stretch counts more than what leaves it.
    const uint32_t pass = steps[i].pass;
    bool comes = false;
    bool leaves = false;
    for (; i < steps.size() && steps[i].pass == pass; ++i) {
      const EntryStep& step = steps[i];
      leaves = leaves || (step.kind == Kind::kDeleted && step.path == path) ||
               (step.kind == Kind::kRekeyed && step.old_path == path);
      comes = comes ||
              ((step.kind == Kind::kCreated || step.kind == Kind::kRekeyed) &&
               step.path == path);
    }
    if (comes) {
      is_there = true;
    } else if (leaves) {
      is_there = false;
    }
  }
  return is_there;
}

}  // namespace kit::host
