#include "kit/host/process/misfit.h"

#include <fmt/format.h>

#include <algorithm>

#include "kit/host/text.h"

namespace kit::host {
namespace {

// Of a message that quotes the configuration, which may hold huge values.
constexpr size_t kMaxQuote = 1000;

std::string LineOf(const control::InputFault& fault) {
  std::string text;
  if (fault.line > 0) text += fmt::format("line {}: ", fault.line);
  if (!fault.path.empty()) text += Shortened(fault.path, kMaxQuote) + ": ";
  return text + Shortened(fault.reason, kMaxQuote);
}

// All but the first.
std::vector<std::string> Rest(const control::InputError& error) {
  std::vector<std::string> lines;
  for (size_t i = 1; i < error.faults().size(); ++i) {
    lines.push_back(LineOf(error.faults()[i]));
  }
  if (error.more() > 0)
    lines.push_back(fmt::format("and {} more", error.more()));
  return lines;
}

}  // namespace

Failure MisfitFailure(const control::InputError& error, const std::string& own,
                      const std::vector<KnownRelease>& releases) {
  std::string fits;
  std::string advice;
  for (const KnownRelease& one : releases) {
    const auto& names = error.fits();
    if (std::find(names.begin(), names.end(), one.release.name) ==
        names.end()) {
      continue;
    }
    fits += fmt::format("{}{}: {}", fits.empty() ? "this fits " : "; or ",
                        one.release.name, one.meaning);
    if (advice.empty()) advice = one.advice;
  }
  if (fits.empty()) {
    return {ExitCode::kBadInput,
            Shortened(error.reason(), kMaxQuote),
            "correct the configuration and run again",
            error.file(),
            error.line(),
            Shortened(error.path(), kMaxQuote),
            Rest(error)};
  }
  Failure failure{ExitCode::kBadInput, fits, advice, error.file()};
  failure.details.push_back(
      fmt::format("it does not fit {}: {}", own, LineOf(error.faults()[0])));
  return failure;
}

Failure ModelFailure(const control::ModelError& error) {
  return {ExitCode::kBadInput,
          fmt::format("the data models cannot be used: {}", error.what()),
          "correct the models, or name the folders of others with "
          "--yang-before and --yang-after"};
}

}  // namespace kit::host
