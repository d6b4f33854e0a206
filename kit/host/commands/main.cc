#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <variant>

#include "kit/host/commands/compare.h"
#include "kit/host/commands/explain.h"
#include "kit/host/commands/fleet.h"
#include "kit/host/commands/options.h"
#include "kit/host/commands/run.h"
#include "kit/host/exit_code.h"
#include "kit/host/process/interrupt.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

// A pipe must not end up as somebody's standard output.
void OccupyStandardDescriptors() {
  int fd = 0;
  do {
    fd = open("/dev/null", O_RDONLY);
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd > STDERR_FILENO) close(fd);
}

ExitCode Start(const RunOptions& options) { return Run(options); }
ExitCode Start(const FleetOptions& options) { return RunFleet(options); }
ExitCode Start(const CompareOptions& options) { return RunCompare(options); }
ExitCode Start(const ExplainOptions& options) { return Explain(options); }

ExitCode Main(int argc, char** argv) {
  OccupyStandardDescriptors();
  const auto parsed = ParseCommandLine(argc, argv, std::cout, std::cerr);
  if (const auto* code = std::get_if<ExitCode>(&parsed)) return *code;
  InstallInterruptHandlers();
  signal(SIGXFSZ, SIG_IGN);  // a write past a limit fails like any other
  return std::visit([](const auto& options) { return Start(options); },
                    std::get<CommandOptions>(parsed));
}

}  // namespace
}  // namespace kit::host

int main(int argc, char** argv) {
  try {
    return static_cast<int>(kit::host::Main(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ospf-upgrade: internal error: %s\n",
                 kit::host::OneLine(error.what()).c_str());
    return static_cast<int>(kit::host::ExitCode::kInternal);
  }
}
