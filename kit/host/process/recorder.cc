#include "kit/host/process/recorder.h"

#include <exception>
#include <utility>

#include "kit/host/process/protocol.h"
#include "kit/host/secrets.h"

namespace kit::host {
namespace {

// Kinds of failure of one pass that are told apart; a program may ask for a
// new place each time.
constexpr size_t kMaxFailures = 1000;

// Values are released without a word to the daemon, by the million, and only
// somebody who wants to see values is told: those calls are shown, not counted.
bool IsRelease(std::string_view function) {
  constexpr std::string_view kReleases = "confd_free_";
  return function.substr(0, kReleases.size()) == kReleases;
}

}  // namespace

Recorder::Recorder(const Channel& channel, Progress& progress,
                   const PassTable& passes, Recording recording)
    : channel_(channel),
      progress_(progress),
      recording_(recording),
      tracker_(passes) {
  control::SetObserver(this);
}

Recorder::~Recorder() { control::SetObserver(nullptr); }

void Recorder::OnLog(std::string_view text) {
  const std::lock_guard<std::mutex> lock(log_mutex_);
  const uint32_t pass = tracker_.Take(text);
  current_pass_ = tracker_.current();
  channel_.Send(LogMessage{{calls_, pass, std::string(text)}});
}

template <typename Step>
void Recorder::Guard(const Step& step) {
  try {
    step();
  } catch (const std::exception&) {
    has_gaps_ = true;
  }
}

void Recorder::OnCall(const control::Call& call) {
  uint64_t number = 0;
  if (!IsRelease(call.function)) {
    progress_.Record(call);
    number = ++calls_;
    Guard([&] {
      FollowPass();
      Count(call);
    });
  }
  if (recording_.calls) Guard([&] { Tell(call, number); });
}

void Recorder::OnChange(const control::Change& change) {
  Guard([&] {
    FollowPass();
    changes_.Add(change);
    if (recording_.change_records) Tell(change);
  });
}

void Recorder::FollowPass() {
  const uint32_t pass = current_pass_;
  if (pass == totals_.pass) return;
  Flush(pass);
  totals_.pass = pass;
}

void Recorder::Count(const control::Call& call) {
  ++totals_.calls;
  FunctionTotals* totals = nullptr;
  for (FunctionTotals& known : totals_.functions) {
    if (known.function == call.function) totals = &known;
  }
  if (totals == nullptr) {
    totals = &totals_.functions.emplace_back();
    totals->function = call.function;
  }
  ++totals->calls;
  if (call.error == 0) return;
  ++totals->failed;
  CountFailure(call);
  KeepFailure(call);
}

void Recorder::CountFailure(const control::Call& call) {
  std::string node = WithoutKeys(call.path);
  std::string kind(call.function);
  kind += ' ';
  kind += std::to_string(call.error);
  kind += ' ';
  kind += node;
  if (failures_.size() == kMaxFailures && failures_.count(kind) == 0) return;
  const auto [known, is_new] =
      failures_.emplace(std::move(kind), totals_.failures.size());
  if (is_new) {
    totals_.failures.push_back({std::string(call.function), std::move(node),
                                call.error, 0, calls_, std::string(call.path),
                                std::string(call.reason)});
  }
  ++totals_.failures[known->second].count;
}

// Text is assigned, so that its memory is used again.
void Recorder::KeepFailure(const control::Call& call) {
  CallRecord& kept = totals_.last_failure;
  kept.number = calls_;
  kept.pass = totals_.pass;
  kept.function = call.function;
  kept.path = call.path;
  kept.result = call.result;
  kept.error = call.error;
  kept.reason = call.reason;
}

void Recorder::Tell(const control::Call& call, uint64_t number) const {
  channel_.Send(CallMessage{{number, current_pass_, std::string(call.function),
                             std::string(call.path), std::string(call.input),
                             std::string(call.output), call.result, call.error,
                             std::string(call.reason), call.nanoseconds}});
}

void Recorder::Tell(const control::Change& change) const {
  using Kind = control::Change::Kind;
  ChangeRecord record;
  record.call = calls_ + 1;
  record.pass = current_pass_;
  record.kind = change.kind;
  record.list = change.List();
  record.path = change.Path();
  if (change.kind == Kind::kRenamed) record.old_path = change.OldPath();
  if (change.kind == Kind::kValue) {
    record.leaf = change.Leaf();
    record.before = change.Before();
    record.after = change.After();
    record.default_value = change.Default();
  }
  record.leaves = change.Leaves();
  channel_.Send(ChangeMessage{std::move(record)});
}

void Recorder::TellTotals() { Flush(current_pass_); }

void Recorder::Flush(uint32_t next_pass) {
  totals_.lists = changes_.Take(next_pass);
  if (totals_.calls > 0 || !totals_.lists.empty()) {
    channel_.Send(PassMessage{std::exchange(totals_, {})});
  }
  failures_.clear();
}

}  // namespace kit::host
