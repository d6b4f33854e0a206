#include "tests/support/upgrade.h"

#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_maapi.h>
#include <zqconfd_sink.h>

#include <utility>

#include "tests/support/call_text.h"

namespace test_support {
namespace {

using kit::control::Call;
using kit::control::ChangeKind;
using kit::control::Database;
using kit::control::EntryChange;
using kit::control::LeafChange;
using kit::control::ModelSet;

ModelSet ModelsAt(const std::string& name) {
  std::string directory = name.find('/') == std::string::npos
                              ? std::string(TEST_SOURCE_ROOT) + "/yang/" + name
                              : name;
  return {directory, PluginNamespaces()};
}

std::string Shown(const std::optional<std::string>& value) {
  return value ? "\"" + *value + "\"" : "(none)";
}

}  // namespace

class Upgrade::Recorder : public kit::control::Observer {
 public:
  void OnCall(const Call& call) override {
    last_output_ = std::string(call.output);
    if (!paused_) lines_.push_back(kit::control::ToString(call));
  }
  void Pause(bool paused) { paused_ = paused; }
  const std::string& last_output() const { return last_output_; }
  const std::vector<std::string>& lines() const { return lines_; }
  void Clear() { lines_.clear(); }

 private:
  bool paused_ = false;
  std::string last_output_;
  std::vector<std::string> lines_;
};

std::map<std::string, uint32_t> PluginNamespaces() {
  return {{"VX-OSPF-MIB", 448085882},
          {"VX-OSPF-V3-MIB", 240301111},
          {"VX-RTM-MIB", 828596128}};
}

void Upgrade::OnLog(void* context, const char* text, size_t length) {
  auto* self = static_cast<Upgrade*>(context);
  self->log_.append(text, length).push_back('\n');
}

Upgrade::Upgrade(std::string config, const Models& models)
    : recorder_(std::make_unique<Recorder>()),
      database_(Database::Open(ModelsAt(models.before), ModelsAt(models.after),
                               std::move(config), "test")),
      handles_(database_.Attach()) {
  zqconfd_set_sink(&Upgrade::OnLog, this);
  kit::control::SetSchemasLoaded(true);
  kit::control::SetFaults({});
  kit::control::SetObserver(recorder_.get());
}

Upgrade::~Upgrade() {
  kit::control::SetObserver(nullptr);
  kit::control::SetFaults({});
  zqconfd_set_sink(nullptr, nullptr);
}

void Upgrade::Fail(const std::string& function, const std::string& path,
                   int error, const std::string& text, uint64_t k) {
  kit::control::Fault fault;
  fault.function = function;
  fault.path = path;
  fault.occurrence = k;
  fault.error = error;
  fault.text = text;
  Inject(std::move(fault));
}

void Upgrade::Inject(kit::control::Fault fault) {
  faults_.push_back(std::move(fault));
  kit::control::SetFaults(faults_);
}

std::vector<std::string> Upgrade::Calls() const {
  std::vector<std::string> calls;
  size_t released = 0;
  auto flush = [&] {
    if (released > 0) {
      calls.push_back("confd_free_value x" + std::to_string(released));
    }
    released = 0;
  };
  for (const std::string& line : recorder_->lines()) {
    if (line == "confd_free_value -> 0") {
      ++released;
    } else {
      flush();
      calls.push_back(CountMissingValues(line));
    }
  }
  flush();
  return calls;
}

std::string Upgrade::CallText() const {
  std::string text;
  for (const std::string& call : Calls()) text += call + "\n";
  return text;
}

void Upgrade::ClearCalls() { recorder_->Clear(); }

std::string Upgrade::Changes() const {
  std::string text;
  database_.Diff([&](const EntryChange& change) {
    text += change.kind == ChangeKind::kCreated   ? "+ "
            : change.kind == ChangeKind::kDeleted ? "- "
                                                  : "~ ";
    text += change.path + "\n";
    if (change.kind == ChangeKind::kDeleted) return;
    for (const LeafChange& leaf : change.leaves) {
      text += "    " + leaf.leaf + ": ";
      if (change.kind == ChangeKind::kChanged) {
        text += Shown(leaf.before) + " -> ";
      }
      text += Shown(leaf.after) + "\n";
    }
  });
  return text;
}

template <typename Read>
auto Upgrade::Untraced(const Read& read) const {
  recorder_->Pause(true);
  kit::control::SetFaults({});
  auto result = read();
  kit::control::SetFaults(faults_);
  recorder_->Pause(false);
  return result;
}

std::optional<std::string> Upgrade::Leaf(const std::string& path) const {
  return Untraced([&]() -> std::optional<std::string> {
    confd_value_t value;
    if (maapi_get_elem(maapi_sock(), thandle(), &value, "%s", path.c_str()) !=
        CONFD_OK) {
      return std::nullopt;
    }
    std::string text = recorder_->last_output();
    confd_free_value(&value);
    return text;
  });
}

bool Upgrade::Exists(const std::string& path) const {
  return Untraced([&] {
    return maapi_exists(maapi_sock(), thandle(), "%s", path.c_str()) == 1;
  });
}

std::string Upgrade::Saved() const {
  std::string text;
  database_.Save(kit::control::Format::kXml,
                 [&](std::string_view piece) { text += piece; });
  return text;
}

}  // namespace test_support
