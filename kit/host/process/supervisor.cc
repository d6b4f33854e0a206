#include "kit/host/process/supervisor.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "kit/host/process/channel.h"
#include "kit/host/process/child_end.h"
#include "kit/host/process/descendants.h"
#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/interrupt.h"
#include "kit/host/process/step_timer.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTick(200);
// A plug-in that has made no call for so long is said to hang.
constexpr std::chrono::seconds kIdleTime(1);
// Until killed processes are gone; only the system can keep them longer.
constexpr std::chrono::seconds kDyingTime(10);
constexpr std::chrono::milliseconds kDyingTick(5);
// What is read in one go, so that a flood can't keep the rest from happening.
constexpr int kMaxReceives = 30;
constexpr int kMaxChunks = 16;
constexpr int kMaxLastGoes = 1000;  // at the end
constexpr size_t kMaxJournal = size_t{1} << 30;
constexpr size_t kMaxPluginOutput = size_t{64} << 10;
constexpr char kNoteTheCall[] =
    "correct the plug-in; --trace shows every ConfD call up to this point";
constexpr char kClosed[] = "it is closed, or its descriptor is another file's";
constexpr char kGiveMoreTime[] =
    "give it more time with --timeout S, or any time with --timeout 0";

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// SIGCHLD as something to poll for.
class ChildSignal {
 public:
  ChildSignal() {
    signal(SIGCHLD, SIG_DFL);  // inherited "ignore" would lose the status
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &set, &previous_);
    fd_ = FileDescriptor(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!fd_.valid()) ThrowErrno("signalfd");
  }
  ~ChildSignal() { Restore(); }
  ChildSignal(const ChildSignal&) = delete;
  ChildSignal& operator=(const ChildSignal&) = delete;

  int fd() const { return fd_.get(); }
  void Restore() const { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  void Clear() const {
    signalfd_siginfo info;
    while (read(fd_.get(), &info, sizeof(info)) > 0) {
    }
  }

 private:
  sigset_t previous_;
  FileDescriptor fd_;
};

template <typename... Kinds>
bool IsAnyOf(const Message& message) {
  return (std::holds_alternative<Kinds>(message) || ...);
}

// Whose code runs where messages come from. Where the plug-in's does, any of
// them may be its own work.
enum class Speaker { kReader, kPlugin, kFinisher };

bool MaySay(Speaker speaker, const Message& message) {
  switch (speaker) {
    case Speaker::kReader:
      return IsAnyOf<PhaseMessage, InputMessage, DigestMessage, CarriedMessage,
                     LossMessage, DeviceMessage, SecretsMessage, FindingMessage,
                     PlaceMessage, StartChangeMessage, LeafCountsMessage,
                     FailureMessage>(message);
    case Speaker::kPlugin:
      return IsAnyOf<PhaseMessage, LogMessage, CallMessage, ChangeMessage,
                     PassMessage, ResultMessage, FailureMessage>(message);
    case Speaker::kFinisher:
      return IsAnyOf<PhaseMessage, ViolationMessage, ValidatedMessage,
                     SchemasMessage, ListMessage, RekeyedMessage, EntryMessage,
                     FindingMessage, PlaceMessage, LeafCountsMessage,
                     FailureMessage, DoneMessage>(message);
  }
  return false;
}

bool MayFailWith(Phase phase, ExitCode code) {
  switch (code) {
    case ExitCode::kBadInput:
      return !IsPluginPhase(phase);
    case ExitCode::kNotLoaded:
      return phase == Phase::kLoading;
    case ExitCode::kOutputFailed:
      return phase == Phase::kSaving;
    case ExitCode::kPluginDied:
    case ExitCode::kInternal:
      return true;
    default:
      return false;
  }
}

// About as much memory as they take. A plug-in that runs wild may tell of
// anything.
size_t SizeOf(const PassTotals& totals) {
  size_t size = sizeof totals;
  for (const FunctionTotals& function : totals.functions) {
    size += sizeof function + function.function.size();
  }
  for (const ListTotals& list : totals.lists) {
    size += sizeof list + list.list.size();
  }
  for (const FailedCalls& calls : totals.failures) {
    size += sizeof calls + calls.function.size() + calls.node.size() +
            calls.path.size() + calls.reason.size();
  }
  return size;
}

[[noreturn]] void RejectMessage() {
  throw ProtocolError("a message out of place");
}

// Of all that the file holds.
Checksum ReadChecksum(int fd) {
  Checksum checksum;
  std::vector<char> chunk(size_t{1} << 16);
  for (;;) {
    const ssize_t got = pread(fd, chunk.data(), chunk.size(),
                              static_cast<off_t>(checksum.bytes));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) ThrowErrno("reading the output");
    if (got == 0) return checksum;
    checksum.Add({chunk.data(), static_cast<size_t>(got)});
  }
}

class Supervisor {
 public:
  Supervisor(const WorkerTask& task, const Supervision& supervision,
             Listener& listener)
      : task_(task),
        supervision_(supervision),
        listener_(listener),
        progress_(MakeSharedProgress()),
        output_(MakePipe()),
        timer_(supervision.timeout_s) {
    outcome_.config = ConfigName(task.config);
    outcome_.plugin = task.plugin;
    outcome_.schemas_loaded = task.schemas_loaded;
    AdoptDescendants();
  }

  ~Supervisor() {
    if (worker_ > 0) EndDescendants(0);
    SetInterruptWorker(0);
  }
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  Outcome Run() {
    StartWorker();
    Watch();
    // The plug-in's time is over, whatever it came to.
    outlived_ = !EndDescendants(finisher_);
    if (finisher_ > 0 && !outlived_ && HandOver()) {
      Watch();
      outlived_ = !EndDescendants(0);
    }
    ReadOutput(kMaxLastGoes);
    Judge();
    outcome_.calls = progress_->calls();
    outcome_.calls_by_function = progress_->CallsByFunction();
    outcome_.last_call = progress_->LastCall();
    return std::move(outcome_);
  }

 private:
  void StartWorker() {
    auto [ours, theirs] = MakeConnection();
    receiver_ = Receiver(std::move(ours));
    const pid_t parent = getpid();
    std::fflush(nullptr);  // or the worker prints it again
    InterruptBlock block;
    worker_ = fork();
    if (worker_ < 0) ThrowErrno("fork");
    if (worker_ == 0) {
      block.ResetInChild();
      BecomeWorker(std::move(theirs), parent);
    }
    SetInterruptWorker(worker_);
    watched_ = worker_;
    fcntl(output_.read_end.get(), F_SETFL, O_NONBLOCK);
  }

  [[noreturn]] void BecomeWorker(FileDescriptor connection, pid_t parent) {
    child_signal_.Restore();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(EXIT_FAILURE);
    dup2(output_.write_end.get(), STDOUT_FILENO);
    dup2(output_.write_end.get(), STDERR_FILENO);
    // What the plug-in prints is not to be lost when it crashes.
    setvbuf(stdout, nullptr, _IOLBF, 0);
    RunWorker(task_, std::move(connection), *progress_, parent);
  }

  // Until the watched process has ended, or is not worth watching any more.
  void Watch() {
    timer_.Start();
    while (!end_ && !is_over_ && !stopped_by_ && !timed_out_) {
      WaitForNews();
      Reap();
      // What it said before its end may be more than one go takes.
      for (int i = 0; i < (end_ ? kMaxLastGoes : 1); ++i) {
        if (!ReadMessages()) break;
      }
      if (stop_) OnStop(*std::exchange(stop_, std::nullopt));
      ReadOutput(kMaxChunks);
      CheckTime();
      timer_.RunUncounted(
          [this] { listener_.OnTick(phase_, progress_->calls()); });
    }
  }

  void WaitForNews() const {
    std::array<pollfd, 3> fds = {{{receiver_.fd(), POLLIN, 0},
                                  {output_.read_end.get(), POLLIN, 0},
                                  {child_signal_.fd(), POLLIN, 0}}};
    const auto wait = static_cast<int>(timer_.Left(kTick).count());
    if (poll(fds.data(), fds.size(), wait) < 0 && errno != EINTR) {
      ThrowErrno("poll");
    }
  }

  void Reap() {
    child_signal_.Clear();
    ChildEnd end = {};
    pid_t pid = 0;
    while ((pid = wait4(-1, &end.status, WNOHANG | WUNTRACED, &end.usage)) >
           0) {
      if (pid != watched_) continue;  // the plug-in left it
      if (WIFSTOPPED(end.status)) {
        stop_ = WSTOPSIG(end.status);
      } else {
        end_ = end;
      }
    }
  }

  void OnStop(int signal) {
    if (watched_ == worker_ && IsPluginPhase(phase_)) {
      stopped_by_ = signal;
    } else {
      // Nobody but somebody outside has done this, who can stop this program.
      kill(watched_, SIGCONT);
    }
  }

  void CheckTime() {
    timer_.Tick();
    const uint64_t calls = progress_->calls();
    if (calls != calls_seen_) last_call_at_ = timer_.spent();
    calls_seen_ = calls;
    if (!end_ && !is_over_ && timer_.IsOver()) timed_out_ = true;
  }

  // False if one of them, apart from `spared`, can't be ended.
  bool EndDescendants(pid_t spared) {
    const auto give_up = Clock::now() + kDyingTime;
    while (KillDescendants(worker_, spared) > 0) {
      if (Clock::now() > give_up) return false;
      pollfd news = {child_signal_.fd(), POLLIN, 0};
      poll(&news, 1, static_cast<int>(kDyingTick.count()));
      Reap();
    }
    return true;
  }

  // Gives the finisher what it needs; false when it isn't there any more.
  bool HandOver() {
    siginfo_t info = {};
    if (end_ || waitid(P_PID, static_cast<id_t>(finisher_), &info,
                       WEXITED | WNOHANG | WNOWAIT) != 0) {
      return false;
    }
    auto [ours, theirs] = MakeConnection();
    std::vector<int> fds = {theirs.get(), output_.write_end.get()};
    if (task_.has_output) fds.push_back(supervision_.output_fd);
    try {
      receiver_.SendDescriptors(fds);
    } catch (const std::system_error&) {
      corrupted_ = kClosed;
      return false;
    }
    // Closing this end would take what was sent away from the finisher.
    worker_receiver_ = std::exchange(receiver_, Receiver(std::move(ours)));
    is_handed_over_ = true;
    is_over_ = false;
    return true;
  }

  // One go; whether there may be more.
  bool ReadMessages() {
    try {
      for (int i = 0; i < kMaxReceives; ++i) {
        const bool any =
            receiver_.Receive([this](Message& message) { Handle(message); });
        if (!any) return false;
      }
    } catch (const ProtocolError& error) {
      // Only code that runs wild in the process can write this.
      if (!is_over_) corrupted_ = error.what();
      is_over_ = true;
      return false;
    }
    return !is_over_;
  }

  void ReadOutput(int max_chunks) {
    std::array<char, 1 << 16> chunk;
    for (int i = 0; i < max_chunks; ++i) {
      const ssize_t got =
          read(output_.read_end.get(), chunk.data(), chunk.size());
      if (got <= 0) break;
      outcome_.plugin_output.append(chunk.data(), static_cast<size_t>(got));
      if (outcome_.plugin_output.size() > 2 * kMaxPluginOutput) TrimOutput();
    }
  }

  void TrimOutput() {
    std::string& output = outcome_.plugin_output;
    if (output.size() <= kMaxPluginOutput) return;
    const size_t excess = output.size() - kMaxPluginOutput;
    output.erase(0, excess);
    trimmed_ += excess;
  }

  void Handle(Message& message) {
    if (is_over_) return;  // it has said its last word
    if (done_ || !MaySay(speaker(), message)) RejectMessage();
    std::visit([this](auto& m) { On(m); }, message);
  }

  Speaker speaker() const {
    if (is_handed_over_) return Speaker::kFinisher;
    return phase_ < Phase::kLoading ? Speaker::kReader : Speaker::kPlugin;
  }

  void On(const PhaseMessage& message) {
    if (message.phase < phase_ ||
        is_handed_over_ != (message.phase >= Phase::kValidating)) {
      RejectMessage();
    }
    // Loading and running the plug-in are one step.
    const bool same_step =
        IsPluginPhase(phase_) && IsPluginPhase(message.phase);
    if (!same_step) timer_.Start();
    phase_ = message.phase;
    if (phase_ == Phase::kComparing) outcome_.compared = true;
  }
  void On(const InputMessage& message) {
    outcome_.format = task_.format.value_or(message.format);
  }
  void On(DigestMessage& message) {
    outcome_.input_digest = std::move(message.digest);
  }
  void On(LogMessage& message) {
    has_logged_ = true;
    if (!HasRoomFor(message.record.text.size())) return;
    timer_.RunUncounted([&] { listener_.OnLog(std::move(message.record)); });
  }
  void On(CallMessage& message) {
    const CallRecord& call = message.call;
    if (supervision_.keep_calls &&
        !HasRoomFor(call.function.size() + call.path.size() +
                    call.input.size() + call.output.size() +
                    call.reason.size())) {
      return;
    }
    timer_.RunUncounted([&] { listener_.OnCall(std::move(message.call)); });
  }
  void On(ChangeMessage& message) {
    const ChangeRecord& change = message.change;
    if (supervision_.keep_calls &&
        !HasRoomFor(change.list.size() + change.path.size() +
                    change.old_path.size() + change.leaf.size() +
                    change.before.value_or("").size() +
                    change.after.value_or("").size())) {
      return;
    }
    timer_.RunUncounted([&] { listener_.OnChange(std::move(message.change)); });
  }
  void On(PassMessage& message) {
    if (!HasRoomFor(SizeOf(message.totals))) return;
    listener_.OnPass(std::move(message.totals));
  }
  // A program that never ends may log all the time.
  bool HasRoomFor(size_t text_size) {
    journal_size_ += sizeof(CallRecord) + text_size;
    if (journal_size_ <= kMaxJournal) return true;
    Fail(ExitCode::kPluginDied,
         fmt::format("the plug-in did not come to an end within {} MiB of log "
                     "records and calls",
                     kMaxJournal >> 20),
         kNoteTheCall);
    is_over_ = true;
    return false;
  }
  void On(const ResultMessage& message) {
    if (phase_ != Phase::kUpdating || message.finisher == worker_) {
      RejectMessage();
    }
    if (message.calls != progress_->calls()) {
      throw ProtocolError("its count of calls was overwritten");
    }
    outcome_.result = message.result;
    outcome_.open_cursors = message.open_cursors;
    outcome_.unreleased_values = message.unreleased_values;
    is_over_ = true;
    if (message.result != 0) return;
    finisher_ = message.finisher;
    watched_ = finisher_;
    end_.reset();
  }
  void On(CarriedMessage& message) {
    outcome_.carried.push_back(std::move(message.module));
  }
  void On(LossMessage& message) {
    outcome_.losses.push_back(std::move(message.loss));
  }
  void On(ViolationMessage& message) {
    outcome_.violations.push_back(std::move(message.violation));
  }
  void On(const ValidatedMessage&) { outcome_.validated = true; }
  void On(const SchemasMessage& message) { outcome_.schemas = message; }
  void On(ListMessage& message) {
    outcome_.changes.push_back(std::move(message.totals));
  }
  void On(DeviceMessage& message) { outcome_.device = std::move(message.name); }
  void On(const SecretsMessage& message) {
    listener_.OnSecrets(message.values);
  }
  void On(PlaceMessage& message) {
    if (message.record.number >= task_.places.size()) RejectMessage();
    listener_.OnPlace(std::move(message.record));
  }
  void On(FindingMessage& message) {
    outcome_.findings.push_back(std::move(message.finding));
  }
  void On(const RekeyedMessage& message) {
    listener_.OnRekeyed(message.entries);
  }
  void On(EntryMessage& message) {
    outcome_.entries.push_back(std::move(message.entry));
  }
  void On(StartChangeMessage& message) {
    timer_.RunUncounted(
        [&] { listener_.OnStartChange(std::move(message.change)); });
  }
  void On(LeafCountsMessage& message) {
    if (message.side == control::Side::kInput) {
      outcome_.input_leaves = std::move(message.counts);
    } else {
      outcome_.result_leaves = std::move(message.counts);
    }
  }
  void On(FailureMessage& message) {
    if (!MayFailWith(phase_, message.failure.code)) RejectMessage();
    outcome_.failure = std::move(message.failure);
    is_over_ = true;
  }
  void On(const DoneMessage& message) { done_ = message; }

  void Judge() {
    TrimOutput();
    if (trimmed_ > 0) {
      outcome_.plugin_output.insert(
          0, fmt::format("[... {} bytes ...]", trimmed_));
    }
    JudgeRun();
    NamePlugin();
    if (outcome_.failure && outcome_.failure->code == ExitCode::kPluginDied &&
        progress_->out_of_memory()) {
      if (const auto memory = limits_.OfMemory()) FailForLimit(*memory);
    }
  }

  // A failure of the plug-in is one with this configuration; which plug-in it
  // was comes last.
  void NamePlugin() {
    if (!outcome_.failure) return;
    Failure& failure = *outcome_.failure;
    if (failure.code != ExitCode::kPluginFailed &&
        failure.code != ExitCode::kPluginDied) {
      return;
    }
    failure.file = outcome_.config;
    failure.details.push_back("plug-in: " + task_.plugin);
  }

  void JudgeRun() {
    if (outcome_.failure) return;
    if (corrupted_) {
      FailForConnection(*corrupted_);
    } else if (outlived_) {
      Fail(ExitCode::kPluginDied,
           "the plug-in started a process that cannot be ended",
           "end it by hand, and let the plug-in leave none behind");
    } else if (stopped_by_) {
      FailPlugin(fmt::format("stopped with {}", DescribeSignal(*stopped_by_)));
    } else if (timed_out_) {
      JudgeTimeout();
    } else if (outcome_.result.value_or(0) != 0) {
      Fail(ExitCode::kPluginFailed,
           fmt::format("the plug-in failed: update returned {}",
                       *outcome_.result),
           AdviceOnFailure());
    } else if (!HasSucceeded()) {
      JudgeDeath();
    } else if (!outcome_.violations.empty()) {
      Fail(ExitCode::kInvalidResult,
           fmt::format("the result breaks the new model in {}",
                       Counted(outcome_.violations.size(), "place", "places")),
           "a device would give the upgrade up; correct the configuration or "
           "the plug-in");
    } else if (task_.has_output &&
               ReadChecksum(supervision_.output_fd) != done_->written) {
      Fail(ExitCode::kOutputFailed,
           "the output does not hold what was written to it",
           "see what else writes there, or choose another file with -o");
      outcome_.failure->file.clear();
    }
  }

  // Whether the finisher came to its end.
  bool HasSucceeded() const {
    return is_handed_over_ && end_ && WIFEXITED(end_->status) &&
           WEXITSTATUS(end_->status) == EXIT_SUCCESS && done_ &&
           outcome_.result == 0 && outcome_.validated;
  }

  const char* AdviceOnFailure() const {
    return !has_logged_
               ? "it logged nothing; --trace shows which ConfD calls failed"
               : "its log (--log) says why, --trace which ConfD calls failed";
  }

  void JudgeTimeout() {
    const double limit = supervision_.timeout_s;
    if (IsPluginPhase(phase_)) {
      const std::chrono::duration<double> idle = timer_.spent() - last_call_at_;
      if (idle < kIdleTime && idle.count() < limit / 2) {
        FailPlugin(fmt::format("was still at work after {} s, {} made", limit,
                               Counted(progress_->calls(), "call", "calls")),
                   kGiveMoreTime);
      } else {
        FailPlugin(fmt::format(
            "hung: it did not finish within {} s, and made no call in the last "
            "{:.1f} s",
            limit, idle.count()));
      }
      return;
    }
    const ExitCode code = phase_ == Phase::kReading  ? ExitCode::kBadInput
                          : phase_ == Phase::kSaving ? ExitCode::kOutputFailed
                                                     : ExitCode::kInternal;
    Fail(
        code,
        fmt::format("{} was not finished within {} s", Describe(phase_), limit),
        kGiveMoreTime);
  }

  // A process did not come to its end.
  void JudgeDeath() {
    if (!end_) {
      FailForConnection("the process that it names is none of the run's");
      return;
    }
    if (const auto exhaustion = limits_.ThatEnded(*end_)) {
      FailForLimit(*exhaustion);
      return;
    }
    if (WIFEXITED(end_->status) &&
        WEXITSTATUS(end_->status) == kConnectionLost) {
      FailForConnection(kClosed);
      return;
    }
    if (WIFEXITED(end_->status) && WEXITSTATUS(end_->status) == kMemoryLost) {
      const Failure failure =
          UnexpectedFailure(std::bad_alloc(), " while handing the result over");
      Fail(failure.code, failure.reason, failure.advice);
      return;
    }
    const std::string death = DescribeEnd(*end_);
    if (IsPluginPhase(phase_)) {
      FailPlugin(death);
      return;
    }
    const bool killed =
        WIFSIGNALED(end_->status) && WTERMSIG(end_->status) == SIGKILL;
    Fail(ExitCode::kInternal,
         fmt::format("this program {} while {}", death, Describe(phase_)),
         killed ? "somebody ended it, or the machine ran out of memory or "
                  "a limit was reached; run again with more"
                : "report this together with the configuration");
    AddPluginOutput();
  }

  void FailForLimit(const Limits::Exhaustion& exhaustion) {
    Fail(ExitCode::kInternal,
         fmt::format("this program {} while {}", exhaustion.reason,
                     Describe(phase_)),
         exhaustion.advice);
  }

  void FailForConnection(const std::string& reason) {
    Fail(ExitCode::kPluginDied,
         "the plug-in broke the host's own connection: " + reason,
         kNoteTheCall);
  }

  void FailPlugin(const std::string& death, const char* advice = kNoteTheCall) {
    Fail(ExitCode::kPluginDied,
         fmt::format("the plug-in {} (while {})", death, Describe(phase_)),
         advice);
    AddPluginOutput();
    const auto last_call = progress_->LastCall();
    outcome_.failure->details.push_back(
        last_call ? fmt::format("last ConfD call, number {}: {}",
                                progress_->calls(), *last_call)
                  : "it made no ConfD call");
  }

  // An assertion's text is the better half of the message.
  void AddPluginOutput() {
    if (outcome_.plugin_output.empty()) return;
    std::vector<std::string>& details = outcome_.failure->details;
    details.push_back("it printed:");
    for (const std::string_view line : Lines(outcome_.plugin_output)) {
      details.push_back(fmt::format("  {}", line));
    }
  }

  void Fail(ExitCode code, std::string reason, std::string advice) {
    outcome_.failure =
        Failure{code, std::move(reason), std::move(advice), outcome_.config};
  }

  const WorkerTask& task_;
  const Supervision& supervision_;
  Listener& listener_;
  const Limits limits_;
  ChildSignal child_signal_;
  SharedProgress progress_;
  Receiver receiver_;         // of what the watched process says
  Receiver worker_receiver_;  // once that is the finisher
  Pipe output_;
  StepTimer timer_;
  pid_t worker_ = 0;
  pid_t finisher_ = 0;  // once update has succeeded
  pid_t watched_ = 0;   // the one that the run depends on
  Phase phase_ = Phase::kStarting;
  uint64_t trimmed_ = 0;         // bytes of the plug-in's output
  bool is_handed_over_ = false;  // from the worker to the finisher
  bool is_over_ = false;         // the watched process has said its last word
  std::optional<ChildEnd> end_;  // of the watched process
  std::optional<int> stop_;      // a signal that stopped it, to be dealt with
  std::optional<int> stopped_by_;
  std::optional<DoneMessage> done_;
  std::optional<std::string> corrupted_;
  size_t journal_size_ = 0;
  bool has_logged_ = false;
  uint64_t calls_seen_ = 0;
  StepTimer::Clock::duration last_call_at_{};  // of the step's time
  bool timed_out_ = false;
  bool outlived_ = false;
  Outcome outcome_;
};

}  // namespace

Outcome Supervise(const WorkerTask& task, const Supervision& supervision,
                  Listener& listener) {
  return Supervisor(task, supervision, listener).Run();
}

}  // namespace kit::host
