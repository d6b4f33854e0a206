#include "kit/host/passes.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "kit/host/failure.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

using Json = nlohmann::json;

class TableReader {
 public:
  TableReader(const std::string& text, const std::string& file) : file_(file) {
    try {
      json_ = Json::parse(text);
    } catch (const Json::parse_error& error) {
      const size_t at = error.byte > 0 ? error.byte - 1 : 0;
      const std::string_view before = std::string_view(text).substr(0, at);
      Fail("is no JSON", 1 + static_cast<uint64_t>(std::count(
                                 before.begin(), before.end(), '\n')));
    }
  }

  PassTable Read() {
    CheckKeys(json_, "the table", {"passes"});
    const auto found = json_.find("passes");
    if (found == json_.end() || !found->is_array() || found->empty()) {
      Fail("has no list \"passes\" of one pass or more");
    }
    PassTable table;
    std::set<std::string> marks;
    for (const Json& row : *found) {
      const std::string where = fmt::format("pass {}", table.size() + 1);
      CheckKeys(row, where, {"name", "start", "finish"});
      Pass pass{Text(row, where, "name", true), Text(row, where, "start", true),
                Text(row, where, "finish", false)};
      for (const std::string& mark : {pass.start, pass.finish}) {
        if (mark.empty() || marks.insert(mark).second) continue;
        Fail(fmt::format("{}: the record \"{}\" is a mark already", where,
                         mark));
      }
      table.push_back(std::move(pass));
    }
    return table;
  }

 private:
  [[noreturn]] void Fail(std::string reason, uint64_t line = 0) const {
    throw FailureError({ExitCode::kBadInput, std::move(reason),
                        "correct the table of passes", file_, line});
  }

  void CheckKeys(const Json& object, const std::string& where,
                 const std::set<std::string>& known) const {
    if (!object.is_object()) Fail(where + " is no object");
    for (const auto& [key, value] : object.items()) {
      if (known.count(key) == 0) {
        Fail(fmt::format("{} has an unknown key \"{}\"", where, key));
      }
    }
  }

  std::string Text(const Json& object, const std::string& where,
                   const char* key, bool required) const {
    const auto found = object.find(key);
    if (found == object.end() && !required) return "";
    if (found == object.end() || !found->is_string() ||
        found->get_ref<const std::string&>().empty()) {
      Fail(fmt::format("{} has no text \"{}\"", where, key));
    }
    return found->get<std::string>();
  }

  const std::string& file_;
  Json json_;
};

}  // namespace

PassTracker::PassTracker(const PassTable& table) {
  for (size_t i = 0; i < table.size(); ++i) {
    const auto number = static_cast<uint32_t>(i + 1);
    marks_.emplace(table[i].start, Mark{number, true});
    if (!table[i].finish.empty()) {
      marks_.emplace(table[i].finish, Mark{number, false});
    }
  }
}

uint32_t PassTracker::Take(std::string_view record) {
  const auto found = marks_.find(WithoutLastNewline(record));
  if (found == marks_.end()) return current_;
  current_ = found->second.is_start ? found->second.pass : 0;
  return found->second.pass;
}

PassTable ParsePasses(const std::string& text, const std::string& file) {
  return TableReader(text, file).Read();
}

}  // namespace kit::host
