#include "kit/host/process/descendants.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace kit::host {
namespace {

// Whether it is a child, running or waiting to be reaped: nobody else can have
// its number then.
bool IsChild(idtype_t type, pid_t pid) {
  siginfo_t info = {};
  return waitid(type, static_cast<id_t>(pid), &info,
                WEXITED | WNOHANG | WNOWAIT) == 0;
}

// Calls visit(pid) for each child; false when the system does not list them.
template <typename Visit>
bool VisitChildren(const Visit& visit) {
  const int list = open("/proc/thread-self/children", O_RDONLY | O_CLOEXEC);
  if (list < 0) return false;
  char chunk[4096];
  pid_t pid = 0;
  ssize_t got = 0;
  while ((got = read(list, chunk, sizeof(chunk))) > 0) {
    for (ssize_t i = 0; i < got; ++i) {
      if (chunk[i] >= '0' && chunk[i] <= '9') {
        pid = pid * 10 + (chunk[i] - '0');
      } else if (pid > 0) {
        visit(pid);
        pid = 0;
      }
    }
  }
  close(list);
  return got == 0;
}

// Children from before the run; a signal handler reads them.
std::array<pid_t, 64> strangers;
size_t stranger_count = 0;

class Killer {
 public:
  Killer(pid_t worker, pid_t spared) : worker_(worker), spared_(spared) {}

  void Visit(pid_t pid) {
    if (pid == spared_) return;
    // The worker leaves the session before the plug-in can start anything, and
    // no process can come back into it.
    const bool has_left = getsid(pid) != own_session_;
    if (IsStranger(pid) || (!has_left && pid != worker_)) {
      sees_strangers_ = true;
      return;
    }
    ++found_;
    const pid_t group = getpgid(pid);
    if (has_left && group > 0 && group != spared_group_) kill(-group, SIGKILL);
    kill(pid, SIGKILL);
  }

  size_t found() const { return found_; }
  bool sees_strangers() const { return sees_strangers_; }

 private:
  static bool IsStranger(pid_t pid) {
    for (size_t i = 0; i < stranger_count; ++i) {
      if (strangers[i] == pid) return true;
    }
    return false;
  }

  pid_t worker_;
  pid_t spared_;
  pid_t spared_group_ = spared_ > 0 ? getpgid(spared_) : 0;
  pid_t own_session_ = getsid(0);
  size_t found_ = 0;
  bool sees_strangers_ = false;
};

}  // namespace

void AdoptDescendants() {
  if (prctl(PR_SET_CHILD_SUBREAPER, 1) != 0) {
    throw std::system_error(errno, std::generic_category(), "prctl");
  }
  stranger_count = 0;
  VisitChildren([](pid_t pid) {
    if (stranger_count < strangers.size()) strangers[stranger_count++] = pid;
  });
}

size_t KillDescendants(pid_t worker, pid_t spared) {
  Killer killer(worker, spared);
  const bool is_listed =
      VisitChildren([&killer](pid_t pid) { killer.Visit(pid); });
  if (!is_listed && worker > 0 && IsChild(P_PID, worker)) killer.Visit(worker);
  if (killer.found() > 0) return killer.found();
  // A list that was read while processes came and went may lack some.
  const bool may_have_others = spared > 0 || killer.sees_strangers();
  return !may_have_others && IsChild(P_ALL, 0) ? 1 : 0;
}

}  // namespace kit::host
