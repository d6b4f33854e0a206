// Runs the command line as a user does: the real executable, in a folder of the
// test's own.
#ifndef TESTS_HOST_HOST_TEST_H_
#define TESTS_HOST_HOST_TEST_H_

#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "refusal.h"

namespace host_test {

// A configuration of the models in tests/host/models: items 1 and 2.
extern const char kDemoXml[];
extern const char kDemoJson[];

struct Launch {
  std::string input = "";  // on standard input
  std::string executable = TEST_HOST;
  std::optional<std::string> stdin_path;   // instead of input
  std::optional<std::string> stdout_path;  // instead of being captured
  std::optional<std::string> stderr_path;
  std::optional<unsigned long> max_file_size;
  std::map<int, unsigned long> limits;   // by RLIMIT_*
  std::optional<std::string> task_list;  // a file that takes its process number
  std::vector<std::string> environment;  // NAME=VALUE
  std::vector<Refusal> refusals;
  std::optional<unsigned> user;  // instead of root
  // Ignored from the start, as nohup and background jobs of a shell have it;
  // all other signals end the host unless it handles them.
  std::vector<int> ignored_signals;
};

struct Outcome {
  int exit_code;  // 128 + N when signal N ended it
  std::string out;
  std::string err;
  int signal;  // that ended it, or 0
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

class HostTest : public ::testing::Test {
 protected:
  // Works in a new folder, which a failed test leaves behind.
  void SetUp() override;
  void TearDown() override;

  std::string Path(const std::string& name) const { return folder_ / name; }
  // Returns its path.
  std::string Write(const std::string& name, const std::string& text) const;
  std::string Read(const std::string& name) const;
  bool Exists(const std::string& name) const;
  // Names in the folder that the test did not write itself.
  std::vector<std::string> NewFiles() const;

  Outcome Run(const std::vector<std::string>& args,
              const Launch& launch = {}) const;
  // `run` with the demo models and a plug-in of tests/host/plugins.
  Outcome RunDemo(const std::string& plugin, std::vector<std::string> args,
                  const Launch& launch = {}) const;
  std::vector<std::string> DemoArgs(const std::string& plugin,
                                    std::vector<std::string> args) const;

  pid_t Start(const std::vector<std::string>& args, const Launch& launch) const;
  Outcome Finish(pid_t pid) const;
  // Waits until the file contains the text; false after ten seconds.
  bool WaitFor(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path folder_;
  mutable std::vector<std::string> written_;
};

std::string PluginPath(const std::string& name);
std::string ReadFile(const std::string& path);

// Waits until the process has a child; 0 after ten seconds.
pid_t WaitForChild(pid_t pid);

// Waits until the process is gone or waits to be reaped, as a killed one takes
// its time; false after ten seconds.
bool WaitForEnd(pid_t pid);

}  // namespace host_test

#endif  // TESTS_HOST_HOST_TEST_H_
