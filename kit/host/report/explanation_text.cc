#include <fmt/format.h>

#include <variant>

#include "kit/host/report/explanation.h"
#include "kit/host/report/verdict.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using State = control::Place::State;

// Leaves of an entry that are shown; --json has all.
constexpr size_t kShownLeaves = 40;

std::string LeafText(const control::Place::Leaf& leaf) {
  return OneLine(leaf.value) + (leaf.by_default ? " (default)" : "");
}

// What stands there, in the lines after a title.
void AppendPlace(const char* title, const control::Place& place,
                 std::string& text) {
  text += fmt::format("{}: ", title);
  if (place.state != State::kThere) {
    text +=
        (place.state == State::kNotSet ? "not set" : OneLine(place.reason)) +
        "\n";
    return;
  }
  if (place.is_leaf) {
    text += LeafText(place.leaves.front()) + "\n";
    return;
  }
  text += OneLine(place.path) + "\n";
  size_t defaults = 0;
  size_t shown = 0;
  for (const control::Place::Leaf& leaf : place.leaves) {
    if (leaf.by_default) {
      ++defaults;
    } else if (++shown <= kShownLeaves) {
      text += fmt::format("    {}: {}\n", OneLine(leaf.name), LeafText(leaf));
    }
  }
  if (shown > kShownLeaves) {
    text += fmt::format("    ... and {} more\n", shown - kShownLeaves);
  }
  if (defaults > 0) {
    text +=
        fmt::format("    {} by default\n", Counted(defaults, "leaf", "leaves"));
  }
}

// What the automatic upgrade made of the input.
void AppendStart(const Explanation& explanation, std::string& text) {
  const PlaceStates& states = explanation.states;
  text += "Automatic upgrade: ";
  if (states.start.state != State::kThere) {
    text += states.input.state == State::kThere    ? "not carried over\n"
            : states.start.state == State::kNotSet ? "not set\n"
                                                   : "nothing to carry over\n";
  } else if (states.input.state != State::kThere) {
    text += states.start.is_leaf ? LeafText(states.start.leaves.front()) + "\n"
                                 : "made from the input\n";
  } else if (states.start.is_leaf) {
    const auto& before = states.input.leaves.front();
    const auto& after = states.start.leaves.front();
    const bool same =
        before.value == after.value && before.by_default == after.by_default;
    text += (same ? "carried over as it is" : LeafText(after)) + "\n";
  } else {
    text += "carried over\n";
    for (const control::Place::Leaf& leaf : states.start.leaves) {
      const control::Place::Leaf* before = nullptr;
      for (const control::Place::Leaf& one : states.input.leaves) {
        if (one.name == leaf.name) before = &one;
      }
      if (before != nullptr && before->value == leaf.value &&
          before->by_default == leaf.by_default) {
        continue;
      }
      text += fmt::format("    {}: {} -> {}\n", OneLine(leaf.name),
                          before != nullptr ? LeafText(*before) : "(none)",
                          LeafText(leaf));
    }
  }
  for (const control::Loss& loss : explanation.losses) {
    text += fmt::format(
        "    {}{}: {}\n", OneLine(loss.path),
        loss.value.empty() ? "" : fmt::format(" ({})", OneLine(loss.value)),
        OneLine(loss.reason));
  }
}

std::string ChangeText(const ChangeRecord& change) {
  using What = control::Change::Kind;
  if (change.kind != What::kValue) return OneLine(RenderChange(change));
  return fmt::format("  {}: {} -> {}", OneLine(change.leaf),
                     OneLine(change.before.value_or("(none)")),
                     OneLine(change.after.value_or("(none)")));
}

class EventLines {
 public:
  explicit EventLines(const Report& report) : report_(report) {}

  void operator()(const LogRecord& record) {
    Enter(record.pass);
    text_ += fmt::format("    log: {}\n", RecordLine(record.text));
  }
  void operator()(const Touch& touch) {
    Enter(touch.call.pass);
    text_ += fmt::format("    #{} {}\n", touch.call.number,
                         OneLine(RenderCall(touch.call)));
    for (const ChangeRecord& change : touch.changes) {
      text_ += fmt::format("      {}\n", ChangeText(change));
    }
  }
  void operator()(const Reads& reads) {
    Enter(reads.pass);
    text_ += fmt::format("    read by {} {}", OneLine(reads.function),
                         OneLine(reads.path));
    if (reads.error != 0) {
      text_ += fmt::format(", which fails: {}", OneLine(reads.reason));
    }
    text_ += reads.count == 1 ? fmt::format(" (#{})\n", reads.first)
                              : fmt::format(" ({} times, first #{})\n",
                                            reads.count, reads.first);
  }
  std::string Take() { return std::move(text_); }

 private:
  void Enter(uint32_t pass) {
    if (is_in_pass_ && pass == pass_) return;
    is_in_pass_ = true;
    pass_ = pass;
    text_ += PassTitle(report_, pass) + ":\n";
  }

  const Report& report_;
  bool is_in_pass_ = false;
  uint32_t pass_ = 0;
  std::string text_;
};

void AppendNamesake(const Explanation& explanation, std::string& text) {
  if (!explanation.namesake) return;
  const std::string& now = explanation.namesake->other_end;
  text += fmt::format(
      "The input's own entry of these keys {}.\n",
      now.empty() ? "is gone" : fmt::format("is {} now", OneLine(now)));
}

}  // namespace

std::string RenderText(const Explanation& explanation, const Report& report) {
  using Kind = Explanation::Kind;
  std::string text = fmt::format("{}: {}\n", OneLine(explanation.path),
                                 AnswerOf(explanation, report));
  AppendNamesake(explanation, text);
  AppendPlace("Input", explanation.states.input, text);
  if (explanation.kind == Kind::kNowhere) {
    std::string near;
    for (const std::string& one : explanation.states.start.near) {
      near += (near.empty() ? "" : ", ") + OneLine(one);
    }
    if (!near.empty()) text += fmt::format("Near it: {}\n", near);
  } else {
    AppendStart(explanation, text);
  }
  EventLines lines(report);
  for (const HistoryEvent& event : explanation.events) {
    std::visit(lines, event);
  }
  text += lines.Take();
  if (explanation.events_left_out > 0) {
    text += fmt::format("    ... and {} more calls that wrote to it\n",
                        explanation.events_left_out);
  }
  if (explanation.states.result) {
    AppendPlace("Result", *explanation.states.result, text);
  } else if (explanation.has_ended) {
    text += "Result: it is not there\n";
  } else {
    text += "Result: none, as the upgrade came no further\n";
  }
  return text;
}

}  // namespace kit::host
