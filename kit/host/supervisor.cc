#include "kit/host/supervisor.h"

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
#include <cstring>
#include <system_error>
#include <utility>

#include "kit/host/file_descriptor.h"
#include "kit/host/interrupt.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTick(200);
constexpr size_t kMaxPluginOutput = size_t{64} << 10;
constexpr char kNoteTheCall[] =
    "correct the plug-in; --verbose shows every ConfD call up to this point";

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

std::string DescribeSignal(int signal) {
  const char* name = sigabbrev_np(signal);
  return name == nullptr ? fmt::format("signal {}", signal)
                         : fmt::format("SIG{} ({})", name, strsignal(signal));
}

class Supervisor {
 public:
  Supervisor(const WorkerTask& task, const Supervision& supervision,
             Listener& listener)
      : task_(task),
        supervision_(supervision),
        listener_(listener),
        progress_(MakeSharedProgress()),
        messages_(MakePipe()),
        output_(MakePipe()) {
    report_.config = ConfigName(task.config);
    report_.plugin = task.plugin;
  }

  ~Supervisor() {
    if (worker_ <= 0) return;
    KillWorker(worker_);
    Reap();
  }
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  Report Run() {
    Start();
    bool running = true;
    while (running) {
      WaitForNews();
      running = !WorkerEnded();
      Drain();
      if (running) CheckDeadline();
      listener_.OnTick(*progress_);
    }
    Reap();
    Judge();
    report_.journal.SetTotals(progress_->calls(), progress_->CallsByFunction(),
                              progress_->LastCall());
    return std::move(report_);
  }

 private:
  void Start() {
    const pid_t parent = getpid();
    std::fflush(nullptr);  // or the worker prints it again
    InterruptBlock block;
    worker_ = fork();
    if (worker_ < 0) ThrowErrno("fork");
    if (worker_ == 0) {
      block.ResetInChild();
      BecomeWorker(parent);
    }
    SetInterruptWorker(worker_);
    messages_.write_end.Close();
    output_.write_end.Close();
    fcntl(messages_.read_end.get(), F_SETFL, O_NONBLOCK);
    fcntl(output_.read_end.get(), F_SETFL, O_NONBLOCK);
  }

  [[noreturn]] void BecomeWorker(pid_t parent) {
    child_signal_.Restore();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(EXIT_FAILURE);
    dup2(output_.write_end.get(), STDOUT_FILENO);
    dup2(output_.write_end.get(), STDERR_FILENO);
    // What the plug-in prints is not to be lost when it crashes.
    setvbuf(stdout, nullptr, _IOLBF, 0);
    messages_.read_end.Close();
    output_.read_end.Close();
    output_.write_end.Close();
    RunWorker(task_, messages_.write_end.get(), *progress_);
    std::fflush(nullptr);
    // The memory goes with the process; tearing it down takes long.
    _exit(EXIT_SUCCESS);
  }

  void WaitForNews() {
    std::array<pollfd, 3> fds = {{{messages_.read_end.get(), POLLIN, 0},
                                  {output_.read_end.get(), POLLIN, 0},
                                  {child_signal_.fd(), POLLIN, 0}}};
    auto wait = kTick;
    if (deadline_) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(
          *deadline_ - Clock::now());
      wait = std::clamp(left, std::chrono::milliseconds(0), kTick);
    }
    if (poll(fds.data(), fds.size(), static_cast<int>(wait.count())) < 0 &&
        errno != EINTR) {
      ThrowErrno("poll");
    }
  }

  // Leaves the worker as it is, so that its process group can still be named.
  bool WorkerEnded() {
    child_signal_.Clear();
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(worker_), &info,
               WEXITED | WNOHANG | WNOWAIT) != 0) {
      ThrowErrno("waitid");
    }
    if (info.si_pid == 0) return false;
    KillWorker(worker_);  // whatever it left behind
    return true;
  }

  void Reap() {
    const InterruptBlock block;
    while (waitpid(worker_, &status_, 0) < 0 && errno == EINTR) {
    }
    SetInterruptWorker(0);
    worker_ = 0;
  }

  void CheckDeadline() {
    if (!deadline_ || Clock::now() < *deadline_) return;
    timed_out_ = true;
    deadline_.reset();
    KillWorker(worker_);
  }

  void Drain() {
    Read(messages_.read_end, [this](std::string_view bytes) {
      if (!corrupted_) Handle(bytes);
    });
    Read(output_.read_end, [this](std::string_view bytes) {
      report_.plugin_output += bytes;
      if (report_.plugin_output.size() > 2 * kMaxPluginOutput) TrimOutput();
    });
  }

  // Reads what there is; closes the pipe at its end.
  template <typename Sink>
  static void Read(FileDescriptor& pipe, const Sink& sink) {
    std::array<char, 1 << 16> chunk;
    while (pipe.valid()) {
      const ssize_t got = read(pipe.get(), chunk.data(), chunk.size());
      if (got > 0) {
        sink(std::string_view(chunk.data(), static_cast<size_t>(got)));
      } else if (got == 0) {
        pipe.Close();
      } else if (errno != EINTR) {
        return;
      }
    }
  }

  void TrimOutput() {
    std::string& output = report_.plugin_output;
    if (output.size() <= kMaxPluginOutput) return;
    const size_t excess = output.size() - kMaxPluginOutput;
    output.erase(0, excess);
    trimmed_ += excess;
  }

  void Handle(std::string_view bytes) {
    try {
      reader_.Append(bytes);
      while (auto message = reader_.Next()) {
        std::visit([this](auto& m) { On(m); }, *message);
      }
    } catch (const ProtocolError& error) {
      // Only code that runs wild in the worker can write this.
      corrupted_ = error.what();
      KillWorker(worker_);
    }
  }

  void On(const PhaseMessage& message) {
    phase_ = message.phase;
    if (!IsPluginPhase(phase_)) {
      deadline_.reset();
    } else if (!deadline_ && supervision_.timeout_s > 0) {
      deadline_ = Clock::now() +
                  std::chrono::duration_cast<Clock::duration>(
                      std::chrono::duration<double>(supervision_.timeout_s));
    }
    if (phase_ == Phase::kComparing) report_.compared = true;
  }
  void On(const InputMessage& message) {
    report_.format = task_.format.value_or(message.format);
  }
  void On(LogMessage& message) {
    listener_.OnLog(message.text);
    report_.journal.AddLog(std::move(message.text));
  }
  void On(CallMessage& message) {
    listener_.OnCall(message.text);
    if (!supervision_.keep_calls) return;
    report_.journal.AddCall(std::move(message.text));
  }
  void On(const ResultMessage& message) {
    report_.result = message.result;
    report_.open_cursors = message.open_cursors;
  }
  void On(LossMessage& message) {
    report_.losses.push_back(std::move(message.loss));
  }
  void On(ViolationMessage& message) {
    report_.violations.push_back(std::move(message.violation));
  }
  void On(const ValidatedMessage&) { report_.validated = true; }
  void On(ListTotals& message) {
    report_.changes.push_back(std::move(message));
  }
  void On(EntryMessage& message) {
    report_.entries.push_back(std::move(message.entry));
  }
  void On(FailureMessage& message) {
    report_.failure = std::move(message.failure);
  }
  void On(const DoneMessage&) { done_ = true; }

  void Judge() {
    TrimOutput();
    if (trimmed_ > 0) {
      report_.plugin_output.insert(0,
                                   fmt::format("[... {} bytes ...]", trimmed_));
    }
    if (report_.failure) return;
    if (corrupted_) {
      Fail(ExitCode::kPluginDied,
           fmt::format("the plug-in broke the host's own connection: {}",
                       *corrupted_),
           kNoteTheCall);
    } else if (!done_) {
      JudgeDeath();
    } else if (report_.result != 0) {
      Fail(ExitCode::kPluginFailed,
           fmt::format("the plug-in failed: update returned {}",
                       report_.result.value_or(-1)),
           AdviceOnFailure());
    } else if (!report_.violations.empty()) {
      Fail(ExitCode::kInvalidResult,
           fmt::format("the result breaks the new model in {}",
                       Counted(report_.violations.size(), "place", "places")),
           "a device would give the upgrade up; correct the configuration or "
           "the plug-in");
    }
  }

  const char* AdviceOnFailure() const {
    return report_.journal.LogRecords().empty()
               ? "it logged nothing; --verbose shows which ConfD calls failed"
               : "its log says why, --verbose which ConfD calls failed";
  }

  // Not the plug-in's fault.
  void FailOutsidePlugin(const std::string& death) {
    const bool killed = WIFSIGNALED(status_) && WTERMSIG(status_) == SIGKILL;
    Fail(ExitCode::kInternal, "this program " + death,
         killed ? "somebody ended it, or the machine ran out of memory or a "
                  "limit was reached; run again with more"
                : "report this together with the configuration");
    report_.failure->file = report_.config;
    AddPluginOutput();
  }

  // The worker did not come to its end.
  void JudgeDeath() {
    const Phase phase = progress_->phase();
    std::string death;
    if (timed_out_) {
      death = fmt::format("hung: it did not finish within {} s",
                          supervision_.timeout_s);
    } else if (WIFSIGNALED(status_)) {
      death = fmt::format("{} with {}",
                          WTERMSIG(status_) == SIGABRT ? "aborted" : "crashed",
                          DescribeSignal(WTERMSIG(status_)));
    } else {
      death = fmt::format("ended the process by itself with exit status {}",
                          WEXITSTATUS(status_));
    }
    if (!timed_out_ && !IsPluginPhase(phase)) {
      FailOutsidePlugin(fmt::format("{} while {}", death, Describe(phase)));
      return;
    }
    Fail(ExitCode::kPluginDied,
         fmt::format("the plug-in {} (while {})", death, Describe(phase)),
         kNoteTheCall);
    AddPluginOutput();
    const auto last_call = progress_->LastCall();
    report_.failure->details.push_back(
        last_call ? fmt::format("last ConfD call, number {}: {}",
                                progress_->calls(), *last_call)
                  : "it made no ConfD call");
  }

  // An assertion's text is the better half of the message.
  void AddPluginOutput() {
    if (report_.plugin_output.empty()) return;
    std::vector<std::string>& details = report_.failure->details;
    details.push_back("it printed:");
    for (const std::string_view line : Lines(report_.plugin_output)) {
      details.push_back(fmt::format("  {}", line));
    }
  }

  void Fail(ExitCode code, std::string reason, std::string advice) {
    report_.failure = Failure{
        code, std::move(reason), std::move(advice),
        code == ExitCode::kInvalidResult ? report_.config : task_.plugin};
  }

  const WorkerTask& task_;
  const Supervision& supervision_;
  Listener& listener_;
  ChildSignal child_signal_;
  SharedProgress progress_;
  Pipe messages_;
  Pipe output_;
  MessageReader reader_;
  pid_t worker_ = 0;
  int status_ = 0;
  Phase phase_ = Phase::kStarting;
  std::optional<Clock::time_point> deadline_;
  uint64_t trimmed_ = 0;  // bytes of the plug-in's output
  bool timed_out_ = false;
  bool done_ = false;
  std::optional<std::string> corrupted_;
  Report report_;
};

}  // namespace

Report Supervise(const WorkerTask& task, const Supervision& supervision,
                 Listener& listener) {
  return Supervisor(task, supervision, listener).Run();
}

}  // namespace kit::host
