#include <variant>

#include "kit/host/report/explanation.h"
#include "kit/host/report/json_parts.h"
#include "kit/host/report/names.h"

namespace kit::host {
namespace {

const char* KindName(Explanation::Kind kind) {
  using Kind = Explanation::Kind;
  switch (kind) {
    case Kind::kKept:
      return "kept";
    case Kind::kChanged:
      return "changed";
    case Kind::kRekeyed:
      return "rekeyed";
    case Kind::kCreated:
      return "created";
    case Kind::kDeleted:
      return "deleted";
    case Kind::kLost:
      return "lost";
    case Kind::kTransient:
      return "transient";
    case Kind::kUnset:
      return "unset";
    case Kind::kNowhere:
      return "nowhere";
  }
  return "unknown";
}

// Null for nothing there.
Json PlaceJson(const control::Place& place) {
  if (place.state != control::Place::State::kThere) return nullptr;
  Json leaves = Json::array();
  for (const control::Place::Leaf& leaf : place.leaves) {
    leaves.push_back({{"leaf", leaf.name},
                      {"value", leaf.value},
                      {"default", leaf.by_default}});
  }
  return {{"path", place.path}, {"leaves", std::move(leaves)}};
}

Json PassJson(const Report& report, uint32_t pass) {
  const bool is_named = pass > 0 && pass <= report.passes.size();
  return is_named ? Json(report.passes[pass - 1].name) : Json();
}

Json StepsJson(const Explanation& explanation, const Report& report) {
  Json steps = Json::array();
  for (const EntryStep& step : explanation.steps) {
    steps.push_back({{"pass", step.pass},
                     {"name", PassJson(report, step.pass)},
                     {"change", Name(step.kind)},
                     {"path", step.path},
                     {"old_path", NullIfEmpty(step.old_path)}});
  }
  return steps;
}

Json ToJson(const Touch& touch) {
  Json changes = Json::array();
  for (const ChangeRecord& change : touch.changes) {
    changes.push_back({{"change", Name(change.kind)},
                       {"path", change.path},
                       {"old_path", NullIfEmpty(change.old_path)},
                       {"leaf", NullIfEmpty(change.leaf)},
                       {"before", OrNull(change.before)},
                       {"after", OrNull(change.after)}});
  }
  const CallRecord& call = touch.call;
  return {{"kind", "call"},
          {"number", call.number},
          {"pass", call.pass},
          {"function", call.function},
          {"path", NullIfEmpty(call.path)},
          {"input", NullIfEmpty(call.input)},
          {"output", NullIfEmpty(call.output)},
          {"result", call.result},
          {"error", call.error},
          {"reason", NullIfEmpty(call.reason)},
          {"changes", std::move(changes)}};
}

Json ToJson(const Reads& reads) {
  return {{"kind", "reads"},
          {"pass", reads.pass},
          {"function", reads.function},
          {"path", reads.path},
          {"error", reads.error},
          {"reason", NullIfEmpty(reads.reason)},
          {"count", reads.count},
          {"first", reads.first}};
}

Json EventsJson(const Explanation& explanation) {
  Json events = Json::array();
  for (const HistoryEvent& event : explanation.events) {
    events.push_back(
        std::visit([](const auto& one) { return ToJson(one); }, event));
  }
  return events;
}

ExitCode ExitCodeOf(const Explanation& explanation, const Report& report) {
  const bool is_nowhere = explanation.kind == Explanation::Kind::kNowhere;
  return is_nowhere && !report.failure ? ExitCode::kNotFound
                                       : report.exit_code();
}

Json SourcesJson(const Explanation& explanation) {
  Json sources = Json::array();
  for (const CopySource& source : explanation.sources) {
    sources.push_back({{"path", source.entry}, {"leaves", source.leaves}});
  }
  return sources;
}

}  // namespace

std::string RenderJson(const Explanation& explanation, const Report& report) {
  const PlaceStates& states = explanation.states;
  const Json json = {
      {"path", explanation.path},
      {"kind", KindName(explanation.kind)},
      {"answer", AnswerOf(explanation, report)},
      {"old_path", NullIfEmpty(explanation.from)},
      {"new_path", NullIfEmpty(explanation.to)},
      {"steps", StepsJson(explanation, report)},
      {"namesake_went_to", explanation.namesake
                               ? NullIfEmpty(explanation.namesake->other_end)
                               : Json()},
      {"input", PlaceJson(states.input)},
      {"start", PlaceJson(states.start)},
      {"losses", ToJson(explanation.losses)},
      {"history", EventsJson(explanation)},
      {"left_out", explanation.events_left_out},
      {"copied_from", SourcesJson(explanation)},
      {"result", states.result ? PlaceJson(*states.result) : Json()},
      {"succeeded", explanation.has_ended},
      {"exit_code", static_cast<int>(ExitCodeOf(explanation, report))}};
  return Dump(json) + "\n";
}

}  // namespace kit::host
