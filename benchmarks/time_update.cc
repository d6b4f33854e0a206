// What a plug-in's update costs by itself, apart from reading and writing.
//
//   time_update [--count] PLUGIN MODELS_BEFORE MODELS_AFTER CONFIGURATION
//
// Prints its CPU seconds, or with --count the number of ConfD calls that it
// makes: whoever counts them is in the way of measuring.
#include <dlfcn.h>
#include <zqconfd_sink.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "kit/confd/control/control.h"

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

Update Load(const char* path) {
  void* plugin = dlopen(path, RTLD_NOW);
  void* update = plugin != nullptr ? dlsym(plugin, "update") : nullptr;
  if (update == nullptr) throw std::runtime_error(dlerror());
  return reinterpret_cast<Update>(update);
}

ModelSet Models(const char* directory) {
  // As the data-model compiler of the device gave them; other models have none.
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

class Counter : public kit::control::Observer {
 public:
  void OnCall(const kit::control::Call& call) override { calls_ = call.number; }
  bool WantsValues() const override { return false; }
  unsigned long long calls() const { return calls_; }

 private:
  uint64_t calls_ = 0;
};

void Discard(void*, const char*, size_t) {}

void Run(bool count, char** arguments) {
  Update update = Load(arguments[0]);
  zqconfd_set_sink(Discard, nullptr);
  Database database = Database::Open(Models(arguments[1]), Models(arguments[2]),
                                     ReadFile(arguments[3]), arguments[3]);
  kit::control::Handles handles = database.Attach();
  kit::control::SetSchemasLoaded(true);
  Counter counter;
  if (count) kit::control::SetObserver(&counter);
  double start = CpuSeconds();
  int result = update(handles.maapi_sock, handles.thandle, handles.cdb_sock);
  double end = CpuSeconds();
  kit::control::SetObserver(nullptr);
  if (result != 0) throw std::runtime_error("update failed");
  if (count) {
    std::printf("%llu\n", counter.calls());
  } else {
    std::printf("%.6f\n", end - start);
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool count = argc > 1 && std::strcmp(argv[1], "--count") == 0;
  char** arguments = argv + (count ? 2 : 1);
  if (argc - (arguments - argv) != 4) {
    std::fputs(
        "usage: time_update [--count] PLUGIN MODELS_BEFORE MODELS_AFTER "
        "CONFIGURATION\n",
        stderr);
    return 2;
  }
  try {
    Run(count, arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "time_update: %s\n", error.what());
    return 1;
  }
  return 0;
}
