#include "tests/cases/upgrade_case.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>

namespace cases {
namespace {

using nlohmann::json;

// A function: cases are registered before main() begins.
std::filesystem::path Root() { return TEST_SOURCE_ROOT; }

// A misspelt key must not pass for an absent one.
void CheckKeys(const json& object, const std::set<std::string>& known) {
  for (const auto& item : object.items()) {
    if (known.count(item.key()) == 0) {
      throw std::runtime_error("unknown key \"" + item.key() + "\"");
    }
  }
}

std::string ModelFolder(const std::string& name) {
  for (const char* parent : {"yang", "tests/models"}) {
    std::filesystem::path folder = Root() / parent / name;
    if (std::filesystem::is_directory(folder)) return folder.string();
  }
  throw std::runtime_error("no models \"" + name + "\"");
}

kit::control::Fault ToFault(const json& object) {
  CheckKeys(object,
            {"function", "path", "occurrence", "errno", "text", "result"});
  kit::control::Fault fault;
  fault.function = object.at("function");
  fault.path = object.value("path", "");
  fault.occurrence = object.value("occurrence", uint64_t{1});
  fault.error = object.value("errno", 0);
  fault.text = object.value("text", "");
  if (object.contains("result")) fault.result = object.at("result");
  return fault;
}

UpgradeCase FromJson(const json& object, const std::filesystem::path& folder) {
  CheckKeys(object, {"description", "before", "models", "status", "aborts",
                     "violations", "unchanged", "findings", "faults"});
  UpgradeCase upgrade_case;
  upgrade_case.description = object.at("description");
  upgrade_case.configuration =
      object.contains("before")
          ? Root() / object.at("before").get<std::string>()
          : folder / "before.xml";
  json models = object.value("models", json::object());
  CheckKeys(models, {"before", "after"});
  upgrade_case.models = {ModelFolder(models.value("before", "before")),
                         ModelFolder(models.value("after", "after"))};
  upgrade_case.status = object.value("status", 0);
  upgrade_case.abort_text = object.value("aborts", "");
  upgrade_case.violations =
      object.value("violations", std::vector<std::string>());
  upgrade_case.unchanged = object.value("unchanged", false);
  if (object.contains("findings")) {
    upgrade_case.findings =
        object.at("findings").get<std::vector<std::string>>();
  }
  for (const json& fault : object.value("faults", json::array())) {
    upgrade_case.faults.push_back(ToFault(fault));
  }
  return upgrade_case;
}

}  // namespace

std::filesystem::path CasesFolder() { return Root() / "tests" / "cases"; }

std::vector<std::string> CaseNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(CasesFolder())) {
    if (std::filesystem::exists(entry.path() / "case.json")) {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

UpgradeCase ReadCase(const std::string& name) {
  std::filesystem::path folder = CasesFolder() / name;
  try {
    return FromJson(json::parse(ReadText(folder / "case.json")), folder);
  } catch (const std::exception& e) {
    throw std::runtime_error(name + "/case.json: " + e.what());
  }
}

std::string ReadText(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(file.string() + " can't be read");
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

}  // namespace cases
