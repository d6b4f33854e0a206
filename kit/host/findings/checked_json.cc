#include "kit/host/findings/checked_json.h"

#include <fmt/format.h>

#include <algorithm>

namespace kit::host {
namespace {

using nlohmann::json;

json Parse(const std::string& text, const std::string& file) {
  try {
    return json::parse(text);
  } catch (const json::parse_error& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    std::string_view reason = error.what();
    const size_t colon = reason.find(": ");
    if (colon != std::string_view::npos) reason.remove_prefix(colon + 2);
    const size_t byte = error.byte > 0 ? error.byte - 1 : 0;
    throw RuleError(file, PositionOf(text, byte),
                    fmt::format("no valid JSON: {}", reason));
  }
}

}  // namespace

std::string Listed(const CheckedValue::Keys& keys) {
  return fmt::format("{}", fmt::join(keys, ", "));
}

CheckedJson::CheckedJson(const std::string& text, std::string file)
    : text_(text),
      file_(std::move(file)),
      json_(Parse(text_, file_)),
      positions_(text_) {
  if (positions_.repeated()) {
    throw RuleError(
        file_, positions_.RepeatedName(),
        fmt::format("\"{}\" stands here twice", *positions_.repeated()));
  }
}

CheckedValue CheckedJson::root() const { return {*this, json_, ""}; }

TextPosition CheckedValue::position() const {
  return document_->positions_.Value(pointer_);
}

TextPosition CheckedValue::Inside(size_t byte) const {
  return document_->positions_.Inside(pointer_, byte);
}

void CheckedValue::Fail(const std::string& reason) const {
  Fail(position(), reason);
}

void CheckedValue::Fail(TextPosition position,
                        const std::string& reason) const {
  throw RuleError(document_->file_, position, reason);
}

void CheckedValue::RequireObject() const {
  if (!value_->is_object()) Fail("an object is needed");
}

void CheckedValue::RequireKeys(const Keys& known) const {
  RequireObject();
  for (const auto& member : value_->items()) {
    if (std::find(known.begin(), known.end(), member.key()) != known.end()) {
      continue;
    }
    Fail(document_->positions_.Name(pointer_ + "/" + member.key()),
         fmt::format("\"{}\" is not known here; known are {}", member.key(),
                     Listed(known)));
  }
}

bool CheckedValue::Has(const std::string& key) const {
  RequireObject();
  return value_->contains(key);
}

CheckedValue CheckedValue::operator[](const std::string& key) const {
  if (!Has(key)) Fail(fmt::format("\"{}\" is missing", key));
  return {*document_, value_->at(key), pointer_ + "/" + key};
}

std::vector<CheckedValue> CheckedValue::Elements() const {
  if (!value_->is_array()) Fail("a list is needed");
  std::vector<CheckedValue> elements;
  for (size_t i = 0; i < value_->size(); ++i) {
    elements.push_back(CheckedValue(*document_, value_->at(i),
                                    pointer_ + "/" + std::to_string(i)));
  }
  return elements;
}

std::string CheckedValue::Text() const {
  if (!value_->is_string()) Fail("a string is needed");
  auto text = value_->get<std::string>();
  if (text.empty()) Fail("it is empty");
  return text;
}

int CheckedValue::Number() const {
  if (!value_->is_number_integer()) Fail("a number is needed");
  return value_->get<int>();
}

}  // namespace kit::host
