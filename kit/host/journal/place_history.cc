#include "kit/host/journal/place_history.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kit/host/secrets.h"

namespace kit::host {
namespace {

using What = control::Change::Kind;

bool IsOrIsBelow(std::string_view path, std::string_view top) {
  return path.substr(0, top.size()) == top &&
         (path.size() == top.size() || path[top.size()] == '/');
}

bool IsWrite(std::string_view function) {
  for (const char* kind : {"maapi_set", "maapi_create", "maapi_delete",
                           "maapi_move", "maapi_shared", "maapi_vset"}) {
    if (function.substr(0, std::string_view(kind).size()) == kind) return true;
  }
  return false;
}

// Calls that ask nothing of the database.
bool IsLocal(std::string_view function) {
  constexpr std::string_view kLocal = "confd_";
  return function.substr(0, kLocal.size()) == kLocal;
}

// A path's entry and the leaf in it; the entry "" where there is none, or where
// it is named by its position.
std::pair<std::string, std::string> EntryAndLeaf(const std::string& path) {
  const size_t end = path.rfind('}');
  if (end == std::string::npos || end + 1 >= path.size()) return {};
  return {path.substr(0, end + 1), path.substr(end + 2)};
}

}  // namespace

void PlaceHistory::Add(const PlaceRecord& record) {
  if (record.number >= states_.size()) states_.resize(record.number + 1);
  PlaceStates& states = states_[record.number];
  switch (record.when) {
    case PlaceRecord::When::kInput:
      states.input = record.place;
      break;
    case PlaceRecord::When::kStart:
      states.start = record.place;
      break;
    case PlaceRecord::When::kResult:
      states.result = record.place;
      break;
  }
  if (record.place.path.empty()) return;
  entries_.insert(record.place.entry);
  lists_.insert(record.place.list);
  leaf_ = record.place.leaf;
  // Changes are those of the new models.
  if (record.when == PlaceRecord::When::kStart) {
    steps_.SetList(record.place.list);
  }
}

void PlaceHistory::Add(const LogRecord& record) {
  if (wants_record_) {
    events_.emplace_back(record);
    record_before_.reset();
    wants_record_ = false;
    return;
  }
  record_before_ = record;
}

bool PlaceHistory::IsWanted(const ChangeRecord& change) const {
  const bool is_entry =
      entries_.count(change.path) > 0 ||
      (change.kind == What::kRenamed && entries_.count(change.old_path) > 0);
  if (!is_entry || leaf_.empty() || change.kind != What::kValue) {
    return is_entry;
  }
  return IsOrIsBelow(change.leaf, leaf_);
}

// Calls on the entry as a whole touch its leaves too.
bool PlaceHistory::IsWanted(const std::string& path) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const std::string& entry) {
                       const std::string top = entry == "/" ? "" : entry;
                       if (leaf_.empty())
                         return !top.empty() && IsOrIsBelow(path, top);
                       return IsOrIsBelow(path, top + "/" + leaf_) ||
                              (!top.empty() && path == top);
                     });
}

void PlaceHistory::Add(const ChangeRecord& change) {
  steps_.Add(change);
  if (IsWanted(change)) changes_.push_back(change);
}

void PlaceHistory::Add(const CallRecord& call) {
  if (call.number == 0) return;
  std::vector<ChangeRecord> changes = std::exchange(changes_, {});
  if (!changes.empty() || (IsWrite(call.function) && IsWanted(call.path))) {
    Keep(call, std::move(changes));
    return;
  }
  if (IsLocal(call.function)) return;
  if (IsWanted(call.path)) {
    CountRead(call);
  } else {
    NoteRead(call);
  }
}

void PlaceHistory::Keep(const CallRecord& call,
                        std::vector<ChangeRecord> changes) {
  if (touches_ == kMostTouches) {
    ++left_out_;
    return;
  }
  ++touches_;
  if (record_before_) {
    events_.emplace_back(*std::exchange(record_before_, std::nullopt));
  }
  NoteCopy(call);
  events_.emplace_back(Touch{call, std::move(changes)});
  wants_record_ = true;
}

void PlaceHistory::CountRead(const CallRecord& call) {
  const auto [known, is_new] = reads_.try_emplace(
      {call.pass, call.function, call.path, call.error}, events_.size());
  if (is_new) {
    events_.emplace_back(Reads{call.pass, call.function, call.path, call.error,
                               call.reason, 0, call.number});
  }
  ++std::get<Reads>(events_[known->second]).count;
}

void PlaceHistory::NoteRead(const CallRecord& call) {
  // What is masked may be any two values.
  if (call.error != 0 || call.output.empty() ||
      call.output.find(Secrets::kMask) != std::string::npos) {
    return;
  }
  const auto [entry, leaf] = EntryAndLeaf(call.path);
  if (entry.empty() || lists_.count(WithoutKeys(entry)) == 0) return;
  if (call.pass != read_pass_) other_reads_.clear();
  read_pass_ = call.pass;
  other_reads_[leaf] = {entry, call.output};
}

void PlaceHistory::NoteCopy(const CallRecord& call) {
  if (call.error != 0 || call.pass != read_pass_) return;
  const auto [entry, leaf] = EntryAndLeaf(call.path);
  const auto read = other_reads_.find(leaf);
  if (read == other_reads_.end() || read->second.value != call.input) return;
  auto source = std::find_if(sources_.begin(), sources_.end(),
                             [&](const CopySource& known) {
                               return known.entry == read->second.entry;
                             });
  if (source == sources_.end()) {
    source = sources_.insert(source, CopySource{read->second.entry, {}});
  }
  if (std::find(source->leaves.begin(), source->leaves.end(), leaf) ==
      source->leaves.end()) {
    source->leaves.push_back(leaf);
  }
}

}  // namespace kit::host
