// JSON that people write: every complaint names file, line and column.
#ifndef KIT_HOST_FINDINGS_CHECKED_JSON_H_
#define KIT_HOST_FINDINGS_CHECKED_JSON_H_

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kit/host/findings/json_positions.h"
#include "kit/host/findings/rule_error.h"

namespace kit::host {

class CheckedValue;

class CheckedJson {
 public:
  // `file` stands for the text in messages. Throws RuleError for what is no
  // JSON, and where a member stands twice.
  CheckedJson(const std::string& text, std::string file);
  CheckedJson(const CheckedJson&) = delete;
  CheckedJson& operator=(const CheckedJson&) = delete;

  CheckedValue root() const;
  const std::string& file() const { return file_; }

 private:
  friend class CheckedValue;

  const std::string text_;
  const std::string file_;
  const nlohmann::json json_;
  const JsonPositions positions_;
};

// A value of a text that must outlive it. What it is asked for and is not, is a
// RuleError.
class CheckedValue {
 public:
  using Keys = std::vector<std::string_view>;
  template <typename T>
  using Names = std::vector<std::pair<std::string_view, T>>;

  TextPosition position() const;
  // Of a byte of a string's content.
  TextPosition Inside(size_t byte) const;
  [[noreturn]] void Fail(const std::string& reason) const;
  [[noreturn]] void Fail(TextPosition position,
                         const std::string& reason) const;

  // An object without any other members than these.
  void RequireKeys(const Keys& known) const;
  bool Has(const std::string& key) const;
  CheckedValue operator[](const std::string& key) const;
  std::vector<CheckedValue> Elements() const;
  std::string Text() const;  // that is not empty
  int Number() const;
  template <typename T>
  T OneOf(const Names<T>& names) const {
    const std::string text = Text();
    std::string all;
    for (const auto& [name, value] : names) {
      if (name == text) return value;
      all += (all.empty() ? "" : ", ") + std::string(name);
    }
    Fail("\"" + text + "\" is none of " + all);
  }

 private:
  friend class CheckedJson;

  CheckedValue(const CheckedJson& document, const nlohmann::json& value,
               std::string pointer)
      : document_(&document), value_(&value), pointer_(std::move(pointer)) {}
  void RequireObject() const;

  const CheckedJson* document_;
  const nlohmann::json* value_;
  std::string pointer_;
};

// "a, b, c".
std::string Listed(const CheckedValue::Keys& keys);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_CHECKED_JSON_H_
