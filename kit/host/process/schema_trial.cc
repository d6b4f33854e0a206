#include "kit/host/process/schema_trial.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zqconfd_sink.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kit::host {
namespace {

using End = TrialOutcome::End;

// What the copy has at least once the plug-in has come to its end here.
constexpr std::chrono::seconds kGrace(1);

// Only the thread that forks is in the copy.
bool IsSingleThreaded() {
  // The folder has a link from itself, from its parent, and from each thread.
  struct stat threads = {};
  return stat("/proc/self/task", &threads) == 0 && threads.st_nlink == 3;
}

void DiscardRecord(void* /*context*/, const char* /*text*/, size_t /*length*/) {
}

// What both processes have printed so far is the other one's to write out.
void DiscardOutput() {
  const FileDescriptor null(open("/dev/null", O_WRONLY | O_CLOEXEC));
  if (!null.valid()) return;
  dup2(null.get(), STDOUT_FILENO);
  dup2(null.get(), STDERR_FILENO);
}

// Should memory get short, the run itself is not to be hit.
void OfferToOutOfMemoryKiller() {
  const FileDescriptor file(
      open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
  constexpr std::string_view kMost = "1000";
  if (file.valid() && write(file.get(), kMost.data(), kMost.size()) < 0) {
    return;  // then it is hit as likely as others
  }
}

}  // namespace

Checksum ChecksumOf(const control::Database& database, control::Format format) {
  Checksum checksum;
  database.Save(format,
                [&checksum](std::string_view piece) { checksum.Add(piece); });
  return checksum;
}

SchemaTrial::SchemaTrial(bool loaded, Progress& progress, int connection)
    : progress_(progress), connection_(connection), self_(getpid()) {
  control::SetSchemasLoaded(loaded);
  control::SetSchemaWatcher([this] { Fork(); });
}

SchemaTrial::~SchemaTrial() { control::SetSchemaWatcher(nullptr); }

bool SchemaTrial::IsCopy() const { return copy_ == getpid(); }

void SchemaTrial::Fork() {
  if (getpid() != self_) return;  // the plug-in forked it
  depends_ = true;
  int ends[2];
  if (!IsSingleThreaded() || pipe2(ends, O_CLOEXEC) != 0) return;
  FileDescriptor read_end(ends[0]);
  FileDescriptor write_end(ends[1]);
  forked_ = Clock::now();
  const pid_t copy = fork();
  if (copy < 0) return;
  if (copy == 0) {
    BecomeCopy(std::move(write_end));
    return;
  }
  copy_ = copy;
  report_ = std::move(read_end);
}

void SchemaTrial::BecomeCopy(FileDescriptor report) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != self_) _exit(EXIT_FAILURE);
  copy_ = getpid();
  report_ = std::move(report);
  OfferToOutOfMemoryKiller();
  DiscardOutput();
  zqconfd_set_sink(DiscardRecord, nullptr);
  control::SetObserver(nullptr);
  MakePrivate(progress_);
  close(connection_);
  control::SwitchSchemasLoaded();
}

void SchemaTrial::End(const TrialOutcome& outcome) const {
  static_assert(std::is_trivially_copyable_v<TrialOutcome>);
  const bool told =
      write(report_.get(), &outcome, sizeof outcome) == sizeof outcome;
  _exit(told ? EXIT_SUCCESS : EXIT_FAILURE);
}

void SchemaTrial::EndAfterReturn(int result, const control::Database& database,
                                 control::Format format) const {
  TrialOutcome outcome;
  outcome.end = End::kReturned;
  outcome.result = result;
  try {
    control::CloseCalls();
    database.OpenCursors();  // throws if its failure is for want of memory
    if (result == 0) {
      outcome.violations = database.Validate().size();
      outcome.saved = ChecksumOf(database, format);
    }
  } catch (const std::exception&) {
    outcome.end = End::kUnknown;
  }
  if (progress_.out_of_memory()) outcome.end = End::kUnknown;
  End(outcome);
}

void SchemaTrial::EndAfterDeath() const {
  TrialOutcome outcome;
  outcome.end = progress_.out_of_memory() ? End::kUnknown : End::kDied;
  End(outcome);
}

TrialOutcome SchemaTrial::Wait(std::chrono::milliseconds most) {
  TrialOutcome outcome;
  if (!depends_) return outcome;
  outcome.end = End::kUnknown;
  if (copy_ == 0) return outcome;
  const auto give_up =
      Clock::now() +
      std::min<Clock::duration>(most, kGrace + 2 * (Clock::now() - forked_));
  pollfd news = {report_.get(), POLLIN, 0};
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(give_up - Clock::now());
    const int ready =
        poll(&news, 1, static_cast<int>(std::max<int64_t>(0, left.count())));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) {
      kill(copy_, SIGKILL);
      return outcome;
    }
    break;
  }
  TrialOutcome told;
  const bool is_told = read(report_.get(), &told, sizeof told) == sizeof told;
  return is_told ? told : OutcomeOfEnd();
}

// It ended without a word.
TrialOutcome SchemaTrial::OutcomeOfEnd() const {
  TrialOutcome outcome;
  outcome.end = End::kUnknown;
  int status = 0;
  if (waitpid(copy_, &status, 0) != copy_) return outcome;
  // By somebody else, or for want of something that the run had.
  static constexpr std::array<int, 3> kFromOutside = {SIGKILL, SIGXCPU,
                                                      SIGXFSZ};
  const bool is_its_own =
      WIFEXITED(status) || (WIFSIGNALED(status) &&
                            std::find(kFromOutside.begin(), kFromOutside.end(),
                                      WTERMSIG(status)) == kFromOutside.end());
  if (is_its_own) outcome.end = End::kDied;
  return outcome;
}

}  // namespace kit::host
