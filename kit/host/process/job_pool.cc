#include "kit/host/process/job_pool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "kit/host/process/file_descriptor.h"
#include "kit/host/process/interrupt.h"

namespace kit::host {
namespace {

constexpr int kTickMs = 200;
constexpr int kEndTries = 2000;  // a millisecond each
// How far jobs may be ahead of the first one that is not done.
constexpr size_t kMostAhead = 256;
constexpr size_t kMostProcesses = 1024;

// Read by the handler of signals; 0 is none.
std::array<std::atomic<pid_t>, kMostProcesses> running_jobs{};

void SignalJobs(int signal) {
  for (const std::atomic<pid_t>& job : running_jobs) {
    if (job > 0) kill(job, signal);
  }
}

// How many of them are still there.
size_t ReapJobs() {
  size_t left = 0;
  for (std::atomic<pid_t>& job : running_jobs) {
    if (job > 0 && waitpid(job, nullptr, WNOHANG) == 0) {
      ++left;
    } else {
      job = 0;
    }
  }
  return left;
}

// Each job ends what it has started itself. One that has decided on its result
// takes no signal any more, and may wait for it to be read.
void EndJobs() {
  SignalJobs(SIGTERM);
  for (int tries = 0; ReapJobs() > 0; ++tries) {
    if (tries == kEndTries) SignalJobs(SIGKILL);
    const timespec millisecond = {0, 1'000'000};
    nanosleep(&millisecond, nullptr);
  }
}

// Memory that runs out is to cost a job rather than everything.
void OfferToOutOfMemoryKiller() {
  const FileDescriptor file(
      open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
  if (file.valid()) (void)!write(file.get(), "500", 3);
}

class Pool {
 public:
  explicit Pool(const JobPlan& plan)
      : plan_(plan),
        slots_(std::clamp<size_t>(plan.processes, 1, kMostProcesses)) {
    SetInterruptCleanUp(EndJobs);
  }
  ~Pool() {
    const InterruptBlock block;
    EndJobs();
    SetInterruptCleanUp(nullptr);
  }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;

  void Run() {
    while (next_taken_ < plan_.jobs) {
      StartJobs();
      WaitForNews();
      TakeResults();
      if (plan_.on_tick) plan_.on_tick(next_taken_);
    }
  }

 private:
  struct Slot {
    size_t job = 0;
    pid_t pid = 0;
    FileDescriptor result;
    std::string text;
  };

  void StartJobs() {
    for (size_t i = 0; i < slots_.size(); ++i) {
      if (next_ == plan_.jobs || next_ >= next_taken_ + kMostAhead) return;
      if (slots_[i].pid > 0) continue;
      if (!Start(i)) {
        if (running_ == 0) {
          throw std::system_error(errno, std::generic_category(), "fork");
        }
        return;  // when another one has ended
      }
    }
  }

  // False with errno where the system has no process for it.
  bool Start(size_t index) {
    Pipe pipe = MakePipe();
    const pid_t parent = getpid();
    std::fflush(nullptr);  // or the job prints it again
    InterruptBlock block;
    const pid_t pid = fork();
    if (pid < 0) return false;
    if (pid == 0) {
      for (std::atomic<pid_t>& job : running_jobs) job = 0;
      SetInterruptCleanUp(nullptr);
      BecomeJob(std::move(pipe.write_end), parent);
    }
    running_jobs[index] = pid;
    slots_[index] = {next_, pid, std::move(pipe.read_end), ""};
    ++next_;
    ++running_;
    return true;
  }

  [[noreturn]] void BecomeJob(FileDescriptor connection, pid_t parent) const {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(EXIT_FAILURE);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    OfferToOutOfMemoryKiller();
    try {
      WriteAll(connection.get(), plan_.work(next_));
      // Memory goes with the process; tearing it down takes long.
      std::fflush(nullptr);
      _exit(EXIT_SUCCESS);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
    }
    _exit(EXIT_FAILURE);
  }

  void WaitForNews() {
    std::vector<pollfd> fds;
    std::vector<size_t> indexes;
    for (size_t i = 0; i < slots_.size(); ++i) {
      if (slots_[i].pid == 0) continue;
      fds.push_back({slots_[i].result.get(), POLLIN, 0});
      indexes.push_back(i);
    }
    if (fds.empty()) return;
    if (poll(fds.data(), fds.size(), kTickMs) < 0 && errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "poll");
    }
    for (size_t i = 0; i < fds.size(); ++i) {
      if (fds[i].revents != 0) Read(indexes[i]);
    }
  }

  void Read(size_t index) {
    Slot& slot = slots_[index];
    std::array<char, 1 << 16> chunk;
    const ssize_t got = read(slot.result.get(), chunk.data(), chunk.size());
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (got > 0) {
      slot.text.append(chunk.data(), static_cast<size_t>(got));
      return;
    }
    JobEnd end;
    ChildEnd death = {};
    {
      const InterruptBlock block;  // its number is free once it is reaped
      while (wait4(slot.pid, &death.status, 0, &death.usage) < 0 &&
             errno == EINTR) {
      }
      running_jobs[index] = 0;
    }
    const bool is_whole =
        WIFEXITED(death.status) && WEXITSTATUS(death.status) == EXIT_SUCCESS;
    if (is_whole) {
      end.result = std::move(slot.text);
    } else {
      end.end = death;
    }
    ends_.emplace(slot.job, std::move(end));
    slot = Slot();
    --running_;
  }

  void TakeResults() {
    while (!ends_.empty() && ends_.begin()->first == next_taken_) {
      JobEnd end = std::move(ends_.begin()->second);
      ends_.erase(ends_.begin());
      plan_.take(next_taken_, std::move(end));
      ++next_taken_;
    }
  }

  const JobPlan& plan_;
  std::vector<Slot> slots_;
  std::map<size_t, JobEnd> ends_;  // that came before their turn
  size_t next_ = 0;                // to be started
  size_t next_taken_ = 0;
  size_t running_ = 0;
};

}  // namespace

void RunJobs(const JobPlan& plan) { Pool(plan).Run(); }

}  // namespace kit::host
