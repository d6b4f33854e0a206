// The whole upgrade at growing sizes: what a ConfD call and an interface cost.
//
//   upgrade_benchmark [INTERFACES ...]     default: 1000 10000 100000
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zqconfd_sink.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"

namespace {

using kit::control::Database;
using kit::control::ModelSet;

constexpr int kSecondaries = 1;

double Seconds() {
  return std::chrono::duration<double>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::string Generate(int interfaces) {
  std::string command = std::string(TEST_SOURCE_ROOT) +
                        "/scripts/generate-config --seed 1 --interfaces " +
                        std::to_string(interfaces) + " --secondary " +
                        std::to_string(kSecondaries);
  std::FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("can't run " + command);
  std::string text;
  char buffer[1 << 16];
  size_t count;
  while ((count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
    text.append(buffer, count);
  }
  if (pclose(pipe) != 0) throw std::runtime_error(command + " failed");
  return text;
}

class Counter : public kit::control::Observer {
 public:
  void OnCall(const kit::control::Call& call) override { calls_ = call.number; }
  bool WantsValues() const override { return false; }
  double calls() const { return static_cast<double>(calls_); }

 private:
  uint64_t calls_ = 0;
};

void Discard(void*, const char*, size_t) {}

void Measure(int interfaces) {
  void* plugin = dlopen(TEST_PLUGIN, RTLD_NOW);
  if (plugin == nullptr) throw std::runtime_error(dlerror());
  auto* update =
      reinterpret_cast<int (*)(int, int, int)>(dlsym(plugin, "update"));
  zqconfd_set_sink(Discard, nullptr);

  std::string text = Generate(interfaces);
  const std::string yang = std::string(TEST_SOURCE_ROOT) + "/yang/";
  const std::map<std::string, uint32_t> namespaces = {
      {"VX-OSPF-MIB", 448085882},
      {"VX-OSPF-V3-MIB", 240301111},
      {"VX-RTM-MIB", 828596128}};
  double start = Seconds();
  Database database = Database::Open({yang + "before", namespaces},
                                     {yang + "after", namespaces},
                                     std::move(text), "generated");
  auto handles = database.Attach();
  double opened = Seconds();
  Counter counter;
  kit::control::SetObserver(&counter);
  int result = update(handles.maapi_sock, handles.thandle, handles.cdb_sock);
  kit::control::SetObserver(nullptr);
  double updated = Seconds();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  bool valid = database.Validate().empty();
  double validated = Seconds();
  if (result != 0 || !valid) throw std::runtime_error("the upgrade failed");

  double run = updated - opened;
  std::printf("%10d %10.0f %9.2f %12.0f %15.1f %9.2f %11.2f %9.0f\n",
              interfaces, counter.calls(), run, run / counter.calls() * 1e9,
              run / interfaces * 1e6, opened - start, validated - updated,
              static_cast<double>(usage.ru_maxrss) / 1024);
}

// In a process of its own, so that the peak memory is its own too.
bool MeasureApart(int interfaces) {
  std::fflush(stdout);
  pid_t child = fork();
  if (child == 0) {
    try {
      Measure(interfaces);
      std::fflush(stdout);
      _exit(0);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%d interfaces: %s\n", interfaces, error.what());
      _exit(1);
    }
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  if (sizes.empty()) sizes = {1000, 10000, 100000};
  std::printf("%10s %10s %9s %12s %15s %9s %11s %9s\n", "interfaces", "calls",
              "update s", "ns per call", "us per interface", "open s",
              "validate s", "peak MB");
  bool ok = true;
  for (int interfaces : sizes) ok = MeasureApart(interfaces) && ok;
  return ok ? 0 : 1;
}
