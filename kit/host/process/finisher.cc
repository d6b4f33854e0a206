#include "kit/host/process/finisher.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "kit/host/failure.h"
#include "kit/host/moves.h"
#include "kit/host/process/checksum.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/protocol.h"

namespace kit::host {
namespace {

// Changed entries per list, lists in the order of their first change.
class ListCounter {
 public:
  void Add(const control::EntryChange& entry) {
    const auto [known, is_new] = index_.emplace(entry.list, lists_.size());
    if (is_new) lists_.push_back({{entry.list}, {}});
    List& list = lists_[known->second];
    if (entry.kind == control::ChangeKind::kChanged) {
      ++list.totals.changed;
      return;
    }
    ++(entry.kind == control::ChangeKind::kCreated ? list.totals.created
                                                   : list.totals.deleted);
    list.moves.Add(entry, entry.entry);
  }

  // Takes those that only got other keys out of the created and the deleted
  // ones; how many each pass gave them to.
  std::vector<RekeyedEntries> FindMoves(const ChangeCounter& changes) {
    std::vector<RekeyedEntries> found;
    for (List& list : lists_) {
      std::map<uint32_t, uint64_t> by_pass;
      for (const auto& [deleted, created] : list.moves.Pairs()) {
        ++by_pass[changes.CreatorOf(created)];
        ++list.totals.rekeyed;
        --list.totals.created;
        --list.totals.deleted;
      }
      for (const auto& [pass, count] : by_pass) {
        found.push_back({pass, list.totals.list, count});
      }
    }
    return found;
  }

  template <typename Sink>
  void ForEach(const Sink& sink) const {
    for (const List& list : lists_) sink(list.totals);
  }

 private:
  struct List {
    ListTotals totals;
    MoveFinder moves;
  };
  std::map<std::string, size_t> index_;
  std::vector<List> lists_;
};

// Tells a failed write apart from whatever else goes wrong in a save.
void Write(const std::function<void()>& write) {
  try {
    write();
  } catch (const std::system_error& error) {
    throw FailureError(
        {ExitCode::kOutputFailed,
         "the output cannot be written: " + error.code().message(),
         "make room, or choose another file with -o"});
  }
}

class Finisher {
 public:
  Finisher(const WorkerTask& task, const control::Database& database,
           const PluginRun& run, const Channel& channel, int output)
      : task_(task),
        database_(database),
        trial_(run.trial),
        changes_(run.changes),
        channel_(channel),
        output_(output) {}

  void Run() {
    try {
      CheckThreads();
      const bool valid = Validate();
      if (valid) JudgeTrial();
      if (task_.count_changes || task_.send_entries) Compare();
      if (task_.count_leaves) CountLeaves();
      Inspect();
      TellPlaces();
      if (valid && output_ >= 0) Save();
      channel_.Send(DoneMessage{written_});
    } catch (const FailureError& error) {
      channel_.Send(FailureMessage{error.failure()});
    } catch (const std::exception& error) {
      channel_.Send(FailureMessage{UnexpectedFailure(
          error, fmt::format(" while {}", Describe(phase_)))});
    }
  }

 private:
  void Enter(Phase phase) {
    phase_ = phase;
    channel_.Send(PhaseMessage{phase});
  }

  // Its handlers of pthread_atfork have run here.
  void CheckThreads() const {
    // The folder has a link from itself, from its parent, and from each thread.
    struct stat threads = {};
    if (stat("/proc/self/task", &threads) != 0 || threads.st_nlink == 3) return;
    throw FailureError(
        {ExitCode::kPluginDied,
         "the plug-in starts threads in processes that are forked from its own",
         "start none in a handler of pthread_atfork"});
  }

  bool Validate() {
    Enter(Phase::kValidating);
    const std::vector<control::Violation> violations = database_.Validate();
    for (const control::Violation& violation : violations) {
      channel_.Send(ViolationMessage{violation});
    }
    channel_.Send(ValidatedMessage{});
    return violations.empty();
  }

  // The run itself has succeeded.
  void JudgeTrial() {
    using End = TrialOutcome::End;
    SchemasMessage message{SchemaEffect::kNone, 0};
    if (trial_.end == End::kUnknown) {
      message.effect = SchemaEffect::kUnknown;
    } else if (trial_.end == End::kDied) {
      message.effect = SchemaEffect::kDies;
    } else if (trial_.result != 0) {
      message = {SchemaEffect::kFails, trial_.result};
    } else if (trial_.violations > 0) {
      message = {SchemaEffect::kInvalid, static_cast<int>(trial_.violations)};
    } else if (trial_.end == End::kReturned &&
               trial_.saved != ChecksumOf(database_, format())) {
      message.effect = SchemaEffect::kOtherResult;
    }
    channel_.Send(message);
  }

  control::Format format() const {
    return task_.format.value_or(database_.input_format());
  }

  void Compare() {
    Enter(Phase::kComparing);
    ListCounter counter;
    database_.Diff(
        [this, &counter](const control::EntryChange& entry) {
          counter.Add(entry);
          if (task_.send_entries) channel_.Send(EntryMessage{entry});
        },
        task_.send_entries);
    for (RekeyedEntries& entries : counter.FindMoves(changes_)) {
      channel_.Send(RekeyedMessage{std::move(entries)});
    }
    counter.ForEach([this](const ListTotals& totals) {
      channel_.Send(ListMessage{totals});
    });
  }

  void CountLeaves() {
    constexpr control::Side kResult = control::Side::kResult;
    channel_.Send(LeafCountsMessage{kResult, database_.CountLeaves(kResult)});
  }

  void Inspect() {
    if (!task_.inspection.result) return;
    for (Finding& finding : task_.inspection.result(database_)) {
      channel_.Send(FindingMessage{std::move(finding)});
    }
  }

  void TellPlaces() {
    for (const std::string& path : task_.places) {
      const auto number = static_cast<uint32_t>(&path - &task_.places[0]);
      channel_.Send(
          PlaceMessage{{PlaceRecord::When::kResult, number,
                        database_.LookAt(control::Side::kResult, path)}});
    }
  }

  void Save() {
    Enter(Phase::kSaving);
    database_.Save(format(), [this](std::string_view piece) {
      Write([this, piece] { WriteAll(output_, piece); });
      written_.Add(piece);
    });
  }

  const WorkerTask& task_;
  const control::Database& database_;
  const TrialOutcome& trial_;
  const ChangeCounter& changes_;
  const Channel& channel_;
  int output_;
  Phase phase_ = Phase::kValidating;
  Checksum written_;
};

// Out of the way of the standard descriptors, which the plug-in may have
// closed.
void MoveAway(FileDescriptor& descriptor) {
  const int moved = fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (moved < 0) _exit(kConnectionLost);
  descriptor = FileDescriptor(moved);
}

// In the forked process, to its end.
[[noreturn]] void Finish(const WorkerTask& task,
                         const control::Database& database,
                         const PluginRun& run, const ProcessState& state,
                         const Channel& worker_channel, pid_t supervisor) {
  state.Restore();
  std::fflush(nullptr);  // what the plug-in has printed
  std::vector<FileDescriptor> handed =
      worker_channel.ReceiveDescriptors(task.has_output ? 3 : 2);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != supervisor) _exit(EXIT_FAILURE);
  std::vector<int> kept;
  for (FileDescriptor& descriptor : handed) {
    MoveAway(descriptor);
    kept.push_back(descriptor.get());
  }
  dup2(kept[1], STDOUT_FILENO);
  dup2(kept[1], STDERR_FILENO);
  CloseAllBut(kept);
  const int output = task.has_output ? kept[2] : -1;
  const Channel channel(std::move(handed[0]));
  Finisher(task, database, run, channel, output).Run();
  std::fflush(nullptr);
  // The memory goes with the process; tearing it down takes long.
  _exit(EXIT_SUCCESS);
}

}  // namespace

void RunFinisher(const WorkerTask& task, const control::Database& database,
                 const PluginRun& run, const ProcessState& state,
                 const Channel& worker_channel, pid_t supervisor) {
  try {
    Finish(task, database, run, state, worker_channel, supervisor);
  } catch (const std::bad_alloc&) {
    // There may be no channel yet to say so.
    _exit(kMemoryLost);
  }
}

}  // namespace kit::host
