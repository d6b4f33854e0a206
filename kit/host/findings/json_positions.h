// Where the values of a JSON text stand.
#ifndef KIT_HOST_FINDINGS_JSON_POSITIONS_H_
#define KIT_HOST_FINDINGS_JSON_POSITIONS_H_

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kit::host {

// Counted from 1; columns in bytes.
struct TextPosition {
  size_t line = 1;
  size_t column = 1;
};

TextPosition PositionOf(std::string_view text, size_t offset);

// The parser of JSON does not keep them.
class JsonPositions {
 public:
  // The text must be valid JSON.
  explicit JsonPositions(std::string_view text);

  // Of the value that a JSON pointer leads to ("/rules/0/id").
  TextPosition Value(const std::string& pointer) const;
  // Of the name of a member; of the object where escapes stand in the name.
  TextPosition Name(const std::string& pointer) const;

  // Of a byte of a string's content, as the parser gives that.
  TextPosition Inside(const std::string& pointer, size_t byte) const;

  // The second of two members of one name.
  const std::optional<std::string>& repeated() const { return repeated_; }
  TextPosition RepeatedName() const {
    return PositionOf(text_, repeated_offset_);
  }

 private:
  void ReadValue(const std::string& pointer);
  void ReadObject(const std::string& pointer);
  void ReadArray(const std::string& pointer);
  std::string ReadString();
  void SkipBlanks();
  bool Take(char c);

  std::string_view text_;
  size_t at_ = 0;
  std::map<std::string, size_t> values_;
  std::map<std::string, size_t> names_;
  std::optional<std::string> repeated_;
  size_t repeated_offset_ = 0;
};

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_JSON_POSITIONS_H_
