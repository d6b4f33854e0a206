// An upgrade case: a folder with a configuration, how to upgrade it and what
// has to come of it.
#ifndef TESTS_CASES_UPGRADE_CASE_H_
#define TESTS_CASES_UPGRADE_CASE_H_

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kit/confd/control/control.h"
#include "tests/support/upgrade.h"

namespace cases {

// What case.json says.
struct UpgradeCase {
  // Shown when the case fails: what the configuration is and what it proves.
  std::string description;
  // The configuration: "before", a file relative to the repository; the
  // folder's before.xml without it.
  std::filesystem::path configuration;
  // "models": folders of yang/ or tests/models/; before and after without it.
  test_support::Models models;
  // "status": what `update` returns; 0 without it.
  int status = 0;
  // "aborts": text that stands on stderr when the process aborts; "" if it
  // does not.
  std::string abort_text;
  // "violations": for each constraint of the new model that the result breaks,
  // part of its path and reason ("path: reason"); none without it. Not looked
  // at unless `update` returns 0, as nobody would commit.
  std::vector<std::string> violations;
  // "unchanged": the plug-in changes no value of the transaction, though it may
  // write the value that is there; false without it.
  bool unchanged = false;
  // "findings": the rules that find something in it, sorted, of those of OSPF
  // and those for any upgrade that look at data; not looked at without it.
  std::optional<std::vector<std::string>> findings;
  // "faults": calls that do not go as the data would have it.
  std::vector<kit::control::Fault> faults;
};

// The folder of all cases.
std::filesystem::path CasesFolder();

// The names of the folders in it that hold a case.json, sorted.
std::vector<std::string> CaseNames();

// Throws std::runtime_error naming the file and what is wrong with it.
UpgradeCase ReadCase(const std::string& name);

// The whole file. Throws std::runtime_error.
std::string ReadText(const std::filesystem::path& file);

}  // namespace cases

#endif  // TESTS_CASES_UPGRADE_CASE_H_
