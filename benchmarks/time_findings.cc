// What it costs to look for findings, in one upgrade.
//
//   time_findings PLUGIN MODELS_BEFORE MODELS_AFTER RULES CONFIGURATION
//
// Prints the CPU seconds of all conditions on configuration and log together.
#include <dlfcn.h>
#include <zqconfd_sink.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/control/control.h"
#include "kit/host/findings/built_in.h"
#include "kit/host/findings/data_rules.h"
#include "kit/host/findings/rule_reader.h"
#include "kit/host/findings/run_rules.h"

namespace {

using kit::control::Database;
using kit::control::ModelSet;

using Update = int (*)(int maapi_sock, int thandle, int cdb_sock);

double CpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) +
         static_cast<double>(now.tv_nsec) * 1e-9;
}

// Adds up what stands between its construction and its end.
class Stopwatch {
 public:
  explicit Stopwatch(double& total) : total_(total) {}
  ~Stopwatch() { total_ += CpuSeconds() - start_; }
  Stopwatch(const Stopwatch&) = delete;
  Stopwatch& operator=(const Stopwatch&) = delete;

 private:
  double& total_;
  double start_ = CpuSeconds();
};

Update Load(const char* path) {
  void* plugin = dlopen(path, RTLD_NOW);
  void* update = plugin != nullptr ? dlsym(plugin, "update") : nullptr;
  if (update == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Update>(update);
}

ModelSet Models(const char* directory) {
  // As the data-model compiler of the device gave them.
  return {directory,
          {{"VX-OSPF-MIB", 448085882},
           {"VX-OSPF-V3-MIB", 240301111},
           {"VX-RTM-MIB", 828596128}}};
}

std::string ReadFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(std::string(path) + " can't be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

void Keep(void* records, const char* text, size_t length) {
  static_cast<std::vector<std::string>*>(records)->emplace_back(text, length);
}

void Run(char** arguments) {
  const Update update = Load(arguments[0]);
  std::vector<std::string> records;
  zqconfd_set_sink(Keep, &records);
  Database database = Database::Open(Models(arguments[1]), Models(arguments[2]),
                                     ReadFile(arguments[4]), arguments[4]);
  const kit::control::Handles handles = database.Attach();
  kit::control::SetSchemasLoaded(true);
  double seconds = 0;
  size_t findings = 0;
  {
    const Stopwatch watch(seconds);
    const auto catalogue = kit::host::LoadCatalogue(arguments[3], false);
    CheckExpressions(catalogue, database);
    findings += FindInInput(catalogue, database).size();
  }
  if (update(handles.maapi_sock, handles.thandle, handles.cdb_sock) != 0) {
    throw std::runtime_error("update failed");
  }
  {
    const Stopwatch watch(seconds);
    const auto catalogue = kit::host::LoadCatalogue(arguments[3], false);
    kit::host::LogRules log_rules(catalogue);
    for (const std::string& record : records) log_rules.Add(record);
    findings += log_rules.Findings().size();
    findings += FindInResult(catalogue, database).size();
    findings += kit::host::DefaultFindings(database.MovedDefaults()).size();
  }
  std::fprintf(stderr, "%zu findings, %zu log records\n", findings,
               records.size());
  std::printf("%.6f\n", seconds);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs(
        "usage: time_findings PLUGIN MODELS_BEFORE MODELS_AFTER RULES "
        "CONFIGURATION\n",
        stderr);
    return 2;
  }
  try {
    Run(argv + 1);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "time_findings: %s\n", error.what());
    return 1;
  }
  return 0;
}
