#include "kit/host/process/misfit.h"

#include <fmt/format.h>

#include <algorithm>

#include "kit/host/text.h"

namespace kit::host {
namespace {

// Of a message that quotes the configuration, which may hold huge values.
constexpr size_t kMaxQuote = 1000;

std::string Fault(const control::InputError& error) {
  std::string text;
  if (error.line() > 0) text += fmt::format("line {}: ", error.line());
  if (!error.path().empty()) {
    text += Shortened(error.path(), kMaxQuote) + ": ";
  }
  return text + Shortened(error.reason(), kMaxQuote);
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
            Shortened(error.path(), kMaxQuote)};
  }
  Failure failure{ExitCode::kBadInput, fits, advice, error.file()};
  failure.details.push_back(
      fmt::format("it does not fit {}: {}", own, Fault(error)));
  return failure;
}

}  // namespace kit::host
