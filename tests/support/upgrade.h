// One upgrade under test: a configuration in the store, what the program under
// test logs and calls, the faults it meets, and what it leaves behind.
#ifndef TESTS_SUPPORT_UPGRADE_H_
#define TESTS_SUPPORT_UPGRADE_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/control/control.h"

namespace test_support {

// The namespace hashes that the plug-in selects, by module name.
std::map<std::string, uint32_t> PluginNamespaces();

// Model sets by the name of their folder under yang/, or by path.
struct Models {
  std::string before = "before";
  std::string after = "after";
};

// Records calls and log lines from its construction on; one at a time.
class Upgrade {
 public:
  // Throws ModelError, InputError.
  explicit Upgrade(std::string config, const Models& models = {});
  ~Upgrade();
  Upgrade(const Upgrade&) = delete;
  Upgrade& operator=(const Upgrade&) = delete;

  int maapi_sock() const { return handles_.maapi_sock; }
  int thandle() const { return handles_.thandle; }
  int cdb_sock() const { return handles_.cdb_sock; }
  kit::control::Database& database() { return database_; }

  // Adds a fault: the k-th fitting call fails ("" fits all; k 0: every one).
  void Fail(const std::string& function, const std::string& path, int error,
            const std::string& text, uint64_t k = 1);
  void Inject(kit::control::Fault fault);

  // Log records so far, a newline after each.
  const std::string& Log() const { return log_; }
  void ClearLog() { log_.clear(); }

  // Calls so far, a line each as ToString prints them; calls of
  // confd_free_value in a row are one line, "confd_free_value x80", and values
  // that are none in a row are one, "C_NOEXISTS x67".
  std::vector<std::string> Calls() const;
  std::string CallText() const;  // the same, a newline after each
  void ClearCalls();

  // What the program changed in the transaction:
  //   + /internal/list{1 a}          created, with every leaf that is set
  //   ~ /internal/list{2 b}          changed
  //   - /internal/list{3 c}          deleted, without its leaves
  //       leaf: "old" -> "new"
  std::string Changes() const;

  // Value of a leaf in the transaction as "C_UINT32 7"; nullopt without one.
  std::optional<std::string> Leaf(const std::string& path) const;
  bool Exists(const std::string& path) const;

  // The transaction as an XML document.
  std::string Saved() const;

 private:
  class Recorder;
  // Reads without leaving a trace in the recorded calls.
  template <typename Read>
  auto Untraced(const Read& read) const;
  static void OnLog(void* context, const char* text, size_t length);

  std::unique_ptr<Recorder> recorder_;
  std::vector<kit::control::Fault> faults_;
  std::string log_;
  kit::control::Database database_;
  kit::control::Handles handles_;
};

}  // namespace test_support

#endif  // TESTS_SUPPORT_UPGRADE_H_
