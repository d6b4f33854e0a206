#include "host_test.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <thread>

namespace host_test {
namespace fs = std::filesystem;

const char kDemoXml[] =
    "<demo xmlns=\"urn:demo\">\n"
    "  <item>\n"
    "    <id>1</id>\n"
    "    <label>one</label>\n"
    "    <size>10</size>\n"
    "    <obsolete>old</obsolete>\n"
    "  </item>\n"
    "  <item>\n"
    "    <id>2</id>\n"
    "    <label>two</label>\n"
    "  </item>\n"
    "</demo>\n";

const char kDemoJson[] =
    "{\"demo:demo\": {\"item\": [\n"
    "  {\"id\": 1, \"label\": \"one\", \"size\": 10, \"obsolete\": \"old\"},\n"
    "  {\"id\": 2, \"label\": \"two\"}\n"
    "]}}\n";

namespace {

// Names of the files beside the test's folder that take what the host prints.
constexpr char kStdin[] = ".stdin";
constexpr char kStdout[] = ".stdout";
constexpr char kStderr[] = ".stderr";

void Redirect(int fd, const std::string& path, int flags) {
  const int file = open(path.c_str(), flags, 0600);
  if (file < 0) _exit(126);
  dup2(file, fd);
  close(file);
}

// A shell runs its background jobs with SIGINT and SIGQUIT ignored, and what
// the tests run in is not to decide what the host meets.
void ResetSignals(const std::vector<int>& ignored) {
  for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM}) {
    ::signal(signal, SIG_DFL);
  }
  for (const int signal : ignored) ::signal(signal, SIG_IGN);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "exit code " << outcome.exit_code << "\nstdout:\n"
                << outcome.out << "stderr:\n"
                << outcome.err;
}

std::string PluginPath(const std::string& name) {
  return std::string(TEST_PLUGIN_FOLDER) + "/" + name + ".so";
}

pid_t WaitForChild(pid_t pid) {
  const std::string children = fmt::format("/proc/{0}/task/{0}/children", pid);
  pid_t child = 0;
  for (int i = 0; i < 1000 && child == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::istringstream(ReadFile(children)) >> child;
  }
  return child;
}

bool WaitForEnd(pid_t pid) {
  for (int i = 0; i < 1000; ++i) {
    const std::string status = ReadFile(fmt::format("/proc/{}/status", pid));
    if (status.empty() || status.find("State:\tZ") != std::string::npos) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

void HostTest::SetUp() {
  std::string pattern = fs::temp_directory_path() / "host-test-XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  folder_ = fs::path(pattern) / "work";
  fs::create_directory(folder_);
}

void HostTest::TearDown() {
  if (HasFailure()) {
    std::cout << "The test's files are in " << folder_ << "\n";
  } else {
    fs::remove_all(folder_.parent_path());
  }
}

std::string HostTest::Write(const std::string& name,
                            const std::string& text) const {
  std::ofstream(folder_ / name, std::ios::binary) << text;
  written_.push_back(name);
  return Path(name);
}

std::string HostTest::Read(const std::string& name) const {
  return ReadFile(folder_ / name);
}

bool HostTest::Exists(const std::string& name) const {
  return fs::exists(fs::symlink_status(folder_ / name));
}

std::vector<std::string> HostTest::NewFiles() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder_)) {
    const std::string name = entry.path().filename();
    if (std::find(written_.begin(), written_.end(), name) == written_.end()) {
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

pid_t HostTest::Start(const std::vector<std::string>& args,
                      const Launch& launch) const {
  const fs::path outside = folder_.parent_path();
  std::ofstream(outside / kStdin, std::ios::binary) << launch.input;
  const std::string in = launch.stdin_path.value_or(outside / kStdin);
  const std::string out = launch.stdout_path.value_or(outside / kStdout);
  const std::string err = launch.stderr_path.value_or(outside / kStderr);
  std::vector<char*> argv = {const_cast<char*>(launch.executable.c_str())};
  for (const std::string& arg : args) {
    argv.push_back(const_cast<char*>(arg.c_str()));
  }
  argv.push_back(nullptr);

  const pid_t pid = fork();
  if (pid != 0) return pid;
  Redirect(STDIN_FILENO, in, O_RDONLY);
  Redirect(STDOUT_FILENO, out, O_WRONLY | O_CREAT | O_TRUNC);
  Redirect(STDERR_FILENO, err, O_WRONLY | O_CREAT | O_TRUNC);
  ResetSignals(launch.ignored_signals);
  if (chdir(folder_.c_str()) != 0) _exit(126);
  if (launch.max_file_size) {
    const rlimit limit = {*launch.max_file_size, *launch.max_file_size};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  for (const auto& [resource, value] : launch.limits) {
    const rlimit limit = {value, value};
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
  }
  if (launch.task_list) {
    std::ofstream(*launch.task_list) << getpid() << std::flush;
  }
  const rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  for (const std::string& variable : launch.environment) {
    putenv(const_cast<char*>(variable.c_str()));
  }
  // Crashes are to look as they do without sanitizers.
  const char* options = std::getenv("ASAN_OPTIONS");
  setenv("ASAN_OPTIONS",
         fmt::format("{}:handle_segv=0:handle_abort=0",
                     options == nullptr ? "" : options)
             .c_str(),
         1);
  if (launch.user && (setgroups(0, nullptr) != 0 || setgid(*launch.user) != 0 ||
                      setuid(*launch.user) != 0)) {
    _exit(126);
  }
  if (!Refuse(launch.refusals)) _exit(126);
  execv(argv[0], argv.data());
  _exit(127);
}

Outcome HostTest::Finish(pid_t pid) const {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  const fs::path outside = folder_.parent_path();
  return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
          ReadFile(outside / kStdout), ReadFile(outside / kStderr),
          WIFSIGNALED(status) ? WTERMSIG(status) : 0};
}

Outcome HostTest::Run(const std::vector<std::string>& args,
                      const Launch& launch) const {
  return Finish(Start(args, launch));
}

std::vector<std::string> HostTest::DemoArgs(
    const std::string& plugin, std::vector<std::string> args) const {
  const std::string models = TEST_DEMO_MODELS;
  const std::vector<std::string> demo = {"run",
                                         "--plugin",
                                         PluginPath(plugin),
                                         "--yang-before",
                                         models + "/before",
                                         "--yang-after",
                                         models + "/after"};
  args.insert(args.begin(), demo.begin(), demo.end());
  return args;
}

Outcome HostTest::RunDemo(const std::string& plugin,
                          std::vector<std::string> args,
                          const Launch& launch) const {
  return Run(DemoArgs(plugin, std::move(args)), launch);
}

bool HostTest::WaitFor(const std::string& name, const std::string& text) const {
  for (int i = 0; i < 1000; ++i) {
    if (Read(name).find(text) != std::string::npos) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

}  // namespace host_test
