#include "kit/host/journal/explanation.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

namespace kit::host {
namespace {

using Kind = Explanation::Kind;
using State = control::Place::State;

constexpr char kRoot[] = "/";

bool HasEntry(const control::Place& place) {
  return place.state == State::kThere || place.state == State::kNotSet;
}

// The place by the models that have it, the new ones first.
const control::Place& Known(const PlaceStates& states) {
  return states.start.path.empty() ? states.input : states.start;
}

std::string PathOf(const std::string& entry, const std::string& leaf) {
  if (leaf.empty()) return entry;
  return (entry == kRoot ? "" : entry) + "/" + leaf;
}

bool IsOrIsBelow(std::string_view path, std::string_view top) {
  return path.substr(0, top.size()) == top &&
         (path.size() == top.size() || path[top.size()] == '/' ||
          path[top.size()] == '{');
}

// What became of the entry that the place is in.
struct Ways {
  std::string from;
  std::string to;
  std::vector<EntryStep> steps;
  std::optional<EntryWay> namesake;
};

Ways WaysOf(const PlaceStates& states, const std::vector<EntryStep>& steps) {
  const std::string& entry = Known(states).entry;
  const bool was_there = HasEntry(states.start);
  Ways ways;
  if (entry == kRoot) return {entry, entry, steps, {}};
  if (IsThereAtEnd(entry, was_there, steps)) {
    EntryWay back = WayBackFrom(entry, steps);
    ways = {back.other_end, entry, std::move(back.steps), {}};
    if (was_there && ways.from != entry) {
      ways.namesake = WayOnFrom(entry, steps);
    }
  } else if (was_there) {
    EntryWay on = WayOnFrom(entry, steps);
    ways = {entry, on.other_end, std::move(on.steps), {}};
  } else {
    for (const EntryStep& step : steps) {
      if (step.path == entry || step.old_path == entry) {
        ways.steps.push_back(step);
      }
    }
  }
  return ways;
}

bool IsTouched(const Explanation& explanation) {
  return std::any_of(explanation.events.begin(), explanation.events.end(),
                     [](const HistoryEvent& event) {
                       const auto* touch = std::get_if<Touch>(&event);
                       return touch != nullptr && !touch->changes.empty();
                     });
}

// Whether the input had something that the transaction did not start with.
bool IsLost(const Explanation& explanation) {
  const PlaceStates& states = explanation.states;
  return states.input.state == State::kThere &&
         states.start.state != State::kThere &&
         std::any_of(states.input.leaves.begin(), states.input.leaves.end(),
                     [&](const control::Place::Leaf& leaf) {
                       return !explanation.is_leaf || !leaf.by_default;
                     });
}

Kind KindOfLeaf(const Explanation& explanation) {
  const PlaceStates& states = explanation.states;
  if (!explanation.values.empty()) {
    const auto& first = explanation.values.front().before;
    const auto& last = explanation.values.back().after;
    if (first != last) return last ? Kind::kChanged : Kind::kDeleted;
  }
  if (IsLost(explanation)) return Kind::kLost;
  const bool has_value =
      states.start.state == State::kThere ||
      (states.result && states.result->state == State::kThere);
  if (!has_value) return Kind::kUnset;
  return explanation.from == explanation.to ? Kind::kKept : Kind::kRekeyed;
}

Kind KindOf(const Explanation& explanation) {
  const PlaceStates& states = explanation.states;
  if (explanation.from.empty() && explanation.to.empty()) {
    if (IsLost(explanation)) return Kind::kLost;
    return IsTouched(explanation) ? Kind::kTransient : Kind::kNowhere;
  }
  if (explanation.from.empty()) return Kind::kCreated;
  if (explanation.to.empty()) return Kind::kDeleted;
  if (explanation.is_leaf) return KindOfLeaf(explanation);
  if (explanation.from != explanation.to) return Kind::kRekeyed;
  if (states.result ? !ChangedLeaves(explanation).empty()
                    : IsTouched(explanation)) {
    return Kind::kChanged;
  }
  return Kind::kKept;
}

const control::Place::Leaf* SetLeaf(const control::Place& place,
                                    const std::string& name) {
  for (const control::Place::Leaf& leaf : place.leaves) {
    if (leaf.name == name && !leaf.by_default) return &leaf;
  }
  return nullptr;
}

}  // namespace

std::vector<std::string> PathsOf(const PlaceStates& states,
                                 const std::vector<EntryStep>& steps) {
  const control::Place& place = Known(states);
  std::vector<std::string> paths = {place.path};
  std::set<std::string> known = {place.entry};
  for (const EntryStep& step : WaysOf(states, steps).steps) {
    for (const std::string& entry : {step.old_path, step.path}) {
      if (entry.empty() || !known.insert(entry).second) continue;
      paths.push_back(PathOf(entry, place.leaf));
    }
  }
  return paths;
}

Explanation Explain(const PlaceHistory& history,
                    const std::vector<EntryStep>& steps,
                    const std::vector<control::Loss>& losses, bool has_ended) {
  const std::vector<PlaceStates>& states = history.states();
  const control::Place& asked = Known(states.front());
  Explanation explanation;
  explanation.path = asked.path;
  explanation.leaf = asked.leaf;
  explanation.is_leaf = asked.is_leaf;
  explanation.has_ended = has_ended;
  explanation.states = states.front();
  Ways ways = WaysOf(states.front(), steps);
  explanation.from = std::move(ways.from);
  explanation.to = std::move(ways.to);
  explanation.steps = std::move(ways.steps);
  explanation.namesake = std::move(ways.namesake);
  for (const PlaceStates& one : states) {
    const std::string& entry = Known(one).entry;
    if (entry == explanation.from) {
      explanation.states.input = one.input;
      explanation.states.start = one.start;
    }
    if (entry == explanation.to) explanation.states.result = one.result;
  }
  for (const control::Loss& loss : losses) {
    for (const PlaceStates& one : states) {
      const std::string& path = one.input.path;
      if (path.empty() ||
          (!IsOrIsBelow(loss.path, path) && !IsOrIsBelow(path, loss.path))) {
        continue;
      }
      explanation.losses.push_back(loss);
      break;
    }
  }
  explanation.events = history.events();
  explanation.events_left_out = history.touches_left_out();
  explanation.sources = history.sources();
  if (explanation.is_leaf) {
    explanation.values =
        ValuesOf(explanation.leaf, explanation.from, explanation.states.start,
                 explanation.steps, explanation.events);
  }
  explanation.kind = KindOf(explanation);
  return explanation;
}

std::vector<LeafFate> ChangedLeaves(const Explanation& explanation) {
  std::vector<LeafFate> changed;
  const control::Place& start = explanation.states.start;
  if (!explanation.states.result) return changed;
  const control::Place& end = *explanation.states.result;
  for (const control::Place::Leaf& leaf : end.leaves) {
    const control::Place::Leaf* before = SetLeaf(start, leaf.name);
    const control::Place::Leaf* after = SetLeaf(end, leaf.name);
    if (before == nullptr && after == nullptr) continue;
    if (before != nullptr && after != nullptr &&
        before->value == after->value) {
      continue;
    }
    changed.push_back({leaf.name, before, after});
  }
  for (const control::Place::Leaf& leaf : start.leaves) {
    const bool is_left =
        std::any_of(end.leaves.begin(), end.leaves.end(),
                    [&](const auto& one) { return one.name == leaf.name; });
    if (!is_left && !leaf.by_default) changed.push_back({leaf.name, &leaf});
  }
  return changed;
}

}  // namespace kit::host
