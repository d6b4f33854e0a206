// Runs each case below this folder through the plug-in as devices load it. A
// case's folder holds
//   case.json     see upgrade_case.h
//   before.xml    the configuration before the upgrade
//   expected.xml  the whole configuration after it
//   expected.log  all that was logged
// A case in which the process aborts has no expected.xml.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zqconfd_sink.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <memory>
#include <set>
#include <thread>

#include "kit/host/findings/built_in.h"
#include "kit/host/findings/data_rules.h"
#include "kit/host/findings/rule_reader.h"
#include "kit/host/findings/run_rules.h"
#include "kit/host/text.h"
#include "tests/cases/upgrade_case.h"
#include "tests/support/golden.h"

namespace cases {
namespace {

using test_support::Upgrade;

const kit::host::Catalogue& Rules() {
  static const kit::host::Catalogue rules = kit::host::LoadCatalogue(
      std::string(TEST_SOURCE_ROOT) + "/rules/ospf.json", false);
  return rules;
}

// What there is to look at in one upgrade: the rules of OSPF, and those for any
// upgrade that look at data.
class FindingsOfCase {
 public:
  explicit FindingsOfCase(const kit::control::Database& database)
      : database_(database) {
    kit::host::CheckExpressions(Rules(), database_);
    Add(FindInInput(Rules(), database_));
    Add(kit::host::LossFindings(database_.Losses()));
  }

  // After the upgrade.
  void Finish(const std::string& log, bool has_succeeded) {
    kit::host::LogRules log_rules(Rules());
    for (const std::string_view line : kit::host::Lines(log)) {
      log_rules.Add(line);
    }
    Add(log_rules.Findings());
    if (!has_succeeded) return;
    Add(FindInResult(Rules(), database_));
    Add(kit::host::DefaultFindings(database_.MovedDefaults()));
  }

  std::vector<std::string> rules() const {
    return {rules_.begin(), rules_.end()};
  }
  const std::string& text() const { return text_; }

 private:
  void Add(const std::vector<kit::host::Finding>& findings) {
    for (const kit::host::Finding& finding : findings) {
      rules_.insert(finding.rule);
      text_ += finding.rule + " " + finding.message;
      if (!finding.unit.empty()) text_ += " (" + finding.unit + ")";
      text_ += "\n";
    }
  }

  const kit::control::Database& database_;
  std::set<std::string> rules_;
  std::string text_;
};

using UpdateFunction = int (*)(int maapi_sock, int thandle, int cdb_sock);

// Loaded once and kept, as on a device.
UpdateFunction Update() {
  static const UpdateFunction update = [] {
    void* plugin = dlopen(TEST_PLUGIN, RTLD_NOW);
    if (plugin == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<UpdateFunction>(dlsym(plugin, "update"));
  }();
  if (update == nullptr) throw std::runtime_error("no function \"update\"");
  return update;
}

// A file that vanishes with the process; what a child writes stays readable.
class ScratchFile {
 public:
  ScratchFile() : file_(std::tmpfile(), &std::fclose) {
    if (!file_) throw std::runtime_error("no temporary file");
  }
  int descriptor() const { return fileno(file_.get()); }
  std::string Text() const {
    std::string text;
    std::rewind(file_.get());
    for (int c; (c = std::fgetc(file_.get())) != EOF;) {
      text += static_cast<char>(c);
    }
    return text;
  }

 private:
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

void WriteRecord(void* context, const char* text, size_t length) {
  int descriptor = *static_cast<int*>(context);
  if (write(descriptor, text, length) < 0 || write(descriptor, "\n", 1) < 0) {
    _exit(2);
  }
}

class UpgradeCaseTest : public testing::Test {
 public:
  explicit UpgradeCaseTest(std::string name) : name_(std::move(name)) {}

  // The last error belongs to a thread, and logs may quote a stale one: in a
  // thread of its own, a case does not see what an earlier one left behind.
  void TestBody() override {
    std::thread([this] {
      try {
        Run();
      } catch (const std::exception& error) {
        // Nobody would catch it outside of the thread.
        ADD_FAILURE() << error.what();
      }
    }).join();
  }

 private:
  void Run() const {
    UpgradeCase the_case = ReadCase(name_);
    SCOPED_TRACE(name_ + ": " + the_case.description);
    Upgrade upgrade(ReadText(the_case.configuration), the_case.models);
    for (const kit::control::Fault& fault : the_case.faults) {
      upgrade.Inject(fault);
    }
    if (the_case.abort_text.empty()) {
      CheckOutcome(the_case, upgrade);
    } else {
      CheckAbort(the_case, upgrade);
    }
  }

  void ExpectFile(const std::string& file, const std::string& actual) const {
    test_support::ExpectGolden("cases/" + name_ + "/" + file, actual);
  }

  void CheckOutcome(const UpgradeCase& the_case, Upgrade& upgrade) const {
    FindingsOfCase findings(upgrade.database());
    EXPECT_EQ(
        Update()(upgrade.maapi_sock(), upgrade.thandle(), upgrade.cdb_sock()),
        the_case.status);
    ExpectFile("expected.log", upgrade.Log());
    ExpectFile("expected.xml", upgrade.Saved());
    if (the_case.unchanged) {
      EXPECT_EQ(upgrade.Changes(), "");
    }
    if (the_case.status == 0) CheckValidity(the_case, upgrade);
    if (the_case.findings) {
      findings.Finish(upgrade.Log(), the_case.status == 0);
      EXPECT_EQ(findings.rules(), *the_case.findings) << findings.text();
    }
  }

  static void CheckValidity(const UpgradeCase& the_case, Upgrade& upgrade) {
    std::vector<std::string> found;
    for (const auto& violation : upgrade.database().Validate()) {
      found.push_back(violation.path + ": " + violation.reason);
    }
    EXPECT_EQ(found.size(), the_case.violations.size());
    for (size_t i = 0; i < found.size(); ++i) {
      std::string wanted =
          i < the_case.violations.size() ? the_case.violations[i] : "(none)";
      EXPECT_NE(found[i].find(wanted), std::string::npos)
          << "found:    " << found[i] << "\nexpected: " << wanted;
    }
  }

  void CheckAbort(const UpgradeCase& the_case, Upgrade& upgrade) const {
    ScratchFile log;
    ScratchFile errors;
    UpdateFunction update = Update();
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      int log_descriptor = log.descriptor();
      zqconfd_set_sink(&WriteRecord, &log_descriptor);
      dup2(errors.descriptor(), STDERR_FILENO);
      update(upgrade.maapi_sock(), upgrade.thandle(), upgrade.cdb_sock());
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)
        << "the process ended with wait status " << status;
    EXPECT_NE(errors.Text().find(the_case.abort_text), std::string::npos)
        << errors.Text();
    ExpectFile("expected.log", log.Text());
  }

  const std::string name_;
};

int RegisterCases() {
  int count = 0;
  for (const std::string& name : CaseNames()) {
    testing::RegisterTest("UpgradeCase", name.c_str(), nullptr, nullptr,
                          __FILE__, __LINE__,
                          [name] { return new UpgradeCaseTest(name); });
    ++count;
  }
  return count;
}

const int registered = RegisterCases();

TEST(UpgradeCasesTest, EachFolderHoldsACase) {
  int folders = 0;
  for (const auto& entry : std::filesystem::directory_iterator(CasesFolder())) {
    if (entry.is_directory()) ++folders;
  }
  EXPECT_GT(registered, 0);
  EXPECT_EQ(folders, registered) << "a folder of tests/cases has no case.json";
}

TEST(UpgradeCasesTest, EachRuleHasACaseThatTriggersItAndOneThatDoesNot) {
  std::vector<std::vector<std::string>> all;
  for (const std::string& name : CaseNames()) {
    const UpgradeCase the_case = ReadCase(name);
    if (the_case.findings) all.push_back(*the_case.findings);
  }
  for (const kit::host::Rule& rule : Rules().rules) {
    const auto triggers = [&rule](const std::vector<std::string>& findings) {
      return std::count(findings.begin(), findings.end(), rule.id) > 0;
    };
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), triggers)) << rule.id;
    EXPECT_FALSE(std::all_of(all.begin(), all.end(), triggers)) << rule.id;
  }
}

// "docs/passes.md#4": the place is marked there.
TEST(UpgradeCasesTest, EachRuleNamesASectionThatExists) {
  for (const kit::host::Rule& rule : Rules().rules) {
    const size_t hash = rule.section.find('#');
    ASSERT_NE(hash, std::string::npos) << rule.id;
    const std::string page = ReadText(std::filesystem::path(TEST_SOURCE_ROOT) /
                                      rule.section.substr(0, hash));
    EXPECT_NE(page.find("<a id=\"" + rule.section.substr(hash + 1) + "\"></a>"),
              std::string::npos)
        << rule.id;
  }
}

TEST(UpgradeCasesTest, EachRuleIsInTheDocumentationWithItsSeverity) {
  const std::string page =
      ReadText(std::filesystem::path(TEST_SOURCE_ROOT) / "docs/findings.md");
  for (const kit::host::Rule& rule : Rules().rules) {
    const char* const names[] = {"note", "look", "stop"};
    const std::string row = "| " + rule.id + " | " +
                            names[static_cast<size_t>(rule.severity)] + " | ";
    EXPECT_NE(page.find(row), std::string::npos) << row;
  }
}

// It shows each kind of rule that a site may want.
TEST(UpgradeCasesTest, TheRulesInTheDocumentationAreTaken) {
  const std::string page =
      ReadText(std::filesystem::path(TEST_SOURCE_ROOT) / "docs/findings.md");
  const std::string begin = "```json\n";
  const size_t at = page.find(begin) + begin.size();
  const std::string text = page.substr(at, page.find("```", at) - at);
  const kit::host::Catalogue rules =
      kit::host::ReadCatalogue(text, "docs/findings.md", true);
  EXPECT_EQ(rules.rules.size(), 3u);
  Upgrade upgrade(ReadText(ReadCase("example_provider_edge").configuration));
  kit::host::CheckExpressions(rules, upgrade.database());
  ASSERT_EQ(
      Update()(upgrade.maapi_sock(), upgrade.thandle(), upgrade.cdb_sock()), 0);
  const auto findings = FindInResult(rules, upgrade.database());
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].rule, "SITE-1");
  EXPECT_EQ(findings[0].message,
            "10.110.0.1 in area 0.0.0.10 has no authentication of its own");
}

TEST(UpgradeCasesTest, AFaultyCaseIsAFailureOfThatCaseAlone) {
  EXPECT_NONFATAL_FAILURE_ON_ALL_THREADS(UpgradeCaseTest("gone").TestBody(),
                                         "gone/case.json: ");
}

}  // namespace
}  // namespace cases
