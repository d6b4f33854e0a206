// Two runs of one configuration, as far as they differ.
#ifndef KIT_HOST_REPORT_COMPARISON_H_
#define KIT_HOST_REPORT_COMPARISON_H_

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kit/host/report/report.h"
#include "kit/host/secrets.h"

namespace kit::host {

// What differs of the two sides' lines.
struct DifferingPart {
  std::string what;             // "log", "calls", ...
  std::optional<size_t> first;  // of a sequence: where they part, from 0
  std::array<std::vector<std::string>, 2> lines;
};

// Of sequences: what is left once what both begin and end with is taken off.
// None where they are the same.
std::optional<DifferingPart> CompareSequences(
    std::string what, std::array<std::vector<std::string>, 2> lines);

// Of lines in any order: those that one side alone has.
std::optional<DifferingPart> CompareSets(
    std::string what, std::array<std::vector<std::string>, 2> lines);

// One of the two, its journal with calls, its differences of the whole run.
struct ComparedRun {
  Report report;
  std::string result;  // the upgraded configuration, "" for none
  Secrets secrets;     // which it holds
};

// Verdict, findings, log, calls and, where both have one, result: those that
// differ.
std::vector<DifferingPart> CompareRuns(const ComparedRun& a,
                                       const ComparedRun& b);

// The lines of two configurations, elements of XML that stand in one line as
// lines of their own. Those with secrets are masked.
std::vector<DifferingPart> CompareResults(const std::string& a,
                                          const std::string& b,
                                          const Secrets& secrets);

// "names": how the two sides are called.
std::string RenderComparison(const std::string& config,
                             const std::vector<DifferingPart>& parts,
                             const std::array<std::string, 2>& names);

// One line of JSON.
std::string ComparisonLine(const std::string& config,
                           const std::vector<DifferingPart>& parts,
                           const std::array<std::string, 2>& names);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_COMPARISON_H_
