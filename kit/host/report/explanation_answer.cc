#include <fmt/format.h>

#include "kit/host/report/explanation.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Kind = Explanation::Kind;
using Step = EntryDifference::Kind;

// "pass 3, compound index".
std::string PassName(const Report& report, uint32_t pass) {
  const std::string title = PassTitle(report, pass);
  return (pass == 0 ? "o" : "p") + title.substr(1);
}

std::string ByPass(const Report& report, uint32_t pass) {
  return pass == 0 ? "outside of the passes" : "by " + PassName(report, pass);
}

// What the steps of one kind come to: "in pass 3, compound index".
std::string Where(const std::vector<EntryStep>& steps, Step kind,
                  const Report& report) {
  std::string text;
  for (const EntryStep& step : steps) {
    if (step.kind != kind) continue;
    text += (text.empty() ? "" : " and ") +
            (step.pass == 0 ? "outside of the passes"
                            : "in " + PassName(report, step.pass));
  }
  return text;
}

uint32_t LastPassOf(const std::vector<EntryStep>& steps, Step kind) {
  uint32_t pass = 0;
  for (const EntryStep& step : steps) {
    if (step.kind == kind) pass = step.pass;
  }
  return pass;
}

std::string ValueText(const std::optional<std::string>& value) {
  return value ? OneLine(*value) : "not set";
}

std::string ValueAt(const control::Place& place) {
  if (place.leaves.empty()) return "not set";
  const control::Place::Leaf& leaf = place.leaves.front();
  return OneLine(leaf.value) + (leaf.by_default ? " (default)" : "");
}

// Whether it was asked for by its path at the start alone.
bool IsAskedByOldPath(const Explanation& explanation) {
  return explanation.path.rfind(explanation.to, 0) != 0;
}

// "was OLD, got other keys in pass 3", from where it was asked for.
std::string Rekeyed(const Explanation& explanation, const Report& report) {
  const std::string where = Where(explanation.steps, Step::kRekeyed, report);
  return IsAskedByOldPath(explanation)
             ? fmt::format("got other keys {}: is {} now", where,
                           OneLine(explanation.to))
             : fmt::format("was {}, got other keys {}",
                           OneLine(explanation.from), where);
}

// Those that changed it at its place: "by pass 7, QoS support".
std::string ChangedBy(const Explanation& explanation, const Report& report) {
  std::string passes;
  uint32_t last = 0;
  for (const EntryStep& step : explanation.steps) {
    if (step.kind != Step::kChanged && step.kind != Step::kMoved) continue;
    if (!passes.empty() && step.pass == last) continue;
    last = step.pass;
    passes += (passes.empty() ? "" : " and ") + ByPass(report, step.pass);
  }
  return passes;
}

// The leaves that were set to what was read from another entry.
std::string CopyText(const Explanation& explanation) {
  const CopySource* most = nullptr;
  for (const CopySource& source : explanation.sources) {
    if (most == nullptr || source.leaves.size() > most->leaves.size()) {
      most = &source;
    }
  }
  if (most == nullptr) return "";
  std::string leaves;
  for (size_t i = 0; i < most->leaves.size(); ++i) {
    leaves += i == 0 ? "" : i + 1 == most->leaves.size() ? " and " : ", ";
    leaves += OneLine(most->leaves[i]);
  }
  return fmt::format(", with {} as read from {}", leaves, OneLine(most->entry));
}

std::string LossReason(const Explanation& explanation) {
  return explanation.losses.empty()
             ? "it has no place in the new model"
             : OneLine(explanation.losses.front().reason);
}

std::string Kept(const Explanation& explanation) {
  const PlaceStates& states = explanation.states;
  if (explanation.is_leaf &&
      states.start.state == control::Place::State::kThere) {
    const std::string before = ValueAt(states.input);
    const std::string after = ValueAt(states.start);
    if (states.start.leaves.front().by_default) {
      return before == after ? "nobody sets it: its default holds, as before"
             : states.input.leaves.empty()
                 ? "nobody sets it: the new model's default holds"
                 : fmt::format("takes the new model's default: was {}", before);
    }
    if (before != after) {
      return fmt::format("converted by the automatic upgrade: was {}", before);
    }
  }
  if (!explanation.losses.empty()) {
    return fmt::format(
        "kept, but for {} that the automatic upgrade did not carry over as it "
        "was",
        Counted(explanation.losses.size(), "node", "nodes"));
  }
  return "kept as it was in the input";
}

// Of an entry at its place.
std::string ChangedEntry(const Explanation& explanation, const Report& report) {
  const std::string passes = ChangedBy(explanation, report);
  return passes.empty() ? "changed" : "changed " + passes;
}

std::string ChangedLeaf(const Explanation& explanation, const Report& report) {
  const ValueStep& last = explanation.values.back();
  const auto& before = explanation.values.front().before;
  std::string text;
  if (!before) {
    text = fmt::format("set {}", ByPass(report, last.pass));
    const std::string held = ValueAt(explanation.states.start);
    if (held != "not set") text += ": held " + held;
  } else {
    text = fmt::format("changed {}: was {}", ByPass(report, last.pass),
                       ValueText(before));
  }
  text += fmt::format(", is {}", ValueText(last.after));
  if (explanation.from != explanation.to) {
    text += fmt::format("; its entry {}", Rekeyed(explanation, report));
  }
  return text;
}

std::string SentenceOf(const Explanation& explanation, const Report& report) {
  const std::vector<EntryStep>& steps = explanation.steps;
  const bool is_entry = explanation.leaf.empty();
  switch (explanation.kind) {
    case Kind::kKept:
      return Kept(explanation);
    case Kind::kChanged:
      return explanation.is_leaf ? ChangedLeaf(explanation, report)
                                 : ChangedEntry(explanation, report);
    case Kind::kRekeyed: {
      const std::string was = Rekeyed(explanation, report);
      const std::string changed = ChangedBy(explanation, report);
      if (!is_entry) return "kept its value; its entry " + was;
      return changed.empty() ? was : was + ", and changed " + changed;
    }
    case Kind::kCreated:
      return fmt::format("{}created {}{}",
                         is_entry ? "" : "came with its entry, ",
                         ByPass(report, LastPassOf(steps, Step::kCreated)),
                         CopyText(explanation));
    case Kind::kDeleted: {
      if (explanation.to.empty()) {
        return fmt::format("is gone: {}deleted {}",
                           is_entry ? "" : "its entry was ",
                           ByPass(report, LastPassOf(steps, Step::kDeleted)));
      }
      const ValueStep& last = explanation.values.back();
      return fmt::format("is not set any more: deleted {}, was {}",
                         ByPass(report, last.pass),
                         ValueText(explanation.values.front().before));
    }
    case Kind::kLost:
      return "not carried over by the automatic upgrade: " +
             LossReason(explanation);
    case Kind::kTransient:
      return "was created on the way and deleted again";
    case Kind::kUnset:
      return "has no value, neither in the input nor in the result";
    case Kind::kNowhere:
      return "is neither in the input nor in the result";
  }
  return "";
}

}  // namespace

std::string AnswerOf(const Explanation& explanation, const Report& report) {
  return SentenceOf(explanation, report) +
         (explanation.has_ended ? "" : ", as far as the upgrade came");
}

}  // namespace kit::host
